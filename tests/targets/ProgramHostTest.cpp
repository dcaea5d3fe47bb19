#include "targets/ProgramHost.h"

#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <set>

namespace targets {
namespace {

/// Labels and types that the test writes down; a name that starts with "broken" fails.
class FakeLabels final : public LabelSource {
 public:
  [[nodiscard]] std::uint32_t PointerSize() const override { return pointerSize; }
  [[nodiscard]] ByteOrder Order() const override { return order; }
  [[nodiscard]] std::string CurrentFile() const override { return file; }
  std::optional<Label> FindLabel(std::string_view name) override {
    Fail(name);
    asked.emplace_back(name);
    const auto found = labels.find(std::string(name));
    if (found == labels.end()) return std::nullopt;
    return found->second;
  }
  bool HasType(std::string_view name) override {
    Fail(name);
    return types.count(std::string(name)) != 0;
  }
  std::optional<DataLableType> FindType(std::string_view name) override {
    Fail(name);
    const auto found = types.find(std::string(name));
    if (found == types.end()) return std::nullopt;
    return found->second;
  }
  [[nodiscard]] const std::vector<MemberRemark>& Remarks() const override { return remarks; }
  void ListLabels(const std::function<void(const Listing&)>&) override {}
  void ListTypes(const std::function<void(const Listing&)>&) override {}

  static void Fail(std::string_view name) {
    if (name.starts_with("broken"))
      throw Error(ErrorCode::kBrokenInfo, std::string(name) + " fails");
  }

  std::uint32_t pointerSize = 8;
  ByteOrder order = ByteOrder::kLittle;
  std::string file = "main.c";
  std::map<std::string, Label> labels;
  std::map<std::string, DataLableType> types;
  std::vector<std::string> asked;
  std::vector<MemberRemark> remarks;
};

/// Ten bytes at 0x1000 of space 0, two at 0x10 of space 1; reading 0xBAD fails.
class FakeMemory final : public MemorySource {
 public:
  MemoryRead Read(std::uint64_t address, std::uint8_t space, std::span<std::byte> bytes) override {
    if (address == 0xBAD) throw Error(ErrorCode::kUnreadable, "the wire is cut");
    const std::string& all = space == 0 ? zero : one;
    const std::uint64_t start = space == 0 ? 0x1000 : 0x10;
    std::size_t done = 0;
    while (done < bytes.size() && address + done - start < all.size()) {
      bytes[done] = static_cast<std::byte>(all[address + done - start]);
      ++done;
    }
    return {done, MemoryGap::kNotThere};
  }

  std::string zero = std::string("\x01\x02\x03\x04\x05\x06\x07\x08\x09\x0a", 10);
  std::string one = "\x21\x22";
};

class ProgramHostTest : public testing::Test {
 protected:
  std::string ReadText(std::uint64_t address, std::uint32_t size, bool isFloat = false,
                       bool isDouble = false, std::uint16_t space = 0) {
    host.accessSize = size;
    std::string text;
    host.ReadMemory(address, address, space, 1, &text, 1, isFloat, isDouble);
    return text;
  }

  template <typename Bits>
  std::string ReadBits(Bits bits) {
    memory.zero.resize(sizeof bits);
    std::memcpy(memory.zero.data(), &bits, sizeof bits);
    return ReadText(0x1000, sizeof bits, sizeof bits == 4, sizeof bits == 8);
  }

  std::string Failure() { return host.FirstFailure() ? host.FirstFailure()->what() : "none"; }

  struct Found {
    std::uint64_t value = 0;
    bool undefined = false;
    bool confirmed = false;
  };
  Found Find(const char* text) {
    Found found;
    host.LabelTyped = false;
    found.value = host.FindLabel(text, &found.undefined, &found.confirmed);
    return found;
  }

  FakeLabels labels;
  FakeMemory memory;
  ProgramHost host{labels, memory};
};

TEST_F(ProgramHostTest, ReadsEverySizeInTheTargetsByteOrder) {
  const char* little[] = {"",
                          "1",
                          "513",
                          "197121",
                          "67305985",
                          "21542142465",
                          "6618611909121",
                          "1976943448883713",
                          "578437695752307201"};
  const char* big[] = {"",
                       "1",
                       "258",
                       "66051",
                       "16909060",
                       "4328719365",
                       "1108152157446",
                       "283686952306183",
                       "72623859790382856"};
  for (std::uint32_t size = 1; size <= 8; ++size) EXPECT_EQ(ReadText(0x1000, size), little[size]);
  labels.order = ByteOrder::kBig;
  for (std::uint32_t size = 1; size <= 8; ++size) EXPECT_EQ(ReadText(0x1000, size), big[size]);
  EXPECT_EQ(Failure(), "none");
}

TEST_F(ProgramHostTest, BytesPastTheEndCountAsZero) {
  EXPECT_EQ(ReadText(0x1008, 8), std::to_string(0x0A09));
  EXPECT_TRUE(host.CheckAddress(0x1009, 0));
  EXPECT_EQ(ReadText(0x1009, 8), std::to_string(0x0A));
  labels.order = ByteOrder::kBig;
  EXPECT_EQ(ReadText(0x1008, 4), std::to_string(0x090A0000));
  EXPECT_EQ(Failure(), "none");
}

TEST_F(ProgramHostTest, ARefusedAddressIsTheFirstFailure) {
  EXPECT_TRUE(host.CheckAddress(0x1000, 0));
  EXPECT_EQ(Failure(), "none");
  EXPECT_FALSE(host.CheckAddress(0x100A, 0));
  EXPECT_FALSE(host.CheckAddress(0x601000, 0));
  EXPECT_EQ(Failure(), "cannot read memory at 0x100a");
  EXPECT_EQ(host.FirstFailure()->Code(), ErrorCode::kUnreadable);
  host.StartResolution();
  EXPECT_EQ(Failure(), "none");
  EXPECT_TRUE(host.CheckAddress(0x11, 1));
  EXPECT_FALSE(host.CheckAddress(0x12, 1));
  EXPECT_EQ(Failure(), "cannot read memory at 0x12 in space 1");
}

TEST_F(ProgramHostTest, ASourceThatFailsIsRememberedToo) {
  EXPECT_FALSE(host.CheckAddress(0xBAD, 0));
  EXPECT_EQ(Failure(), "the wire is cut");
  host.StartResolution();
  EXPECT_EQ(ReadText(0xBAD, 4), "");
  EXPECT_EQ(Failure(), "the wire is cut");
}

TEST_F(ProgramHostTest, WritesDownTheReadsThatSucceeded) {
  ReadText(0x1000, 4);
  ReadText(0x10, 8, false, false, 1);
  ReadText(0x5000, 4);
  ASSERT_EQ(host.Accesses().size(), 2U);
  EXPECT_EQ(host.Accesses()[0].address, 0x1000U);
  EXPECT_EQ(host.Accesses()[0].size, 4U);
  EXPECT_EQ(host.Accesses()[0].space, 0);
  EXPECT_EQ(host.Accesses()[1].address, 0x10U);
  EXPECT_EQ(host.Accesses()[1].size, 8U);
  EXPECT_EQ(host.Accesses()[1].space, 1);
  EXPECT_EQ(Failure(), "cannot read memory at 0x5000");
  host.StartResolution();
  EXPECT_TRUE(host.Accesses().empty());
}

TEST_F(ProgramHostTest, FloatingTextsReadBackExactly) {
  const float floats[] = {0.0F,  -0.0F,       1.5F,     0.1F,         -3.25e-20F,
                          1e38F, 16777216.0F, 1.4e-45F, 3.4028235e38F};
  for (const float value : floats) {
    EXPECT_EQ(std::stod(ReadBits(value)), static_cast<double>(value)) << value;
  }
  const double doubles[] = {
      0.0, 1.5, 0.1, -1.0 / 3.0, 1e300, 4.9e-324, 2.2250738585072014e-308, 1.7976931348623157e308};
  for (const double value : doubles) {
    EXPECT_EQ(std::strtod(ReadBits(value).c_str(), nullptr), value) << value;
  }
  EXPECT_EQ(Failure(), "none");
}

TEST_F(ProgramHostTest, NumbersThatNoResultCanCarryAreFailures) {
  struct Row {
    double value;
    std::string failure;
  };
  const double infinity = std::numeric_limits<double>::infinity();
  for (const Row& row :
       {Row{std::numeric_limits<double>::quiet_NaN(),
            "the number at 0x1000 is not a number, and no result can carry that"},
        Row{infinity, "the number at 0x1000 is infinite, and no result can carry that"},
        Row{-infinity, "the number at 0x1000 is infinite, and no result can carry that"}}) {
    host.StartResolution();
    ReadBits(row.value);
    EXPECT_EQ(Failure(), row.failure);
    EXPECT_EQ(host.FirstFailure()->Code(), ErrorCode::kNotRepresented);
    host.StartResolution();
    ReadBits(static_cast<float>(row.value));
    EXPECT_EQ(Failure(), row.failure);
  }
}

TEST_F(ProgramHostTest, NumeralsStayUntypedAndAskNobody) {
  for (const char* text : {"31", "0x1F", "0b11111", "037", "31ull", "*31", "**0x1F", "'\\x1f'"}) {
    const Found found = Find(text);
    EXPECT_EQ(found.value, 31U) << text;
    EXPECT_TRUE(found.confirmed) << text;
    EXPECT_FALSE(found.undefined) << text;
    EXPECT_FALSE(host.LabelTyped) << text;
  }
  EXPECT_TRUE(labels.asked.empty());
  for (const char* text : {"08", "18446744073709551616", "", "*"}) {
    EXPECT_TRUE(Find(text).undefined) << text;
    EXPECT_FALSE(Find(text).confirmed) << text;
  }
  EXPECT_EQ(Failure(), "none");
}

TEST_F(ProgramHostTest, LabelsLoseTheResolversMarks) {
  DataLableType type;
  type.Name = "int";
  type.Size = 4;
  type.PointerSize = 8;
  labels.labels["interval"] = {LabelKind::kVariable, 0x1000, true, type, ""};
  labels.labels["where"] = {LabelKind::kSymbol, 0x2000, false, {}, ""};
  for (const char* text :
       {"interval", ":@:interval", "*:@:interval", "**interval", "inter:@:val"}) {
    const Found found = Find(text);
    EXPECT_EQ(found.value, 0x1000U) << text;
    EXPECT_TRUE(found.confirmed) << text;
    EXPECT_TRUE(host.LabelTyped) << text;
    EXPECT_EQ(host.LabelType, type) << text;
  }
  const Found found = Find("where");
  EXPECT_EQ(found.value, 0x2000U);
  EXPECT_FALSE(host.LabelTyped);
  EXPECT_TRUE(Find("nothing").undefined);
  EXPECT_EQ(Failure(), "none");
}

TEST_F(ProgramHostTest, TheFirstLabelWithoutItsTypeIsRemembered) {
  labels.labels["plain"] = {LabelKind::kSymbol, 0x2000, false, {}, ""};
  labels.labels["first"] = {LabelKind::kSymbol, 0x2000, false, {}, "a file is lost"};
  labels.labels["second"] = {LabelKind::kSymbol, 0x2000, false, {}, "so is another"};
  EXPECT_EQ(Find("plain").value, 0x2000U);
  EXPECT_EQ(host.FirstUntyped(), "");
  EXPECT_EQ(Find("*first").value, 0x2000U);
  EXPECT_EQ(Find("second").value, 0x2000U);
  EXPECT_EQ(host.FirstUntyped(), "of 'first' only the address is known: a file is lost");
  EXPECT_EQ(Failure(), "none");
  host.StartResolution();
  EXPECT_EQ(host.FirstUntyped(), "");
}

TEST_F(ProgramHostTest, FailingLookUpsAreUndefinedAndRemembered) {
  EXPECT_TRUE(Find("broken_label").undefined);
  EXPECT_EQ(Failure(), "broken_label fails");
  host.StartResolution();
  EXPECT_FALSE(host.IsTypeName("broken_type*"));
  EXPECT_EQ(Failure(), "broken_type fails");
  host.StartResolution();
  bool unknown = false;
  host.GetTypeDescription("broken_type", &unknown);
  EXPECT_TRUE(unknown);
  EXPECT_EQ(Failure(), "broken_type fails");
}

TEST_F(ProgramHostTest, TypesAreFoundInEverySpelling) {
  DataLableType word;
  word.Size = 4;
  labels.types["unsigned int"] = word;
  labels.types["struct node"] = word;
  labels.types["struct node#1"] = word;
  for (const char* text :
       {"unsigned:@:int", "intunsigned**", "structnode*", "constunsigned", "struct node"}) {
    EXPECT_TRUE(host.IsTypeName(text)) << text;
  }
  // The last is a record's name, which nobody can type.
  for (const char* text : {"node", "unsigned+1", "1", "", "*", "structnode+1", "struct node#1"}) {
    EXPECT_FALSE(host.IsTypeName(text)) << text;
  }
  bool unknown = false;
  for (const char* text : {"unsigned:@:int", "structnode", "struct node#1"}) {
    EXPECT_EQ(host.GetTypeDescription(text, &unknown).Size, 4U) << text;
    EXPECT_FALSE(unknown) << text;
  }
  const DataLableType pointer = host.GetTypeDescription("unsignedint*const", &unknown);
  EXPECT_TRUE(pointer.IsPointer);
  EXPECT_EQ(pointer.Size, 8U);
  EXPECT_FALSE(unknown);
  host.GetTypeDescription("struct node#2", &unknown);
  EXPECT_TRUE(unknown);
}

TEST_F(ProgramHostTest, TheWordOfTheSecondSpaceIsAlwaysKnown) {
  for (const std::uint32_t size : {4U, 8U}) {
    labels.pointerSize = size;
    bool unknown = false;
    const DataLableType word = host.GetTypeDescription("ZV_Lorn", &unknown);
    EXPECT_FALSE(unknown);
    EXPECT_EQ(word.Size, size);
    EXPECT_EQ(word.PointerSize, size);
    EXPECT_FALSE(word.IsSigned || word.IsPointer || word.IsArray);
    EXPECT_TRUE(host.IsTypeName("ZV_Lorn*"));
  }
}

TEST_F(ProgramHostTest, TheFileNameSelectsTheDialectOfItsLanguage) {
  struct Row {
    std::string file;
    std::string name;
  };
  // ".s" or ".asm" anywhere in the name would select assembly.
  for (const Row& row :
       {Row{"main.c", "main.c"}, Row{"lib.sys/main.c", "main.c"}, Row{"/src/boot.s", "boot.s"},
        Row{"boot.asm", "boot.asm"}, Row{"boot.S", "boot.S.s"}, Row{"a.save.c", "a_save.c"},
        Row{"x.asm.c", "x_asm.c"}, Row{"", ""}, Row{"a.s/", ""}}) {
    labels.file = row.file;
    EXPECT_EQ(host.GetFileName(), row.name) << row.file;
  }
}

}  // namespace
}  // namespace targets

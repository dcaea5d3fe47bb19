#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <span>

#include "contract/LabelContract.h"
#include "contract/MemoryContract.h"
#include "targets/ElfProgram.h"

namespace contract {
namespace {

using targets::MemoryGap;
using targets::MemoryRead;
using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;

/// Sixteen bytes at 0x1000, with one promise broken at a time.
class Breaking final : public targets::MemorySource {
 public:
  enum class Promise { kNone, kContents, kAmount, kTail, kEnd, kGap, kRefresh };
  explicit Breaking(Promise promise) : promise_(promise) {}

  MemoryRead Read(std::uint64_t address, std::uint8_t space, std::span<std::byte> bytes) override {
    if (space != 0) return {};
    MemoryRead read;
    const std::uint64_t end = promise_ == Promise::kEnd ? 0x1011 : 0x1010;
    while (read.size < bytes.size() && address + read.size >= 0x1000 && address + read.size < end) {
      bytes[read.size] = static_cast<std::byte>(address + read.size);
      ++read.size;
    }
    if (promise_ == Promise::kContents && read.size > 9) bytes[9] = std::byte{0};
    if (promise_ == Promise::kTail && read.size < bytes.size()) bytes[read.size] = std::byte{0};
    if (promise_ == Promise::kAmount && read.size == 3) read.size = 2;
    if (promise_ == Promise::kRefresh && refreshed_) read.size = 0;
    if (promise_ == Promise::kGap) read.gap = MemoryGap::kNotSaved;
    return read;
  }

  void Refresh() override { refreshed_ = true; }

 private:
  Promise promise_;
  bool refreshed_ = false;
};

std::vector<std::string> Complaints(Breaking::Promise promise) {
  KnownMemory known;
  known.address = 0x1000;
  for (int i = 0; i < 16; ++i) known.bytes.push_back(static_cast<std::byte>(i));
  known.end = MemoryGap::kNotThere;
  known.gaps = {{0, MemoryGap::kNotThere}, {0xFFF, MemoryGap::kNotThere}};
  Breaking source(promise);
  return CheckMemorySource(source, known);
}

TEST(MemoryContract, EveryBrokenPromiseIsSeen) {
  const std::pair<Breaking::Promise, const char*> rows[] = {
      {Breaking::Promise::kContents, "the contents are others"},
      {Breaking::Promise::kAmount, "only 2 are read"},
      {Breaking::Promise::kTail, "bytes behind those that were read have changed"},
      {Breaking::Promise::kEnd, "although memory ends after 0"},
      {Breaking::Promise::kGap, "the reason is 'not saved' instead of 'not there'"},
      {Breaking::Promise::kRefresh, "only 0 are read"},
  };
  EXPECT_THAT(Complaints(Breaking::Promise::kNone), IsEmpty());
  for (const auto& [promise, sentence] : rows) {
    EXPECT_THAT(Complaints(promise), Contains(HasSubstr(sentence)));
  }
}

/// `int x` at 0x10 and nothing else, with one promise broken at a time.
class OneLabel final : public targets::LabelSource {
 public:
  enum class Promise { kNone, kUndefined, kValue, kRecord, kName, kListed, kVisited };
  explicit OneLabel(Promise promise) : promise_(promise) {}

  std::uint32_t PointerSize() const override { return 8; }
  targets::ByteOrder Order() const override { return targets::ByteOrder::kLittle; }
  std::string CurrentFile() const override { return "main.c"; }
  std::optional<targets::Label> FindLabel(std::string_view name) override {
    if (name != "x" && promise_ != Promise::kUndefined) return std::nullopt;
    targets::Label label;
    label.kind = targets::LabelKind::kVariable;
    label.value = promise_ == Promise::kValue ? 0x11 : 0x10;
    label.typed = true;
    label.type = Int();
    if (promise_ == Promise::kRecord) label.type.Size = 16;
    if (promise_ == Promise::kName) label.type.NestedTypes.push_back("struct gone#1");
    return label;
  }
  bool HasType(std::string_view name) override { return name == "int"; }
  std::optional<DataLableType> FindType(std::string_view name) override {
    if (name != "int") return std::nullopt;
    return Int();
  }
  const std::vector<targets::MemberRemark>& Remarks() const override { return remarks_; }
  void ListLabels(const std::function<void(const targets::Listing&)>& visit) override {
    visit({"x", "int"});
    if (promise_ == Promise::kListed) visit({"y", "int"});
  }
  void ListTypes(const std::function<void(const targets::Listing&)>& visit) override {
    visit({"int", "4 bytes"});
  }
  void VisitLabelNames(const std::function<void(std::string_view)>& visit) override {
    if (promise_ != Promise::kVisited) visit("x");
    visit("y");
  }

 private:
  static DataLableType Int() {
    DataLableType type;
    type.Name = "int";
    type.Size = 4;
    type.IsSigned = true;
    return type;
  }

  Promise promise_;
  std::vector<targets::MemberRemark> remarks_;
};

std::vector<std::string> Complaints(OneLabel::Promise promise) {
  OneLabel source(promise);
  return CheckLabelSource(source, {{{"x", targets::LabelKind::kVariable, 0x10, true, 4}}, {"int"}});
}

TEST(LabelContract, EveryBrokenPromiseIsSeen) {
  const std::pair<OneLabel::Promise, const char*> rows[] = {
      {OneLabel::Promise::kUndefined, "a label that does not exist is found"},
      {OneLabel::Promise::kValue, "x has another value"},
      {OneLabel::Promise::kRecord, "a number of 16 bytes"},
      {OneLabel::Promise::kName, "the record name struct gone#1 is not known"},
      {OneLabel::Promise::kListed, "the label y is listed, but not found"},
      {OneLabel::Promise::kVisited, "the label x is listed, but not visited"},
  };
  EXPECT_THAT(Complaints(OneLabel::Promise::kNone), IsEmpty());
  for (const auto& [promise, sentence] : rows) {
    EXPECT_THAT(Complaints(promise), Contains(HasSubstr(sentence)));
  }
}

TEST(Contract, ProgramsKeepIt) {
  for (const char* fixture : {"values-x64-dwarf5", "values-x64-pie", "values-m32-dwarf4", "classes",
                              "hosted", "labels", "labels-plain", "strange"}) {
    SCOPED_TRACE(fixture);
    targets::ElfProgram program(std::string(FIXTURE_DIR) + "/" + fixture);
    KnownLabels known;
    if (std::string_view(fixture).starts_with("values")) {
      for (const auto& [name, size] :
           std::map<std::string, std::uint64_t>{{"si", 4}, {"a", 16}, {"m", 24}}) {
        const auto label = program.FindLabel(name);
        ASSERT_TRUE(label);
        known.labels.push_back({name, targets::LabelKind::kVariable, label->value, true, size});
      }
      known.types = {"int", "unsigned char", "enum colour"};
    }
    EXPECT_THAT(CheckLabelSource(program, known), IsEmpty());
  }
}

TEST(Contract, TheInitialMemoryOfProgramsKeepsIt) {
  for (const char* fixture : {"values-x64-dwarf5", "values-m32-dwarf4"}) {
    SCOPED_TRACE(fixture);
    targets::ElfProgram program(std::string(FIXTURE_DIR) + "/" + fixture);
    const auto a = program.FindLabel("a");
    ASSERT_TRUE(a);
    KnownMemory known;
    known.address = a->value;
    for (const int element : {10, 20, 30, 40}) {
      known.bytes.push_back(static_cast<std::byte>(element));
      known.bytes.resize(known.bytes.size() + 3);
    }
    known.gaps = {{0, MemoryGap::kNotThere}, {0x7fffffffffffffff, MemoryGap::kNotThere}};
    EXPECT_THAT(CheckMemorySource(program.Memory(), known), IsEmpty());
    known = {1, 0, {}, MemoryGap::kNotThere, {{a->value, MemoryGap::kNotThere}}};
    EXPECT_THAT(CheckMemorySource(program.Memory(), known), IsEmpty());
  }
}

}  // namespace
}  // namespace contract

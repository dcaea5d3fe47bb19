#include <gtest/gtest.h>

#include <elf.h>

#include <string>
#include <vector>

#include "resolver/StringParametersResolving.h"
#include "targets/ElfFile.h"
#include "targets/RemotePlacement.h"
#include "targets/RemoteProgram.h"
#include "targets/Texts.h"
#include "tests/support/Outcome.h"
#include "tests/targets/FakeStub.h"
#include "tests/targets/ProgramUnderTest.h"

namespace targettests {
namespace {

using targets::ByteOrder;
using targets::RemoteProgram;

/// The memory of a program that was loaded elsewhere.
class MovedMemory final : public targets::MemorySource {
 public:
  MovedMemory(targets::MemorySource& memory, std::uint64_t bias) : memory_(memory), bias_(bias) {}
  targets::MemoryRead Read(std::uint64_t address, std::uint8_t space,
                           std::span<std::byte> bytes) override {
    return memory_.Read(address - bias_, space, bytes);
  }

 private:
  targets::MemorySource& memory_;
  std::uint64_t bias_;
};

/// A program from the tests behind a stub.
struct Behind {
  explicit Behind(const std::string& fixture, std::uint64_t bias = 0,
                  const std::optional<std::string>& vector = std::nullopt,
                  const std::optional<std::string>& offsets = std::nullopt)
      : plain(FixturePath(fixture)), memory(plain.Memory(), bias) {
    auto owned = std::make_unique<FakeStub>(
        memory, vector ? "QStartNoAckMode+;qXfer:auxv:read+" : "QStartNoAckMode+");
    stub = owned.get();
    stub->auxiliaryVector = vector;
    stub->offsets = offsets;
    program.emplace(
        FixturePath(fixture), [&] { return std::move(owned); },
        RemoteProgram::Options{.debugFolder = "/usr/lib/debug",
                               .timeout = std::chrono::milliseconds(1),
                               .leaving = targets::RemoteStub::Leaving::kStopped});
    stub->TakeRequests();
  }

  std::string Evaluate(const std::string& expression) {
    targets::ProgramHost host(program->Program(), program->Memory());
    host.StartResolution();
    TStringResolver resolver(&host);
    std::string outcome =
        testsupport::Outcome(resolver, resolver.SolveStringOfElements(expression));
    if (host.FirstFailure()) outcome += std::string(" ! ") + host.FirstFailure()->what();
    return outcome;
  }

  targets::ElfProgram plain;
  MovedMemory memory;
  FakeStub* stub = nullptr;
  std::optional<RemoteProgram> program;
};

struct Reading {
  std::string label;
  std::uint64_t offset;
  std::uint64_t size;
};

std::vector<std::string> RequestsFor(targets::ElfProgram& program,
                                     const std::vector<Reading>& readings) {
  std::vector<std::string> requests;
  for (const Reading& reading : readings) {
    const std::uint64_t address = program.FindLabel(reading.label)->value + reading.offset;
    requests.push_back("m" + targets::Hexadecimal(address).substr(2) + "," +
                       targets::Hexadecimal(reading.size).substr(2));
  }
  return requests;
}

struct Row {
  std::string expression;
  std::string outcome;
  std::vector<Reading> readings;
};

void Expect(const std::string& fixture, const std::vector<Row>& rows) {
  if (!HasFixture(fixture)) GTEST_SKIP() << "compiling this one needs clang and lld";
  Behind behind(fixture);
  for (const Row& row : rows) {
    EXPECT_EQ(behind.Evaluate(row.expression), row.outcome) << row.expression;
    EXPECT_EQ(behind.stub->TakeRequests(), RequestsFor(behind.plain, row.readings))
        << row.expression;
  }
}

TEST(RemoteExpressions, ReadWhatTheyNeedAndNothingElse) {
  Expect("values-x64-dwarf5",
         {
             {"si", "-70000/4", {{"si", 0, 4}}},
             {"uc", "200/1", {{"uc", 0, 1}}},
             {"d", "-2.25f/8", {{"d", 0, 8}}},
             {"si + si", "-140000/4", {{"si", 0, 4}}},
             {"si + ss + si", "-140300/4", {{"si", 0, 4}, {"ss", 0, 2}}},
             {"a[3]", "40/4", {{"a", 12, 4}}},
             {"a[(i)+0]", "30/4", {{"i", 0, 4}, {"a", 8, 4}}},
             {"*p", "20/4", {{"p", 0, 8}, {"a", 4, 4}}},
             {"**pp", "20/4", {{"pp", 0, 8}, {"p", 0, 8}, {"a", 4, 4}}},
             {"o.in.x", "8/4", {{"o", 4, 4}}},
             {"n1.next->v", "2/4", {{"n1", 8, 8}, {"n2", 0, 4}}},
             {"head->v", "1/4", {{"head", 0, 8}, {"n1", 0, 4}}},
             {"head->next->v", "2/4", {{"head", 0, 8}, {"n1", 8, 8}, {"n2", 0, 4}}},
             {"head->next->next->v",
              "3/4",
              {{"head", 0, 8}, {"n1", 8, 8}, {"n2", 8, 8}, {"n3", 0, 4}}},
             {"GREEN", "5/8", {}},
             {"sizeof(struct node)", "16/8", {}},
             {"nothing", "error: Undefined label nothing", {}},
         });
}

TEST(RemoteExpressions, ReadTheirObjectsOnTargetsOfEveryKind) {
  for (const char* fixture : {"values-m32-dwarf5", "values-powerpc", "values-mips"}) {
    Expect(fixture, {
                        {"si", "-70000/4", {{"si", 0, 4}}},
                        {"sll", "-6000000000/8", {{"sll", 0, 8}}},
                        {"*p", "20/4", {{"p", 0, 4}, {"a", 4, 4}}},
                    });
  }
  // The resolver reads a pointer before "->" with the size of what it points to, at most 8 bytes,
  // and drops what is too much. Big-endian targets, where that would be the wrong half, are told
  // another size.
  Expect("values-m32-dwarf5",
         {{"head->next->v", "2/4", {{"head", 0, 8}, {"n1", 4, 4}, {"n2", 0, 4}}}});
  for (const char* fixture : {"values-powerpc", "values-mips"}) {
    Expect(fixture, {{"head->next->v", "2/4", {{"head", 0, 4}, {"n1", 4, 4}, {"n2", 0, 4}}}});
  }
  for (const char* fixture : {"values-powerpc64", "values-aarch64", "values-x64-high"}) {
    Expect(fixture, {
                        {"si", "-70000/4", {{"si", 0, 4}}},
                        {"*p", "20/4", {{"p", 0, 8}, {"a", 4, 4}}},
                        {"head->next->v", "2/4", {{"head", 0, 8}, {"n1", 8, 8}, {"n2", 0, 4}}},
                    });
  }
}

/// `values` as words of the target.
std::string Words(const targets::ElfProgram& program, const std::vector<std::uint64_t>& values) {
  std::string words;
  const std::uint32_t size = program.PointerSize();
  for (const std::uint64_t value : values) {
    for (std::uint32_t i = 0; i < size; ++i) {
      const std::uint32_t shift = program.Order() == ByteOrder::kBig ? size - 1 - i : i;
      words += static_cast<char>(value >> 8 * shift);
    }
  }
  return words;
}

TEST(RemoteExpressions, FindAProgramWhereItWasLoaded) {
  for (const char* fixture : {"values-x64-pie", "values-m32-pie", "values-powerpc64-pie",
                              "values-mips-pie", "values-arm-pie"}) {
    if (!HasFixture(fixture)) continue;
    const targets::ElfProgram program(FixturePath(fixture));
    const std::uint64_t entry = targets::ElfFile(FixturePath(fixture)).Header().e_entry;
    const std::uint64_t bias = program.PointerSize() == 8 ? 0x555555554000 : 0xf7e00000;
    const std::string vector = Words(program, {AT_PAGESZ, 4096, AT_ENTRY, entry + bias, 0, 0});
    Behind behind(fixture, bias, vector);
    EXPECT_EQ(behind.program->Doubt(), "") << fixture;
    EXPECT_EQ(behind.Evaluate("si"), "-70000/4") << fixture;
    EXPECT_EQ(behind.program->Program().FindLabel("si")->value,
              behind.plain.FindLabel("si")->value + bias)
        << fixture;
    behind.program->Reload();
    EXPECT_EQ(behind.Evaluate("a[3]"), "40/4") << fixture;
  }
}

struct PlaceRow {
  std::string fixture;
  std::vector<std::uint64_t> vector;  ///< none: the stub has none
  std::optional<targets::RemoteStub::Offsets> offsets;
  std::uint64_t bias;
  std::string doubt;  ///< begins like that
};

TEST(RemotePlacement, IsTakenFromWhatIsKnown) {
  const targets::ElfFile pie(FixturePath("values-x64-pie"));
  const targets::ElfFile fixed(FixturePath("values-x64-dwarf5"));
  const std::uint64_t entry = pie.Header().e_entry;
  const std::uint64_t fixedEntry = fixed.Header().e_entry;
  const std::string other = "what runs behind 'board' is not '";
  const std::vector<PlaceRow> rows = {
      {"pie", {AT_ENTRY, entry + 0x5000, 0, 0}, {}, 0x5000, ""},
      {"pie", {AT_PHNUM, pie.Header().e_phnum, AT_ENTRY, entry, 0, 0}, {}, 0, ""},
      {"pie", {AT_PHNUM, 99, AT_ENTRY, entry, 0, 0}, {}, 0, other},
      {"pie", {AT_ENTRY, entry + 0x5008, 0, 0}, {}, 0, other},
      {"pie", {0, 0, AT_ENTRY, entry + 0x5000}, {}, 0, other},
      {"pie", {AT_ENTRY}, {}, 0, other},
      {"pie", {}, {{0x7000, 0x7000}}, 0x7000, ""},
      {"pie",
       {},
       {{0x7000, 0x9000}},
       0x9000,
       "the stub at 'board' has moved the code and the data"},
      {"pie", {}, {}, 0, "the stub at 'board' does not tell where '"},
      {"fixed", {AT_ENTRY, fixedEntry, 0, 0}, {}, 0, ""},
      {"fixed", {AT_ENTRY, fixedEntry + 0x1000, 0, 0}, {}, 0, other},
      {"fixed", {}, {{0, 0}}, 0, ""},
      {"fixed", {}, {}, 0, ""},
  };
  const targets::ElfProgram program(FixturePath("values-x64-pie"));
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const PlaceRow& row = rows[i];
    targets::PlacementFacts facts{std::nullopt, row.offsets};
    if (!row.vector.empty()) facts.auxiliaryVector = Words(program, row.vector);
    const auto place = targets::PlacementOf(row.fixture == "pie" ? pie : fixed, facts, "board");
    EXPECT_EQ(place.loadBias, row.bias) << "row " << i;
    EXPECT_EQ(place.doubt.substr(0, row.doubt.size()), row.doubt) << "row " << i;
    EXPECT_EQ(place.doubt.empty(), row.doubt.empty()) << "row " << i << place.doubt;
  }
}

}  // namespace
}  // namespace targettests

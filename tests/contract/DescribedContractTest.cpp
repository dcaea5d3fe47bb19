#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "contract/LabelContract.h"
#include "contract/MemoryContract.h"
#include "targets/DescribedProgram.h"
#include "targets/MemoryRegions.h"

namespace contract {
namespace {

using targets::LabelKind;
using targets::MemoryGap;
using testing::IsEmpty;

constexpr const char* kDescription = R"toml(
[target]
pointer-size = 8
byte-order = "little"
[typedef]
node_t = "struct node"
[struct.node]
fields = [
  { name = "flag", type = "unsigned int : 3" },
  { name = "text", type = "char [5]" },
  { name = "next", type = "node_t *" },
  { type = "union word" },
  { name = "call", type = "void (*)(int)" },
  { name = "rest", type = "int []" },
]
[union.word]
fields = [{ name = "bits", type = "unsigned" }, { name = "number", type = "float" }]
[struct.hidden]
[enum.colour]
values = { RED = 0, BLUE = -2 }
[constants]
LIMIT = 7
[labels]
nodes = { address = 0x1000, type = "node_t [2][3]" }
secret = { address = 0x2000, type = "struct hidden *" }
entry = { address = 0x3000, type = "int ()" }
end = 0x4000
[[memory]]
address = 0x1000
bytes = "000102030405060708090a0b0c0d0e0f 101112131415161718"
)toml";

TEST(Contract, DescribedProgramsKeepIt) {
  for (const std::uint64_t highest : {std::uint64_t{0}, ~std::uint64_t{0}}) {
    targets::DescribedProgram program(kDescription, "d.toml", highest);
    const KnownLabels known{{{"nodes", LabelKind::kVariable, 0x1000, true, 192},
                             {"secret", LabelKind::kVariable, 0x2000, true, 8},
                             {"entry", LabelKind::kFunction, 0x3000, false, 0},
                             {"end", LabelKind::kSymbol, 0x4000, false, 0},
                             {"LIMIT", LabelKind::kEnumerator, 7, false, 0},
                             {"BLUE", LabelKind::kEnumerator, ~std::uint64_t{1}, false, 0}},
                            {"int", "struct node", "node_t", "enum colour", "struct hidden"}};
    EXPECT_THAT(CheckLabelSource(program, known), IsEmpty());
  }
}

TEST(Contract, MemoryRegionsKeepIt) {
  targets::DescribedProgram program(kDescription, "d.toml");
  KnownMemory known;
  known.address = 0x1000;
  for (int i = 0; i < 25; ++i) known.bytes.push_back(static_cast<std::byte>(i));
  known.end = MemoryGap::kNotThere;
  known.gaps = {{0, MemoryGap::kNotThere}, {0xfff, MemoryGap::kNotThere}};
  EXPECT_THAT(CheckMemorySource(program.Memory(), known), IsEmpty());
  // The same bytes, put together from what lies below and two regions.
  targets::MemoryRegions above(8);
  for (const std::uint64_t start : {3U, 10U}) {
    targets::MemoryRegion region;
    region.address = 0x1000 + start;
    region.size = 4;
    region.bytes.assign(known.bytes.begin() + static_cast<std::ptrdiff_t>(start),
                        known.bytes.begin() + static_cast<std::ptrdiff_t>(start) + 4);
    above.Add(std::move(region));
  }
  above.SetBelow(&program.Memory());
  EXPECT_THAT(CheckMemorySource(above, known), IsEmpty());
}

}  // namespace
}  // namespace contract

#include <elf.h>
#include <gtest/gtest.h>

#include "targets/CoreMemory.h"
#include "targets/LinkMap.h"
#include "tests/targets/CoreBuilder.h"

namespace targettests {
namespace {

using targets::LoadedFile;

struct Entry {
  std::uint64_t dynamicSection;
  std::uint64_t next;
};

/// The libraries' order by a list of `entries`, the n-th of which lies at 0x3000 + 0x100 * n.
std::string Order(const CoreBuilder::Kind& kind, const std::vector<Entry>& entries,
                  std::uint64_t debugStructure = 0x2000) {
  CoreBuilder builder(kind);
  builder.Add(0x1000, builder.Word(DT_NEEDED) + builder.Word(1) + builder.Word(DT_DEBUG) +
                          builder.Word(debugStructure) + builder.Word(DT_NULL) + builder.Word(0));
  builder.Add(0x2000, builder.Word(1) + builder.Word(0x3000));
  std::uint64_t address = 0x3000;
  for (const Entry& entry : entries) {
    builder.Add(address, builder.Word(0) + builder.Word(0) + builder.Word(entry.dynamicSection) +
                             builder.Word(entry.next) + builder.Word(0));
    address += 0x100;
  }
  const TestFolder folder;
  const targets::ElfFile file(folder.Write("core", builder.Bytes()),
                              targets::ElfFile::Use::kCoreDump);
  targets::CoreMemory memory(file, {});
  std::vector<LoadedFile> libraries;
  for (const std::uint64_t section : {0xAU, 0xBU, 0xCU}) {
    libraries.push_back({.path = std::string(1, static_cast<char>('a' + section - 0xA)),
                         .dynamicSection = section});
  }
  OrderAsLinked({.path = "program", .dynamicSection = 0x1000}, kind.pointerSize, kind.order, memory,
                &libraries);
  std::string order;
  for (const LoadedFile& library : libraries) order += library.path;
  return order;
}

TEST(LinkMap, OrdersTheLibraries) {
  for (const CoreBuilder::Kind& kind :
       {CoreBuilder::X64(), CoreBuilder::X86(), CoreBuilder::PowerPc()}) {
    EXPECT_EQ(Order(kind, {{0x1000, 0x3100}, {0xC, 0x3200}, {0xA, 0x3300}, {0xB, 0}}), "cab");
    EXPECT_EQ(Order(kind, {{0x1000, 0x3100}, {0xB, 0}}), "bac");
    // Lists that end nowhere, go in circles, or are not there.
    EXPECT_EQ(Order(kind, {{0x1000, 0x3100}, {0xB, 0x9999}}), "bac");
    EXPECT_EQ(Order(kind, {{0x1000, 0x3100}, {0xC, 0x3000}}), "cab");
    EXPECT_EQ(Order(kind, {}), "abc");
    EXPECT_EQ(Order(kind, {{0xC, 0}}, 0), "abc");
  }
}

}  // namespace
}  // namespace targettests

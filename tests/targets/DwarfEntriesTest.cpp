// Entries by their abbreviations, beside libdw's walk over the same ones: in every program that the
// tests have, of all versions, sizes and byte orders, and in damaged copies of one.

#include "targets/DwarfEntries.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "targets/DwarfUnits.h"
#include "tests/targets/ProgramUnderTest.h"

namespace targettests {
namespace {

using targets::Damage;
using targets::DieAddress;
using targets::DwarfEntries;
using targets::DwarfFile;
using targets::DwarfUnits;
using targets::ElfFile;
using targets::Error;

bool IsWanted(unsigned int name) {
  return name == DW_AT_name || name == DW_AT_external || name == DW_AT_declaration ||
         name == DW_AT_location || name == DW_AT_specification || name == DW_AT_type;
}

int AddAttribute(Dwarf_Attribute* attribute, void* all) {
  if (IsWanted(attribute->code)) {
    static_cast<std::vector<Dwarf_Attribute>*>(all)->push_back(*attribute);
  }
  return DWARF_CB_OK;
}

/// As `DwarfEntries`, with libdw alone.
class PlainEntries {
 public:
  explicit PlainEntries(const DwarfFile& file) : file_(file) {}
  std::optional<Dwarf_Die> Child(const Dwarf_Die& die) { return file_.Child(die); }
  std::optional<Dwarf_Die> Sibling(const Dwarf_Die& die) { return file_.Sibling(die); }
  int Tag(const Dwarf_Die& die) { return file_.Tag(die); }
  static bool HasChildren(const Dwarf_Die& die) {
    Dwarf_Die copy = die;
    return dwarf_haschildren(&copy) > 0;
  }
  template <typename Visit>
  void VisitAttributes(const Dwarf_Die& die, Visit visit) {
    DwarfFile::ForgetErrors();
    Dwarf_Die copy = die;
    std::vector<Dwarf_Attribute> attributes;
    if (dwarf_getattrs(&copy, AddAttribute, &attributes, 0) == -1) {
      file_.Broken(die, dwarf_errmsg(-1));
    }
    for (Dwarf_Attribute& attribute : attributes) visit(attribute);
  }

 private:
  const DwarfFile& file_;
};

/// Everything that a walk over a unit meets, a line each, and what ends it.
template <typename Entries>
std::vector<std::string> Walk(Entries* entries, const Dwarf_Die& root) {
  std::vector<std::string> lines;
  try {
    std::vector<Dwarf_Die> levels;
    std::optional<Dwarf_Die> die = entries->Child(root);
    // Damage can make a walk long, and nesting deep.
    while ((die || !levels.empty()) && lines.size() < 100'000) {
      if (!die) {
        die = entries->Sibling(levels.back());
        levels.pop_back();
        continue;
      }
      Dwarf_Die copy = *die;
      std::string line = std::to_string(dwarf_dieoffset(&copy));
      line += " tag " + std::to_string(entries->Tag(*die));
      entries->VisitAttributes(*die, [&line](Dwarf_Attribute& attribute) {
        line += " " + std::to_string(attribute.code) + ":" + std::to_string(attribute.form);
        const char* const text =
            attribute.code == DW_AT_name ? dwarf_formstring(&attribute) : nullptr;
        if (text != nullptr) line += std::string("=") + text;
        Dwarf_Block block{};
        if (attribute.code == DW_AT_location && dwarf_formblock(&attribute, &block) == 0) {
          line += "=" + std::to_string(block.length);
        }
      });
      lines.push_back(line);
      if (levels.size() < 300 && entries->HasChildren(*die)) {
        levels.push_back(*die);
        die = entries->Child(*die);
      } else {
        die = entries->Sibling(*die);
      }
    }
  } catch (const Error& error) {
    lines.emplace_back(error.what());
  }
  return lines;
}

/// The number of entries in the file, each of which is the same for both.
std::size_t Compare(const std::string& path) {
  std::size_t count = 0;
  try {
    const ElfFile elf(path);
    const DwarfFile file(elf, "");
    if (!file.Any()) return 0;
    Damage damage;
    const DwarfUnits units(file, &damage);
    for (std::uint32_t unit = 0; unit < units.Count(); ++unit) {
      const Dwarf_Die root = units.At(unit).root;
      DwarfEntries entries(file, root, units.At(unit).end, IsWanted);
      PlainEntries plain(file);
      const std::vector<std::string> expected = Walk(&plain, root);
      const std::vector<std::string> got = Walk(&entries, root);
      const auto [wanted, had] =
          std::mismatch(expected.begin(), expected.end(), got.begin(), got.end());
      EXPECT_TRUE(wanted == expected.end() && had == got.end())
          << path << ", unit " << unit << ": libdw "
          << (wanted == expected.end() ? "ends" : *wanted) << ", here "
          << (had == got.end() ? "ends" : *had);
      count += expected.size();
    }
  } catch (const Error&) {
    // No debug information, or none that can be opened: there is nothing to walk over.
  }
  return count;
}

TEST(DwarfEntries, AreThoseOfLibdwInEveryProgram) {
  std::size_t programs = 0;
  std::size_t entries = 0;
  const std::filesystem::path folder = std::filesystem::path(FixturePath("strange")).parent_path();
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    const std::size_t count = Compare(entry.path().string());
    entries += count;
    programs += count == 0 ? 0 : 1;
  }
  EXPECT_GT(programs, 20U);
  EXPECT_GT(entries, 5'000U);
}

/// Where the sections of these names lie in the file, as one range.
std::pair<std::size_t, std::size_t> PlaceOf(const std::string& path, const std::string& bytes,
                                            const std::vector<const char*>& sections) {
  const ElfFile elf(path);
  std::size_t first = bytes.size();
  std::size_t last = 0;
  for (const char* name : sections) {
    const auto section = elf.SectionBytes(name);
    const std::size_t at =
        bytes.find(std::string(reinterpret_cast<const char*>(section.data()), section.size()));
    if (at == std::string::npos) continue;
    first = std::min(first, at);
    last = std::max(last, at + section.size());
  }
  return {first, last};
}

TEST(DwarfEntries, AreThoseOfLibdwInDamagedPrograms) {
  std::mt19937 random(1);
  for (const char* fixture :
       {"strange", "classes", "bits-x64-dwarf2", "values-m32-dwarf4", "values-m32-dwarf5"}) {
    std::ifstream in(FixturePath(fixture), std::ios::binary);
    const std::string bytes(std::istreambuf_iterator<char>(in), {});
    const auto [first, last] =
        PlaceOf(FixturePath(fixture), bytes, {".debug_info", ".debug_abbrev"});
    ASSERT_LT(first, last) << fixture;
    const std::string path = FixturePath(fixture) + "-damaged";
    for (int copy = 0; copy < 200; ++copy) {
      std::string damaged = bytes;
      for (int i = 0; i < 3; ++i) {
        damaged[first + random() % (last - first)] = static_cast<char>(random());
      }
      std::ofstream(path, std::ios::binary) << damaged;
      Compare(path);
      // The file tells what went wrong.
      ASSERT_FALSE(::testing::Test::HasFailure());
    }
    std::filesystem::remove(path);
  }
}

}  // namespace
}  // namespace targettests

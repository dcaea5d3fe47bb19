#include "targets/DwarfUnits.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <set>
#include <system_error>

#include "targets/Texts.h"

namespace targets {
namespace {

constexpr std::size_t kFewFiles = 10;

std::string Lower(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return lower;
}

/// Is `part` all of `path`, or the end of it after a slash?
bool IsTrailingPart(std::string_view path, std::string_view part) {
  if (!path.ends_with(part)) return false;
  return path.size() == part.size() || path[path.size() - part.size() - 1] == '/';
}

/// The file that a skeleton unit leaves its entries to.
std::string SplitFile(const DwarfFile& file, const Dwarf_Die& skeleton) {
  for (const unsigned int name : {DW_AT_dwo_name, DW_AT_GNU_dwo_name}) {
    std::optional<Dwarf_Attribute> attribute = file.Attribute(skeleton, name);
    const char* const text = attribute ? dwarf_formstring(&*attribute) : nullptr;
    if (text != nullptr) return text;
  }
  return "";
}

/// Throws when one of the places where libdw looks for the file holds something else, such as a
/// pipe: libdw would open it and wait.
void CheckSplitFile(const DwarfFile& file, const Dwarf_Die& skeleton, const std::string& name) {
  namespace fs = std::filesystem;
  std::error_code error;
  const fs::path folder = fs::canonical(file.Path(), error).parent_path();
  std::vector<fs::path> places{folder / name};
  if (std::optional<Dwarf_Attribute> directory = file.Attribute(skeleton, DW_AT_comp_dir)) {
    if (const char* const text = dwarf_formstring(&*directory)) {
      places.push_back(folder / text / name);
    }
  }
  for (const fs::path& place : places) {
    const fs::file_status status = fs::status(place, error);
    if (!fs::exists(status) || fs::is_regular_file(status)) continue;
    throw Error(ErrorCode::kNoNames, "part of the debug information of '" + file.Path() +
                                         "' lies in '" + place.string() +
                                         "', which is not a regular file");
  }
}

DieAddress EndOf(const Dwarf_Die& root) {
  Dwarf_Die die = root;
  const Dwarf_Off offset = dwarf_dieoffset(&die);
  const Dwarf_Off start = offset - dwarf_cuoffset(&die);
  Dwarf_Off next = 0;
  std::size_t headerSize = 0;
  Dwarf* const dwarf = dwarf_cu_getdwarf(die.cu);
  if (dwarf_nextcu(dwarf, start, &next, &headerSize, nullptr, nullptr, nullptr) != 0)
    return nullptr;
  // Type units of DWARF 4 lie in a section of their own, where this offset belongs to another unit.
  Dwarf_Die same{};
  if (dwarf_offdie(dwarf, offset, &same) == nullptr || same.addr != die.addr) return nullptr;
  return next <= offset ? nullptr : static_cast<const char*>(die.addr) + (next - offset);
}

}  // namespace

DwarfUnits::DwarfUnits(const DwarfFile& file, Damage* damage) : file_(file) {
  if (!file.Any()) return;
  Dwarf_CU* unit = nullptr;
  while (true) {
    DwarfFile::ForgetErrors();
    Dwarf_CU* next = nullptr;
    Dwarf_Half version = 0;
    std::uint8_t type = 0;
    Dwarf_Die root{};
    const int outcome =
        dwarf_get_units(file.Handle(), unit, &next, &version, &type, &root, nullptr);
    if (outcome > 0) return;
    try {
      if (outcome < 0) {
        const Dwarf_Die last = units_.empty() ? Dwarf_Die{} : units_.back().root;
        const std::string what = std::string("the unit after this one: ") + dwarf_errmsg(-1);
        if (last.addr == nullptr) file.BrokenAt(0, dwarf_errmsg(-1));
        file.Broken(last, what);
      }
      unit = next;
      if (type != DW_UT_skeleton) {
        Add(root, root);
      } else {
        AddSplit(root);
      }
    } catch (const Error& error) {
      if (!*damage) *damage = error;
      if (outcome < 0) return;
    }
  }
}

void DwarfUnits::AddSplit(const Dwarf_Die& skeleton) {
  const std::string name = SplitFile(file_, skeleton);
  CheckSplitFile(file_, skeleton, name);
  Dwarf_Die split{};
  dwarf_cu_info(skeleton.cu, nullptr, nullptr, nullptr, &split, nullptr, nullptr, nullptr);
  if (split.addr == nullptr) {
    throw Error(ErrorCode::kNoNames,
                "part of the debug information of '" + file_.Path() + "' lies in " +
                    (name.empty() ? "a .dwo file" : "'" + name + "'") + ", which is not there");
  }
  Add(split, skeleton);
}

void DwarfUnits::Add(const Dwarf_Die& root, const Dwarf_Die& named) {
  DwarfUnit unit;
  unit.root = root;
  unit.end = EndOf(root);
  if (file_.Tag(root) == DW_TAG_compile_unit) {
    unit.name = file_.Name(root);
    if (unit.name.empty()) unit.name = file_.Name(named);
    if (auto directory = file_.Attribute(named, DW_AT_comp_dir)) {
      if (const char* const text = dwarf_formstring(&*directory)) unit.directory = text;
    }
  }
  unit.language = file_.Unsigned(root, DW_AT_language).value_or(0);
  numbers_.emplace(root.cu, Count());
  units_.push_back(unit);
}

std::uint32_t DwarfUnits::NumberOf(const Dwarf_Die& die, std::uint32_t otherwise) const {
  const auto found = numbers_.find(die.cu);
  return found == numbers_.end() ? otherwise : found->second;
}

bool DwarfUnits::IsAssembly(std::uint32_t number) const {
  return units_[number].language == DW_LANG_Mips_Assembler;
}

bool DwarfUnits::TagsAreTypes(std::uint32_t number) const {
  switch (units_[number].language) {
    case 0:
    case DW_LANG_C89:
    case DW_LANG_C:
    case DW_LANG_C99:
    case DW_LANG_C11:
    case DW_LANG_ObjC:
    case DW_LANG_Mips_Assembler:
      return false;
    default:
      return true;
  }
}

std::optional<std::uint32_t> DwarfUnits::Current() const {
  for (std::uint32_t n = 0; n < Count(); ++n) {
    if (units_[n].current) return n;
  }
  return std::nullopt;
}

std::optional<std::uint32_t> DwarfUnits::FirstSource() const {
  for (std::uint32_t n = 0; n < Count(); ++n) {
    if (!units_[n].name.empty()) return n;
  }
  return std::nullopt;
}

void DwarfUnits::MakeCurrent(std::uint32_t number) {
  const std::string path = FullPath(units_[number]);
  for (DwarfUnit& unit : units_) unit.current = !unit.name.empty() && FullPath(unit) == path;
}

void DwarfUnits::MakeCurrent(const std::string& name) {
  std::optional<std::uint32_t> found;
  std::set<std::string> paths;
  for (std::uint32_t n = 0; n < Count(); ++n) {
    const DwarfUnit& unit = units_[n];
    if (unit.name.empty() || name.empty()) continue;
    if (!IsTrailingPart(FullPath(unit), name) && !IsTrailingPart(unit.name, name)) continue;
    paths.insert(FullPath(unit));
    if (!found) found = n;
  }
  if (!found) {
    throw Error(ErrorCode::kFileUnusable, "the program '" + file_.Path() +
                                              "' has no source file '" + name + "'" +
                                              SimilarFiles(name));
  }
  // A name that is one whole path is meant as that path, whatever else ends like it.
  if (paths.size() > 1 && paths.count(name) == 0) {
    throw Error(ErrorCode::kAmbiguous,
                "'" + name + "' may be " +
                    Enumerated(std::vector<std::string>(paths.begin(), paths.end())));
  }
  for (DwarfUnit& unit : units_) {
    unit.current =
        !unit.name.empty() && FullPath(unit) == (paths.size() > 1 ? name : *paths.begin());
  }
}

std::vector<std::string> DwarfUnits::SourceFiles() const {
  std::set<std::string> names;
  for (const DwarfUnit& unit : units_) {
    if (!unit.name.empty()) names.emplace(unit.name);
  }
  return {names.begin(), names.end()};
}

std::string DwarfUnits::FullPath(const DwarfUnit& unit) const {
  if (unit.directory.empty() || unit.name.starts_with('/')) return std::string(unit.name);
  std::string path(unit.directory);
  if (path.back() != '/') path += '/';
  std::string_view name = unit.name;
  while (name.starts_with("./")) name.remove_prefix(2);
  return path.append(name);
}

std::string DwarfUnits::SimilarFiles(const std::string& name) const {
  std::vector<std::string> files = SourceFiles();
  if (files.empty()) return "";
  const std::size_t count = files.size();
  if (count > kFewFiles) {
    const std::string wanted = Lower(BaseName(name));
    const std::string stem = wanted.substr(0, wanted.rfind('.'));
    std::erase_if(files, [&](const std::string& file) {
      return stem.empty() || Lower(BaseName(file)).find(stem) == std::string::npos;
    });
    if (files.empty() || files.size() > kFewFiles) {
      return ", among " + std::to_string(count) + " source files";
    }
    return "; similar ones are " + Enumerated(files);
  }
  return "; it has " + Enumerated(files);
}

}  // namespace targets

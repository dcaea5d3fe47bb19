#include "targets/DwarfUnits.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <functional>
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

namespace fs = std::filesystem;

[[noreturn]] void SplitFailed(const DwarfFile& file, const std::string& name,
                              const std::string& what) {
  throw Error(ErrorCode::kNoNames, "part of the debug information of '" + file.Path() +
                                       "' lies in " +
                                       (name.empty() ? "a .dwo file" : "'" + name + "'") + what);
}

/// The files among the places where libdw looks for the file. Throws when one of these holds
/// something else, such as a pipe: libdw would open it and wait.
std::vector<std::string> SplitFiles(const DwarfFile& file, const Dwarf_Die& skeleton,
                                    const std::string& name) {
  std::error_code error;
  const fs::path folder = fs::canonical(file.Path(), error).parent_path();
  std::vector<fs::path> places{folder / name};
  if (std::optional<Dwarf_Attribute> directory = file.Attribute(skeleton, DW_AT_comp_dir)) {
    if (const char* const text = dwarf_formstring(&*directory)) {
      places.push_back(folder / text / name);
    }
  }
  std::vector<std::string> files;
  for (const fs::path& place : places) {
    const fs::file_status status = fs::status(place, error);
    if (!fs::exists(status)) continue;
    if (!fs::is_regular_file(status)) {
      SplitFailed(file, place.string(), ", which is not a regular file");
    }
    files.push_back(place.string());
  }
  return files;
}

/// Throws with the reason why libdw did not use any of `files`.
[[noreturn]] void ExplainSplit(const DwarfFile& file, const std::string& name,
                               const std::vector<std::string>& files) {
  if (files.empty()) SplitFailed(file, name, ", which is not there");
  try {
    const ElfFile split(files.front(), ElfFile::Use::kDebugInformation);
    CheckCompression(split.Handle(), split.Path());
  } catch (const Error& error) {
    SplitFailed(file, name, std::string(", but ") + error.what());
  }
  SplitFailed(file, name, ", but what is there does not fit");
}

/// In C, a tag names a type only behind its keyword; in C++ and most others it does by itself.
bool TagsAreTypesIn(std::uint64_t language) {
  switch (language) {
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

bool IsPartial(const Dwarf_Die& root) {
  Dwarf_Die copy = root;
  return dwarf_tag(&copy) == DW_TAG_partial_unit;
}

/// The section around `address` as it is in memory; empty when libdw keeps its bytes elsewhere.
std::string_view SectionAround(Elf* elf, DieAddress address) {
  const char* const at = static_cast<const char*>(address);
  for (Elf_Scn* section = elf_nextscn(elf, nullptr); section != nullptr;
       section = elf_nextscn(elf, section)) {
    const Elf_Data* const data = elf_rawdata(section, nullptr);
    if (data == nullptr || data->d_buf == nullptr) continue;
    const std::string_view bytes(static_cast<const char*>(data->d_buf), data->d_size);
    if (std::less_equal<>()(bytes.data(), at) && std::less<>()(at, bytes.data() + bytes.size())) {
      return bytes;
    }
  }
  return {};
}

/// `*section` is the section of the unit before, and becomes that of this one.
DieAddress EndOf(const Dwarf_Die& root, std::string_view* section) {
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
  const char* const at = static_cast<const char*>(die.addr);
  const auto holdsUnit = [&] {
    return std::less_equal<>()(section->data(), at) &&
           std::less<>()(at, section->data() + section->size());
  };
  if (!holdsUnit()) *section = SectionAround(dwarf_getelf(dwarf), at);
  if (!holdsUnit() || next <= offset) return nullptr;
  // A damaged unit may say that it goes on behind its section.
  const auto left = static_cast<Dwarf_Off>(section->data() + section->size() - at);
  return at + std::min(next - offset, left);
}

}  // namespace

DwarfUnits::DwarfUnits(const DwarfFile& file, Damage* damage) : file_(file) {
  if (!file.Any()) return;
  ReadUnits(damage);
  const bool divided =
      file.IsShared() ||
      std::any_of(units_.begin(), units_.end(), [&](auto& unit) { return IsPartial(unit.root); });
  // Most programs are spared the walk.
  if (divided) FollowImports(damage);
}

void DwarfUnits::ReadUnits(Damage* damage) {
  Dwarf_CU* unit = nullptr;
  while (true) {
    DwarfFile::ForgetErrors();
    Dwarf_CU* next = nullptr;
    Dwarf_Half version = 0;
    std::uint8_t type = 0;
    Dwarf_Die root{};
    const int outcome =
        dwarf_get_units(file_.Handle(), unit, &next, &version, &type, &root, nullptr);
    if (outcome > 0) return;
    try {
      if (outcome < 0) {
        const Dwarf_Die last = units_.empty() ? Dwarf_Die{} : units_.back().root;
        const std::string what = std::string("the unit after this one: ") + dwarf_errmsg(-1);
        if (last.addr == nullptr) file_.BrokenAt(0, dwarf_errmsg(-1));
        file_.Broken(last, what);
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
  const std::vector<std::string> files = SplitFiles(file_, skeleton, name);
  Dwarf_Die split{};
  dwarf_cu_info(skeleton.cu, nullptr, nullptr, nullptr, &split, nullptr, nullptr, nullptr);
  if (split.addr == nullptr) ExplainSplit(file_, name, files);
  CheckCompression(dwarf_getelf(dwarf_cu_getdwarf(split.cu)), name);
  Add(split, skeleton);
}

void DwarfUnits::Add(const Dwarf_Die& root, const Dwarf_Die& named) {
  DwarfUnit unit;
  unit.root = root;
  unit.end = EndOf(root, &section_);
  if (file_.Tag(root) == DW_TAG_compile_unit) {
    unit.name = file_.Name(root);
    if (unit.name.empty()) unit.name = file_.Name(named);
    if (auto directory = file_.Attribute(named, DW_AT_comp_dir)) {
      if (const char* const text = dwarf_formstring(&*directory)) unit.directory = text;
    }
  }
  unit.source = unit.name;
  unit.language = file_.Unsigned(root, DW_AT_language).value_or(0);
  unit.tagsAreTypes = TagsAreTypesIn(unit.language);
  numbers_.emplace(root.cu, Count());
  units_.push_back(unit);
}

void DwarfUnits::FollowImports(Damage* damage) {
  for (std::uint32_t n = 0; n < Count(); ++n) {
    try {
      ReadImports(n);
    } catch (const Error& error) {
      if (!*damage) *damage = error;
    }
  }
  const std::vector<std::uint32_t> order = ImportedFirst();
  std::vector<std::uint32_t> places(order.size());
  for (std::uint32_t n = 0; n < Count(); ++n) places[order[n]] = n;
  std::vector<DwarfUnit> ordered;
  ordered.reserve(order.size());
  for (const std::uint32_t number : order) ordered.push_back(std::move(units_[number]));
  units_ = std::move(ordered);
  for (DwarfUnit& unit : units_) {
    for (std::uint32_t& number : unit.imports) number = places[number];
  }
  for (auto& [unit, number] : numbers_) number = places[number];
  PassToImports(&DwarfUnit::tagsAreTypes);
  PassToImports(&DwarfUnit::source);
}

/// Adds the units that this one imports from another file.
void DwarfUnits::ReadImports(std::uint32_t number) {
  for (auto die = file_.Child(units_[number].root); die; die = file_.Sibling(*die)) {
    if (file_.Tag(*die) != DW_TAG_imported_unit) continue;
    const std::optional<Dwarf_Attribute> attribute = file_.Attribute(*die, DW_AT_import);
    if (!attribute) continue;
    const Dwarf_Die imported = file_.Reference(*die, *attribute);
    // Link-time optimization imports whole source files, which stay what they are.
    if (!IsPartial(imported)) continue;
    if (numbers_.count(imported.cu) == 0) Add(imported, imported);
    units_[number].imports.push_back(numbers_.at(imported.cu));
  }
}

std::vector<std::uint32_t> DwarfUnits::ImportedFirst() const {
  struct Step {
    std::uint32_t unit = 0;
    std::size_t next = 0;
  };
  std::vector<bool> isImported(units_.size());
  for (const DwarfUnit& unit : units_) {
    for (const std::uint32_t number : unit.imports) isImported[number] = true;
  }
  std::vector<bool> seen(units_.size());
  std::vector<std::uint32_t> order;
  std::vector<Step> path;
  // Units that import each other in a circle are left for the second time.
  for (const bool all : {false, true}) {
    for (std::uint32_t n = 0; n < Count(); ++n) {
      if (seen[n] || (isImported[n] && !all)) continue;
      seen[n] = true;
      path.push_back({n, 0});
      while (!path.empty()) {
        Step& step = path.back();
        if (step.next == units_[step.unit].imports.size()) {
          order.push_back(step.unit);
          path.pop_back();
          continue;
        }
        const std::uint32_t number = units_[step.unit].imports[step.next++];
        if (seen[number]) continue;
        seen[number] = true;
        path.push_back({number, 0});
      }
    }
  }
  return order;
}

/// Gives what a unit has to those that it imports, and to theirs, unless they have it already.
template <typename Value>
void DwarfUnits::PassToImports(Value DwarfUnit::*member) {
  const Value none{};
  std::vector<std::uint32_t> pending;
  for (std::uint32_t n = 0; n < Count(); ++n) {
    if (units_[n].*member != none) pending.push_back(n);
  }
  for (std::size_t i = 0; i < pending.size(); ++i) {
    const DwarfUnit& from = units_[pending[i]];
    for (const std::uint32_t number : from.imports) {
      if (units_[number].*member != none) continue;
      units_[number].*member = from.*member;
      pending.push_back(number);
    }
  }
}

std::uint32_t DwarfUnits::NumberOf(const Dwarf_Die& die, std::uint32_t otherwise) const {
  const auto found = numbers_.find(die.cu);
  return found == numbers_.end() ? otherwise : found->second;
}

bool DwarfUnits::IsAssembly(std::uint32_t number) const {
  return units_[number].language == DW_LANG_Mips_Assembler;
}

std::optional<std::uint32_t> DwarfUnits::Current() const {
  for (std::uint32_t n = 0; n < Count(); ++n) {
    if (units_[n].current && !units_[n].name.empty()) return n;
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
  PassToImports(&DwarfUnit::current);
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
  PassToImports(&DwarfUnit::current);
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

#include "targets/DwarfFile.h"

#include <algorithm>
#include <array>

#include "targets/Error.h"
#include "targets/SeparateDebug.h"
#include "targets/Texts.h"

namespace targets {
namespace {

constexpr std::array<std::string_view, 7> kNeededSections{
    ".debug_info",     ".debug_types", ".debug_abbrev",     ".debug_str",
    ".debug_line_str", ".debug_addr",  ".debug_str_offsets"};

/// Is it one of these, or its counterpart in a file of split debug information?
bool IsNeeded(std::string_view section) {
  if (section.ends_with(".dwo")) section.remove_suffix(4);
  return std::find(kNeededSections.begin(), kNeededSections.end(), section) !=
         kNeededSections.end();
}

/// libdw looks the abbreviation of an entry up at the first question about it and keeps it in the
/// entry. Asked here, every copy has it: walking a large program takes a third less time.
void RememberAbbreviation(Dwarf_Die* die) {
  static_cast<void>(dwarf_tag(die));
}

std::string MethodText(std::uint32_t method) {
  // Some headers do not define it yet.
  constexpr std::uint32_t kZstandard = 2;
  if (method == ELFCOMPRESS_ZLIB) return "with zlib, and damaged";
  return (method == kZstandard ? "with zstd" : "by method " + std::to_string(method)) +
         ", which this build cannot read";
}

[[noreturn]] void ThrowBroken(const std::string& path, std::uint64_t offset,
                              const std::string& what) {
  throw Error(ErrorCode::kBrokenInfo, "broken debug information in '" + path + "' at offset " +
                                          Hexadecimal(offset) + ": " + what);
}

}  // namespace

// libdw takes entries and attributes by pointer to non-const though it only reads them: hence the
// copies below, of 32 bytes each.

DwarfFile::DwarfFile(const ElfFile& file, const std::string& debugFolder) : file_(file) {
  ForgetErrors();
  dwarf_.reset(dwarf_begin_elf(file.Handle(), DWARF_C_READ, nullptr));
  const int error = dwarf_errno();
  CheckCompression(file.Handle(), Path());
  if (dwarf_ != nullptr) {
    // Left to itself, libdw would open whatever the file names, and wait if that is a pipe.
    sharedFile_ = FindSharedDebug(file, debugFolder);
    if (sharedFile_ == nullptr) return;
    shared_.reset(dwarf_begin_elf(sharedFile_->Handle(), DWARF_C_READ, nullptr));
    CheckCompression(sharedFile_->Handle(), sharedFile_->Path());
    if (shared_ == nullptr) {
      throw Error(ErrorCode::kFileUnusable, "the debug information of '" + sharedFile_->Path() +
                                                "' cannot be read: " + dwarf_errmsg(-1));
    }
    dwarf_setalt(dwarf_.get(), shared_.get());
    return;
  }
  if (!file.HasSection(".debug_info") && !file.HasSection(".zdebug_info")) return;
  throw Error(ErrorCode::kBrokenInfo,
              "the debug information of '" + Path() + "' cannot be read: " + dwarf_errmsg(error));
}

void DwarfFile::BrokenAt(std::uint64_t offset, const std::string& what) const {
  ThrowBroken(Path(), offset, what);
}

void DwarfFile::Broken(const Dwarf_Die& die, const std::string& what) const {
  Dwarf_Die copy = die;
  const bool isShared =
      die.cu != nullptr && IsShared() && dwarf_cu_getdwarf(die.cu) == shared_.get();
  ThrowBroken(isShared ? sharedFile_->Path() : Path(), dwarf_dieoffset(&copy), what);
}

void DwarfFile::Check(const Dwarf_Die& die) const {
  if (const int error = dwarf_errno(); error != 0) Broken(die, dwarf_errmsg(error));
}

Dwarf_Die DwarfFile::At(DieAddress address) const {
  ForgetErrors();
  Dwarf_Die die{};
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast): libdw's signature; it only reads.
  void* const at = const_cast<void*>(address);
  if (dwarf_die_addr_die(dwarf_.get(), at, &die) != nullptr) return die;
  // libdw looks there for what an attribute refers to, but not for an address.
  if (IsShared() && dwarf_die_addr_die(shared_.get(), at, &die) != nullptr) return die;
  BrokenAt(0, dwarf_errmsg(-1));
}

std::optional<Dwarf_Die> DwarfFile::Child(const Dwarf_Die& die) const {
  ForgetErrors();
  Dwarf_Die from = die;
  Dwarf_Die child{};
  const int outcome = dwarf_child(&from, &child);
  if (outcome < 0) Broken(die, dwarf_errmsg(-1));
  if (outcome > 0) return std::nullopt;
  RememberAbbreviation(&child);
  return child;
}

std::optional<Dwarf_Die> DwarfFile::Sibling(const Dwarf_Die& die) const {
  ForgetErrors();
  Dwarf_Die from = die;
  Dwarf_Die next{};
  const int outcome = dwarf_siblingof(&from, &next);
  if (outcome < 0) Broken(die, dwarf_errmsg(-1));
  if (outcome > 0) return std::nullopt;
  if (next.addr <= die.addr) Broken(die, "the next entry lies before this one");
  RememberAbbreviation(&next);
  return next;
}

void DwarfFile::CheckReachesEnd(const Dwarf_Die& last, DieAddress end) const {
  Dwarf_Die from = last;
  Dwarf_Die terminator{};
  if (end == nullptr || dwarf_siblingof(&from, &terminator) != 1 || terminator.addr == nullptr) {
    return;
  }
  // Zeros may follow the one that ends the list.
  const char* at = static_cast<const char*>(terminator.addr);
  while (at < end && *at == 0) ++at;
  if (at < end) Broken(last, "the entries after this one end before their unit does");
}

int DwarfFile::Tag(const Dwarf_Die& die) const {
  Dwarf_Die copy = die;
  const int tag = dwarf_tag(&copy);
  if (tag == DW_TAG_invalid) Broken(die, "the entry's kind is not defined");
  return tag;
}

std::optional<Dwarf_Attribute> DwarfFile::Attribute(const Dwarf_Die& die, unsigned int name) const {
  ForgetErrors();
  Dwarf_Die copy = die;
  Dwarf_Attribute attribute{};
  if (dwarf_attr(&copy, name, &attribute) != nullptr) return attribute;
  Check(die);
  return std::nullopt;
}

std::optional<Dwarf_Attribute> DwarfFile::InheritedAttribute(const Dwarf_Die& die,
                                                             unsigned int name) const {
  ForgetErrors();
  Dwarf_Die copy = die;
  Dwarf_Attribute attribute{};
  if (dwarf_attr_integrate(&copy, name, &attribute) != nullptr) return attribute;
  Check(die);
  return std::nullopt;
}

std::string_view DwarfFile::Name(const Dwarf_Die& die) const {
  std::optional<Dwarf_Attribute> attribute = InheritedAttribute(die, DW_AT_name);
  if (!attribute) return {};
  const char* const name = dwarf_formstring(&*attribute);
  if (name == nullptr) Broken(die, dwarf_errmsg(-1));
  return name;
}

bool DwarfFile::Flag(const Dwarf_Die& die, unsigned int name) const {
  std::optional<Dwarf_Attribute> attribute = InheritedAttribute(die, name);
  if (!attribute) return false;
  bool flag = false;
  if (dwarf_formflag(&*attribute, &flag) != 0) Broken(die, dwarf_errmsg(-1));
  return flag;
}

std::optional<std::uint64_t> DwarfFile::Unsigned(const Dwarf_Die& die, unsigned int name) const {
  const std::optional<Dwarf_Attribute> attribute = Attribute(die, name);
  if (!attribute) return std::nullopt;
  const std::optional<DwarfConstant> constant = ReadConstant(*attribute);
  if (!constant) return std::nullopt;
  return constant->value;
}

Dwarf_Die DwarfFile::Reference(const Dwarf_Die& die, Dwarf_Attribute attribute) const {
  ForgetErrors();
  Dwarf_Die target{};
  if (dwarf_formref_die(&attribute, &target) == nullptr) Broken(die, dwarf_errmsg(-1));
  return target;
}

std::optional<Dwarf_Die> DwarfFile::TypeOf(const Dwarf_Die& die) const {
  const std::optional<Dwarf_Attribute> attribute = InheritedAttribute(die, DW_AT_type);
  if (!attribute) return std::nullopt;
  return Reference(die, *attribute);
}

void CheckCompression(Elf* elf, const std::string& path) {
  std::size_t names = 0;
  if (elf_getshdrstrndx(elf, &names) != 0) return;
  for (Elf_Scn* section = elf_nextscn(elf, nullptr); section != nullptr;
       section = elf_nextscn(elf, section)) {
    GElf_Shdr header{};
    // What libdw has decompressed by now does not count as compressed any more.
    if (gelf_getshdr(section, &header) == nullptr || (header.sh_flags & SHF_COMPRESSED) == 0) {
      continue;
    }
    const char* const name = elf_strptr(elf, names, header.sh_name);
    if (name == nullptr || !IsNeeded(name) || elf_compress(section, 0, 0) >= 0) continue;
    GElf_Chdr compression{};
    std::string sentence = "the debug information of '" + path + "' cannot be read: its section ";
    sentence.append(name).append(" is compressed ");
    sentence += gelf_getchdr(section, &compression) == nullptr ? "and damaged"
                                                               : MethodText(compression.ch_type);
    throw Error(ErrorCode::kBrokenInfo, sentence);
  }
}

std::optional<DwarfConstant> ReadConstant(Dwarf_Attribute attribute) {
  const unsigned int form = dwarf_whatform(&attribute);
  DwarfConstant constant;
  if (form == DW_FORM_sdata || form == DW_FORM_implicit_const) {
    Dwarf_Sword value = 0;
    if (dwarf_formsdata(&attribute, &value) != 0) return std::nullopt;
    constant.value = static_cast<std::uint64_t>(value);
    constant.isSigned = true;
    return constant;
  }
  if (form != DW_FORM_udata && form != DW_FORM_data1 && form != DW_FORM_data2 &&
      form != DW_FORM_data4 && form != DW_FORM_data8) {
    return std::nullopt;
  }
  Dwarf_Word value = 0;
  if (dwarf_formudata(&attribute, &value) != 0) return std::nullopt;
  constant.value = value;
  return constant;
}

}  // namespace targets

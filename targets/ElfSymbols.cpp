#include "targets/ElfSymbols.h"

#include <algorithm>

#include "targets/Error.h"
#include "targets/Texts.h"

namespace targets {
namespace {

Elf_Scn* SectionOfType(Elf* elf, GElf_Word type, GElf_Shdr* header) {
  for (Elf_Scn* section = elf_nextscn(elf, nullptr); section != nullptr;
       section = elf_nextscn(elf, section)) {
    if (gelf_getshdr(section, header) != nullptr && header->sh_type == type) return section;
  }
  return nullptr;
}

/// Keeps the first of symbols that share an address: they are one label.
void KeepDistinct(std::vector<ElfSymbol>* symbols) {
  std::stable_sort(symbols->begin(), symbols->end(),
                   [](const ElfSymbol& a, const ElfSymbol& b) { return a.value < b.value; });
  const auto same = [](const ElfSymbol& a, const ElfSymbol& b) { return a.value == b.value; };
  symbols->erase(std::unique(symbols->begin(), symbols->end(), same), symbols->end());
}

}  // namespace

bool ElfSymbols::Any() {
  return Count() != 0;
}

bool ElfSymbols::Has(std::string_view name) {
  ReadOnce();
  return names_.First(name) != NameTable::kNone;
}

std::uint32_t ElfSymbols::Count() {
  ReadOnce();
  return names_.Size();
}

std::optional<ElfSymbol> ElfSymbols::Find(std::string_view name, std::string_view currentFile) {
  ReadOnce();
  std::vector<ElfSymbol> global;
  std::vector<ElfSymbol> local;
  std::vector<ElfSymbol> current;
  for (std::uint32_t n = names_.First(name); n != NameTable::kNone; n = names_.Next(n)) {
    const ElfSymbol& symbol = symbols_[n];
    (symbol.isGlobal ? global : local).push_back(symbol);
    if (!symbol.isGlobal && !symbol.file.empty() &&
        BaseName(symbol.file) == BaseName(currentFile)) {
      current.push_back(symbol);
    }
  }
  std::vector<ElfSymbol>& chosen = !global.empty() ? global : !current.empty() ? current : local;
  KeepDistinct(&chosen);
  if (chosen.empty()) return std::nullopt;
  if (chosen.size() == 1) return chosen.front();
  std::vector<std::string> places;
  for (const ElfSymbol& symbol : chosen) {
    std::string place = Hexadecimal(symbol.value);
    if (!symbol.file.empty()) place += " in " + std::string(symbol.file);
    places.push_back(std::move(place));
  }
  throw Error(ErrorCode::kAmbiguous, std::string("'").append(name) +
                                         "' stands for several symbols: " + Enumerated(places));
}

bool ElfSymbols::IsMappingSymbol(std::string_view name) const {
  const auto machine = file_.Header().e_machine;
  if (machine != EM_ARM && machine != EM_AARCH64 && machine != EM_RISCV) return false;
  return name.size() >= 2 && name[0] == '$' &&
         std::string_view("adtx").find(name[1]) != name.npos &&
         (name.size() == 2 || name[2] == '.');
}

void ElfSymbols::ReadOnce() {
  if (read_) return;
  read_ = true;
  GElf_Shdr header{};
  Elf_Scn* section = SectionOfType(file_.Handle(), SHT_SYMTAB, &header);
  if (section == nullptr) section = SectionOfType(file_.Handle(), SHT_DYNSYM, &header);
  if (section != nullptr) ReadTable(section, header);
}

void ElfSymbols::ReadTable(Elf_Scn* section, const GElf_Shdr& header) {
  Elf_Data* const data = elf_getdata(section, nullptr);
  if (data == nullptr || header.sh_entsize == 0) return;
  const std::size_t count = data->d_size / header.sh_entsize;
  std::string_view file;
  for (std::size_t i = 1; i < count; ++i) {
    GElf_Sym symbol{};
    if (gelf_getsym(data, static_cast<int>(i), &symbol) == nullptr) break;
    const char* const text = elf_strptr(file_.Handle(), header.sh_link, symbol.st_name);
    if (text == nullptr || *text == '\0') continue;
    std::string_view name = text;
    const int type = GELF_ST_TYPE(symbol.st_info);
    if (type == STT_FILE) file = name;
    if (type == STT_FILE || type == STT_SECTION || symbol.st_shndx == SHN_UNDEF ||
        symbol.st_shndx == SHN_COMMON || IsMappingSymbol(name)) {
      continue;
    }
    if (const std::size_t version = name.find('@'); version != name.npos && version != 0) {
      name = name.substr(0, version);
    }
    ElfSymbol entry;
    entry.isFunction = type == STT_FUNC || type == STT_GNU_IFUNC;
    entry.isThreadLocal = type == STT_TLS;
    entry.isGlobal = GELF_ST_BIND(symbol.st_info) != STB_LOCAL;
    entry.value = symbol.st_value;
    entry.size = symbol.st_size;
    entry.section = symbol.st_shndx;
    // The lowest bit of an ARM function symbol says "Thumb" and is no part of the address.
    if (entry.isFunction && file_.Header().e_machine == EM_ARM) entry.value &= ~std::uint64_t{1};
    if (!entry.isGlobal) entry.file = file;
    names_.Add(name);
    symbols_.push_back(entry);
  }
}

}  // namespace targets

#include "targets/ProgramLabels.h"

#include <algorithm>
#include <vector>

#include "targets/DwarfLocation.h"
#include "targets/DwarfText.h"
#include "targets/Error.h"
#include "targets/Texts.h"
#include "targets/TypeLookup.h"
#include "targets/TypeNames.h"

namespace targets {
namespace {

/// Labels of the source before those of the linker, those with a size before those without one.
enum Rank { kUnsized, kLocal, kGlobal, kDescribed };

/// Where each section of memory ends, by number; 0 for a section that lies in no memory.
std::vector<std::uint64_t> SectionEnds(const ElfFile& file) {
  std::vector<std::uint64_t> ends(1);
  for (Elf_Scn* section = elf_nextscn(file.Handle(), nullptr); section != nullptr;
       section = elf_nextscn(file.Handle(), section)) {
    GElf_Shdr header{};
    const bool lies = gelf_getshdr(section, &header) != nullptr &&
                      (header.sh_flags & SHF_ALLOC) != 0 && (header.sh_flags & SHF_TLS) == 0;
    ends.push_back(lies ? header.sh_addr + header.sh_size : 0);
  }
  return ends;
}

/// Not so `list<int>`, which an expression would be cut in.
bool CanBeTyped(const std::string& typeName) {
  return CanonicalTypeName(typeName, [](std::string_view) { return true; }).has_value();
}

std::uint64_t SizeOf(const IndexEntry& entry, const Dwarf_Die& die, DwarfTypes& types,
                     std::uint64_t address) {
  if (entry.kind == EntryKind::kVariable) return types.OfObject(die).size;
  Dwarf_Die copy = die;
  Dwarf_Addr end = 0;
  return dwarf_highpc(&copy, &end) == 0 && end > address ? end - address : 1;
}

/// A detail that cannot be read is said in its place, and does not hide the rest of the list.
template <typename Describe>
std::string DetailOrError(Describe describe) {
  try {
    return describe();
  } catch (const Error& error) {
    return error.what();
  }
}

}  // namespace

void AddSymbols(ElfSymbols& symbols, const ElfFile& file, const TargetLayout& layout,
                AddressTable* table) {
  const std::vector<std::uint64_t> ends = SectionEnds(file);
  std::vector<std::uint64_t> starts;
  for (std::uint32_t n = 0; n < symbols.Count(); ++n) starts.push_back(symbols.At(n).value);
  std::sort(starts.begin(), starts.end());
  for (std::uint32_t n = 0; n < symbols.Count(); ++n) {
    const ElfSymbol& symbol = symbols.At(n);
    // Absolute symbols are numbers, and those of threads are offsets.
    if (symbol.isThreadLocal || symbol.section >= ends.size()) continue;
    const std::uint64_t limit = ends[symbol.section];
    if (limit == 0) continue;
    std::uint64_t size = symbol.size;
    if (size == 0) {
      const auto next = std::upper_bound(starts.begin(), starts.end(), symbol.value);
      const std::uint64_t end = next == starts.end() ? limit : std::min(limit, *next);
      if (end <= symbol.value) continue;
      size = end - symbol.value;
    }
    const std::uint64_t address = layout.Loaded(symbol.value);
    const Rank rank = symbol.size == 0 ? kUnsized : symbol.isGlobal ? kGlobal : kLocal;
    table->Add({address, address + size, symbols.NameOf(n), rank});
  }
}

void AddDescribedLabels(IndexTable& index, ElfSymbols& symbols, const ElfFile& program,
                        DwarfTypes& types, AddressTable* table) {
  const DwarfFile& file = types.File();
  for (std::uint32_t n = 0; n < index.names.Size(); ++n) {
    const IndexEntry& entry = index.entries[n];
    const bool variable = entry.kind == EntryKind::kVariable;
    if ((!variable && entry.kind != EntryKind::kFunction) || entry.isDeclaration) continue;
    if (symbols.Has(index.names.NameOf(n))) continue;
    try {
      const Dwarf_Die die = file.At(entry.die);
      const Place place = variable ? PlaceOfVariable(file, program, die) : PlaceOfCode(file, die);
      if (place.kind != Place::Kind::kAddress) continue;
      const std::uint64_t address = types.Layout().Loaded(place.value);
      const std::uint64_t size = SizeOf(entry, die, types, place.value);
      table->Add({address, address + size, index.names.NameOf(n), kDescribed});
    } catch (const Error&) {
      // A label that cannot be described is none that an address can be said to lie in.
      continue;
    }
  }
}

void VisitDefinedLabels(const IndexTable& index,
                        const std::function<void(std::string_view)>& visit) {
  for (std::uint32_t n = 0; n < index.names.Size(); ++n) {
    const IndexEntry& entry = index.entries[n];
    if (IsLabelKind(entry.kind) && !entry.isDeclaration) visit(index.names.NameOf(n));
  }
}

void VisitDefinedTypes(const IndexTable& index,
                       const std::function<void(std::string_view)>& visit) {
  for (std::uint32_t n = 0; n < index.names.Size(); ++n) {
    const IndexEntry& entry = index.entries[n];
    if (IsLabelKind(entry.kind)) continue;
    const std::string name = TypeLookup::SpelledName(entry.kind, index.names.NameOf(n));
    if (CanBeTyped(name)) visit(name);
  }
}

void AddLabelListings(IndexTable& index, LabelChoice& choice, Listings* listings) {
  for (std::uint32_t n = 0; n < index.names.Size(); ++n) {
    const IndexEntry& entry = index.entries[n];
    if (!IsLabelKind(entry.kind) || entry.isDeclaration) continue;
    if (index.completed.count(entry.die) != 0) continue;
    listings->emplace(index.names.NameOf(n), DetailOrError([&] { return choice.Describe(entry); }));
  }
}

void AddTypeListings(const IndexTable& index, const DwarfFile& file, Listings* listings) {
  for (std::uint32_t n = 0; n < index.names.Size(); ++n) {
    const IndexEntry& entry = index.entries[n];
    if (IsLabelKind(entry.kind) || entry.isDeclaration) continue;
    std::string name = TypeLookup::SpelledName(entry.kind, index.names.NameOf(n));
    if (!CanBeTyped(name)) continue;
    listings->emplace(std::move(name), DetailOrError([&] {
                        const Dwarf_Die die = file.At(entry.die);
                        if (entry.kind == EntryKind::kTypedef) {
                          return TypeText(file, file.TypeOf(die));
                        }
                        const auto size = file.Unsigned(die, DW_AT_byte_size);
                        return std::to_string(size.value_or(0)) + " bytes";
                      }));
  }
}

void AddSymbolListings(ElfSymbols& symbols, IndexTable* described, const TargetLayout& layout,
                       Listings* listings) {
  for (std::uint32_t n = 0; n < symbols.Count(); ++n) {
    const std::string_view name = symbols.NameOf(n);
    if (described != nullptr && LabelChoice::Defines(name, *described)) continue;
    const ElfSymbol& symbol = symbols.At(n);
    std::string detail = symbol.isThreadLocal ? "thread-local symbol"
                                              : (symbol.isFunction ? "function " : "symbol ") +
                                                    Hexadecimal(layout.Loaded(symbol.value));
    listings->emplace(name, std::move(detail));
  }
}

}  // namespace targets

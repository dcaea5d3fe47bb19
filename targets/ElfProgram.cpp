#include "targets/ElfProgram.h"

#include <algorithm>
#include <functional>
#include <map>
#include <set>
#include <utility>

#include "targets/DwarfFile.h"
#include "targets/DwarfIndex.h"
#include "targets/DwarfShapes.h"
#include "targets/DwarfText.h"
#include "targets/DwarfTypes.h"
#include "targets/DwarfUnits.h"
#include "targets/ElfFile.h"
#include "targets/ElfMemory.h"
#include "targets/ElfSymbols.h"
#include "targets/Error.h"
#include "targets/LabelChoice.h"
#include "targets/ProgramLabels.h"
#include "targets/Remembered.h"
#include "targets/SeparateDebug.h"
#include "targets/Texts.h"
#include "targets/TypeLookup.h"
#include "targets/TypeNames.h"

namespace targets {
namespace {

/// On these machines a plain `char` has no sign.
bool PlainCharIsSigned(const ElfFile& file) {
  switch (file.Header().e_machine) {
    case EM_ARM:
    case EM_AARCH64:
    case EM_PPC:
    case EM_PPC64:
    case EM_S390:
    case EM_RISCV:
      return false;
    default:
      return true;
  }
}

TargetLayout LayoutOf(const ElfFile& file, const ElfOptions& options) {
  TargetLayout layout;
  layout.pointerSize = file.PointerSize();
  layout.order = file.Order();
  layout.loadBias = options.loadBias;
  layout.recordMark = options.recordMark;
  layout.highestAddress = options.highestAddress.value_or(layout.Loaded(file.HighestAddress()));
  if (layout.pointerSize < 8) {
    layout.highestAddress = std::min(layout.highestAddress, layout.Loaded(~layout.loadBias));
  }
  layout.plainCharIsSigned = PlainCharIsSigned(file);
  return layout;
}

/// Everything that is read from debug information.
struct DebugInfo {
  DebugInfo(const ElfFile& program, const ElfFile& info, const std::string& debugFolder,
            const TargetLayout& layout, TypeNumber firstTypeNumber, Damage* damage)
      : file(info, debugFolder),
        units(file, damage),
        index(file, units, damage),
        types(file, index, layout, firstTypeNumber),
        shapes(types, program.Header().e_machine),
        choice(program, units, types),
        lookup(file, units) {}

  DwarfFile file;
  DwarfUnits units;
  DwarfIndex index;
  DwarfTypes types;
  DwarfShapes shapes;
  LabelChoice choice;
  TypeLookup lookup;
};

using Listings = std::set<std::pair<std::string, std::string>>;

void VisitAll(const Listings& listings, const std::function<void(const Listing&)>& visit) {
  for (const auto& [name, detail] : listings) visit(Listing{name, detail});
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

struct ElfProgram::Parts {
  Parts(const std::string& path, const ElfOptions& options)
      : file(path),
        separate(Separate(file, options.debugFolder)),
        layout(LayoutOf(file, options)),
        memory(file),
        symbols(SymbolFile()),
        damage(separate.reason),
        basicShapes(layout, options.firstTypeNumber) {
    try {
      debug.emplace(file, separate.file ? *separate.file : file, options.debugFolder, layout,
                    options.firstTypeNumber + BasicShapes::kCount, &damage);
    } catch (const Error& error) {
      damage = error;
    }
    if (debug && debug->units.Count() == 0) debug.reset();
    if (!debug && !symbols.Any()) {
      if (damage) throw Error(*damage);
      throw Error(ErrorCode::kNoNames,
                  "the program '" + path + "' has no debug information and no symbols");
    }
    if (debug) ChooseFirstFile();
  }

  static SeparateDebug Separate(const ElfFile& program, const std::string& debugFolder) {
    if (program.HasSection(".debug_info") || program.HasSection(".zdebug_info")) return {};
    return FindSeparateDebug(program, debugFolder);
  }

  [[nodiscard]] const ElfFile& SymbolFile() const {
    const bool moved = separate.file && !file.HasSectionOfType(SHT_SYMTAB) &&
                       separate.file->HasSectionOfType(SHT_SYMTAB);
    return moved ? *separate.file : file;
  }

  void ChooseFirstFile() {
    IndexTable& table = debug->index.Global();
    for (std::uint32_t n = table.names.First("main"); n != NameTable::kNone;
         n = table.names.Next(n)) {
      const IndexEntry& entry = table.entries[n];
      if (entry.kind != EntryKind::kFunction || entry.isDeclaration) continue;
      debug->units.MakeCurrent(entry.unit);
      return;
    }
    if (const auto first = debug->units.FirstSource()) debug->units.MakeCurrent(*first);
  }

  std::optional<Label> ChooseLabel(std::string_view name) {
    if (debug) {
      if (auto label = debug->choice.Find(name, debug->index.Global())) return label;
    }
    std::optional<Label> symbol = SymbolLabel(name);
    std::optional<IndexEntry> declaration;
    if (debug) {
      declaration = debug->choice.FindDeclaration(name, debug->index.Global());
      // Defined in a source without debug information, declared in one with it.
      if (symbol && declaration) return debug->choice.Typed(name, *declaration, symbol->value);
      if (symbol) return symbol;
      if (auto label = debug->choice.Find(name, debug->index.Local())) return label;
    }
    if (symbol) return symbol;
    if (declaration) {
      throw Error(ErrorCode::kNotDefined,
                  "'" + std::string(name) + "' is declared, but this program does not define it");
    }
    if (damage) throw Error(*damage);
    return std::nullopt;
  }

  std::string CurrentFile() const {
    if (!debug) return chosenFile;
    const std::optional<std::uint32_t> unit = debug->units.Current();
    return unit ? std::string(debug->units.At(*unit).name) : chosenFile;
  }

  bool HasLabel(std::string_view name) {
    if (debug && LabelChoice::Defines(name, debug->index.Global())) return true;
    return symbols.Has(name);
  }

  /// Where `name` is found as a type outside functions. A name that stands alone and is also a
  /// label is a type only where the current source file makes it one.
  bool HasGlobalType(std::string_view name) {
    const bool alone = name.find(' ') == name.npos && CanonicalBasicType(name).empty();
    if (debug) {
      if (const auto found = debug->lookup.Find(name, debug->index.Global())) {
        return !alone || found->isCurrent || !HasLabel(name);
      }
    }
    return BasicTypeRecord(layout, name).has_value();
  }

  // Of names that are not those of records.

  bool HasType(std::string_view name) {
    if (HasGlobalType(name)) return true;
    if (!debug) return false;
    if (!CanonicalBasicType(name).empty()) return false;
    // Neither the symbol table nor what is inside of functions is worth reading for `structnode`,
    // which another reading explains.
    const auto known = [&](std::string_view reading) {
      return reading != name && HasGlobalType(reading);
    };
    if (CanonicalTypeName(name, known) || HasLabel(name)) return false;
    return debug->lookup.Find(name, debug->index.Local()).has_value();
  }

  std::optional<DataLableType> FindType(std::string_view name) {
    if (debug) {
      if (const auto entry = TypeEntry(name)) return debug->types.Full(*entry);
    }
    if (auto basic = BasicTypeRecord(layout, name)) {
      basic->TypeNumber = basicShapes.NumberOf(name);
      return basic;
    }
    if (damage) throw Error(*damage);
    return std::nullopt;
  }

  std::optional<Dwarf_Die> TypeEntry(std::string_view name) {
    if (auto found = debug->lookup.Find(name, debug->index.Global())) return found->die;
    if (!CanonicalBasicType(name).empty()) return std::nullopt;
    if (auto found = debug->lookup.Find(name, debug->index.Local())) return found->die;
    return std::nullopt;
  }

  std::optional<Label> SymbolLabel(std::string_view name) {
    const std::optional<ElfSymbol> symbol = symbols.Find(name, CurrentFile());
    if (!symbol) return std::nullopt;
    if (symbol->isThreadLocal) {
      throw Error(ErrorCode::kNotRepresented,
                  "'" + std::string(name) +
                      "' is thread-local: every thread has its own, at an address of its own");
    }
    Label label;
    label.kind = symbol->isFunction ? LabelKind::kFunction : LabelKind::kSymbol;
    label.value = layout.Loaded(symbol->value);
    if (damage && !symbol->isFunction) label.whyUntyped = damage->what();
    return label;
  }

  ElfFile file;
  SeparateDebug separate;
  TargetLayout layout;
  ElfMemory memory;
  ElfSymbols symbols;
  Damage damage;
  std::optional<DebugInfo> debug;
  BasicShapes basicShapes;
  /// Filled when an address is first asked about.
  std::optional<AddressTable> addresses;
  /// What the user called the current file of a program that names none.
  std::string chosenFile;
  std::vector<MemberRemark> noRemarks;
  // With the current source file as it is.

  /// The typed labels found so far: at every stop a debugger asks for the same ones.
  std::map<std::string, Label, std::less<>> variables;
  Remembered<bool> typeNames;
  Remembered<std::optional<DataLableType>> types;
  /// By the names of records, which are the same in every source file.
  Remembered<DataLableType> records;
};

ElfProgram::ElfProgram(const std::string& path, ElfOptions options)
    : parts_(std::make_unique<Parts>(path, options)) {}

ElfProgram::~ElfProgram() = default;

MemorySource& ElfProgram::Memory() {
  return parts_->memory;
}

void ElfProgram::SetCurrentFile(const std::string& name) {
  parts_->variables.clear();
  parts_->typeNames.Forget();
  parts_->types.Forget();
  if (parts_->debug && parts_->debug->units.FirstSource()) {
    parts_->debug->units.MakeCurrent(name);
  } else {
    parts_->chosenFile = name;
  }
}

std::vector<std::string> ElfProgram::SourceFiles() const {
  return parts_->debug ? parts_->debug->units.SourceFiles() : std::vector<std::string>{};
}

std::optional<std::string> ElfProgram::WhyIncomplete() const {
  if (!parts_->damage) return std::nullopt;
  return parts_->damage->what();
}

std::uint32_t ElfProgram::PointerSize() const {
  return parts_->layout.pointerSize;
}

ByteOrder ElfProgram::Order() const {
  return parts_->layout.order;
}

std::string ElfProgram::CurrentFile() const {
  return parts_->CurrentFile();
}

bool ElfProgram::CurrentFileIsAssembly() const {
  if (parts_->debug) {
    const std::optional<std::uint32_t> unit = parts_->debug->units.Current();
    if (unit && parts_->debug->units.At(*unit).language != 0) {
      return parts_->debug->units.IsAssembly(*unit);
    }
  }
  return LabelSource::CurrentFileIsAssembly();
}

std::optional<Label> ElfProgram::FindLabel(std::string_view name) {
  const auto known = parts_->variables.find(name);
  if (known != parts_->variables.end()) return known->second;
  std::optional<Label> label = parts_->ChooseLabel(name);
  if (label && label->typed) parts_->variables.emplace(name, *label);
  return label;
}

std::optional<Label> ElfProgram::FindDeclared(std::string_view name, std::uint64_t address) {
  if (!parts_->debug) return std::nullopt;
  DebugInfo& debug = *parts_->debug;
  const auto declaration = debug.choice.FindDeclaration(name, debug.index.Global());
  if (!declaration) return std::nullopt;
  return debug.choice.Typed(name, *declaration, address);
}

std::optional<NamedObject> ElfProgram::FindObject(std::string_view name) {
  if (parts_->debug) {
    DebugInfo& debug = *parts_->debug;
    if (auto object = debug.choice.FindObject(name, debug.index.Global())) return object;
  }
  return LabelSource::FindObject(name);
}

bool ElfProgram::HasType(std::string_view name) {
  if (parts_->debug && parts_->debug->types.NamedRecordType(name)) return true;
  return parts_->typeNames.Get(name, [&] { return parts_->HasType(name); });
}

std::optional<DataLableType> ElfProgram::FindType(std::string_view name) {
  if (parts_->debug) {
    DwarfTypes& types = parts_->debug->types;
    if (const auto named = types.NamedRecordType(name)) {
      return parts_->records.Get(name, [&] { return types.Full(*named); });
    }
  }
  return parts_->types.Get(name, [&] { return parts_->FindType(name); });
}

bool ElfProgram::IsIncomplete(std::string_view name) {
  if (!parts_->debug) return false;
  DebugInfo& debug = *parts_->debug;
  const std::optional<Dwarf_Die> type = debug.types.Behind(parts_->TypeEntry(name));
  return type && IsStructureTag(debug.file.Tag(*type)) &&
         debug.file.Attribute(*type, DW_AT_declaration).has_value();
}

const std::vector<MemberRemark>& ElfProgram::Remarks() const {
  return parts_->debug ? parts_->debug->types.Remarks() : parts_->noRemarks;
}

void ElfProgram::ListLabels(const std::function<void(const Listing&)>& visit) {
  Listings listings;
  if (parts_->debug) {
    DebugInfo& debug = *parts_->debug;
    for (IndexTable* table : {&debug.index.Global(), &debug.index.Local()}) {
      for (std::uint32_t n = 0; n < table->names.Size(); ++n) {
        const IndexEntry& entry = table->entries[n];
        if (!IsLabelKind(entry.kind) || entry.isDeclaration) continue;
        if (table->completed.count(entry.die) != 0) continue;
        listings.emplace(table->names.NameOf(n),
                         DetailOrError([&] { return debug.choice.Describe(entry); }));
      }
    }
  }
  for (std::uint32_t n = 0; n < parts_->symbols.Count(); ++n) {
    const std::string_view name = parts_->symbols.NameOf(n);
    if (parts_->debug && LabelChoice::Defines(name, parts_->debug->index.Global())) continue;
    const ElfSymbol& symbol = parts_->symbols.At(n);
    std::string detail = symbol.isThreadLocal
                             ? "thread-local symbol"
                             : (symbol.isFunction ? "function " : "symbol ") +
                                   Hexadecimal(parts_->layout.Loaded(symbol.value));
    listings.emplace(name, std::move(detail));
  }
  VisitAll(listings, visit);
  if (parts_->damage) throw Error(*parts_->damage);
}

void ElfProgram::ListTypes(const std::function<void(const Listing&)>& visit) {
  Listings listings;
  if (parts_->debug) {
    DebugInfo& debug = *parts_->debug;
    for (IndexTable* table : {&debug.index.Global(), &debug.index.Local()}) {
      for (std::uint32_t n = 0; n < table->names.Size(); ++n) {
        const IndexEntry& entry = table->entries[n];
        if (IsLabelKind(entry.kind) || entry.isDeclaration) continue;
        std::string name = TypeLookup::SpelledName(entry.kind, table->names.NameOf(n));
        // Such as `list<int>`, which an expression would be cut in.
        if (!CanonicalTypeName(name, [](std::string_view) { return true; })) continue;
        listings.emplace(std::move(name), DetailOrError([&] {
                           const Dwarf_Die die = debug.file.At(entry.die);
                           if (entry.kind == EntryKind::kTypedef) {
                             return TypeText(debug.file, debug.file.TypeOf(die));
                           }
                           const auto size = debug.file.Unsigned(die, DW_AT_byte_size);
                           return std::to_string(size.value_or(0)) + " bytes";
                         }));
      }
    }
  }
  VisitAll(listings, visit);
  if (parts_->damage) throw Error(*parts_->damage);
}

const TypeShape* ElfProgram::Shape(TypeNumber type) {
  if (const TypeShape* const basic = parts_->basicShapes.Shape(type)) return basic;
  return parts_->debug ? parts_->debug->shapes.Shape(type) : nullptr;
}

TypeNumber ElfProgram::FindShape(std::string_view name) {
  if (parts_->debug) {
    DebugInfo& debug = *parts_->debug;
    if (const auto named = debug.types.NamedRecordType(name)) return debug.shapes.NumberOf(named);
    if (const auto entry = parts_->TypeEntry(name)) return debug.shapes.NumberOf(entry);
  }
  return parts_->basicShapes.NumberOf(name);
}

std::optional<NearestLabel> ElfProgram::LabelAt(std::uint64_t address) {
  std::optional<AddressTable>& table = parts_->addresses;
  if (!table) {
    table.emplace();
    AddSymbols(parts_->symbols, parts_->SymbolFile(), parts_->layout, &*table);
    if (parts_->debug) {
      DebugInfo& debug = *parts_->debug;
      AddDescribedLabels(debug.index.Global(), parts_->symbols, parts_->file, debug.types, &*table);
    }
    table->Sort();
  }
  const AddressTable::Entry* const entry = table->Find(address);
  if (entry == nullptr) return std::nullopt;
  return NearestLabel{std::string(entry->name), address - entry->address};
}

void ElfProgram::VisitLabelNames(const std::function<void(std::string_view)>& visit) {
  if (parts_->debug) {
    VisitDefinedLabels(parts_->debug->index.Global(), visit);
    VisitDefinedLabels(parts_->debug->index.Local(), visit);
  }
  for (std::uint32_t n = 0; n < parts_->symbols.Count(); ++n) visit(parts_->symbols.NameOf(n));
}

void ElfProgram::VisitTypeNames(const std::function<void(std::string_view)>& visit) {
  if (!parts_->debug) return;
  VisitDefinedTypes(parts_->debug->index.Global(), visit);
  VisitDefinedTypes(parts_->debug->index.Local(), visit);
}

}  // namespace targets

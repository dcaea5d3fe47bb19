#include "targets/DwarfIndex.h"

#include <optional>
#include <unordered_map>

#include "targets/DwarfEntries.h"

namespace targets {
namespace {

/// Entries nested deeper than this are nobody's program; without a limit, finding the way back out
/// of each level would cost the square of the depth.
constexpr std::size_t kDeepestNesting = 256;

std::optional<EntryKind> KindOf(int tag) {
  switch (tag) {
    case DW_TAG_variable:
      return EntryKind::kVariable;
    case DW_TAG_subprogram:
      return EntryKind::kFunction;
    case DW_TAG_label:
      return EntryKind::kAssemblyLabel;
    case DW_TAG_base_type:
      return EntryKind::kBaseType;
    case DW_TAG_typedef:
      return EntryKind::kTypedef;
    case DW_TAG_structure_type:
      return EntryKind::kStruct;
    case DW_TAG_union_type:
      return EntryKind::kUnion;
    case DW_TAG_class_type:
      return EntryKind::kClass;
    case DW_TAG_enumeration_type:
      return EntryKind::kEnum;
    default:
      return std::nullopt;
  }
}

/// The attributes that the index needs, from one pass over an entry.
struct Scanned {
  const char* name = nullptr;
  bool failed = false;
  bool isExternal = false;
  bool isDeclaration = false;
  std::optional<Dwarf_Attribute> origin;
  std::optional<Dwarf_Attribute> location;
};

bool IsScanned(unsigned int name) {
  switch (name) {
    case DW_AT_name:
    case DW_AT_external:
    case DW_AT_declaration:
    case DW_AT_specification:
    case DW_AT_abstract_origin:
    case DW_AT_location:
      return true;
    default:
      return false;
  }
}

void ScanAttribute(Dwarf_Attribute& attribute, Scanned* scanned) {
  switch (attribute.code) {
    case DW_AT_name:
      scanned->name = dwarf_formstring(&attribute);
      if (scanned->name == nullptr) scanned->failed = true;
      break;
    case DW_AT_external:
      if (dwarf_formflag(&attribute, &scanned->isExternal) != 0) scanned->failed = true;
      break;
    case DW_AT_declaration:
      if (dwarf_formflag(&attribute, &scanned->isDeclaration) != 0) scanned->failed = true;
      break;
    case DW_AT_specification:
    case DW_AT_abstract_origin:
      scanned->origin = attribute;
      break;
    case DW_AT_location:
      scanned->location = attribute;
      break;
    default:
      break;
  }
}

/// Is this the location of something that exists once, in memory or per thread? Automatic variables
/// live in registers, on the stack or in lists of places.
bool IsStaticLocation(Dwarf_Attribute location) {
  Dwarf_Block block{};
  if (dwarf_formblock(&location, &block) != 0 || block.length == 0) return false;
  const unsigned first = block.data[0];
  const unsigned last = block.data[block.length - 1];
  return first == DW_OP_addr || first == DW_OP_addrx || first == DW_OP_GNU_addr_index ||
         last == DW_OP_form_tls_address || last == DW_OP_GNU_push_tls_address;
}

/// What namespaces declare, each entry with its namespace.
using Declarations = std::unordered_map<DieAddress, DieAddress>;

/// Walks over one unit.
class UnitWalk {
 public:
  /// `common` takes the declarations of units that are no source file: others refer to them.
  UnitWalk(const DwarfFile& file, const DwarfUnits& units, std::uint32_t unit, IndexTable* table,
           Declarations* common)
      : file_(file),
        units_(units),
        unit_(unit),
        entries_(file, units.At(unit).root, units.At(unit).end, IsScanned),
        table_(table),
        common_(common),
        declared_(units.At(unit).name.empty() ? common : &own_) {}

  void TopLevel() {
    Walk([](int tag) { return tag == DW_TAG_namespace || tag == DW_TAG_module; },
         [this](const Dwarf_Die& die, int tag) { Index(die, tag, nullptr); });
  }

  void Inside() {
    Walk([](int tag) { return tag != DW_TAG_enumeration_type && tag != DW_TAG_array_type; },
         [this](const Dwarf_Die& die, int tag) {
           if (const DieAddress owner = Owner()) Index(die, tag, owner);
         });
  }

 private:
  struct Level {
    Dwarf_Die die{};
    int tag = 0;
    bool isNamed = false;
  };

  template <typename Enters, typename Visit>
  void Walk(Enters enters, Visit visit) {
    std::optional<Dwarf_Die> die = entries_.Child(units_.At(unit_).root);
    std::optional<Dwarf_Die> last;
    while (die || !levels_.empty()) {
      if (die && levels_.empty()) last = die;
      if (!die) {
        const Level level = levels_.back();
        levels_.pop_back();
        die = entries_.Sibling(level.die);
        continue;
      }
      const int tag = entries_.Tag(*die);
      visit(*die, tag);
      if (enters(tag) && entries_.HasChildren(*die)) {
        if (levels_.size() == kDeepestNesting) file_.Broken(*die, "entries are nested too deeply");
        const bool named = tag != DW_TAG_namespace || !file_.Name(*die).empty();
        levels_.push_back({*die, tag, named});
        die = entries_.Child(*die);
      } else {
        die = entries_.Sibling(*die);
      }
    }
    if (last) file_.CheckReachesEnd(*last, units_.At(unit_).end);
  }

  /// The innermost function or class around the entry at hand.
  [[nodiscard]] DieAddress Owner() const {
    for (auto level = levels_.rbegin(); level != levels_.rend(); ++level) {
      const int tag = level->tag;
      if (tag == DW_TAG_subprogram || tag == DW_TAG_structure_type || tag == DW_TAG_class_type ||
          tag == DW_TAG_union_type) {
        return level->die.addr;
      }
    }
    return nullptr;
  }

  /// The innermost namespace around the entry at hand that has a name.
  [[nodiscard]] DieAddress NamedNamespace() const {
    for (auto level = levels_.rbegin(); level != levels_.rend(); ++level) {
      if (level->isNamed) return level->die.addr;
    }
    return nullptr;
  }

  void Index(const Dwarf_Die& die, int tag, DieAddress owner) {
    const std::optional<EntryKind> kind = KindOf(tag);
    if (!kind) return;
    DwarfFile::ForgetErrors();
    Scanned scanned;
    entries_.VisitAttributes(
        die, [&scanned](Dwarf_Attribute& attribute) { ScanAttribute(attribute, &scanned); });
    if (scanned.failed) file_.Broken(die, dwarf_errmsg(-1));
    IndexEntry entry;
    entry.die = die.addr;
    entry.owner = owner;
    entry.unit = unit_;
    entry.kind = *kind;
    entry.isExternal = scanned.isExternal;
    entry.isDeclaration = scanned.isDeclaration;
    if (owner == nullptr) {
      entry.owner = NamedNamespace();
      entry.isScoped = entry.owner != nullptr;
      if (entry.isScoped && entry.isDeclaration) (*declared_)[die.addr] = entry.owner;
    }
    if (*kind == EntryKind::kEnum && !scanned.isDeclaration) IndexEnumerators(die, entry);
    if (owner != nullptr && !IsWantedInside(*kind, scanned)) return;
    std::string_view name = scanned.name == nullptr ? std::string_view{} : scanned.name;
    if (scanned.origin) name = FollowOrigin(die, *scanned.origin, name, &entry);
    if (!name.empty()) table_->Add(name, entry);
  }

  static bool IsWantedInside(EntryKind kind, const Scanned& scanned) {
    if (kind == EntryKind::kFunction || kind == EntryKind::kAssemblyLabel) return false;
    if (kind != EntryKind::kVariable) return true;
    return scanned.location && IsStaticLocation(*scanned.location);
  }

  /// What completes a declaration elsewhere takes its name, linkage and file from there.
  std::string_view FollowOrigin(const Dwarf_Die& die, const Dwarf_Attribute& origin,
                                std::string_view name, IndexEntry* entry) {
    const Dwarf_Die declaration = file_.Reference(die, origin);
    table_->completed.insert(declaration.addr);
    // A declaration that several files have in common says nothing about this one's.
    const std::uint32_t unit = units_.NumberOf(declaration, unit_);
    if (!units_.At(unit).name.empty()) entry->unit = unit;
    // Compilers define what a namespace declares outside of it.
    for (const Declarations* declarations : {&own_, common_}) {
      const auto scoped = declarations->find(declaration.addr);
      if (scoped == declarations->end() || entry->owner != nullptr) continue;
      entry->owner = scoped->second;
      entry->isScoped = true;
    }
    if (!entry->isExternal) entry->isExternal = file_.Flag(die, DW_AT_external);
    return name.empty() ? file_.Name(die) : name;
  }

  void IndexEnumerators(const Dwarf_Die& type, IndexEntry entry) {
    entry.kind = EntryKind::kEnumerator;
    for (auto die = entries_.Child(type); die; die = entries_.Sibling(*die)) {
      if (entries_.Tag(*die) != DW_TAG_enumerator) continue;
      entry.die = die->addr;
      if (const std::string_view name = file_.Name(*die); !name.empty()) table_->Add(name, entry);
    }
  }

  const DwarfFile& file_;
  const DwarfUnits& units_;
  std::uint32_t unit_;
  DwarfEntries entries_;
  IndexTable* table_;
  Declarations* common_;
  Declarations own_;
  Declarations* declared_;
  std::vector<Level> levels_;
};

template <typename Step>
void ForEachUnit(const DwarfUnits& units, Damage* damage, Step step) {
  for (std::uint32_t unit = 0; unit < units.Count(); ++unit) {
    try {
      step(unit);
    } catch (const Error& error) {
      if (!*damage) *damage = error;
    }
  }
}

}  // namespace

DwarfIndex::DwarfIndex(const DwarfFile& file, const DwarfUnits& units, Damage* damage)
    : file_(file), units_(units), damage_(damage) {
  Declarations common;
  ForEachUnit(units, damage, [&](std::uint32_t unit) {
    UnitWalk(file, units, unit, &global_, &common).TopLevel();
  });
}

IndexTable& DwarfIndex::Local() {
  if (!localRead_) {
    localRead_ = true;
    Declarations common;
    ForEachUnit(units_, damage_, [&](std::uint32_t unit) {
      UnitWalk(file_, units_, unit, &local_, &common).Inside();
    });
  }
  return local_;
}

}  // namespace targets

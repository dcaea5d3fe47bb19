#include "targets/LabelChoice.h"

#include <algorithm>
#include <utility>

#include "targets/DwarfText.h"
#include "targets/Error.h"
#include "targets/Texts.h"

namespace targets {
namespace {

[[noreturn]] void CannotStandFor(std::string_view name, const std::string& predicate) {
  throw Error(ErrorCode::kNotRepresented, "'" + std::string(name) + "' " + predicate);
}

}  // namespace

std::optional<Label> LabelChoice::Find(std::string_view name, IndexTable& table) {
  const std::optional<Candidate> chosen = Choose(name, table);
  return chosen ? std::optional(Make(name, *chosen)) : std::nullopt;
}

std::optional<NamedObject> LabelChoice::FindObject(std::string_view name, IndexTable& table) {
  const std::optional<Candidate> chosen = Choose(name, table);
  if (!chosen || chosen->entry.kind != EntryKind::kVariable) return std::nullopt;
  if (chosen->place.kind == Place::Kind::kNowhere) CannotStandFor(name, chosen->place.reason);
  if (chosen->place.kind != Place::Kind::kAddress) return std::nullopt;
  const TypeRecord& type = types_.OfObject(file_.At(chosen->entry.die));
  return NamedObject{chosen->place.value, type.record.TypeNumber};
}

std::optional<LabelChoice::Candidate> LabelChoice::Choose(std::string_view name,
                                                          IndexTable& table) const {
  std::vector<Candidate> candidates = Candidates(name, table);
  if (candidates.empty()) return std::nullopt;
  if (candidates.size() == 1) return std::move(candidates.front());
  std::vector<std::string_view> files;
  for (const Candidate& candidate : candidates) {
    files.push_back(units_.At(candidate.entry.unit).source);
  }
  // What is left of each path tells the files apart, and is what choosing one of them takes.
  const std::size_t folder = CommonFolder(files);
  std::vector<std::string> places;
  for (const Candidate& candidate : candidates) {
    places.push_back(Whereabouts(candidate.entry, folder));
  }
  throw Error(ErrorCode::kAmbiguous,
              "'" + std::string(name) + "' is ambiguous: there is one in " + Enumerated(places));
}

bool LabelChoice::Defines(std::string_view name, IndexTable& table) {
  for (std::uint32_t n = table.names.First(name); n != NameTable::kNone; n = table.names.Next(n)) {
    if (IsLabelKind(table.entries[n].kind) && !table.entries[n].isDeclaration) return true;
  }
  return false;
}

std::optional<IndexEntry> LabelChoice::FindDeclaration(std::string_view name,
                                                       IndexTable& table) const {
  std::optional<IndexEntry> found;
  for (std::uint32_t n = table.names.First(name); n != NameTable::kNone; n = table.names.Next(n)) {
    const IndexEntry& entry = table.entries[n];
    if (entry.kind != EntryKind::kVariable || !entry.isDeclaration) continue;
    if (!found || (units_.At(entry.unit).current && !units_.At(found->unit).current)) found = entry;
  }
  return found;
}

/// The definitions of `name` of the best rank; what turns out to be one and the same, once.
std::vector<LabelChoice::Candidate> LabelChoice::Candidates(std::string_view name,
                                                            IndexTable& table) const {
  std::vector<Candidate> all;
  for (std::uint32_t n = table.names.First(name); n != NameTable::kNone; n = table.names.Next(n)) {
    const IndexEntry& entry = table.entries[n];
    if (!IsLabelKind(entry.kind) || entry.isDeclaration) continue;
    Candidate& candidate = all.emplace_back();
    candidate.entry = entry;
    candidate.rank = Rank(entry);
  }
  if (all.empty()) return all;
  const auto placeless = [](const Candidate& c) { return c.place.kind == Place::Kind::kNowhere; };
  // Inlined functions leave entries without code in many files; they never stand for another one.
  const auto code = [](const Candidate& c) { return c.entry.kind == EntryKind::kFunction; };
  for (Candidate& candidate : all) {
    if (all.size() > 1 && code(candidate)) candidate.place = PlaceOf(candidate.entry);
  }
  if (std::any_of(all.begin(), all.end(),
                  [&](const Candidate& c) { return !code(c) || !placeless(c); })) {
    std::erase_if(all,
                  [&](const Candidate& c) { return all.size() > 1 && code(c) && placeless(c); });
  }
  const int best = std::min_element(all.begin(), all.end(), [](const auto& a, const auto& b) {
                     return a.rank < b.rank;
                   })->rank;
  std::erase_if(all, [&](const Candidate& c) { return c.rank != best; });
  for (Candidate& candidate : all) candidate.place = PlaceOf(candidate.entry);
  if (!std::all_of(all.begin(), all.end(), placeless)) std::erase_if(all, placeless);
  std::vector<Candidate> distinct;
  for (const Candidate& candidate : all) {
    const bool known = std::any_of(distinct.begin(), distinct.end(), [&](const Candidate& other) {
      return other.place.kind == candidate.place.kind && other.place.value == candidate.place.value;
    });
    if (!known) distinct.push_back(candidate);
  }
  return distinct;
}

int LabelChoice::Rank(const IndexEntry& entry) const {
  const int scoped = entry.isScoped ? 1 : 0;
  if (units_.At(entry.unit).current) return scoped;
  return entry.isExternal ? 2 + scoped : 4;
}

Place LabelChoice::PlaceOf(const IndexEntry& entry) const {
  const Dwarf_Die die = file_.At(entry.die);
  if (entry.kind == EntryKind::kEnumerator) return PlaceOfEnumerator(die);
  Place place = entry.kind == EntryKind::kVariable ? PlaceOfVariable(file_, program_, die)
                                                   : PlaceOfCode(file_, die);
  if (place.kind == Place::Kind::kAddress) place.value = types_.Layout().Loaded(place.value);
  return place;
}

Place LabelChoice::PlaceOfEnumerator(const Dwarf_Die& die) const {
  const std::optional<Dwarf_Attribute> attribute = file_.Attribute(die, DW_AT_const_value);
  const std::optional<DwarfConstant> constant =
      attribute ? ReadConstant(*attribute) : std::optional<DwarfConstant>{};
  if (!constant) file_.Broken(die, "an enumerator without a value");
  return {Place::Kind::kValue, constant->value, {}};
}

Label LabelChoice::Make(std::string_view name, const Candidate& candidate) {
  const Place& place = candidate.place;
  if (place.kind == Place::Kind::kNowhere) CannotStandFor(name, place.reason);
  Label label;
  label.value = place.value;
  switch (candidate.entry.kind) {
    case EntryKind::kEnumerator:
      label.kind = LabelKind::kEnumerator;
      return label;
    case EntryKind::kFunction:
      label.kind = LabelKind::kFunction;
      return label;
    case EntryKind::kVariable:
      if (place.kind == Place::Kind::kAddress) return Typed(name, candidate.entry, place.value);
      label.kind = LabelKind::kVariable;
      label.value = ConstantValue(name, candidate.entry, place.value);
      return label;
    default:
      label.kind = LabelKind::kSymbol;
      return label;
  }
}

Label LabelChoice::Typed(std::string_view name, const IndexEntry& entry, std::uint64_t address) {
  const Dwarf_Die die = file_.At(entry.die);
  const TypeRecord& type = types_.OfObject(die);
  if (type.kind == TypeRecord::Kind::kOpaque) {
    CannotStandFor(name, "is a " + TypeText(file_, file_.TypeOf(die)) + " of " +
                             std::to_string(type.size) +
                             " bytes, which is no integer, float or double of up to 8 bytes");
  }
  return {LabelKind::kVariable, address, true, type.record, {}};
}

/// The constant of a variable that exists nowhere else, with the sign of its type.
std::uint64_t LabelChoice::ConstantValue(std::string_view name, const IndexEntry& entry,
                                         std::uint64_t raw) {
  const TypeRecord& type = types_.OfObject(file_.At(entry.die));
  const DataLableType& record = type.record;
  const bool integral =
      (type.kind == TypeRecord::Kind::kScalar && !record.IsFloat && !record.IsDouble) ||
      type.kind == TypeRecord::Kind::kPointer;
  if (!integral) CannotStandFor(name, "is a constant without an address, and no integer");
  if (record.Size >= 8) return raw;
  const unsigned unused = 64 - record.Size * 8;
  if (!record.IsSigned) return raw << unused >> unused;
  return static_cast<std::uint64_t>(static_cast<std::int64_t>(raw << unused) >> unused);
}

std::string LabelChoice::Whereabouts(const IndexEntry& entry, std::size_t folder) const {
  std::string text;
  if (entry.owner != nullptr) {
    const Dwarf_Die owner = file_.At(entry.owner);
    text = std::string(file_.Name(owner));
    text += file_.Tag(owner) == DW_TAG_subprogram ? "() of " : " of ";
  }
  const std::string_view unit = units_.At(entry.unit).source;
  if (!unit.empty()) return text.append(unit.substr(folder));
  return text + "the unit at offset " + Hexadecimal([&] {
           Dwarf_Die root = units_.At(entry.unit).root;
           return dwarf_dieoffset(&root);
         }());
}

std::string LabelChoice::Describe(const IndexEntry& entry) {
  const Dwarf_Die die = file_.At(entry.die);
  const Place place = PlaceOf(entry);
  // Enumerators of a header come with every file that includes it, and are the same in all.
  if (entry.kind == EntryKind::kEnumerator) {
    return "enumerator " + std::to_string(static_cast<std::int64_t>(place.value));
  }
  std::string text = entry.kind == EntryKind::kFunction   ? "function"
                     : entry.kind == EntryKind::kVariable ? TypeText(file_, file_.TypeOf(die))
                                                          : "label " + Hexadecimal(place.value);
  text += ", " + Whereabouts(entry, 0);
  if (place.kind == Place::Kind::kNowhere) text += ", " + place.reason;
  return text;
}

}  // namespace targets

#include "targets/TypeLookup.h"

#include "targets/TypeNames.h"

namespace targets {
namespace {

/// The keyword that `name` begins with, blank included, or nothing.
std::string_view TagKeywordOf(std::string_view name) {
  for (const std::string_view keyword : {"struct ", "union ", "enum ", "class "}) {
    if (name.starts_with(keyword)) return keyword;
  }
  return {};
}

bool MatchesKeyword(EntryKind kind, std::string_view keyword) {
  switch (kind) {
    case EntryKind::kStruct:
    case EntryKind::kClass:
      return keyword == "struct " || keyword == "class ";
    case EntryKind::kUnion:
      return keyword == "union ";
    case EntryKind::kEnum:
      return keyword == "enum ";
    default:
      return false;
  }
}

}  // namespace

std::optional<FoundType> TypeLookup::Find(std::string_view name, IndexTable& table) {
  if (const std::string_view keyword = TagKeywordOf(name); !keyword.empty()) {
    return FindEntry(name.substr(keyword.size()), table,
                     [&](const IndexEntry& entry) { return MatchesKeyword(entry.kind, keyword); });
  }
  if (const std::string canonical = CanonicalBasicType(name); !canonical.empty()) {
    if (canonical == name) return FindBasic(canonical, table);
  }
  return FindEntry(name, table, [&](const IndexEntry& entry) {
    if (entry.kind == EntryKind::kTypedef) return true;
    // Languages other than C name basic types as they like: `u32`, `char16_t`.
    if (entry.kind == EntryKind::kBaseType) return CanonicalBasicType(name).empty();
    return !IsLabelKind(entry.kind) && units_.TagsAreTypes(entry.unit);
  });
}

template <typename Accepts>
std::optional<FoundType> TypeLookup::FindEntry(std::string_view name, IndexTable& table,
                                               Accepts accepts) {
  const IndexEntry* best = nullptr;
  const auto rank = [&](const IndexEntry& entry) {
    return (entry.isDeclaration ? 2 : 0) + (units_.At(entry.unit).current ? 0 : 1);
  };
  for (std::uint32_t n = table.names.First(name); n != NameTable::kNone; n = table.names.Next(n)) {
    const IndexEntry& entry = table.entries[n];
    if (accepts(entry) && (best == nullptr || rank(entry) < rank(*best))) best = &entry;
  }
  if (best == nullptr) return std::nullopt;
  return FoundType{file_.At(best->die), units_.At(best->unit).current};
}

std::optional<FoundType> TypeLookup::FindBasic(const std::string& canonical, IndexTable& table) {
  if (!basicRead_) {
    basicRead_ = true;
    for (std::uint32_t n = 0; n < table.names.Size(); ++n) {
      if (table.entries[n].kind != EntryKind::kBaseType) continue;
      std::string name = CanonicalBasicType(table.names.NameOf(n));
      if (!name.empty()) basic_.emplace(std::move(name), table.entries[n].die);
    }
  }
  const auto found = basic_.find(canonical);
  if (found == basic_.end()) return std::nullopt;
  return FoundType{file_.At(found->second), true};
}

std::string TypeLookup::SpelledName(EntryKind kind, std::string_view name) {
  const char* keyword = "";
  if (kind == EntryKind::kStruct) keyword = "struct ";
  if (kind == EntryKind::kUnion) keyword = "union ";
  if (kind == EntryKind::kClass) keyword = "class ";
  if (kind == EntryKind::kEnum) keyword = "enum ";
  return std::string(keyword).append(name);
}

}  // namespace targets

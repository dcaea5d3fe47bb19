#include "targets/DwarfText.h"

#include <limits>

namespace targets {
namespace {

/// Levels of pointers and arrays that a text spells out.
constexpr int kMostLevels = 32;

const char* TagKeyword(int tag) {
  switch (tag) {
    case DW_TAG_union_type:
      return "union ";
    case DW_TAG_class_type:
      return "class ";
    case DW_TAG_enumeration_type:
      return "enum ";
    default:
      return "struct ";
  }
}

/// Adds what stands around the name: `*` on its left, `[3]` and `()` on its right.
void AddPointer(std::string* around) {
  around->insert(around->begin(), '*');
}

void AddSuffix(std::string* around, const std::string& suffix) {
  if (around->starts_with('*')) *around = "(" + *around + ")";
  *around += suffix;
}

std::uint64_t CountOf(const DwarfFile& file, const Dwarf_Die& subrange) {
  if (const auto count = file.Unsigned(subrange, DW_AT_count)) return *count;
  const std::optional<Dwarf_Attribute> attribute = file.Attribute(subrange, DW_AT_upper_bound);
  if (!attribute) return 0;
  const std::optional<DwarfConstant> upper = ReadConstant(*attribute);
  // Some compilers write -1 in 4 bytes for an array without elements.
  if (!upper || (!upper->isSigned && upper->value == std::numeric_limits<std::uint32_t>::max())) {
    return 0;
  }
  const std::uint64_t lower = file.Unsigned(subrange, DW_AT_lower_bound).value_or(0);
  const auto count = static_cast<std::int64_t>(upper->value - lower);
  return count < 0 ? 0 : static_cast<std::uint64_t>(count) + 1;
}

}  // namespace

bool IsTransparent(int tag) {
  switch (tag) {
    case DW_TAG_typedef:
    case DW_TAG_const_type:
    case DW_TAG_volatile_type:
    case DW_TAG_restrict_type:
    case DW_TAG_atomic_type:
    case DW_TAG_packed_type:
    case DW_TAG_shared_type:
    case DW_TAG_immutable_type:
    case DW_TAG_template_alias:
      return true;
    default:
      return false;
  }
}

bool IsPointerTag(int tag) {
  return tag == DW_TAG_pointer_type || tag == DW_TAG_reference_type ||
         tag == DW_TAG_rvalue_reference_type;
}

bool IsStructureTag(int tag) {
  return tag == DW_TAG_structure_type || tag == DW_TAG_union_type || tag == DW_TAG_class_type ||
         tag == DW_TAG_interface_type;
}

std::string TagText(const DwarfFile& file, const Dwarf_Die& type) {
  std::string_view name = file.Name(type);
  // What stands for a type in a unit of its own does not repeat its name.
  const auto signature = file.Attribute(type, DW_AT_signature);
  if (name.empty() && signature) name = file.Name(file.Reference(type, *signature));
  std::string text = TagKeyword(file.Tag(type));
  return text.append(name.empty() ? std::string_view("<anonymous>") : name);
}

std::vector<std::uint64_t> ArrayCounts(const DwarfFile& file, const Dwarf_Die& array) {
  std::vector<std::uint64_t> counts;
  for (auto die = file.Child(array); die; die = file.Sibling(*die)) {
    const int tag = file.Tag(*die);
    if (tag == DW_TAG_subrange_type) counts.push_back(CountOf(file, *die));
    if (tag == DW_TAG_enumeration_type || tag == DW_TAG_generic_subrange) counts.push_back(0);
  }
  if (counts.empty()) counts.push_back(0);
  return counts;
}

std::string TypeText(const DwarfFile& file, std::optional<Dwarf_Die> type) {
  std::string around;
  std::string base = "void";
  for (int level = 0; type; ++level) {
    const int tag = file.Tag(*type);
    const bool goesOn = level < kMostLevels;
    if (IsPointerTag(tag) && goesOn) {
      AddPointer(&around);
    } else if (tag == DW_TAG_array_type && goesOn) {
      std::string suffix;
      for (const std::uint64_t count : ArrayCounts(file, *type)) {
        suffix += '[';
        if (count != 0) suffix += std::to_string(count);
        suffix += ']';
      }
      AddSuffix(&around, suffix);
    } else if (tag == DW_TAG_subroutine_type && goesOn) {
      AddSuffix(&around, "()");
    } else if (tag == DW_TAG_ptr_to_member_type) {
      base = "pointer to member";
      break;
    } else if (!IsTransparent(tag) || tag == DW_TAG_typedef || !goesOn) {
      base = IsStructureTag(tag) || tag == DW_TAG_enumeration_type ? TagText(file, *type)
                                                                   : std::string(file.Name(*type));
      if (base.empty()) base = goesOn ? "<unnamed type>" : "...";
      break;
    }
    type = file.TypeOf(*type);
  }
  return around.empty() ? base : base + " " + around;
}

}  // namespace targets

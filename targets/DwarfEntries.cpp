#include "targets/DwarfEntries.h"

#include <cstring>
#include <utility>

namespace targets {
namespace {

/// Compilers number abbreviations from 1 up; a large unit has a few hundred.
constexpr std::uint64_t kMostShapes = 4096;

/// More than any compiler gives an entry. libdw counts to an attribute from the first one.
constexpr std::size_t kMostAttributes = 64;

/// Reads a LEB128 number that fits 63 bits; null when it does not or runs over the end.
const unsigned char* ReadNumber(const unsigned char* at, const unsigned char* end,
                                std::uint64_t* number) {
  std::uint64_t value = 0;
  for (unsigned shift = 0; at < end && shift < 63; shift += 7) {
    value |= std::uint64_t{*at & 0x7FU} << shift;
    if ((*at++ & 0x80U) == 0) {
      *number = value;
      return at;
    }
  }
  return nullptr;
}

int CollectAttribute(Dwarf_Attribute* attribute, void* collected) {
  static_cast<std::vector<Dwarf_Attribute>*>(collected)->push_back(*attribute);
  return DWARF_CB_OK;
}

}  // namespace

DwarfEntries::DwarfEntries(const DwarfFile& file, const Dwarf_Die& unit, DieAddress end,
                           Wanted wanted)
    : file_(file), wanted_(wanted), end_(static_cast<Bytes>(end)) {
  if (dwarf_cu_info(unit.cu, &version_, nullptr, nullptr, nullptr, nullptr, &addressSize_,
                    &offsetSize_) != 0) {
    end_ = nullptr;
  }
}

/// Bytes of a form, if all its values have as many.
std::optional<std::uint32_t> DwarfEntries::SizeOf(unsigned int form) const {
  switch (form) {
    case DW_FORM_flag_present:
    case DW_FORM_implicit_const:
      return 0;
    case DW_FORM_data1:
    case DW_FORM_ref1:
    case DW_FORM_flag:
    case DW_FORM_strx1:
    case DW_FORM_addrx1:
      return 1;
    case DW_FORM_data2:
    case DW_FORM_ref2:
    case DW_FORM_strx2:
    case DW_FORM_addrx2:
      return 2;
    case DW_FORM_strx3:
    case DW_FORM_addrx3:
      return 3;
    case DW_FORM_data4:
    case DW_FORM_ref4:
    case DW_FORM_strx4:
    case DW_FORM_addrx4:
      return 4;
    case DW_FORM_data8:
    case DW_FORM_ref8:
    case DW_FORM_ref_sig8:
      return 8;
    case DW_FORM_data16:
      return 16;
    case DW_FORM_addr:
      return addressSize_;
    case DW_FORM_ref_addr:
      // Has had the size of an offset since version 3.
      return version_ < 3 ? addressSize_ : offsetSize_;
    case DW_FORM_strp:
    case DW_FORM_line_strp:
    case DW_FORM_sec_offset:
    case DW_FORM_strp_sup:
    case DW_FORM_GNU_strp_alt:
    case DW_FORM_GNU_ref_alt:
      return offsetSize_;
    default:
      return std::nullopt;
  }
}

DwarfEntries::Bytes DwarfEntries::Skip(Bytes at, unsigned int form) const {
  std::uint64_t length = 0;
  switch (form) {
    case DW_FORM_sdata:
    case DW_FORM_udata:
    case DW_FORM_ref_udata:
    case DW_FORM_strx:
    case DW_FORM_addrx:
    case DW_FORM_loclistx:
    case DW_FORM_rnglistx:
    case DW_FORM_GNU_str_index:
    case DW_FORM_GNU_addr_index:
      while (at < end_ && (*at & 0x80U) != 0) ++at;
      length = 1;
      break;
    case DW_FORM_string:
      if (at >= end_) return nullptr;
      at = static_cast<Bytes>(std::memchr(at, 0, static_cast<std::size_t>(end_ - at)));
      if (at == nullptr) return nullptr;
      length = 1;
      break;
    case DW_FORM_block1:
      if (at >= end_) return nullptr;
      length = *at++;
      break;
    case DW_FORM_block:
    case DW_FORM_exprloc:
      at = ReadNumber(at, end_, &length);
      if (at == nullptr) return nullptr;
      break;
    default:
      return nullptr;
  }
  return length <= static_cast<std::uint64_t>(end_ - at) ? at + length : nullptr;
}

DwarfEntries::Shape DwarfEntries::Describe(Dwarf_Die die) const {
  Shape shape;
  shape.tag = file_.Tag(die);
  shape.hasChildren = dwarf_haschildren(&die) > 0;
  shape.namesSibling = shape.hasChildren;
  // Set by the question before.
  shape.abbreviation = die.abbrev;
  // The list ends with two zeros, of which only one is an error that libdw has to name.
  for (std::size_t i = 0; i <= kMostAttributes; ++i) {
    Step step;
    shape.isPlain = dwarf_getabbrevattr_data(shape.abbreviation, i, &step.name, &step.form, nullptr,
                                             nullptr) != 0;
    if (shape.isPlain || step.name == 0 || step.form == 0) break;
    shape.namesSibling = shape.namesSibling || step.name == DW_AT_sibling;
    step.isWanted = wanted_(step.name);
    // Its value is not among the entry's bytes.
    if (step.isWanted && step.form == DW_FORM_implicit_const) break;
    const std::optional<std::uint32_t> size = SizeOf(step.form);
    step.varies = !size;
    step.size = size.value_or(0);
    if (!step.varies && !step.isWanted) {
      shape.rest += step.size;
      continue;
    }
    step.before = std::exchange(shape.rest, 0);
    shape.steps.push_back(step);
  }
  return shape;
}

const DwarfEntries::Place& DwarfEntries::Find(const Dwarf_Die& die) {
  if (last_.die == die.addr) return last_;
  last_ = Place{};
  last_.die = die.addr;
  std::uint64_t code = 0;
  const Bytes attributes =
      end_ == nullptr ? nullptr : ReadNumber(static_cast<Bytes>(die.addr), end_, &code);
  if (attributes == nullptr || code == 0 || code >= kMostShapes) return last_;
  if (code >= shapes_.size()) shapes_.resize(code + 1);
  std::unique_ptr<Shape>& shape = shapes_[code];
  if (shape == nullptr) shape = std::make_unique<Shape>(Describe(die));
  last_.shape = shape.get();
  last_.attributes = attributes;
  if (shape->isPlain) last_.end = EndOf(*shape, attributes);
  return last_;
}

DwarfEntries::Bytes DwarfEntries::EndOf(const Shape& shape, Bytes at) const {
  const auto step = [&](std::uint32_t count) {
    if (count > static_cast<std::uint64_t>(end_ - at)) return false;
    at += count;
    return true;
  };
  for (const Step& next : shape.steps) {
    if (!step(next.before + next.size)) return nullptr;
    if (next.varies && (at = Skip(at, next.form)) == nullptr) return nullptr;
  }
  return step(shape.rest) ? at : nullptr;
}

/// The entry whose bytes begin here; nothing for the zero that ends a list of entries.
std::optional<Dwarf_Die> DwarfEntries::EntryAt(Bytes at, const Dwarf_Die& sibling) {
  if (*at == 0) return std::nullopt;
  Dwarf_Die die{};
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast): libdw's type; it only reads.
  die.addr = const_cast<unsigned char*>(at);
  die.cu = sibling.cu;
  if (const Shape* const shape = Find(die).shape) die.abbrev = shape->abbreviation;
  return die;
}

std::optional<Dwarf_Die> DwarfEntries::Sibling(const Dwarf_Die& die) {
  const Place& place = Find(die);
  if (place.end == nullptr || place.end == end_ || place.shape->namesSibling) {
    return file_.Sibling(die);
  }
  return EntryAt(place.end, die);
}

std::optional<Dwarf_Die> DwarfEntries::Child(const Dwarf_Die& die) {
  const Place& place = Find(die);
  if (place.end == nullptr || place.end == end_) return file_.Child(die);
  return place.shape->hasChildren ? EntryAt(place.end, die) : std::nullopt;
}

int DwarfEntries::Tag(const Dwarf_Die& die) {
  const Shape* const shape = Find(die).shape;
  return shape != nullptr ? shape->tag : file_.Tag(die);
}

bool DwarfEntries::HasChildren(const Dwarf_Die& die) {
  if (const Shape* const shape = Find(die).shape) return shape->hasChildren;
  Dwarf_Die copy = die;
  return dwarf_haschildren(&copy) > 0;
}

std::vector<Dwarf_Attribute> DwarfEntries::CollectAttributes(const Dwarf_Die& die) const {
  DwarfFile::ForgetErrors();
  Dwarf_Die copy = die;
  std::vector<Dwarf_Attribute> attributes;
  if (dwarf_getattrs(&copy, CollectAttribute, &attributes, 0) == -1) {
    file_.Broken(die, dwarf_errmsg(-1));
  }
  std::erase_if(attributes, [this](const Dwarf_Attribute& each) { return !wanted_(each.code); });
  return attributes;
}

}  // namespace targets

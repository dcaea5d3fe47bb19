#include "targets/DescribedTypes.h"

#include <limits>
#include <stdexcept>
#include <utility>

#include "targets/TypeDeclaration.h"
#include "targets/TypeNames.h"

namespace targets {
namespace {

using Kind = TypeShape::Kind;

/// Longer chains of pointers, arrays and names are taken for endless ones.
constexpr std::size_t kLongestChain = 256;
/// Structures within structures.
constexpr std::size_t kDeepestNesting = 200;
/// Records hold sizes below 4 GiB, and are rounded up by up to 8 bytes.
constexpr std::uint64_t kLargestType = std::numeric_limits<std::uint32_t>::max() - 8;

std::string Quoted(const std::string& text) {
  return "`" + text + "`";
}

bool Fits(std::uint64_t value, std::uint64_t size, bool isSigned) {
  if (size >= 8) return true;
  const std::uint64_t half = std::uint64_t{1} << (size * 8 - 1);
  // From -half on when the half is added, everything that fits lies side by side.
  return isSigned ? value + half < 2 * half : value < 2 * half;
}

}  // namespace

DescribedTypes::DescribedTypes(const Description& description) : description_(description) {
  layout_.pointerSize = description.pointerSize;
  layout_.order = description.order;
  layout_.plainCharIsSigned = description.plainCharIsSigned;
  AddBasicTypes();
  for (const DescribedStructure& structure : description.structures) {
    TypeShape shape;
    shape.kind = structure.isUnion ? Kind::kUnion : Kind::kStructure;
    shape.isIncomplete = !structure.fields.has_value();
    AddNamed((structure.isUnion ? "union " : "struct ") + structure.tag, shape, structure.spot);
    entries_.back().structure = &structure;
  }
  for (const DescribedEnumeration& enumeration : description.enumerations) {
    AddEnumeration(enumeration);
  }
  const auto firstName = static_cast<TypeNumber>(entries_.size() + 1);
  for (const DescribedName& name : description.typedefs) {
    AddNamed(name.name, {}, name.spot);
    entries_.back().isTypedef = true;
  }
  // Texts may use any of these names, so they are read when all are known.
  const auto names = static_cast<TypeNumber>(entries_.size());
  for (std::size_t i = 0; i < description.typedefs.size(); ++i) {
    const TypeNumber meant = Parse(description.typedefs[i].type, nullptr);
    At(firstName + static_cast<TypeNumber>(i)).behind = meant;
  }
  for (TypeNumber type = 1; type <= names; ++type) {
    if (At(type).structure != nullptr) ParseFields(type);
  }
  for (TypeNumber type = firstName; type <= names; ++type) CheckChain(type);
  for (TypeNumber type = 1; type <= entries_.size(); ++type) Complete(type, 0);
  for (TypeNumber type = firstName; type <= names; ++type) {
    std::string name = std::move(At(type).shape.name);
    At(type).shape = At(Behind(type)).shape;
    At(type).shape.name = std::move(name);
  }
}

TypeNumber DescribedTypes::Add(TypeShape shape, const Spot& spot) {
  Entry& entry = entries_.emplace_back();
  entry.shape = std::move(shape);
  entry.spot = spot;
  return static_cast<TypeNumber>(entries_.size());
}

void DescribedTypes::AddNamed(std::string name, TypeShape shape, const Spot& spot) {
  shape.name = name;
  const TypeNumber number = Add(std::move(shape), spot);
  named_.emplace(std::move(name), number);
}

void DescribedTypes::AddBasicTypes() {
  const auto add = [this](std::string name, Kind kind, std::uint64_t size, bool isSigned) {
    TypeShape shape;
    shape.kind = kind;
    shape.size = size;
    shape.isSigned = isSigned;
    shape.isText = name == "char";
    AddNamed(std::move(name), std::move(shape), {});
    entries_.back().alignment = size;
  };
  add("void", Kind::kVoid, 0, false);
  add("_Bool", Kind::kBoolean, 1, false);
  add("char", Kind::kCharacter, 1, description_.plainCharIsSigned);
  add("signed char", Kind::kCharacter, 1, true);
  add("unsigned char", Kind::kCharacter, 1, false);
  for (const auto& [name, size] : description_.sizes) {
    if (name == "double") continue;
    add(name, Kind::kInteger, size, true);
    add("unsigned " + name, Kind::kInteger, size, false);
  }
  add("float", Kind::kFloating, 4, false);
  add("double", Kind::kFloating, description_.sizes.at("double"), false);
}

void DescribedTypes::AddEnumeration(const DescribedEnumeration& enumeration) {
  TypeShape shape;
  shape.kind = Kind::kEnumeration;
  shape.size = enumeration.size.value_or(description_.sizes.at("int"));
  shape.enumerators = enumeration.values;
  bool anyNegative = false;
  for (const EnumeratorShape& value : enumeration.values) {
    anyNegative = anyNegative || static_cast<std::int64_t>(value.value) < 0;
  }
  shape.isSigned = enumeration.isSigned.value_or(anyNegative);
  for (std::size_t i = 0; i < enumeration.values.size(); ++i) {
    if (Fits(enumeration.values[i].value, shape.size, shape.isSigned)) continue;
    description_.Fail(enumeration.spots[i],
                      "the value does not fit into " + std::string(shape.isSigned ? "" : "un") +
                          "signed " + std::to_string(shape.size) +
                          " bytes; `size` gives the enumeration another size");
  }
  const std::uint64_t size = shape.size;
  AddNamed("enum " + enumeration.tag, std::move(shape), enumeration.spot);
  entries_.back().alignment = size;
}

TypeNumber DescribedTypes::Derived(Kind kind, TypeNumber target, std::optional<std::uint64_t> count,
                                   const Spot& spot) {
  const auto [place, isNew] = derived_.try_emplace({kind, target, count}, 0);
  if (!isNew) return place->second;
  TypeShape shape;
  shape.kind = kind;
  shape.target = target;
  shape.count = count;
  if (kind == Kind::kPointer) shape.size = description_.pointerSize;
  const TypeNumber number = Add(std::move(shape), spot);
  place->second = number;
  Entry& entry = At(number);
  if (kind == Kind::kPointer) entry.alignment = description_.pointerSize;
  entry.shape.name = Written(number);
  return number;
}

std::string DescribedTypes::Written(TypeNumber type) const {
  std::string around;
  const auto addBehind = [&](const std::string& suffix) {
    if (around.starts_with('*')) around = "(" + around + ")";
    around += suffix;
  };
  while (true) {
    const Entry& entry = At(type);
    const Kind kind = entry.isTypedef ? Kind::kOther : entry.shape.kind;
    if (kind == Kind::kPointer) {
      around.insert(around.begin(), '*');
    } else if (kind == Kind::kArray) {
      addBehind("[" + (entry.shape.count ? std::to_string(*entry.shape.count) : "") + "]");
    } else if (kind == Kind::kFunction) {
      addBehind("()");
    } else {
      return entry.shape.name + (around.empty() ? "" : " ") + around;
    }
    type = entry.shape.target;
  }
}

TypeNumber DescribedTypes::Parse(const DescribedType& text, std::optional<std::uint64_t>* bits) {
  TypeDeclaration declaration;
  try {
    declaration = ReadTypeDeclaration(text.text);
  } catch (const std::invalid_argument& error) {
    description_.Fail(text.spot, "the type " + Quoted(text.text) + ": " + error.what());
  }
  if (declaration.bits && bits == nullptr) {
    description_.Fail(text.spot, "only a field can be a bit-field");
  }
  if (bits != nullptr) *bits = declaration.bits;
  const auto name = CanonicalTypeName(declaration.base,
                                      [this](std::string_view base) { return Find(base) != 0; });
  if (!name) description_.Fail(text.spot, "there is no type " + Quoted(declaration.base));
  TypeNumber type = named_.find(name->base)->second;
  for (auto step = declaration.steps.rbegin(); step != declaration.steps.rend(); ++step) {
    switch (step->kind) {
      case TypeStep::Kind::kPointer:
        type = Derived(Kind::kPointer, type, {}, text.spot);
        break;
      case TypeStep::Kind::kArray:
        type = Derived(Kind::kArray, type, step->count, text.spot);
        break;
      case TypeStep::Kind::kFunction:
        type = Derived(Kind::kFunction, type, {}, text.spot);
        break;
    }
  }
  return type;
}

void DescribedTypes::ParseFields(TypeNumber type) {
  const DescribedStructure& structure = *At(type).structure;
  if (!structure.fields) return;
  for (const DescribedField& field : *structure.fields) {
    std::optional<std::uint64_t> bits;
    const TypeNumber fieldType = Parse(field.type, &bits);
    At(type).fieldTypes.push_back(fieldType);
    At(type).bits.push_back(bits);
  }
}

/// A name that stands for itself through pointers and arrays has no end.
void DescribedTypes::CheckChain(TypeNumber type) const {
  const Spot& spot = At(type).spot;
  for (std::size_t steps = 0; steps < kLongestChain; ++steps) {
    const Entry& entry = At(type);
    type = entry.isTypedef ? entry.behind : entry.shape.target;
    if (type == 0) return;
  }
  description_.Fail(spot, "the type is defined in terms of itself, or of more than " +
                              std::to_string(kLongestChain) + " others");
}

void DescribedTypes::Complete(TypeNumber type, std::size_t depth) {
  Entry& entry = At(type);
  if (entry.state == State::kDone) return;
  if (entry.state == State::kRunning) {
    description_.Fail(entry.spot, Quoted(entry.shape.name) + " holds itself");
  }
  if (depth > kDeepestNesting + kLongestChain) {
    description_.Fail(entry.spot, "types are nested too deeply");
  }
  entry.state = State::kRunning;
  if (entry.isTypedef) {
    Complete(entry.behind, depth + 1);
  } else if (entry.shape.kind == Kind::kArray) {
    CompleteArray(type, depth);
  } else if (entry.structure != nullptr && entry.structure->fields) {
    LayOut(type, depth);
  }
  entry.state = State::kDone;
}

void DescribedTypes::CompleteArray(TypeNumber type, std::size_t depth) {
  Entry& entry = At(type);
  Complete(entry.shape.target, depth + 1);
  CheckObject(entry.shape.target, entry.spot);
  const Entry& element = At(Behind(entry.shape.target));
  if (element.shape.kind == Kind::kArray && !element.shape.count) {
    description_.Fail(entry.spot, "only the outermost dimension may be without a number");
  }
  const std::uint64_t count = entry.shape.count.value_or(0);
  if (element.shape.size != 0 && count > kLargestType / element.shape.size) {
    description_.Fail(entry.spot, Quoted(entry.shape.name) + " is larger than 4 GiB");
  }
  entry.shape.size = count * element.shape.size;
  entry.alignment = element.alignment;
}

/// Fails unless there can be objects of that type, which has been completed.
void DescribedTypes::CheckObject(TypeNumber type, const Spot& spot) const {
  const TypeShape& shape = At(Behind(type)).shape;
  if (shape.kind != Kind::kVoid && shape.kind != Kind::kFunction && !shape.isIncomplete) return;
  description_.Fail(spot, Quoted(At(type).shape.name) + " has no size");
}

TypeNumber DescribedTypes::OfText(const DescribedType& text) {
  const TypeNumber type = Parse(text, nullptr);
  // Derived types get the numbers behind all others; the ones that they are made of come first.
  Complete(type, 0);
  if (At(Behind(type)).shape.kind != Kind::kFunction) CheckObject(type, text.spot);
  return type;
}

TypeNumber DescribedTypes::Find(std::string_view name) const {
  const auto found = named_.find(name);
  if (found != named_.end()) return found->second;
  const auto record = recordNames_.find(name);
  return record == recordNames_.end() ? 0 : record->second;
}

const TypeShape* DescribedTypes::Shape(TypeNumber type) const {
  return type == 0 || type > entries_.size() ? nullptr : &At(type).shape;
}

TypeNumber DescribedTypes::Behind(TypeNumber type) const {
  while (At(type).isTypedef) type = At(type).behind;
  return type;
}

void DescribedTypes::VisitNamed(
    const std::function<void(std::string_view, TypeNumber)>& visit) const {
  for (const auto& [name, number] : named_) {
    // Basic types are no news.
    if (CanonicalBasicType(name) != name) visit(name, number);
  }
}

}  // namespace targets

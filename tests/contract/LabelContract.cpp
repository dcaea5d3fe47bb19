#include "contract/LabelContract.h"

#include <algorithm>
#include <optional>
#include <set>
#include <string_view>
#include <utility>

#include "targets/Error.h"

namespace contract {
namespace {

using targets::Error;
using targets::Label;
using targets::LabelSource;
using targets::TypeShape;

/// No name of a program: a C identifier cannot be so, and an assembler's is not.
constexpr std::string_view kNoName = "no such name";

/// Could the text be typed as the name of a field?
bool IsFieldName(std::string_view text) {
  return !text.empty() && std::none_of(text.begin(), text.end(), [](char c) { return c == ' '; });
}

class Check {
 public:
  Check(LabelSource& source, const KnownLabels& known) : source_(source), known_(known) {}

  std::vector<std::string> Run() {
    if (source_.PointerSize() < 1 || source_.PointerSize() > 8) Complain("pointers of no size");
    if (source_.FindLabel(kNoName)) Complain("a label that does not exist is found");
    if (source_.HasType(kNoName)) Complain("a type that does not exist is known");
    if (source_.FindType(kNoName)) Complain("a type that does not exist is described");
    if (source_.Shape(0) != nullptr) Complain("the number 0 has a shape");
    for (const KnownLabel& label : known_.labels) {
      Labelled(label);
      Labelled(label);
    }
    for (const std::string& name : known_.types) Type(name);
    Listings();
    WalkNames();
    return std::move(complaints_);
  }

 private:
  void Labelled(const KnownLabel& known) {
    const std::optional<Label> label = source_.FindLabel(known.name);
    if (!label) return Complain(known.name + " is not found");
    if (label->value != known.value) Complain(known.name + " has another value");
    if (label->kind != known.kind) Complain(known.name + " is of another kind");
    if (label->typed != known.typed) {
      return Complain(known.name + (known.typed ? " has no type" : " has a type"));
    }
    if (known.typed) {
      Record(known.name, label->type);
      if (const TypeShape* shape = source_.Shape(label->type.TypeNumber)) {
        if (shape->size != known.size) Complain("the shape of " + known.name + " has another size");
      }
    }
    const bool placed = known.kind != targets::LabelKind::kEnumerator;
    if (const auto nearest = placed ? source_.LabelAt(known.value) : std::nullopt) {
      if (nearest->offset != 0)
        Complain("the label at the address of " + known.name + " is before it");
    }
  }

  void Type(const std::string& name) {
    if (!source_.HasType(name)) Complain("the type " + name + " is not known");
    const std::optional<DataLableType> type = source_.FindType(name);
    if (!type) return Complain("the type " + name + " is not described");
    Full(name, *type);
    if (const targets::TypeNumber number = source_.FindShape(name); number != 0)
      Shape(name, number);
  }

  /// A record as objects, elements, pointees and fields have it. Walks it with a worklist, as the
  /// resolver does: it may be deep.
  void Record(const std::string& owner, const DataLableType& record) {
    std::vector<const DataLableType*> pending{&record};
    while (!pending.empty()) {
      const DataLableType& next = *pending.back();
      pending.pop_back();
      One(owner, next);
      for (const DataLableType& member : next.Members) pending.push_back(&member);
      for (const std::string& name : next.NestedTypes) names_.insert(name);
    }
  }

  void One(const std::string& owner, const DataLableType& record) {
    if (record.PointerSize != source_.PointerSize())
      Complain(owner + ": a pointer size of its own");
    if (record.IsFloat && record.IsDouble) Complain(owner + ": both float and double");
    if ((record.IsFloat && record.Size != 4) || (record.IsDouble && record.Size != 8)) {
      Complain(owner + ": a floating number of the wrong size");
    }
    if ((record.IsFloat || record.IsDouble) && record.IsSigned) {
      Complain(owner + ": a floating number with the sign of an integer");
    }
    if (record.IsAddress) Complain(owner + ": a type that is an address already");
    if ((record.IsPointer || record.IsArray) && record.Members.size() != 1) {
      Complain(owner + ": a pointer or array without its one element");
    }
    if (!record.NestedTypes.empty() && !record.Members.empty()) {
      Complain(owner + ": a structure that is both a stub and full");
    }
    // A field's shell holds one stub; everything else without stars or brackets is a number.
    const bool composite = record.IsPointer || record.IsArray || !record.NestedTypes.empty() ||
                           !record.Members.empty();
    if (!composite && (record.Size < 1 || record.Size > 8)) {
      Complain(owner + ": a number of " + std::to_string(record.Size) + " bytes");
    }
    if (const TypeShape* shape = source_.Shape(record.TypeNumber)) Agree(owner, record, *shape);
  }

  void Agree(const std::string& owner, const DataLableType& record, const TypeShape& shape) {
    using Kind = TypeShape::Kind;
    const bool pointer = record.IsPointer && !record.IsArray;
    if (pointer != (shape.kind == Kind::kPointer)) {
      Complain(owner + ": record and shape disagree about a pointer");
    }
    if (record.IsArray != (shape.kind == Kind::kArray)) {
      Complain(owner + ": record and shape disagree about an array");
    }
    if (shape.size > record.Size) Complain(owner + ": the shape is larger than the record");
    Shape(owner, record.TypeNumber);
  }

  /// The full record of a type.
  void Full(const std::string& name, const DataLableType& record) {
    for (const DataLableType& member : record.Members) {
      Record(name, member);
      const bool structure = !record.IsPointer && !record.IsArray;
      if (structure && member.Name.empty()) Complain(name + ": a field without a name");
    }
    for (const std::string& nested : record.NestedTypes) names_.insert(nested);
    if (IsFieldName(record.Name) && record.NestedTypes.empty() && !record.Members.empty()) {
      Complain(name + ": its record is called like a field, " + record.Name);
    }
  }

  void Shape(const std::string& owner, targets::TypeNumber number) {
    if (!shapes_.insert(number).second) return;
    const TypeShape* shape = source_.Shape(number);
    if (shape == nullptr) return Complain(owner + ": a number without a shape");
    if (source_.Shape(number) != shape) Complain(owner + ": a shape that does not stay");
    for (const targets::FieldShape& field : shape->fields) {
      const TypeShape* type = source_.Shape(field.type);
      if (type == nullptr) {
        Complain(owner + ": the field " + field.name + " has no shape");
        continue;
      }
      const std::uint64_t end =
          field.offset + (field.bits != 0 ? (field.firstBit + field.bits + 7) / 8 : type->size);
      if (end > shape->size) Complain(owner + ": the field " + field.name + " sticks out");
    }
    const bool hasTarget =
        shape->kind == TypeShape::Kind::kPointer || shape->kind == TypeShape::Kind::kArray;
    if (hasTarget && source_.Shape(shape->target) == nullptr) {
      Complain(owner + ": a pointer or array to a type without a shape");
    }
  }

  /// Lookups of listed names find them, or fail and say why.
  void Listings() {
    std::vector<std::string> labels;
    std::vector<std::string> types;
    try {
      source_.ListLabels([&](const targets::Listing& line) { labels.push_back(line.name); });
      source_.ListTypes([&](const targets::Listing& line) { types.push_back(line.name); });
    } catch (const Error&) {
      // Broken information ends a listing after all that could be read.
    }
    if (!std::is_sorted(labels.begin(), labels.end())) Complain("labels are listed out of order");
    if (!std::is_sorted(types.begin(), types.end())) Complain("types are listed out of order");
    for (const std::string& name : labels) {
      Attempt([&] {
        if (!source_.FindLabel(name)) Complain("the label " + name + " is listed, but not found");
      });
    }
    for (const std::string& name : types) {
      Attempt([&] {
        if (source_.HasType(name) && !source_.FindType(name)) {
          Complain("the type " + name + " is known, but not described");
        }
      });
    }
    Visited("label", labels, [&](const auto& visit) { source_.VisitLabelNames(visit); });
    Visited("type", types, [&](const auto& visit) { source_.VisitTypeNames(visit); });
  }

  template <typename Visit>
  void Visited(const std::string& what, const std::vector<std::string>& listed, Visit visitAll) {
    std::set<std::string, std::less<>> visited;
    Attempt([&] {
      visitAll(std::function<void(std::string_view)>(
          [&](std::string_view name) { visited.emplace(name); }));
    });
    for (const std::string& name : listed) {
      if (!visited.contains(name))
        Complain("the " + what + " " + name + " is listed, but not visited");
    }
  }

  /// Every record name leads on, as often as it takes.
  void WalkNames() {
    std::set<std::string> walked;
    while (!names_.empty()) {
      const std::string name = *names_.begin();
      names_.erase(names_.begin());
      if (!walked.insert(name).second) continue;
      Attempt([&] {
        if (!source_.HasType(name)) Complain("the record name " + name + " is not known");
        const std::optional<DataLableType> type = source_.FindType(name);
        if (!type) return Complain("the record name " + name + " leads nowhere");
        Full(name, *type);
      });
    }
  }

  /// A lookup may fail, as opposed to find nothing; then it says why.
  template <typename Lookup>
  void Attempt(Lookup lookup) {
    try {
      lookup();
    } catch (const Error& error) {
      if (std::string_view(error.what()).empty()) Complain("a failure without a reason");
    }
  }

  void Complain(std::string sentence) {
    if (said_.insert(sentence).second) complaints_.push_back(std::move(sentence));
  }

  LabelSource& source_;
  const KnownLabels& known_;
  std::set<std::string> names_;
  std::set<targets::TypeNumber> shapes_;
  std::set<std::string> said_;
  std::vector<std::string> complaints_;
};

}  // namespace

std::vector<std::string> CheckLabelSource(LabelSource& source, const KnownLabels& known) {
  return Check(source, known).Run();
}

}  // namespace contract

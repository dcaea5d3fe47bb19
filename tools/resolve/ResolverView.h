#ifndef STRINGRESOLVER_TOOLS_RESOLVE_RESOLVERVIEW_H
#define STRINGRESOLVER_TOOLS_RESOLVE_RESOLVERVIEW_H

#include "resolver/StringParametersResolving.h"
#include "targets/LabelSource.h"

namespace tool {

/// A resolver whose last element can be looked at: the result before its final read, and how far a
/// failed resolution came.
class ResolverView : public TStringResolver {
 public:
  using TStringResolver::TStringResolver;

  /// Did any resolution leave a result block?
  [[nodiscard]] bool HasResult() const { return !areaBlocks.empty(); }

  /// The result block before its final read. Only after a resolution that came so far.
  [[nodiscard]] const AreaBlock& Result() const { return areaBlocks.front(); }

  /// The type of the object that the result denotes: what its address points to, of an array its
  /// first element, which is what the final read reads.
  [[nodiscard]] const DataLableType& ObjectType() const {
    const DataLableType* type = &Result().Type;
    if (type->IsAddress) type = &First(*type);
    while (type->IsArray) type = &First(*type);
    return *type;
  }

  /// What the result's type points to.
  [[nodiscard]] const DataLableType& Pointee() const { return First(Result().Type); }

  /// Is the result the address that a subscript of an array gives, whose type is still that of an
  /// array? Its number is the element's.
  [[nodiscard]] bool IsSubscripted(targets::LabelSource& labels) const {
    const DataLableType& type = Result().Type;
    if (type.TypeNumber == 0 || !type.IsPointer || type.IsArray) return false;
    const DataLableType& array = First(type);
    const targets::TypeShape* const shape = labels.Shape(array.TypeNumber);
    return array.IsArray && shape != nullptr && shape->target == type.TypeNumber;
  }

  /// Does the result's address hold an array?
  [[nodiscard]] bool IsArray() const {
    const DataLableType& type = Result().Type;
    return type.IsAddress ? First(type).IsArray : type.IsArray;
  }

  /// Did the last element end at a `+` or `-` with a pointer on its right side only? The resolver
  /// refuses that without a message.
  [[nodiscard]] bool EndedAtPointerOnTheRight() const {
    const AreaBlock* left = nullptr;
    for (const AreaBlock& block : areaBlocks) {
      const bool sum = block.Relation == kAdd || block.Relation == kSubtract;
      if (left != nullptr && sum && IsPointer(block.Type) && !IsPointer(left->Type)) return true;
      left = &block;
    }
    return false;
  }

 private:
  static bool IsPointer(const DataLableType& type) { return type.IsPointer && !type.IsAddress; }

  [[nodiscard]] const DataLableType& First(const DataLableType& type) const {
    return type.Members.empty() ? defaultType : type.Members.front();
  }
};

}  // namespace tool

#endif  // STRINGRESOLVER_TOOLS_RESOLVE_RESOLVERVIEW_H

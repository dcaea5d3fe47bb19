#ifndef STRINGRESOLVER_TARGETS_DESCRIBEDTYPES_H
#define STRINGRESOLVER_TARGETS_DESCRIBEDTYPES_H

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <unordered_map>
#include <vector>

#include "host/DataLableType.h"
#include "targets/Description.h"
#include "targets/LabelSource.h"
#include "targets/RecordShapes.h"
#include "targets/TypeRecord.h"
#include "targets/TypeShape.h"

namespace targets {

/// The types of a description: every one has a number, a shape and, once it is asked for, a record.
class DescribedTypes {
 public:
  /// `description` is borrowed and must outlive this object. Everything in it is checked here.
  /// Throws `Error` (`kFileUnusable`) that names line and column: types that do not exist, have no
  /// size where one is needed, hold themselves, are too large; fields that fit nowhere.
  explicit DescribedTypes(const Description& description);

  /// The number of the type that a text of the description means, sized where it is an object's.
  /// Throws as above.
  TypeNumber OfText(const DescribedType& text);

  /// Chooses the shapes of records that fit addresses up to this one. To be called before the first
  /// record is asked for.
  void SetHighestAddress(std::uint64_t address) { layout_.highestAddress = address; }

  /// The type called `name`: canonical, as `LabelSource::HasType` takes it. 0: there is none.
  [[nodiscard]] TypeNumber Find(std::string_view name) const;
  /// Null for a number that is none.
  [[nodiscard]] const TypeShape* Shape(TypeNumber type) const;

  /// The record of an object of that type.
  const TypeRecord& Record(TypeNumber type);
  /// The full record of a type by number; of a structure with its fields.
  const DataLableType& Full(TypeNumber type);

  [[nodiscard]] const std::vector<MemberRemark>& Remarks() const { return remarks_; }
  /// Calls `visit` for the number of each type that the description names, in order of names.
  void VisitNamed(const std::function<void(std::string_view, TypeNumber)>& visit) const;

  /// The type behind names that `typedef` gave.
  [[nodiscard]] TypeNumber Behind(TypeNumber type) const;

 private:
  enum class State { kNew, kRunning, kDone };
  struct Entry {
    TypeShape shape;
    TypeNumber behind = 0;  ///< of a typedef
    bool isTypedef = false;
    State state = State::kNew;
    const DescribedStructure* structure = nullptr;
    std::vector<TypeNumber> fieldTypes;              ///< of `structure`
    std::vector<std::optional<std::uint64_t>> bits;  ///< of its bit-fields
    std::uint64_t alignment = 1;                     ///< in bytes
    std::size_t members = 0;                         ///< anonymous structures opened up
    Spot spot;                                       ///< where it was first written
  };
  Entry& At(TypeNumber type) { return entries_[type - 1]; }
  [[nodiscard]] const Entry& At(TypeNumber type) const { return entries_[type - 1]; }
  TypeNumber Add(TypeShape shape, const Spot& spot);
  void AddNamed(std::string name, TypeShape shape, const Spot& spot);
  void AddBasicTypes();
  void AddEnumeration(const DescribedEnumeration& enumeration);
  TypeNumber Derived(TypeShape::Kind kind, TypeNumber target, std::optional<std::uint64_t> count,
                     const Spot& spot);
  TypeNumber Parse(const DescribedType& text, std::optional<std::uint64_t>* bits);
  void ParseFields(TypeNumber type);
  void CheckChain(TypeNumber type) const;
  void Complete(TypeNumber type, std::size_t depth);
  void CompleteArray(TypeNumber type, std::size_t depth);
  void CheckObject(TypeNumber type, const Spot& spot) const;
  void LayOut(TypeNumber type, std::size_t depth);
  [[nodiscard]] std::string Written(TypeNumber type) const;
  TypeRecord Build(TypeNumber type);
  TypeRecord Innermost(TypeNumber type);
  void AddFields(TypeNumber structure, std::uint64_t outer, const std::string& text,
                 DataLableType* record);

  const Description& description_;
  TargetLayout layout_;
  std::deque<Entry> entries_;  ///< type n is the one before n
  std::map<std::string, TypeNumber, std::less<>> named_;
  std::map<std::tuple<TypeShape::Kind, TypeNumber, std::optional<std::uint64_t>>, TypeNumber>
      derived_;
  std::unordered_map<TypeNumber, TypeRecord> records_;
  std::unordered_map<TypeNumber, DataLableType> full_;
  std::map<std::string, TypeNumber, std::less<>> recordNames_;
  std::vector<MemberRemark> remarks_;
};

}  // namespace targets

#endif  // STRINGRESOLVER_TARGETS_DESCRIBEDTYPES_H

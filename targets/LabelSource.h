#ifndef STRINGRESOLVER_TARGETS_LABELSOURCE_H
#define STRINGRESOLVER_TARGETS_LABELSOURCE_H

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/DataLableType.h"
#include "targets/TypeShape.h"

namespace targets {

enum class ByteOrder { kLittle, kBig };

enum class LabelKind { kVariable, kFunction, kEnumerator, kSymbol };

/// What a name of the program stands for.
struct Label {
  LabelKind kind = LabelKind::kSymbol;
  /// Run-time address of a variable, function or symbol; value of an enumerator (two's complement).
  std::uint64_t value = 0;
  /// `type` is set: the label is an object of that type.
  bool typed = false;
  DataLableType type;
  /// Why the label may have a type that could not be had; empty when it has one, or none is lost.
  std::string whyUntyped;
};

/// A member of a record that the record cannot say everything about.
struct MemberRemark {
  enum class Kind {
    kBitField,  ///< the member's record covers the whole storage unit that holds its bits
    kTooLarge,  ///< a scalar above 8 bytes: no value can stand for it
  };
  std::string member;
  /// The structure, as a person would write it: `struct flags`.
  std::string record;
  Kind kind = Kind::kBitField;
  /// The type as a person would write it, and the bits for a bit-field: `unsigned int : 3`.
  std::string declaration;
};

/// One line of a listing.
struct Listing {
  std::string name;
  std::string detail;  ///< a type, an address, a file: for people to read
};

/// Where a target's labels and types come from. Lookups have three outcomes: found, not found (an
/// empty result), failed (`Error`).
class LabelSource {
 public:
  LabelSource() = default;
  LabelSource(const LabelSource&) = delete;
  LabelSource& operator=(const LabelSource&) = delete;
  virtual ~LabelSource() = default;

  /// The target's pointer size in bytes.
  [[nodiscard]] virtual std::uint32_t PointerSize() const = 0;
  [[nodiscard]] virtual ByteOrder Order() const = 0;

  /// Name of the current source file. It chooses the dialect, and which of several statics of one
  /// name is meant.
  [[nodiscard]] virtual std::string CurrentFile() const = 0;

  /// Is the current source file assembly? Told by its name's ending, unless the source knows
  /// better.
  [[nodiscard]] virtual bool CurrentFileIsAssembly() const;

  /// The label called `name`, as the program's source writes it. Throws `Error` when it is
  /// ambiguous, cannot be represented, or its description is broken.
  virtual std::optional<Label> FindLabel(std::string_view name) = 0;

  /// An object by its name, of whatever type: also one that no record can stand for, and whose
  /// label therefore cannot be had. Nothing when the name stands for no object. Throws `Error`.
  virtual std::optional<NamedObject> FindObject(std::string_view name);

  /// Does `name` name a type? `name` is the `base` of a type name as `CanonicalTypeName` gives it
  /// (`unsigned int`, `struct node`, `node_t`), or the name of a record out of a `NestedTypes` list
  /// of this source. Cheap: builds no record.
  virtual bool HasType(std::string_view name) = 0;

  /// The full record of that type, structures with their fields in `Members`.
  virtual std::optional<DataLableType> FindType(std::string_view name) = 0;

  /// Is that type a structure that is declared, but whose definition the target does not have? Its
  /// record then has no fields, and a `Size` of 0 that is no size.
  virtual bool IsIncomplete(std::string_view name);

  /// Remarks on the members of every full structure record handed out so far.
  [[nodiscard]] virtual const std::vector<MemberRemark>& Remarks() const = 0;

  /// Calls `visit` once for each label, respectively type, that can be named, in order of names.
  virtual void ListLabels(const std::function<void(const Listing&)>& visit) = 0;
  virtual void ListTypes(const std::function<void(const Listing&)>& visit) = 0;

  /// What the type with this number is made of, kept as long as the source lives. Null for 0, for a
  /// number that is none of this source's, and from sources that know no shapes. Throws `Error`
  /// (`kBrokenInfo`).
  virtual const TypeShape* Shape(TypeNumber type);

  /// The number of a type by name, `name` as in `HasType`. 0 when there is none.
  virtual TypeNumber FindShape(std::string_view name);

  /// The variable, function or symbol that `address` lies in: the last one that starts at or before
  /// it and is large enough, as far as its size is known.
  virtual std::optional<NearestLabel> LabelAt(std::uint64_t address);

  /// Calls `visit` for the name of each label, respectively type, that can be named, in no order
  /// and perhaps more than once. Unlike the listings it describes nothing, and so is cheap: for
  /// completion. A view is valid during the call.
  virtual void VisitLabelNames(const std::function<void(std::string_view)>& visit);
  virtual void VisitTypeNames(const std::function<void(std::string_view)>& visit);
};

}  // namespace targets

#endif  // STRINGRESOLVER_TARGETS_LABELSOURCE_H

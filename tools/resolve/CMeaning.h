#ifndef STRINGRESOLVER_TOOLS_RESOLVE_CMEANING_H
#define STRINGRESOLVER_TOOLS_RESOLVE_CMEANING_H

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "targets/LabelSource.h"
#include "tools/resolve/CTree.h"

namespace tool {

/// A type as C has it: of exact size.
struct CType {
  enum class Kind {
    kUnknown,  ///< nothing that is derived from it is known either
    kInteger,  ///< enumerations, characters and `_Bool` as well
    kFloating,
    kPointer,
    kArray,
    kRecord,
    kOther,  ///< `void`, functions
  };
  Kind kind = Kind::kUnknown;
  std::uint64_t size = 0;  ///< in bytes; 0 when it is not known
  bool isSigned = false;
  std::string name;  ///< as it can be written in a cast; empty for a type made by an operator
  std::optional<std::uint64_t> count;   ///< of an array
  std::shared_ptr<const CType> target;  ///< of a pointer or array that an operator made
  targets::TypeNumber number = 0;       ///< of any other type
  /// Of a bit-field: its width, and the place of its first bit behind the object's address, as in
  /// `targets::FieldShape`.
  std::uint32_t bits = 0;
  std::uint32_t firstBit = 0;

  [[nodiscard]] bool IsScalar() const {
    return kind == Kind::kInteger || kind == Kind::kFloating || kind == Kind::kPointer;
  }
};

/// A number as C has it: sign- or zero-extended to 64 bits, or floating.
struct CNumber {
  bool floating = false;
  double number = 0.0;
  std::uint64_t bits = 0;
};

/// What a part of an expression is in C.
struct CMeaning {
  CType type;
  bool isObject = false;  ///< it has an address, known or not
  std::optional<std::uint64_t> address;
  std::optional<CNumber> value;  ///< of a scalar, if it could be had

  [[nodiscard]] bool IsNegative() const {
    if (!value) return false;
    if (value->floating) return value->number < 0;
    return type.kind == CType::Kind::kInteger && type.isSigned && value->bits >> 63U != 0;
  }
};

/// Works out what an expression is in C, as far as its types and memory tell. What cannot be known
/// stays unknown: nothing here guesses, or fails.
class CReading {
 public:
  /// The bits of an object of 1 to 8 bytes in memory; nothing when they cannot be had.
  using Memory =
      std::function<std::optional<std::uint64_t>(std::uint64_t address, std::uint32_t size)>;

  /// The labels are borrowed.
  CReading(targets::LabelSource& labels, Memory memory);

  /// The meaning of `node`, worked out once. Valid as long as the reading; `node` must live as
  /// long.
  const CMeaning& Of(const CNode& node);

  /// What a pointer points to, or an array's element.
  CType Target(const CType& type);
  /// A type by its name in a cast.
  CType Named(std::string_view name);
  /// As an operand: arrays become pointers, and integers below `int` become `int`.
  CMeaning Operand(const CNode& node);

  struct Basics {
    CType integer, unsignedInteger, longer, unsignedLonger, longLong, unsignedLongLong, real;
  };
  [[nodiscard]] const Basics& Types() const { return basics_; }

 private:
  CMeaning Work(const CNode& node);
  CMeaning WorkInteger(const CNode& node) const;
  CMeaning WorkFloating(const CNode& node) const;
  CMeaning WorkName(const CNode& node);
  CMeaning WorkIndex(const CNode& node);
  CMeaning WorkMember(const CNode& node);
  CMeaning WorkUnary(const CNode& node);
  CMeaning WorkBinary(const CNode& node);
  CMeaning WorkLogic(const CNode& node);
  CMeaning WorkPointers(const CNode& node, const CMeaning& left, const CMeaning& right);
  CMeaning WorkArithmetic(const CNode& node, const CMeaning& left, const CMeaning& right) const;
  CType FromShape(targets::TypeNumber number);
  [[nodiscard]] CType Promoted(const CType& type) const;
  [[nodiscard]] CType Common(const CType& left, const CType& right) const;
  std::optional<CNumber> Load(const CType& type, std::uint64_t address) const;
  bool FindField(const targets::TypeShape& record, std::string_view name, std::uint64_t offset,
                 int depth, CMeaning* found);

  targets::LabelSource& labels_;
  Memory memory_;
  Basics basics_;
  std::unordered_map<const CNode*, CMeaning> known_;
};

/// `number` as a value of `type`.
CNumber ConvertNumber(const CNumber& number, const CType& type);

}  // namespace tool

#endif  // STRINGRESOLVER_TOOLS_RESOLVE_CMEANING_H

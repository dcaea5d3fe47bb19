#ifndef STRINGRESOLVER_TARGETS_TYPESHAPE_H
#define STRINGRESOLVER_TARGETS_TYPESHAPE_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace targets {

/// A label source's own number for a type, as its records carry it in `TypeNumber`. Valid as long
/// as the source lives; 0 is no type.
using TypeNumber = std::uint32_t;

/// A member of a structure or union.
struct FieldShape {
  std::string name;  ///< empty for an anonymous structure or union, and for a base class
  TypeNumber type = 0;
  std::uint64_t offset = 0;  ///< in bytes from the start of the structure; of a bit-field: of the
                             ///< first byte that holds one of its bits
  /// Of a bit-field: its width in bits, and the bits between the byte at `offset` and its first
  /// bit, counted from the least significant bit on a little-endian target and from the most
  /// significant one on a big-endian target. 0 bits: no bit-field.
  std::uint32_t bits = 0;
  std::uint32_t firstBit = 0;
  bool isBase = false;  ///< a base class of C++
};

struct EnumeratorShape {
  std::string name;
  std::uint64_t value = 0;  ///< two's complement
};

/// What a type is made of, as its programmer wrote it. Unlike a record it is exact (records round
/// sizes so that expressions come out right), and knows names, counts and bit-fields.
struct TypeShape {
  enum class Kind {
    kVoid,
    kInteger,
    kBoolean,
    kCharacter,
    kFloating,
    kEnumeration,
    kPointer,
    kArray,
    kStructure,
    kUnion,
    kFunction,
    kOther,  ///< nothing is known but a name and a size
  };
  Kind kind = Kind::kOther;
  /// As a person would write it: `unsigned int`, `struct node`, `node_t`, `int [2][3]`.
  std::string name;
  std::uint64_t size = 0;  ///< in bytes, exact; 0 when it is not known
  bool isSigned = false;   ///< of an integer, character or enumeration
  /// Of a character: its arrays hold text. Those of `unsigned char` and `signed char` hold numbers.
  bool isText = false;
  /// Of a floating type: it has the extended format of x86 in its first 10 bytes; else it is a
  /// binary format of IEEE 754 of that size.
  bool isExtended = false;
  /// Of the number that the record of a bit-field carries, whose other entries are those of the
  /// bits' type: the place of the bits as in `FieldShape`, counted from the record's address.
  /// 0 bits: no bit-field.
  std::uint32_t bits = 0;
  std::uint32_t firstBit = 0;
  /// Declared, but defined nowhere that is known: it has no fields, and no size.
  bool isIncomplete = false;
  /// What a pointer points to, or an array's element. Rows are elements of their own.
  TypeNumber target = 0;
  /// Elements of an array; nothing when it is not known.
  std::optional<std::uint64_t> count = std::nullopt;
  std::vector<FieldShape> fields = {};            ///< in the order of the source
  std::vector<EnumeratorShape> enumerators = {};  ///< in the order of the source
};

/// An object with a name.
struct NamedObject {
  std::uint64_t address = 0;  ///< run-time address
  TypeNumber type = 0;
};

/// A label and how far behind it an address lies.
struct NearestLabel {
  std::string name;
  std::uint64_t offset = 0;  ///< in bytes
};

}  // namespace targets

#endif  // STRINGRESOLVER_TARGETS_TYPESHAPE_H

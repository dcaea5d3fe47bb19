#ifndef STRINGRESOLVER_TARGETS_DESCRIPTION_H
#define STRINGRESOLVER_TARGETS_DESCRIPTION_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "targets/LabelSource.h"
#include "targets/RegionRequest.h"

namespace targets {

/// A place in a description's file; both count from 1.
struct Spot {
  std::uint32_t line = 1;
  std::uint32_t column = 1;
};

/// A type as the file writes it: `unsigned char [2][3]`.
struct DescribedType {
  std::string text;
  Spot spot;
};

struct DescribedField {
  std::string name;  ///< empty: an anonymous structure or union, or bits that nobody uses
  DescribedType type;
  /// In bytes from the start of the structure; where it naturally lies unless given.
  std::optional<std::uint64_t> offset;
  /// Of a bit-field with an `offset`: bits between that byte and its first bit.
  std::uint64_t bit = 0;
  Spot spot;
};

struct DescribedStructure {
  std::string tag;
  bool isUnion = false;
  bool isPacked = false;
  std::optional<std::uint64_t> size;  ///< in bytes
  /// Nothing: the structure is declared, but what it holds is not known.
  std::optional<std::vector<DescribedField>> fields;
  Spot spot;
};

struct DescribedEnumeration {
  std::string tag;
  std::optional<std::uint64_t> size;  ///< in bytes
  std::optional<bool> isSigned;
  std::vector<EnumeratorShape> values;
  std::vector<Spot> spots;  ///< of the values
  Spot spot;
};

struct DescribedName {
  std::string name;
  DescribedType type;
  Spot spot;
};

struct DescribedLabel {
  std::string name;
  std::uint64_t value = 0;            ///< address; value of a constant
  std::optional<DescribedType> type;  ///< of a symbol or constant: none
  bool isConstant = false;
  Spot spot;
};

struct DescribedMemory {
  RegionRequest request;  ///< `path` is empty for bytes that stand in the description itself
  std::vector<std::byte> bytes;
  Spot spot;
};

/// What a description says, before any of it is understood: names may be unknown, sizes missing.
struct Description {
  std::string path;               ///< how messages call it
  std::uint32_t pointerSize = 0;  ///< 1 to 4 or 8 bytes; 4 or 8 where the order is big
  ByteOrder order = ByteOrder::kLittle;
  bool plainCharIsSigned = true;
  /// No member is aligned to more bytes than this.
  std::uint64_t largestAlignment = 8;
  /// Sizes in bytes of `short`, `int`, `long`, `long long` and `double`.
  std::map<std::string, std::uint64_t, std::less<>> sizes;
  std::string currentFile;
  std::optional<bool> isAssembly;
  std::optional<std::uint32_t> wordSize;
  std::vector<DescribedStructure> structures;
  std::vector<DescribedEnumeration> enumerations;
  std::vector<DescribedName> typedefs;
  std::vector<DescribedLabel> labels;
  std::vector<DescribedMemory> memory;

  /// Throws `Error` (`kFileUnusable`): path, line and column, and the sentence.
  [[noreturn]] void Fail(const Spot& spot, const std::string& sentence) const;
};

/// Reads a description in TOML, as docs/DESCRIBE.md defines it. `path` is how messages call it;
/// paths inside it are relative to the folder of `path`. Throws `Error` (`kFileUnusable`) that
/// names line and column: what is no TOML, unknown keys, missing ones, values of the wrong kind or
/// range.
Description ReadDescription(std::string_view toml, const std::string& path);

}  // namespace targets

#endif  // STRINGRESOLVER_TARGETS_DESCRIPTION_H

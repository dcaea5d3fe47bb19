#ifndef STRINGRESOLVER_TESTS_SUPPORT_TYPEKIT_H
#define STRINGRESOLVER_TESTS_SUPPORT_TYPEKIT_H

#include <cstdint>
#include <string>
#include <vector>

#include "host/DataLableType.h"

namespace testsupport {

/// Builds type records, for one pointer size, in the shapes that make ordinary C expressions come
/// out right.
class TypeKit {
 public:
  explicit TypeKit(std::uint32_t pointerSize = 8) : pointerSize_(pointerSize) {}

  [[nodiscard]] std::uint32_t PointerSize() const { return pointerSize_; }

  [[nodiscard]] DataLableType Signed(std::uint32_t size) const;
  [[nodiscard]] DataLableType Unsigned(std::uint32_t size) const;
  [[nodiscard]] DataLableType Single() const;
  [[nodiscard]] DataLableType Double() const;
  [[nodiscard]] DataLableType Pointer(const DataLableType& pointee) const;

  /// `count` elements; also marked as a pointer when the element is none, so that `*a` works. The
  /// size is rounded up until it does not cut addresses (see `Harmless`).
  [[nodiscard]] DataLableType Array(const DataLableType& element, std::uint32_t count) const;

  /// A structure as labels, elements and pointees have it: its name leads back to the full record.
  [[nodiscard]] DataLableType Stub(const std::string& name, std::uint32_t size) const;
  /// The full record, with its fields.
  [[nodiscard]] DataLableType Struct(const std::string& name, std::uint32_t size,
                                     const std::vector<DataLableType>& fields) const;
  [[nodiscard]] DataLableType Field(const std::string& name, std::uint32_t offset,
                                    DataLableType type) const;
  /// A field that is a structure itself: the stub one level further in, so that the inner fields
  /// are not found before later fields of the outer structure.
  [[nodiscard]] DataLableType Shell(const std::string& name, std::uint32_t offset,
                                    const DataLableType& stub) const;

  /// The smallest size, from `size` up, that leaves an address whole when the resolver masks it to
  /// the size of an array or pointee record.
  [[nodiscard]] std::uint32_t Harmless(std::uint32_t size) const;

 private:
  [[nodiscard]] DataLableType Plain(std::uint32_t size) const;

  std::uint32_t pointerSize_;
};

}  // namespace testsupport

#endif  // STRINGRESOLVER_TESTS_SUPPORT_TYPEKIT_H

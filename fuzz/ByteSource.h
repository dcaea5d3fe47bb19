#ifndef STRINGRESOLVER_FUZZ_BYTESOURCE_H
#define STRINGRESOLVER_FUZZ_BYTESOURCE_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace fuzzing {

/// Takes an input apart from front to back. Once it is used up, everything taken is 0 or empty, so
/// that every input, however short, means something.
class ByteSource {
 public:
  explicit ByteSource(std::string_view bytes) : bytes_(bytes) {}

  std::uint8_t Byte() {
    if (bytes_.empty()) return 0;
    const auto byte = static_cast<std::uint8_t>(bytes_.front());
    bytes_.remove_prefix(1);
    return byte;
  }

  /// 0 to `count` - 1.
  std::size_t Index(std::size_t count) { return Byte() % count; }

  /// Eight bytes, the lowest first.
  std::uint64_t Number() {
    std::uint64_t number = 0;
    for (unsigned shift = 0; shift < 64; shift += 8) number |= std::uint64_t{Byte()} << shift;
    return number;
  }

  std::string Text(std::size_t length) {
    length = std::min(length, bytes_.size());
    std::string text(bytes_.substr(0, length));
    bytes_.remove_prefix(length);
    return text;
  }

 private:
  std::string_view bytes_;
};

/// The part of `*bytes` before the first `separator`, which is removed with it; all of `*bytes`
/// when there is none.
inline std::string_view TakeUntil(std::string_view* bytes, char separator) {
  const std::string_view taken = bytes->substr(0, bytes->find(separator));
  bytes->remove_prefix(std::min(taken.size() + 1, bytes->size()));
  return taken;
}

inline std::string_view AsText(const std::uint8_t* data, std::size_t size) {
  // libFuzzer passes null for an empty input.
  return size == 0 ? std::string_view()
                   : std::string_view(reinterpret_cast<const char*>(data), size);
}

}  // namespace fuzzing

#endif  // STRINGRESOLVER_FUZZ_BYTESOURCE_H

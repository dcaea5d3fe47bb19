#ifndef STRINGRESOLVER_RESOLVER_GAPTEXT_H
#define STRINGRESOLVER_RESOLVER_GAPTEXT_H

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <string_view>
#include <vector>

namespace resolver {

/// A text with a gap in it that moves towards its start. What stands behind the gap is taken from
/// its front and given back there, so a text is rewritten from its end in one walk, whatever its
/// length.
class GapText {
 public:
  /// An empty text.
  GapText() = default;
  GapText(const GapText&) = delete;
  GapText& operator=(const GapText&) = delete;

  /// Puts text in front of the gap, behind what is there. It must not come from here.
  void PutBefore(std::string_view text) {
    if (behind_ - before_ < text.size()) Widen(text.size());
    std::copy(text.begin(), text.end(), data_ + before_);
    before_ += text.size();
  }

  /// Makes room in front of the gap for at most `count` characters; `put` writes there and returns
  /// the end of what it wrote.
  template <typename Put>
  void FillBefore(std::size_t count, Put put) {
    if (behind_ - before_ < count) Widen(count);
    before_ = static_cast<std::size_t>(put(data_ + before_) - data_);
  }

  [[nodiscard]] std::string_view Before() const { return {data_, before_}; }
  [[nodiscard]] std::string_view Behind() const { return {data_ + behind_, size_ - behind_}; }

  /// Moves the gap to `position`, which is not behind it.
  void MoveGap(std::size_t position) {
    const std::size_t moved = before_ - position;
    std::memmove(data_ + behind_ - moved, data_ + position, moved);
    before_ = position;
    behind_ -= moved;
  }

  /// Widens the gap by the text behind it. Views of it last until the next `PutBehind`.
  void DropBehind(std::size_t count) { behind_ += count; }

  /// Puts text behind the gap, in front of what is there. It must not come from here.
  void PutBehind(std::string_view text) {
    if (behind_ - before_ < text.size()) Widen(text.size());
    behind_ -= text.size();
    std::copy(text.begin(), text.end(), data_ + behind_);
  }

  /// The whole text, with the gap at its start. Lasts until the text is next changed.
  std::string_view Join() {
    MoveGap(0);
    return Behind();
  }

 private:
  void Widen(std::size_t count) {
    std::vector<char> wider(2 * size_ + count);
    const std::string_view behind = Behind();
    std::copy_n(data_, before_, wider.data());
    std::copy(behind.begin(), behind.end(), wider.data() + wider.size() - behind.size());
    behind_ = wider.size() - behind.size();
    heap_.swap(wider);
    data_ = heap_.data();
    size_ = heap_.size();
  }

  /// Most expressions fit, with their sub-results.
  std::array<char, 256> inline_;
  std::vector<char> heap_;
  char* data_ = inline_.data();
  std::size_t size_ = inline_.size();
  std::size_t before_ = 0;
  std::size_t behind_ = inline_.size();
};

}  // namespace resolver

#endif  // STRINGRESOLVER_RESOLVER_GAPTEXT_H

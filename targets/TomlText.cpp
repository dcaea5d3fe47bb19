#include "targets/TomlText.h"

#include <algorithm>

namespace targets {
namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

bool IsAscii(char c) {
  return static_cast<unsigned char>(c) < 0x80;
}

class Scanner {
 public:
  explicit Scanner(std::string_view text) : text_(text) {}

  std::optional<std::size_t> Run() {
    if (text_.starts_with(kByteOrderMark)) at_ = kByteOrderMark.size();
    while (at_ < text_.size() && !stray_) {
      const char c = text_[at_];
      if (!IsAscii(c)) {
        stray_ = at_;
      } else if (c == '#') {
        at_ = std::min(text_.find('\n', at_), text_.size());
      } else if (c == '"' || c == '\'') {
        String(c);
      } else {
        ++at_;
      }
    }
    return stray_;
  }

 private:
  void String(char quote) {
    const std::size_t quotes = Quotes(quote);
    // Two are an empty string.
    if (quotes == 2) {
      at_ += 2;
      return;
    }
    const bool multiLine = quotes >= 3;
    at_ += multiLine ? 3 : 1;
    while (at_ < text_.size() && !stray_) {
      const char c = text_[at_];
      if (c == quote && (!multiLine || Quotes(quote) >= 3)) {
        // Up to two quotes before the end belong to the string.
        at_ += multiLine ? std::min<std::size_t>(Quotes(quote), 5) : 1;
        return;
      }
      if (c == '\n' && !multiLine) {
        // No string ends so: everything behind it is of no matter.
        at_ = text_.size();
      } else if (!IsAscii(c)) {
        stray_ = at_;
      } else if (c == '\\' && quote == '"') {
        // What is escaped may be a quote.
        const bool escapesAscii = at_ + 1 < text_.size() && IsAscii(text_[at_ + 1]);
        at_ += escapesAscii ? 2 : 1;
      } else {
        ++at_;
      }
    }
  }

  [[nodiscard]] std::size_t Quotes(char quote) const {
    const std::size_t end = std::min(text_.find_first_not_of(quote, at_), text_.size());
    return end - at_;
  }

  std::string_view text_;
  std::size_t at_ = 0;
  std::optional<std::size_t> stray_;
};

}  // namespace

std::optional<std::size_t> FindStrayCharacter(std::string_view toml) {
  return Scanner(toml).Run();
}

}  // namespace targets

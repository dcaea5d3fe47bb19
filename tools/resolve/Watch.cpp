#include "tools/resolve/Watch.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

#include "tools/resolve/Printable.h"

namespace tool {
namespace {

constexpr int kDigitsOfSeconds = 3;
constexpr std::size_t kWidthOfSeconds = 10;

std::string Seconds(double seconds) {
  std::array<char, 64> digits{};
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), seconds,
                                 std::chars_format::fixed, kDigitsOfSeconds)
                       .ptr;
  std::string text(digits.data(), end);
  text.insert(0, text.size() < kWidthOfSeconds ? kWidthOfSeconds - text.size() : 0, ' ');
  return text;
}

/// The first characters of a line of UTF-8, as many as there are columns.
std::string Cut(const std::string& line, std::size_t columns) {
  std::size_t width = 0;
  for (std::size_t at = 0; at < line.size(); ++at) {
    const bool continues = (static_cast<unsigned char>(line[at]) & 0xC0) == 0x80;
    if (!continues && width++ == columns) return line.substr(0, at);
  }
  return line;
}

std::string LineOf(const std::string& expression, const WatchedValue& value) {
  return Printable(expression) + (value.failed ? ": " : " = ") + value.text;
}

}  // namespace

Watch::Watch(std::vector<std::string> expressions, Needs needs, Style style, Output* output)
    : needs_(std::move(needs)), style_(style), output_(output) {
  for (std::string& expression : expressions) {
    rows_.push_back(Row{.expression = std::move(expression), .value = {}});
  }
}

void Watch::Run() {
  const double start = needs_.clock();
  do {
    const double now = needs_.clock();
    TakeRound();
    const Needs::Size size = needs_.size();
    if (size.columns == 0) {
      WriteLines(now - start);
    } else {
      DrawInPlace(size);
    }
    output_->Flush();
  } while (needs_.pause());
}

void Watch::TakeRound() {
  for (Row& row : rows_) {
    WatchedValue value = needs_.evaluate(row.expression);
    row.changed = row.known && (value.text != row.value.text || value.failed != row.value.failed);
    row.value = std::move(value);
  }
}

void Watch::WriteLines(double seconds) {
  for (Row& row : rows_) {
    if (row.changed || !row.known) {
      output_->WriteLine(Seconds(seconds) + "  " + LineOf(row.expression, row.value));
    }
    row.known = true;
  }
}

void Watch::DrawInPlace(Needs::Size size) {
  std::string text;
  // Back to the first line; what stands there is written over.
  if (drawn_ > 0) text += "\x1b[" + std::to_string(drawn_) + "A";
  text += "\r";
  // A line that wraps, or scrolls the first one off, could not be written over. The cursor stands
  // in a line of its own below.
  const std::size_t columns = std::max<std::size_t>(size.columns, 8) - 1;
  std::size_t shown = rows_.size();
  const std::size_t most = std::max<std::size_t>(size.rows, 3) - 1;
  if (shown > most) shown = most - 1;
  for (std::size_t n = 0; n < rows_.size(); ++n) {
    Row& row = rows_[n];
    if (n < shown) {
      const std::string line =
          Cut((row.changed ? "* " : "  ") + LineOf(row.expression, row.value), columns);
      text += row.changed ? style_.Paint(Style::Role::kChanged, line) : line;
      text += "\x1b[K\n";
    }
    row.known = true;
  }
  drawn_ = shown;
  if (shown < rows_.size()) {
    text += Cut("  and " + std::to_string(rows_.size() - shown) + " more", columns) + "\x1b[K\n";
    ++drawn_;
  }
  // What an earlier, longer table left.
  text += "\x1b[J";
  output_->Write(text);
}

}  // namespace tool

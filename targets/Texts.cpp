#include "targets/Texts.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace targets {
namespace {

constexpr std::size_t kMostItems = 10;

}  // namespace

std::string Hexadecimal(std::uint64_t value) {
  std::array<char, 16> digits{};
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value, 16).ptr;
  return "0x" + std::string(digits.data(), end);
}

std::string_view BaseName(std::string_view path) {
  const std::size_t slash = path.rfind('/');
  return slash == path.npos ? path : path.substr(slash + 1);
}

std::size_t CommonFolder(const std::vector<std::string_view>& paths) {
  if (paths.empty()) return 0;
  std::string_view common = paths.front();
  for (const std::string_view path : paths) {
    const auto differ = std::mismatch(common.begin(), common.end(), path.begin(), path.end());
    common = common.substr(0, static_cast<std::size_t>(differ.first - common.begin()));
  }
  return common.rfind('/') + 1;
}

std::string Enumerated(const std::vector<std::string>& items) {
  const std::size_t shown = items.size() > kMostItems ? kMostItems : items.size();
  std::string text;
  for (std::size_t i = 0; i < shown; ++i) {
    if (i != 0) text += i + 1 == items.size() ? " and " : ", ";
    text += items[i];
  }
  if (shown < items.size()) text += " and " + std::to_string(items.size() - shown) + " more";
  return text;
}

}  // namespace targets

#include "tools/resolve/TargetOptions.h"

#include <charconv>
#include <system_error>

namespace tool {

std::int64_t ReadProcessNumber(const std::string& text) {
  const bool negative = text.starts_with('-');
  const std::string digits = text.substr(negative ? 1 : 0);
  if (digits.empty() || digits.find_first_not_of("0123456789") != digits.npos) {
    throw UsageError("--pid takes the number of a process, not '" + text + "'");
  }
  if (digits.find_first_not_of('0') == digits.npos) {
    throw UsageError("--pid: no process has the number 0");
  }
  if (negative) throw UsageError("--pid: no process has a negative number, such as " + text);
  std::int64_t number = 0;
  const char* const end = digits.data() + digits.size();
  if (std::from_chars(digits.data(), end, number).ec != std::errc()) {
    throw UsageError("--pid: no process has a number as large as " + text);
  }
  return number;
}

}  // namespace tool

#include "tools/resolve/Answer.h"

#include <array>
#include <charconv>

#include "tools/resolve/Printable.h"

namespace tool {
namespace {

template <typename... Arguments>
std::string ToText(Arguments... arguments) {
  std::array<char, 64> buffer{};
  const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), arguments...).ptr;
  return {buffer.data(), end};
}

}  // namespace

std::string FormatValue(const Answer& answer) {
  if (answer.floating) return ToText(answer.number);
  std::string text = answer.negative ? "-" : "";
  return text += ToText(answer.magnitude);
}

std::string FormatDetails(const Answer& answer) {
  std::string details = FormatBytes(answer.size);
  if (answer.bits != 0) details = ToText(answer.bits) + (answer.bits == 1 ? " bit" : " bits");
  if (!answer.isNumber) {
    details.append(", ").append(Printable(answer.typeName));
  } else {
    details += answer.floating ? ", floating" : answer.isSigned ? ", signed" : ", unsigned";
  }
  details += answer.address ? ", at " + FormatAddress(*answer.address) : ", no address";
  return details + ", memory space " + ToText(static_cast<unsigned>(answer.space));
}

std::string FormatAddress(std::uint64_t address) {
  return "0x" + ToText(address, 16);
}

std::string FormatBytes(std::uint64_t count) {
  return ToText(count) + (count == 1 ? " byte" : " bytes");
}

}  // namespace tool

#include "tests/support/Outcome.h"

#include <array>
#include <charconv>

namespace testsupport {
namespace {

template <typename... Arguments>
std::string Number(Arguments... arguments) {
  std::array<char, 64> digits{};
  const auto [end, error] = std::to_chars(digits.begin(), digits.end(), arguments...);
  return std::string(digits.begin(), end);
}

}  // namespace

std::string Outcome(const TStringResolver& resolver, bool succeeded) {
  if (!succeeded) return "error: " + Visible(resolver.errorMessage);
  std::string text = resolver.resultFloating
                         ? Number(resolver.resultFloat) + "f"
                         : (resolver.resultNegative ? "-" : "") + Number(resolver.resultValue);
  text += "/" + Number(resolver.resultSize);
  return resolver.resultMemorySpace ? text + " #" : text;
}

std::string Resolve(TStringResolver& resolver, const std::string& expression) {
  return Outcome(resolver, resolver.SolveStringOfElements(expression));
}

std::string Resolve(FakeHost& host, const std::string& expression) {
  TStringResolver resolver(&host);
  return Resolve(resolver, expression);
}

std::string ResolveWithAddress(FakeHost& host, const std::string& expression) {
  TStringResolver resolver(&host);
  const std::string outcome = Resolve(resolver, expression);
  return outcome + " at 0x" + Number(resolver.resultAddress, 16);
}

}  // namespace testsupport

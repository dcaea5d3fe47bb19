// Evaluates the examples of the documents on the host that docs/LANGUAGE.md describes.
//
// Standard input: one example a line, the current file's name, a tab, the expression. Standard
// output: one line for each, its result in the documents' notation, a tab, the result's address.
#include <array>
#include <charconv>
#include <iostream>
#include <string>

#include "tests/support/FakeHost.h"
#include "tests/support/OpenResolver.h"
#include "tests/support/Program.h"

namespace {

using testsupport::FakeHost;

template <typename... Arguments>
std::string Number(Arguments... arguments) {
  std::array<char, 64> digits{};
  const auto [end, error] = std::to_chars(digits.begin(), digits.end(), arguments...);
  return {digits.begin(), end};
}

/// What the documents need beyond the program that all tests share.
void LoadDocumentedProgram(FakeHost& host) {
  LoadProgram(host);
  const testsupport::TypeKit& t = host.types;
  host.AddLabel("main", 0x400100);
  host.AddLabel("RED", 1);
  host.AddLabel("start.loop", 0x400120);

  host.AddLabel("word", 0x2300, t.Array(t.Signed(1), 10));
  host.PokeString(0x2300, "lantern");
  host.AddLabel("curve", 0x2340, t.Array(t.Double(), 2));
  host.PokeDouble(0x2340, 0.25);
  host.PokeDouble(0x2348, -1.5);
  host.AddLabel("g", 0x1044, t.Single());
  host.PokeFloat(0x1044, -0.1F);
  host.AddLabel("big", 0x10d0, t.Double());
  host.PokeDouble(0x10d0, 1e300);
  host.AddLabel("q", 0x10c8, t.Pointer(t.Signed(4)));
  host.Poke(0x10c8, 0x2008, 8);
  host.AddLabel("lost", 0x10d8, t.Pointer(t.Signed(4)));
  host.Poke(0x10d8, 0x9000, 8);

  // The inner fields stand in the outer field itself, which no host should do.
  DataLableType inner = t.Struct("inside", 8, {t.Field("x", 0, t.Signed(4))});
  host.AddLabel("flat", 0x3300,
                t.Struct("struct Flat", 16,
                         {t.Field("first", 0, t.Signed(4)), t.Field("inside", 8, inner),
                          t.Field("x", 4, t.Signed(4))}));
  for (std::uint32_t n = 0; n < 4; ++n) host.Poke(0x3300 + 4 * n, 70 + n, 4);
  host.AddLabel("torn", 0x3400, t.Stub("struct Gone", 8));
  host.AddVanishingType("struct Gone");
}

std::string Result(const TStringResolver& resolver, bool succeeded) {
  if (!succeeded) {
    return resolver.errorMessage.empty() ? "error, no message"
                                         : "error " + testsupport::Visible(resolver.errorMessage);
  }
  std::string text = resolver.resultFloating
                         ? Number(resolver.resultFloat) + "f"
                         : (resolver.resultNegative ? "-" : "") + Number(resolver.resultValue);
  text += " (" + Number(resolver.resultSize) + ")";
  return resolver.resultMemorySpace ? text + " #" : text;
}

}  // namespace

int main() {
  FakeHost host;
  host.quiet = true;
  LoadDocumentedProgram(host);
  std::string line;
  while (std::getline(std::cin, line)) {
    const std::size_t tab = line.find('\t');
    host.fileName = line.substr(0, tab);
    TStringResolver resolver(&host);
    const bool succeeded = resolver.SolveStringOfElements(line.substr(tab + 1));
    std::cout << Result(resolver, succeeded) << "\t0x" << Number(resolver.resultAddress, 16)
              << '\n';
  }
  return host.violations.empty() ? 0 : 1;
}

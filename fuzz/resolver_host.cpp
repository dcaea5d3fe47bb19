// Texts and the host that they are resolved over, both from the input: the texts, one a line, up to
// the first NUL byte; then the host.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "fuzz/ByteSource.h"
#include "fuzz/GeneratedHost.h"
#include "fuzz/Require.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string_view input = fuzzing::AsText(data, size);
  std::string_view texts = fuzzing::TakeUntil(&input, '\0');
  fuzzing::GeneratedHost host{fuzzing::ByteSource(input)};
  try {
    TStringResolver resolver(&host);
    while (!texts.empty()) {
      const std::string text(fuzzing::TakeUntil(&texts, '\n'));
      try {
        fuzzing::RequireSaneResult(resolver, resolver.SolveStringOfElements(text));
      } catch (const fuzzing::HostThrew&) {
        // It passes through, and the object goes on with the next text.
        fuzzing::RequireSaneResult(resolver, false);
      }
    }
    fuzzing::Require(!resolver.SolveStringOfElements("(1"),
                     "a group without an end fails, whatever was resolved before");
    fuzzing::Require(resolver.errorMessage == "Can`t find the end quote.",
                     "a failure has its own message, whatever was resolved before");
  } catch (const fuzzing::HostThrew&) {
    // From the constructor.
  }
  return 0;
}

// The steps that take a text apart, called one by one with arbitrary bytes, the resolver's own
// markers included. The first byte chooses the dialect and the brackets, the second where the lexer
// begins; the rest is the text.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <list>
#include <string>
#include <string_view>

#include "fuzz/ByteSource.h"
#include "fuzz/Require.h"
#include "tests/support/FakeHost.h"
#include "tests/support/OpenResolver.h"
#include "tests/support/Program.h"

namespace {

using fuzzing::Require;
using testsupport::FakeHost;
using testsupport::OpenResolver;

FakeHost* MakeHost(const char* file) {
  static std::list<FakeHost> hosts;
  FakeHost& host = hosts.emplace_back(file);
  testsupport::LoadProgram(host);
  host.quiet = true;
  return &host;
}

FakeHost* HostFor(bool assembly) {
  static FakeHost* const kAssemblyHost = MakeHost("start.s");
  static FakeHost* const kCHost = MakeHost("main.c");
  return assembly ? kAssemblyHost : kCHost;
}

void CheckBasicTypes(OpenResolver& resolver, const std::string& text) {
  std::string kept = text;
  resolver.ProcessBasickTypes(&kept);
  Require(kept.size() <= 3 * text.size(), "a kept blank takes three bytes");
  const auto bare = [](std::string bytes) {
    std::erase_if(bytes, [](char c) { return c == ' ' || c == ':' || c == '@'; });
    return bytes;
  };
  Require(bare(kept) == bare(text), "only blanks are replaced before keywords");
}

void CheckFloatingPoints(OpenResolver& resolver, const std::string& text) {
  std::string hidden = text;
  Require(!resolver.CheckFloatingPointStr(&hidden), "CheckFloatingPointStr returns false");
  Require(hidden.size() == text.size(), "a hidden point or exponent keeps its length");
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool same = hidden[i] == text[i];
    const bool point = hidden[i] == ',' && (text[i] == '.' || text[i] == '+' || text[i] == '-');
    const bool exponent = hidden[i] == '@' && text[i] == 'e';
    Require(same || point || exponent, "only points and exponents are hidden");
  }
  std::string shown = hidden;
  Require(!resolver.RestoreFloatingPointStr(&shown), "RestoreFloatingPointStr returns false");
  Require(shown.size() == hidden.size(), "what is shown again keeps its length");
  Require(shown.find(',') == std::string::npos, "nothing stays hidden");
  // A comma of the text's own, and a point right behind what looks like an exponent, come back as
  // something else.
  const bool ambiguous = text.find(',') != std::string::npos ||
                         text.find("e.") != std::string::npos ||
                         text.find("@.") != std::string::npos;
  Require(ambiguous || shown == text, "what was hidden is shown again");

  std::string restored = text;
  resolver.RestoreFloatingPointStr(&restored);
  Require(restored.find(',') == std::string::npos, "no comma is left");
  Require(restored.size() == text.size(), "restoring keeps the length");
}

bool ConsistsOf(std::string_view text, std::string_view set) {
  return text.find_first_not_of(set) == std::string_view::npos;
}

void CheckLexer(OpenResolver& resolver, const std::string& text, std::size_t start) {
  const std::string_view delimiters = resolver.delimiters;
  std::string together = text.substr(0, start);
  bool any = false;
  std::string rest;
  for (unsigned long position = start;;) {
    const unsigned long from = position;
    std::string before;
    std::string area;
    std::string after;
    if (!resolver.GetFirstLexicalBlockStartingFromPos(text, &position, &before, &area, &after)) {
      Require(before.empty() && area.empty() && after.empty(), "no block leaves no text");
      break;
    }
    any = true;
    Require(position > from, "the lexer moves on");
    Require(!area.empty() && area.find_first_of(delimiters) == std::string::npos,
            "an operand has bytes, and none is an operator's");
    Require(ConsistsOf(before, delimiters) && ConsistsOf(after, delimiters),
            "only operators stand around an operand");
    together += before;
    together += area;
    rest = after;
  }
  Require(!any || together + rest == text, "the blocks make up the text");
}

void CheckBrackets(OpenResolver& resolver, const std::string& text, std::size_t choice) {
  struct Brackets {
    const char* open;
    const char* close;
  };
  static constexpr std::array<Brackets, 6> kBrackets = {
      {{"[", "]"}, {"([", ")]"}, {"{", "}"}, {"[", "["}, {"", "]"}, {"[", ""}}};
  const auto [open, close] = kBrackets[choice % kBrackets.size()];
  std::string source = text;
  std::string collected = "tail";
  const bool found = resolver.FindStringParameter(&source, &collected, open, close);
  Require(collected.ends_with("tail"), "groups are put in front of what is there");
  if (found) {
    Require(source.size() + collected.size() == text.size() + 4, "groups are moved, not changed");
    Require(source.find_first_of(open) == std::string::npos, "no group is left");
  } else {
    Require(resolver.errorMessage == "Can`t find ']' symbol" ||
                resolver.errorMessage == "Symbols '[' and ']' are placed in wrong order",
            "brackets fail in two ways");
  }
}

void CheckSavedTypes(OpenResolver& resolver, const std::string& text) {
  AreaBlock block;
  if (resolver.ProcessAreaAsType(&block, text)) {
    Require(block.HasCastType, "a saved type is an explicit one");
    Require(std::find(resolver.savedTypes.begin(), resolver.savedTypes.end(), block.Type) !=
                resolver.savedTypes.end(),
            "the block's type is a saved one");
  } else {
    Require(resolver.errorMessage == "Reference to unexisting type", "the reference is wrong");
  }

  const std::size_t position = resolver.savedTypes.size();
  std::string cast = text;
  resolver.RegisterType(&cast);
  Require(resolver.savedTypes.size() == position + 1, "every cast saves a type");
  Require(cast == "\x18" + std::string(position, '\x19') + "\x18", "a cast counts its position");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string_view input = fuzzing::AsText(data, size);
  fuzzing::ByteSource header(input);
  const unsigned choice = header.Byte();
  const std::size_t start = header.Byte();
  const std::string text(input.substr(std::min<std::size_t>(2, input.size())));

  FakeHost& host = *HostFor(choice % 2 != 0);
  OpenResolver resolver(&host);
  for (const std::uint32_t typeSize : {1U, 4U, 8U}) {
    resolver.savedTypes.push_back(host.types.Signed(typeSize));
  }
  resolver.savedTypes.push_back(host.types.Pointer(host.types.Signed(4)));

  CheckBasicTypes(resolver, text);
  CheckFloatingPoints(resolver, text);
  CheckLexer(resolver, text, 0);
  CheckLexer(resolver, text, std::min(start, text.size()));
  unsigned long behind = start == 0 ? std::string::npos : text.size() + start;
  std::string none;
  Require(!resolver.GetFirstLexicalBlockStartingFromPos(text, &behind, &none, &none, &none),
          "there is no block behind the text");
  CheckBrackets(resolver, text, choice / 2);
  CheckSavedTypes(resolver, text);

  // The element parser, past the passes that would have changed the bytes.
  if (resolver.SolveBasicElement(text)) {
    Require(!resolver.areaBlocks.empty(), "an element has a result");
  }
  AreaBlock indexed;
  indexed.AfterText = text;
  resolver.SolveSquareBracets(&indexed);
  if (!host.violations.empty()) Require(false, host.violations.front());
  return 0;
}

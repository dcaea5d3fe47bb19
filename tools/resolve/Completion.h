#ifndef STRINGRESOLVER_TOOLS_RESOLVE_COMPLETION_H
#define STRINGRESOLVER_TOOLS_RESOLVE_COMPLETION_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/resolve/LastValue.h"
#include "tools/resolve/NameIndex.h"
#include "tools/resolve/PromptCommands.h"
#include "tools/resolve/Target.h"

namespace tool {

/// The most candidates that are named.
inline constexpr std::size_t kMostCandidates = 100;

/// What the text before the cursor can be completed to.
struct Completions {
  /// Where in that text the part begins that candidates stand for, in bytes.
  std::size_t start = 0;
  /// The first ones, sorted, each once; at most `kMostCandidates`.
  std::vector<std::string> candidates;
  /// How many there are.
  std::size_t count = 0;
  /// What all of them begin with.
  std::string common;
};

/// Completes what is typed at the prompt: labels, members behind `.` and `->`, names of types as
/// well behind an opening parenthesis, and commands with their arguments behind a colon.
///
/// Names are gathered when first needed, and kept.
class Completer {
 public:
  /// Both are borrowed.
  Completer(Target& target, const LastValue& last) : target_(target), last_(last) {}

  /// `text` is the line up to the cursor.
  Completions Complete(std::string_view text);

  /// To be called when the target was opened anew or has another current source file.
  void Forget();

 private:
  Completions CompleteCommand(std::string_view text);
  Completions CompleteArgument(ArgumentKind kind, std::string_view text, std::size_t start);
  Completions CompleteExpression(std::string_view text, std::size_t start);
  std::optional<Completions> CompleteMember(std::string_view before, std::string_view name);
  const NameIndex& Labels();
  const NameIndex& Types();

  Target& target_;
  const LastValue& last_;
  std::optional<NameIndex> labels_;
  std::optional<NameIndex> types_;
};

}  // namespace tool

#endif  // STRINGRESOLVER_TOOLS_RESOLVE_COMPLETION_H

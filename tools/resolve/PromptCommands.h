#ifndef STRINGRESOLVER_TOOLS_RESOLVE_PROMPTCOMMANDS_H
#define STRINGRESOLVER_TOOLS_RESOLVE_PROMPTCOMMANDS_H

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "tools/resolve/Format.h"

namespace tool {

/// What begins a command at the prompt; no expression begins with it.
inline constexpr char kCommandMark = ':';

/// What a command's argument is, for those who complete it.
enum class ArgumentKind {
  kNothing,
  kCommand,
  kLabelPattern,
  kTypePattern,
  kType,
  kFile,
  kFormat,
  kExpression,
};

enum class CommandName {
  kHelp,
  kLabels,
  kTypes,
  kLayout,
  kFile,
  kFormat,
  kReload,
  kExplain,
  kQuit
};

/// A command of the prompt.
struct CommandDescription {
  CommandName command;
  std::string_view name;  ///< without the mark
  ArgumentKind argument;
  std::string_view usage;  ///< of the argument: in brackets when it can be left out
  std::string_view help;   ///< one line
};

/// All of them, in the order of the help.
std::span<const CommandDescription> PromptCommands();

/// The one called `name`, without the mark; null when there is none.
const CommandDescription* FindCommand(std::string_view name);

/// A command that was typed.
struct CommandCall {
  const CommandDescription* command = nullptr;
  std::string argument;  ///< without blanks around it; empty when there is none
};

/// Why a line is no command: one sentence.
struct CommandError {
  std::string message;
};

/// Is `line` meant for a command?
bool IsCommand(std::string_view line);

/// Reads a line that `IsCommand`. An argument that is missing or too much is an error; what it
/// means is the command's own affair.
std::variant<CommandCall, CommandError> ReadCommand(std::string_view line);

/// What a line that is no command asks for.
struct PromptLine {
  std::string expression;
  std::optional<Format> format;        ///< the session's unless given
  std::optional<std::uint64_t> count;  ///< of elements
};

/// Reads a line that is no command: an expression, with a suffix such as `/x` or `/4x` and a blank
/// before it, or the suffix alone, which is about the last value.
std::variant<PromptLine, CommandError> ReadLine(std::string_view line);

/// The names of formats that are words.
std::vector<std::string> LongFormatNames();

/// What `:help` shows: every command, or the one in `name`, with or without its mark.
std::variant<std::vector<std::string>, CommandError> CommandHelp(std::string_view name);

}  // namespace tool

#endif  // STRINGRESOLVER_TOOLS_RESOLVE_PROMPTCOMMANDS_H

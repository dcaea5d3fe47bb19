#include "tools/resolve/PromptCommands.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "tools/resolve/SimilarNames.h"

namespace tool {
namespace {

constexpr std::string_view kBlanks = " \t\r\n\v\f";
constexpr std::size_t kHelpColumn = 20;

constexpr std::array<CommandDescription, 9> kCommands = {{
    {CommandName::kHelp, "help", ArgumentKind::kCommand, "[COMMAND]", "What can be typed here"},
    {CommandName::kLabels, "labels", ArgumentKind::kLabelPattern, "[PATTERN]",
     "List the labels that can be named"},
    {CommandName::kTypes, "types", ArgumentKind::kTypePattern, "[PATTERN]",
     "List the types that can be named"},
    {CommandName::kLayout, "layout", ArgumentKind::kType, "TYPE",
     "Show offsets, sizes and holes of a type"},
    {CommandName::kFormat, "format", ArgumentKind::kFormat, "[F]",
     "Show how values are written, or write them as F: x, d, natural, ..."},
    {CommandName::kExplain, "explain", ArgumentKind::kExpression, "EXPRESSION",
     "Show each step of an evaluation"},
    {CommandName::kFile, "file", ArgumentKind::kFile, "[NAME]",
     "Show the current source file, or make NAME the current one"},
    {CommandName::kReload, "reload", ArgumentKind::kNothing, "",
     "Open the program anew, since it was built anew"},
    {CommandName::kQuit, "quit", ArgumentKind::kNothing, "", "End the session, as Ctrl-D does"},
}};

std::string_view WithoutBlanks(std::string_view text) {
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == text.npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

std::string Marked(std::string_view name) {
  return std::string(1, kCommandMark).append(name);
}

std::string UnknownCommand(std::string_view name) {
  std::vector<std::string> names;
  for (const CommandDescription& command : kCommands) names.emplace_back(command.name);
  std::vector<std::string> similar = SimilarNames(name, names);
  for (std::string& other : similar) other = Marked(other);
  std::string sentence = "there is no command " + Marked(name);
  return sentence + (similar.empty() ? "; :help lists them" : DidYouMean(similar));
}

std::string HelpLine(const CommandDescription& command) {
  std::string line = "  " + Marked(command.name);
  if (!command.usage.empty()) line.append(" ").append(command.usage);
  line.append(line.size() < kHelpColumn ? kHelpColumn - line.size() : 1, ' ');
  return line.append(command.help);
}

}  // namespace

std::vector<std::string> LongFormatNames() {
  std::vector<std::string> words;
  const std::string names = FormatNames();
  for (std::size_t at = 0; at < names.size();) {
    const std::size_t end = std::min(names.find_first_of(", ", at), names.size());
    // The letters stand between them.
    if (end - at > 1) words.push_back(names.substr(at, end - at));
    at = end + 1;
  }
  return words;
}

std::span<const CommandDescription> PromptCommands() {
  return kCommands;
}

const CommandDescription* FindCommand(std::string_view name) {
  const auto* const found =
      std::find_if(kCommands.begin(), kCommands.end(),
                   [&](const CommandDescription& command) { return command.name == name; });
  return found == kCommands.end() ? nullptr : found;
}

bool IsCommand(std::string_view line) {
  const std::string_view text = WithoutBlanks(line);
  return !text.empty() && text.front() == kCommandMark;
}

std::variant<CommandCall, CommandError> ReadCommand(std::string_view line) {
  std::string_view text = WithoutBlanks(line);
  text.remove_prefix(1);
  const std::size_t end = std::min(text.find_first_of(kBlanks), text.size());
  const std::string_view name = text.substr(0, end);
  const std::string_view argument = WithoutBlanks(text.substr(end));
  if (name.empty()) return CommandError{"a command's name stands right behind the `:`; see :help"};
  const CommandDescription* const command = FindCommand(name);
  if (command == nullptr) return CommandError{UnknownCommand(name)};
  if (command->argument == ArgumentKind::kNothing && !argument.empty()) {
    return CommandError{Marked(name) + " takes no argument, but here is `" + std::string(argument) +
                        "`"};
  }
  const bool optional = command->usage.empty() || command->usage.front() == '[';
  if (!optional && argument.empty()) {
    return CommandError{Marked(name) + " needs an argument: " + Marked(name) + " " +
                        std::string(command->usage)};
  }
  return CommandCall{command, std::string(argument)};
}

std::variant<PromptLine, CommandError> ReadLine(std::string_view line) {
  const std::string_view text = WithoutBlanks(line);
  if (!text.starts_with('/')) return PromptLine{std::string(line), std::nullopt, std::nullopt};
  const std::size_t end = std::min(text.find_first_of(kBlanks), text.size());
  const std::string_view suffix = text.substr(0, end);
  const std::optional<FormatSuffix> read = ParseFormatSuffix(suffix);
  if (!read) {
    return CommandError{"there is no format `" + std::string(suffix) + "`; there are " +
                        FormatNames() + ", each with a count before it, as in /4x"};
  }
  const std::string_view expression = WithoutBlanks(text.substr(end));
  PromptLine asked{std::string(expression.empty() ? "$" : expression), std::nullopt, read->count};
  const bool hasLetter = suffix.back() < '0' || suffix.back() > '9';
  if (hasLetter) asked.format = read->format;
  return asked;
}

std::variant<std::vector<std::string>, CommandError> CommandHelp(std::string_view name) {
  if (name.starts_with(kCommandMark)) name.remove_prefix(1);
  std::vector<std::string> lines;
  if (!name.empty()) {
    const CommandDescription* const command = FindCommand(name);
    if (command == nullptr) return CommandError{UnknownCommand(name)};
    lines.push_back(HelpLine(*command));
    return lines;
  }
  lines.emplace_back("An expression is evaluated: head->next->v, a[i] + 1, sizeof(struct node).");
  lines.emplace_back(
      "`$` in it is the last value: $.x, $->next, $ + 1. /x before it writes the value");
  lines.emplace_back("so, /4 or /4x as so many elements, /x alone the last one. Commands:");
  for (const CommandDescription& command : kCommands) lines.push_back(HelpLine(command));
  lines.emplace_back("Tab completes names, the arrows and Ctrl-R find earlier lines, Ctrl-C drops");
  lines.emplace_back("the line, Ctrl-D ends the session. A PATTERN may hold `*` and `?`.");
  return lines;
}

}  // namespace tool

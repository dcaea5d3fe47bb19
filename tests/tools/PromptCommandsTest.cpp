#include "tools/resolve/PromptCommands.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace tool {
namespace {

struct CommandRow {
  std::string line;
  std::string read;  ///< `NAME(ARGUMENT)`, or the error
};

std::string Read(const std::string& line) {
  const auto read = ReadCommand(line);
  if (const auto* error = std::get_if<CommandError>(&read)) return error->message;
  const auto& call = std::get<CommandCall>(read);
  return std::string(call.command->name) + "(" + call.argument + ")";
}

TEST(PromptCommands, AreToldFromExpressions) {
  for (const char* line : {":quit", "  :quit", ":", ":x", "\t:"}) EXPECT_TRUE(IsCommand(line));
  for (const char* line : {"", " ", "x", "x ? 1 : 2", "'a':"}) EXPECT_FALSE(IsCommand(line));
}

TEST(PromptCommands, AreRead) {
  const std::vector<CommandRow> rows = {
      {":quit", "quit()"},
      {" :quit \r", "quit()"},
      {":labels", "labels()"},
      {":labels  a*  ", "labels(a*)"},
      {":types struct *", "types(struct *)"},
      {":explain a + 1", "explain(a + 1)"},
      {":quit now", ":quit takes no argument, but here is `now`"},
      {":layout", ":layout needs an argument: :layout TYPE"},
      {":explain ", ":explain needs an argument: :explain EXPRESSION"},
      {":", "a command's name stands right behind the `:`; see :help"},
      {": quit", "a command's name stands right behind the `:`; see :help"},
      {":q", "there is no command :q; did you mean :quit?"},
      {":lable x", "there is no command :lable; did you mean :labels?"},
      {":nothing", "there is no command :nothing; :help lists them"},
  };
  for (const CommandRow& row : rows) EXPECT_EQ(Read(row.line), row.read) << row.line;
}

std::string ReadAsked(const std::string& line) {
  const auto read = ReadLine(line);
  if (const auto* error = std::get_if<CommandError>(&read)) {
    return error->message.substr(0, error->message.find(';'));
  }
  const auto& asked = std::get<PromptLine>(read);
  std::string text = asked.expression + "|";
  if (asked.count) text += std::to_string(*asked.count);
  for (const std::string& name : LongFormatNames()) {
    if (asked.format && FormatNamed(name) == asked.format) text += name;
  }
  return text;
}

TEST(PromptCommands, TakeASuffixBeforeAnExpression) {
  const std::vector<CommandRow> rows = {
      {"x", "x|"},
      {"x / 2", "x / 2|"},
      {"/x a", "a|hexadecimal"},
      {" /x  a + 1 ", "a + 1|hexadecimal"},
      {"/4 p", "p|4"},
      {"/4x p", "p|4hexadecimal"},
      {"/natural p", "p|natural"},
      {"/x", "$|hexadecimal"},
      {"/4", "$|4"},
      {"/", "there is no format `/`"},
      {"/y a", "there is no format `/y`"},
      {"/0 a", "there is no format `/0`"},
      {"/ x", "there is no format `/`"},
      {"/x(a)", "there is no format `/x(a)`"},
  };
  for (const CommandRow& row : rows) EXPECT_EQ(ReadAsked(row.line), row.read) << row.line;
}

TEST(PromptCommands, HaveALineOfHelpEach) {
  const auto help = std::get<std::vector<std::string>>(CommandHelp(""));
  for (const CommandDescription& command : PromptCommands()) {
    const auto own = std::get<std::vector<std::string>>(CommandHelp(command.name));
    ASSERT_EQ(own.size(), 1U);
    EXPECT_NE(std::find(help.begin(), help.end(), own.front()), help.end()) << command.name;
    EXPECT_LE(own.front().size(), 100U);
  }
  EXPECT_EQ(std::get<std::vector<std::string>>(CommandHelp(":quit")).size(), 1U);
  EXPECT_EQ(std::get<CommandError>(CommandHelp("quti")).message,
            "there is no command :quti; did you mean :quit?");
}

}  // namespace
}  // namespace tool

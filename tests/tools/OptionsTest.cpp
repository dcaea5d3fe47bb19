#include "tools/resolve/Options.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tool {
namespace {

using Words = std::vector<std::string>;
using Task = Options::Task;

std::string Joined(const Words& words) {
  std::string text;
  for (const std::string& word : words) text += "[" + word + "]";
  return text;
}

Options Read(const Words& words) {
  SCOPED_TRACE(Joined(words));
  return std::get<Options>(ReadOptions(words));
}

struct Expressions {
  Words arguments;
  std::string program;
  Words expressions;
};

TEST(Options, EndAtTheProgram) {
  const std::vector<Expressions> rows = {
      {{"prog", "x"}, "prog", {"x"}},
      {{"prog", "x", "y + 1"}, "prog", {"x", "y + 1"}},
      {{"-v", "prog", "x"}, "prog", {"x"}},
      {{"prog", "-x+1"}, "prog", {"-x+1"}},
      {{"prog", "-v"}, "prog", {"-v"}},
      {{"prog", "x", "--help"}, "prog", {"x", "--help"}},
      {{"prog", "-1"}, "prog", {"-1"}},
      {{"prog", "-"}, "prog", {"-"}},
      {{"prog", "--", "-x"}, "prog", {"-x"}},
      {{"prog", "x", "--", "y"}, "prog", {"x", "--", "y"}},
      {{"--", "prog", "-x"}, "prog", {"-x"}},
      {{"--", "-prog", "-x"}, "-prog", {"-x"}},
      {{"--", "prog", "--", "x"}, "prog", {"--", "x"}},
      {{"prog", ""}, "prog", {""}},
      {{"prog", "[1]", "{2}", "a,b"}, "prog", {"[1]", "{2}", "a,b"}},
      {{"--file", "a.c", "prog", "x"}, "prog", {"x"}},
      {{"prog"}, "prog", {}},
      {{"-v", "prog"}, "prog", {}},
      {{"prog", "--"}, "prog", {}},
  };
  for (const Expressions& row : rows) {
    const Options options = Read(row.arguments);
    EXPECT_EQ(options.task, Task::kEvaluate) << Joined(row.arguments);
    EXPECT_EQ(options.program, row.program) << Joined(row.arguments);
    EXPECT_EQ(options.expressions, row.expressions) << Joined(row.arguments);
  }
}

TEST(Options, EndAtTheFirstExpressionOverAProcess) {
  const std::vector<Expressions> rows = {
      {{"--pid", "7", "x"}, "", {"x"}},
      {{"--pid=7", "x", "-y"}, "", {"x", "-y"}},
      {{"--pid", "7", "--", "-x"}, "", {"-x"}},
      {{"--pid", "7", "-"}, "", {"-"}},
      {{"--pid", "7", "/bin/true", "--stop"}, "", {"/bin/true", "--stop"}},
      {{"--pid", "8", "--pid", "7", "x"}, "", {"x"}},
      {{"--pid", "007", "--program", "prog", "x"}, "prog", {"x"}},
  };
  for (const Expressions& row : rows) {
    const Options options = Read(row.arguments);
    EXPECT_EQ(options.process, 7) << Joined(row.arguments);
    EXPECT_FALSE(options.stop) << Joined(row.arguments);
    EXPECT_EQ(options.program, row.program) << Joined(row.arguments);
    EXPECT_EQ(options.expressions, row.expressions) << Joined(row.arguments);
  }
  EXPECT_TRUE(Read({"--pid", "7", "--stop", "x"}).stop);
  EXPECT_EQ(Read({"prog", "x"}).process, std::nullopt);
  EXPECT_EQ(Read({"--labels", "a*", "--pid", "7"}).pattern, "a*");
  EXPECT_EQ(Read({"--pid", "7", "--labels"}).pattern, "");
  EXPECT_THROW(ReadOptions({"--pid", "7", "prog", "--", "x"}), UsageError);
  EXPECT_THROW(ReadOptions({"--pid", "7", "--core", "core", "x"}), UsageError);
}

TEST(Options, NameAStub) {
  const Options plain = Read({"prog", "x"});
  EXPECT_FALSE(plain.remote || plain.leaveStopped);
  EXPECT_EQ(plain.timeout, 5.0);
  const Options all =
      Read({"--remote", "[::1]:3333", "--timeout", "0.25", "--leave-stopped", "prog", "x"});
  EXPECT_EQ(all.remote, "[::1]:3333");
  EXPECT_EQ(all.timeout, 0.25);
  EXPECT_TRUE(all.leaveStopped);
  const std::string noUse = " is of no use without --remote";
  const std::string seconds = "--timeout takes a number of seconds above 0, up to 86400";
  const std::vector<std::pair<Words, std::string>> rows = {
      {{"--timeout", "1", "prog", "x"}, "--timeout" + noUse},
      {{"--leave-stopped", "prog", "x"}, "--leave-stopped" + noUse},
      {{"--remote", "board", "prog", "x"},
       "--remote takes HOST:PORT or the path of a socket, not 'board'"},
      {{"--remote", ":1", "--timeout", "0", "prog", "x"}, seconds},
      {{"--remote", ":1", "--timeout", "-1", "prog", "x"}, seconds},
      {{"--remote", ":1", "--timeout", "nan", "prog", "x"}, seconds},
      {{"--remote", ":1", "--timeout", "1e9", "prog", "x"}, seconds},
      {{"--remote", ":1", "--watch", "1", "prog"}, "no expression is given to --watch"},
      {{"--remote", ":1"}, "no program is named"},
      {{"--remote", ":1", "--pid", "1", "x"}, "--pid excludes --remote"},
      {{"--remote", ":1", "--core", "core", "x"}, "--core excludes --remote"},
  };
  for (const auto& [words, sentence] : rows) {
    std::string said = "nothing was thrown";
    try {
      ReadOptions(words);
    } catch (const UsageError& error) {
      said = error.what();
    }
    EXPECT_EQ(said, sentence) << Joined(words);
  }
}

TEST(Options, AreTakenFromBeforeTheProgram) {
  const Options plain = Read({"prog", "x"});
  EXPECT_FALSE(plain.verbose || plain.exact || plain.file.has_value());
  const Options all = Read({"-v", "--exact", "--file", "a.c", "prog", "x"});
  EXPECT_TRUE(all.verbose && all.exact);
  EXPECT_EQ(all.file, "a.c");
  EXPECT_FALSE(plain.watch.has_value());
  EXPECT_EQ(Read({"--watch", "0.5", "prog", "x"}).watch, 0.5);
  EXPECT_EQ(plain.debugFolder, "/usr/lib/debug");
  EXPECT_EQ(Read({"--debug-folder", "symbols", "prog", "x"}).debugFolder, "symbols");
  EXPECT_TRUE(Read({"--verbose", "prog", "x"}).verbose);
  EXPECT_EQ(Read({"--file=b.c", "prog", "x"}).file, "b.c");
  EXPECT_EQ(Read({"--file", "a.c", "--file", "b.c", "prog", "x"}).file, "b.c");
}

TEST(Options, LeaveTheProgramToACoreDump) {
  const std::vector<Expressions> rows = {
      {{"--core", "core", "x"}, "", {"x"}},
      {{"--core", "core", "x", "y"}, "", {"x", "y"}},
      {{"--core", "core", "-"}, "", {"-"}},
      {{"--core", "core", "--", "x"}, "", {"x"}},
      {{"--core", "core", "--", "-x", "y"}, "", {"-x", "y"}},
      {{"--core", "core", "prog", "--", "x"}, "prog", {"x"}},
      {{"--core", "core", "prog", "--", "-x"}, "prog", {"-x"}},
      // This test is an ELF file.
      {{"--core", "core", "/proc/self/exe", "x"}, "/proc/self/exe", {"x"}},
      {{"--core", "core", "/proc/self/exe"}, "/proc/self/exe", {}},
      {{"--core", "core", "--", "/proc/self/exe", "x"}, "", {"/proc/self/exe", "x"}},
  };
  for (const Expressions& row : rows) {
    const Options options = Read(row.arguments);
    EXPECT_EQ(options.core, "core") << Joined(row.arguments);
    EXPECT_EQ(options.program, row.program) << Joined(row.arguments);
    EXPECT_EQ(options.expressions, row.expressions) << Joined(row.arguments);
  }
  EXPECT_EQ(Read({"--core", "core", "--labels"}).program, "");
  EXPECT_EQ(Read({"--core", "core", "--labels", "a*"}).pattern, "a*");
  EXPECT_EQ(Read({"--core", "core", "--labels", "a*", "prog"}).program, "prog");
  EXPECT_EQ(Read({"--core", "core", "--labels", "/proc/self/exe"}).program, "/proc/self/exe");
  EXPECT_FALSE(Read({"prog", "x"}).core);
}

struct ListRow {
  Words arguments;
  Task task;
  std::string pattern;
};

TEST(Options, TellAPatternFromTheProgram) {
  const std::vector<ListRow> rows = {
      {{"--labels", "prog"}, Task::kListLabels, ""},
      {{"--types", "prog"}, Task::kListTypes, ""},
      {{"--labels", "t*", "prog"}, Task::kListLabels, "t*"},
      {{"--types", "t*", "prog"}, Task::kListTypes, "t*"},
      {{"--labels=t*", "prog"}, Task::kListLabels, "t*"},
      {{"--labels", "-v", "prog"}, Task::kListLabels, ""},
      {{"--labels", "--", "prog"}, Task::kListLabels, ""},
      {{"-v", "--file", "a.c", "--types", "prog"}, Task::kListTypes, ""},
  };
  for (const ListRow& row : rows) {
    const Options options = Read(row.arguments);
    EXPECT_EQ(options.task, row.task) << Joined(row.arguments);
    EXPECT_EQ(options.pattern, row.pattern) << Joined(row.arguments);
    EXPECT_EQ(options.program, "prog") << Joined(row.arguments);
  }
}

struct Mistake {
  Words arguments;
  std::string message;
};

TEST(Options, ThatMakeNoSenseAreNamed) {
  const std::vector<Mistake> rows = {
      {{}, "no program is named"},
      {{"-v"}, "no program is named"},
      {{"--labels"}, "no program is named"},
      {{"--watch", "1", "prog"}, "no expression is given to --watch"},
      {{"--watch", "1", "prog", "-"},
       "--watch takes its expressions from the command line, not from standard input"},
      {{"--watch", "0", "prog", "x"}, "--watch takes 0.01 to 86400 seconds"},
      {{"--watch", "-1", "prog", "x"}, "--watch takes 0.01 to 86400 seconds"},
      {{"--watch", "nan", "prog", "x"}, "--watch takes 0.01 to 86400 seconds"},
      {{"--watch", "86401", "prog", "x"}, "--watch takes 0.01 to 86400 seconds"},
      {{"--watch", "1", "--labels", "prog"}, "a listing cannot be watched"},
      {{"--bogus", "prog", "x"}, "there is no option --bogus"},
      {{"-q", "prog", "x"}, "there is no option -q"},
      {{"-vq", "prog", "x"}, "there is no option -q"},
      {{"--labels", "t*", "prog", "x"},
       "a listing takes no expressions; its pattern stands before the program"},
  };
  for (const Mistake& row : rows) {
    try {
      ReadOptions(row.arguments);
      ADD_FAILURE() << "accepted: " << Joined(row.arguments);
    } catch (const UsageError& error) {
      EXPECT_EQ(error.what(), row.message) << Joined(row.arguments);
    }
  }
}

TEST(Options, ThatTheParserRefusesAreNamed) {
  for (const Mistake& row : std::vector<Mistake>{{{"--file"}, "--file"},
                                                 {{"--labels", "--types", "prog"}, "--types"},
                                                 {{"--exact=maybe", "prog", "x"}, "maybe"}}) {
    try {
      ReadOptions(row.arguments);
      ADD_FAILURE() << "accepted: " << Joined(row.arguments);
    } catch (const UsageError& error) {
      EXPECT_NE(std::string(error.what()).find(row.message), std::string::npos) << error.what();
    }
  }
}

TEST(Options, CanAskForInformation) {
  for (const Words& words : {Words{"--help"}, Words{"-h"}, Words{"-v", "--help", "prog"}}) {
    const auto text = std::get<Information>(ReadOptions(words)).text;
    EXPECT_EQ(text.find("Usage: resolve"), 0U) << text;
    EXPECT_EQ(text.back(), '\n');
    EXPECT_NE(text.find("--labels [PATTERN]"), std::string::npos) << text;
    EXPECT_NE(text.find("Examples:"), std::string::npos) << text;
  }
  const auto version = std::get<Information>(ReadOptions({"--version"})).text;
  EXPECT_EQ(version.find("resolve "), 0U) << version;
  EXPECT_EQ(version.back(), '\n');
}

TEST(Options, AreRecognisedBehindTheProgram) {
  for (const char* text : {"-h", "--help", "-v", "--file=a.c", "--labels", "--labels=t*"}) {
    EXPECT_TRUE(LooksLikeOption(text)) << text;
  }
  for (const char* text : {"x", "-x", "--x", "", "-", "--"}) {
    EXPECT_FALSE(LooksLikeOption(text)) << text;
  }
}

}  // namespace
}  // namespace tool

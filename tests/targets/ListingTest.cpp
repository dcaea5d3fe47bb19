#include <gtest/gtest.h>

#include <algorithm>

#include "tests/targets/ProgramUnderTest.h"

namespace targettests {
namespace {

using targets::ElfProgram;
using targets::Listing;

std::vector<std::string> Labels(ElfProgram& program) {
  std::vector<std::string> lines;
  program.ListLabels([&](const Listing& line) { lines.push_back(line.name + ": " + line.detail); });
  return lines;
}

std::vector<std::string> Types(ElfProgram& program) {
  std::vector<std::string> lines;
  program.ListTypes([&](const Listing& line) { lines.push_back(line.name + ": " + line.detail); });
  return lines;
}

void ExpectHolds(const std::vector<std::string>& lines, const std::vector<std::string>& expected) {
  for (const std::string& line : expected) {
    EXPECT_EQ(std::count(lines.begin(), lines.end(), line), 1) << line;
  }
}

TEST(Listing, LabelsWithTypeAndFile) {
  ElfProgram program(FixturePath("values-x64-pie"));
  const std::vector<std::string> lines = Labels(program);
  ExpectHolds(lines,
              {"a: int [4], values.c", "BLUE: enumerator -2", "c: char [10], values.c",
               "callback: int (*)(), values.c", "count: int, other.c", "count: int, third.c",
               "count: int, values.c", "ct: constant_t, values.c", "cv: int, values.c",
               "head: struct node *, values.c", "inside: int, other_count() of other.c",
               "m: int [2][3], values.c", "row: int (*)[3], values.c", "pp: int **, values.c",
               "twice: function, values.c", "un: unnamed_t, values.c"});
  EXPECT_TRUE(std::any_of(lines.begin(), lines.end(), [](const std::string& line) {
    return line.find("_start: function 0x") == 0;
  }));
}

TEST(Listing, IsInOrderOfNames) {
  ElfProgram program(FixturePath("values-x64-pie"));
  std::vector<std::string> labels;
  program.ListLabels([&](const Listing& line) { labels.push_back(line.name); });
  EXPECT_TRUE(std::is_sorted(labels.begin(), labels.end()));
  EXPECT_GT(labels.size(), 100U);
  std::vector<std::string> types;
  program.ListTypes([&](const Listing& line) { types.push_back(line.name); });
  EXPECT_TRUE(std::is_sorted(types.begin(), types.end()));
}

TEST(Listing, TypesAsTheyAreWritten) {
  ElfProgram program(FixturePath("values-x64-pie"));
  ExpectHolds(Types(program),
              {"constant_t: int", "enum colour: 4 bytes", "int: 4 bytes", "int_list: int [3]",
               "structural: struct node", "struct hidden: 4 bytes", "struct node: 16 bytes",
               "struct same: 7 bytes", "struct same: 8 bytes", "unnamed_t: struct <anonymous>",
               "long unsigned int: 8 bytes"});
}

TEST(Listing, EveryTypeListedCanBeNamed) {
  for (const char* fixture : {"values-x64-pie", "values-m32-pie", "hosted", "classes"}) {
    ElfProgram program(FixturePath(fixture));
    targets::ProgramHost host(program, program.Memory());
    program.ListTypes([&](const Listing& line) {
      EXPECT_TRUE(host.IsTypeName(line.name)) << line.name << " of " << fixture;
      std::string glued;
      for (const char c : line.name) {
        if (c != ' ') glued += c;
      }
      EXPECT_TRUE(host.IsTypeName(glued + "*")) << glued << " of " << fixture;
    });
  }
}

TEST(Listing, LeavesOutTypesThatNoExpressionCanHold) {
  ElfProgram program(FixturePath("classes"));
  const std::vector<std::string> lines = Types(program);
  ExpectHolds(lines, {"Crate: struct Box<char>", "struct Base: 8 bytes"});
  EXPECT_FALSE(std::any_of(lines.begin(), lines.end(),
                           [](const std::string& line) { return line.find("struct Box") == 0; }));
  EXPECT_EQ(Evaluate(program, "sizeof(Crate)"), "1/8");
  EXPECT_EQ(Evaluate(program, "box.held"), "15/4");
  EXPECT_EQ(Evaluate(program, "sizeof(Box<int>)"), "error: Undefined label Box");
}

TEST(Listing, SaysWhatHasNoAddress) {
  ElfProgram optimized(FixturePath("optimized"));
  ExpectHolds(Labels(optimized),
              {"unused_static: int, optimized.c, has no address: it was optimized away"});
  ElfProgram hosted(FixturePath("hosted"));
  ExpectHolds(Labels(hosted), {"per_thread: int, hosted.c, is thread-local: every thread has its "
                               "own, at an address of its own"});
  ElfProgram labels(FixturePath("labels"));
  ExpectHolds(Types(labels), {});
  EXPECT_TRUE(Types(labels).empty());
}

}  // namespace
}  // namespace targettests

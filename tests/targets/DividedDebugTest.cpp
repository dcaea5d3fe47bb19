#include <gtest/gtest.h>

#include "tests/targets/ProgramUnderTest.h"

namespace targettests {
namespace {

using targets::ElfProgram;

using List = void (ElfProgram::*)(const std::function<void(const targets::Listing&)>&);

std::vector<targets::Listing> All(ElfProgram& program, List list) {
  std::vector<targets::Listing> lines;
  (program.*list)([&](const targets::Listing& line) { lines.push_back(line); });
  return lines;
}

/// One line for everything that a program can be asked: what it lists, and in each of its source
/// files what each of these names comes to.
std::vector<std::string> Everything(const std::string& fixture) {
  std::vector<std::string> lines;
  ElfProgram program(FixturePath(fixture));
  const auto labels = All(program, &ElfProgram::ListLabels);
  const auto types = All(program, &ElfProgram::ListTypes);
  for (const auto* list : {&labels, &types}) {
    for (const targets::Listing& line : *list) lines.push_back(line.name + ": " + line.detail);
  }
  for (const std::string& file : program.SourceFiles()) {
    program.SetCurrentFile(file);
    const auto evaluate = [&](const std::string& expression) {
      std::string line = expression;
      line.append(" in ").append(file).append(": ").append(Evaluate(program, expression));
      lines.push_back(line);
    };
    for (const targets::Listing& line : labels) {
      for (const char* behind : {"", ".x", ".one", ".two", ".place.y", ".bits.a", "[1]", "->v"}) {
        evaluate(line.name + behind);
      }
    }
    for (const targets::Listing& line : types) {
      evaluate("sizeof(" + line.name + ")");
      evaluate("sizeof(" + line.name.substr(line.name.find(' ') + 1) + ")");
    }
  }
  return lines;
}

TEST(DividedDebug, IsReadAsIfItWereWhole) {
  struct Row {
    std::string whole;
    std::vector<std::string> divided;
  };
  const Row rows[] = {
      {"hosted", {"hosted-shared"}},
      {"classes", {"classes-shared"}},
      {"spaces", {"spaces-shared", "spaces-partial"}},
      {"values-x64-dwarf5", {"values-x64-dwarf5-shared", "values-x64-dwarf5-partial"}},
      {"values-m32-dwarf4", {"values-m32-dwarf4-shared", "values-m32-dwarf4-partial"}},
  };
  for (const Row& row : rows) {
    const std::vector<std::string> expected = Everything(row.whole);
    EXPECT_GT(expected.size(), 100U) << row.whole;
    for (const std::string& divided : row.divided) {
      const std::vector<std::string> actual = Everything(divided);
      ASSERT_EQ(actual.size(), expected.size()) << divided;
      for (std::size_t i = 0; i < actual.size(); ++i) EXPECT_EQ(actual[i], expected[i]) << divided;
    }
  }
}

TEST(DividedDebug, NamesOfTheCommonPart) {
  struct Row {
    std::string file;
    std::string expression;
    std::string outcome;
  };
  const Row rows[] = {
      {"space_one.cpp", "area.to.y", "4/4"},
      {"space_three.cpp", "area.to.y", "14/4"},
      {"space_one.cpp", "same.one", "8/4"},
      {"space_two.cpp", "same.two", "9/8"},
      {"space_three.cpp", "same.one", "11/4"},
      {"space_one.cpp", "sizeof(Same)", "8/8"},
      {"space_two.cpp", "sizeof(Same)", "16/8"},
      {"space_three.cpp", "sizeof(Same)", "8/8"},
      {"space_one.cpp", "kFar", "9/8"},
      {"space_two.cpp", "sizeof(Place)", "8/8"},
      {"space_two.cpp", "sizeof(Area)", "40/8"},
      {"space_one.cpp", "declared", "5/4"},
      {"space_two.cpp", "sizeof(Distance)", "2/8"},
      {"space_three.cpp", "counter", "6/4"},
  };
  for (const char* fixture : {"spaces", "spaces-shared", "spaces-partial"}) {
    ElfProgram program(FixturePath(fixture));
    for (const Row& row : rows) {
      program.SetCurrentFile(row.file);
      EXPECT_EQ(Evaluate(program, row.expression), row.outcome)
          << row.expression << " in " << row.file << " of " << fixture;
    }
  }
}

}  // namespace
}  // namespace targettests

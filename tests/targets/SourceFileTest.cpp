#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/targets/ProgramUnderTest.h"

namespace targettests {
namespace {

using targets::ElfProgram;
using targets::ErrorCode;

TEST(SourceFile, TheOneOfMainComesFirst) {
  ElfProgram program(FixturePath("values-x64-pie"));
  EXPECT_EQ(program.CurrentFile(), "values.c");
  EXPECT_FALSE(program.CurrentFileIsAssembly());
  EXPECT_EQ(program.SourceFiles(),
            (std::vector<std::string>{"other.c", "sizes.c", "third.c", "values.c"}));
}

TEST(SourceFile, AnyTrailingPartOfThePathNamesIt) {
  ElfProgram program(FixturePath("values-x64-pie"));
  const std::filesystem::path folder = FIXTURE_SOURCE_DIR;
  for (const std::string& name :
       std::vector<std::string>{"other.c", "fixtures/other.c", "targets/fixtures/other.c",
                                (folder / "other.c").string()}) {
    program.SetCurrentFile("values.c");
    program.SetCurrentFile(name);
    EXPECT_EQ(program.CurrentFile(), "other.c") << name;
  }
}

TEST(SourceFile, AnUnknownOneLeavesTheChoiceAsItWas) {
  ElfProgram program(FixturePath("values-x64-pie"));
  program.SetCurrentFile("third.c");
  for (const std::string& name : std::vector<std::string>{
           "nothing.c", "", "c", "hird.c", "/third.c", "other/third.c", "third.c/", "THIRD.C"}) {
    EXPECT_EQ(ErrorCodeOf([&] { program.SetCurrentFile(name); }), ErrorCode::kFileUnusable) << name;
    EXPECT_EQ(program.CurrentFile(), "third.c");
  }
  EXPECT_EQ(ErrorOf([&] { program.SetCurrentFile("nothing.c"); }),
            "the program '" + FixturePath("values-x64-pie") +
                "' has no source file 'nothing.c'; it has other.c, sizes.c, third.c and values.c");
}

TEST(SourceFile, EachReasonWhyAFileIsNoProgramIsItsOwn) {
  const auto open = [](const std::string& path) {
    return ErrorOf([&] { ElfProgram program(path); });
  };
  const auto quoted = [](const std::string& path) { return "'" + path + "'"; };
  const std::string source = std::string(FIXTURE_SOURCE_DIR) + "/values.c";
  EXPECT_EQ(open("/no/such/file"), "there is no file '/no/such/file'");
  EXPECT_EQ(open(source + "/inside"), "there is no file " + quoted(source + "/inside"));
  EXPECT_EQ(open(FIXTURE_SOURCE_DIR),
            quoted(FIXTURE_SOURCE_DIR) + " is a directory, not a program");
  EXPECT_EQ(open("/dev/null"), "'/dev/null' is not a regular file");
  EXPECT_EQ(open(source), quoted(source) + " is not an ELF file");
  EXPECT_EQ(open(FixturePath("object")),
            quoted(FixturePath("object")) + " is an object file that has not been linked");
  EXPECT_EQ(open(FixturePath("nothing-left")), "the program " +
                                                   quoted(FixturePath("nothing-left")) +
                                                   " has no debug information and no symbols");
  EXPECT_EQ(ErrorCodeOf([&] { ElfProgram program(FixturePath("nothing-left")); }),
            ErrorCode::kNoNames);
  EXPECT_EQ(ErrorCodeOf([&] { ElfProgram program("/no/such/file"); }), ErrorCode::kFileUnusable);
}

}  // namespace
}  // namespace targettests

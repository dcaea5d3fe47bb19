#include "targets/SeparateDebug.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "tests/targets/ProgramUnderTest.h"

namespace targettests {
namespace {

namespace fs = std::filesystem;
using targets::ElfProgram;

/// A folder with a copy of a program whose debug information was taken out; gone afterwards.
class SeparateDebug : public testing::Test {
 protected:
  void SetUp() override {
    const auto* const test = testing::UnitTest::GetInstance()->current_test_info();
    folder_ = fs::canonical(testing::TempDir()) / (std::string("separate-") + test->name());
  }
  void TearDown() override { fs::remove_all(folder_); }

  void Start(const std::string& fixture) {
    fs::remove_all(folder_);
    fs::create_directories(folder_);
    fixture_ = fixture;
    fs::copy_file(FixturePath(fixture), folder_ / fixture);
  }

  /// Puts the debug file to `place`, which is relative to the folder.
  void Put(const fs::path& place) {
    fs::create_directories((folder_ / place).parent_path());
    fs::copy_file(FixturePath(fixture_ + ".debug"), folder_ / place);
  }

  /// Where a debug folder has what belongs to the build-id of this fixture.
  [[nodiscard]] static std::string BuildIdPlace(const std::string& fixture) {
    std::string digits;
    const targets::ElfFile file(FixturePath(fixture), targets::ElfFile::Use::kDebugInformation);
    for (const std::byte byte : file.BuildId()) {
      const auto value = std::to_integer<std::size_t>(byte);
      digits += std::string{"0123456789abcdef"[value / 16], "0123456789abcdef"[value % 16]};
    }
    return "debug/.build-id/" + digits.substr(0, 2) + "/" + digits.substr(2) + ".debug";
  }

  /// The value of a member, or why there is none; `@` stands for the folder.
  std::string Outcome() {
    std::string outcome;
    try {
      ElfProgram program((folder_ / fixture_).string(),
                         {.debugFolder = (folder_ / "debug").string()});
      outcome = Evaluate(program, "bits.whole");
      // Labels that are known to the symbol table alone come from there.
      if (outcome == "9/4" && !program.FindLabel("_start")) outcome += " without symbols";
      if (outcome != "9/4") outcome = ErrorOf([&] { program.FindLabel("nowhere"); });
    } catch (const targets::Error& error) {
      outcome = error.what();
    }
    for (std::size_t at = outcome.find(folder_.string()); at != std::string::npos;
         at = outcome.find(folder_.string())) {
      outcome.replace(at, folder_.string().size(), "@");
    }
    return outcome;
  }

  fs::path folder_;
  std::string fixture_;
};

TEST_F(SeparateDebug, IsFoundWhereDebuggersLook) {
  for (const std::string fixture : {"apart-sha1", "apart-none"}) {
    const std::string name = fixture + ".debug";
    Start(fixture);
    const std::string beneath = "debug" + folder_.string() + "/" + name;
    for (const std::string& place : {name, ".debug/" + name, beneath}) {
      Start(fixture);
      Put(place);
      EXPECT_EQ(Outcome(), "9/4") << place;
    }
  }
  Start("apart-sha1");
  Put(BuildIdPlace("apart-sha1"));
  EXPECT_EQ(Outcome(), "9/4");
}

TEST_F(SeparateDebug, IsFoundFromALinkToTheProgram) {
  Start("apart-none");
  Put("apart-none.debug");
  fs::create_directory(folder_ / "bin");
  fs::create_symlink(folder_ / "apart-none", folder_ / "bin/link");
  ElfProgram program((folder_ / "bin/link").string(),
                     {.debugFolder = (folder_ / "debug").string()});
  EXPECT_EQ(Evaluate(program, "bits.whole"), "9/4");
}

TEST_F(SeparateDebug, ThatIsMissingIsNamed) {
  Start("apart-none");
  EXPECT_EQ(Outcome(),
            "the debug information of '@/apart-none' lies in 'apart-none.debug', which was not "
            "found");
}

TEST_F(SeparateDebug, OfAnotherProgramIsNotUsed) {
  Start("apart-none");
  Put("apart-none.debug");
  std::ofstream(folder_ / "apart-none.debug", std::ios::app) << "changed";
  std::string outcome = Outcome();
  std::string start =
      "the debug file '@/apart-none.debug' does not belong to '@/apart-none': its checksum is 0x";
  EXPECT_TRUE(outcome.starts_with(start)) << outcome;
  // The right one is found behind it.
  Put(".debug/apart-none.debug");
  EXPECT_EQ(Outcome(), "9/4");

  Start("apart-sha1");
  const fs::path place = BuildIdPlace("apart-sha1");
  fs::create_directories((folder_ / place).parent_path());
  fs::copy_file(FixturePath("apart-none.debug"), folder_ / place);
  EXPECT_EQ(Outcome(), "the debug file '@/" + place.string() +
                           "' does not belong to '@/apart-sha1': it has no build-id");
}

TEST_F(SeparateDebug, ThatCannotBeReadIsNamed) {
  Start("apart-none");
  fs::create_directory(folder_ / "apart-none.debug");
  EXPECT_EQ(Outcome(),
            "the debug file of '@/apart-none' cannot be used: '@/apart-none.debug' is a directory, "
            "not a program");
  Start("apart-none");
  std::ofstream(folder_ / "apart-none.debug") << "text";
  EXPECT_EQ(Outcome(),
            "the debug file of '@/apart-none' cannot be used: '@/apart-none.debug' is not an ELF "
            "file");
}

TEST_F(SeparateDebug, SharedWithOtherProgramsIsFound) {
  for (const std::string& place :
       {std::string("hosted-shared.debug"), std::string("debug/.dwz/hosted-shared.debug"),
        BuildIdPlace("hosted-shared.debug")}) {
    Start("hosted-shared");
    Put(place);
    EXPECT_EQ(Outcome(), "9/4") << place;
    ElfProgram program((folder_ / fixture_).string(),
                       {.debugFolder = (folder_ / "debug").string()});
    EXPECT_EQ(Evaluate(program, "sizeof(struct large)"), "64/8") << place;
  }
}

TEST_F(SeparateDebug, SharedWithOtherProgramsIsNamedWhenItCannotBeUsed) {
  struct Row {
    std::string fixture;
    std::string message;
  };
  const Row rows[] = {
      {"",
       "part of the debug information of '@/hosted-shared' lies in 'hosted-shared.debug', "
       "which was not found"},
      {"classes-shared.debug",
       "part of the debug information of '@/hosted-shared' lies in 'hosted-shared.debug', whose "
       "build-id is another one"},
      {"labels.s",
       "part of the debug information of '@/hosted-shared' lies in 'hosted-shared.debug', but "
       "'@/hosted-shared.debug' is not an ELF file"},
      {"hosted-shared.debug-zstd",
       "the debug information of '@/hosted-shared.debug' cannot be read: its section .debug_info "
       "is "
       "compressed with zstd, which this build cannot read"},
  };
  for (const Row& row : rows) {
    Start("hosted-shared");
    if (row.fixture == "labels.s") {
      std::ofstream(folder_ / "hosted-shared.debug") << "text";
    } else if (!row.fixture.empty()) {
      fs::copy_file(FixturePath(row.fixture), folder_ / "hosted-shared.debug");
    }
    EXPECT_EQ(Outcome(), row.message);
    // Whatever the program has without it, none of that is typed or valued by chance.
    ElfProgram program((folder_ / fixture_).string(),
                       {.debugFolder = (folder_ / "debug").string()});
    EXPECT_FALSE(program.FindLabel("bits")->typed);
    EXPECT_FALSE(program.FindLabel("bits")->whyUntyped.empty());
    EXPECT_FALSE(program.HasType("struct large"));
  }
}

TEST(Checksum, IsTheCommonOne) {
  struct Row {
    std::string text;
    std::uint32_t sum;
  };
  const Row rows[] = {
      {"", 0},
      {"a", 0xE8B7BE43},
      {"123456789", 0xCBF43926},
      {"The quick brown fox jumps over the lazy dog", 0x414FA339},
      {std::string(32, '\0'), 0x190A55AD},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(targets::Checksum(std::as_bytes(std::span(row.text))), row.sum) << row.text;
  }
}

}  // namespace
}  // namespace targettests

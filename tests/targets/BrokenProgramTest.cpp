#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "tests/targets/ProgramUnderTest.h"

namespace targettests {
namespace {

using targets::ElfProgram;
using targets::Error;
using targets::ErrorCode;

std::string Contents(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// A copy of a program with other contents, gone at the end of the test.
class BrokenProgramTest : public testing::Test {
 protected:
  void SetUp() override {
    const auto* const test = testing::UnitTest::GetInstance()->current_test_info();
    path_ = testing::TempDir() + "broken-" + test->name();
  }
  void TearDown() override { std::filesystem::remove(path_); }

  void Write(const std::string& contents) {
    // A program that is still mapped must not change: remove it first.
    std::filesystem::remove(path_);
    std::ofstream(path_, std::ios::binary) << contents;
  }

  /// Opens the copy and asks for everything it has. Whatever that gives, it must end, and in
  /// nothing but an `Error`.
  void UseAll() {
    try {
      ElfProgram program(path_);
      for (const char* name :
           {"si", "o", "po", "head", "un", "units", "pointers", "row", "twice", "count", "calls",
            "GREEN", "bits", "lg", "plg", "derived", "nothing"}) {
        Ignore([&] { program.FindLabel(name); });
      }
      for (const char* expression : {"head->next->v", "o.in.x", "m[1][2]", "(structnode)1", "po->x",
                                     "sizeof(struct outer)", "lg.ld", "derived.o"}) {
        Ignore([&] { Evaluate(program, expression); });
      }
      std::vector<std::string> types;
      Ignore([&] { program.ListLabels([](const targets::Listing&) {}); });
      Ignore([&] {
        program.ListTypes([&](const targets::Listing& line) { types.push_back(line.name); });
      });
      for (const std::string& type : types) Ignore([&] { program.FindType(type); });
    } catch (const Error&) {
      ++refused_;
    }
  }

  template <typename Call>
  void Ignore(Call call) {
    try {
      call();
    } catch (const Error& error) {
      if (error.Code() == ErrorCode::kBrokenInfo) ++broken_;
    }
  }

  std::string path_;
  int refused_ = 0;
  int broken_ = 0;
};

TEST_F(BrokenProgramTest, TruncatedAnywhere) {
  for (const char* fixture : {"values-x64-pie", "hosted"}) {
    const std::string whole = Contents(FixturePath(fixture));
    for (std::size_t size = 0; size < whole.size(); size += 64) {
      Write(whole.substr(0, size));
      UseAll();
    }
  }
  EXPECT_GT(refused_, 0);
}

TEST_F(BrokenProgramTest, AnyByteChanged) {
  // The same bytes in every run: a plain linear congruential sequence.
  std::uint64_t state = 1;
  const auto next = [&state] {
    state = state * 6364136223846793005U + 1442695040888963407U;
    return state >> 33;
  };
  for (const char* fixture : {"values-x64-dwarf2", "values-x64-dwarf5", "values-m32-pie", "hosted",
                              "classes", "values-x64-type-units4", "spaces-partial"}) {
    const std::string whole = Contents(FixturePath(fixture));
    for (int round = 0; round < 60; ++round) {
      std::string changed = whole;
      for (int n = 0; n < 20; ++n) {
        changed[next() % changed.size()] = static_cast<char>(next());
      }
      Write(changed);
      UseAll();
    }
  }
  EXPECT_GT(broken_, 0);
}

/// Where a section lies in a little-endian 64-bit file, from its section headers.
std::pair<std::size_t, std::size_t> Section(const std::string& file, const std::string& wanted) {
  const auto number = [&](std::size_t at, std::size_t size) {
    std::uint64_t value = 0;
    for (std::size_t i = size; i-- > 0;) {
      value = value << 8 | static_cast<unsigned char>(file.at(at + i));
    }
    return static_cast<std::size_t>(value);
  };
  const std::size_t headers = number(0x28, 8);
  const std::size_t count = number(0x3C, 2);
  const std::size_t names = number(headers + number(0x3E, 2) * 64 + 0x18, 8);
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t header = headers + i * 64;
    if (file.c_str() + names + number(header, 4) == wanted) {
      return {number(header + 0x18, 8), number(header + 0x20, 8)};
    }
  }
  throw std::runtime_error("the program has no section " + wanted);
}

TEST_F(BrokenProgramTest, EveryByteOfTheDebugInformation) {
  const std::string whole = Contents(FixturePath("hosted"));
  for (const char* section : {".debug_info", ".debug_abbrev"}) {
    const auto [start, size] = Section(whole, section);
    for (std::size_t at = start; at < start + size; at += 3) {
      std::string changed = whole;
      changed[at] = static_cast<char>(~changed[at]);
      Write(changed);
      UseAll();
    }
  }
  EXPECT_GT(broken_, 0);
}

TEST_F(BrokenProgramTest, ABrokenUnitIsNamedWithFileAndOffset) {
  std::string file = Contents(FixturePath("values-x64-dwarf5"));
  const auto [start, size] = Section(file, ".debug_info");
  for (std::size_t at = start + 0x200; at < start + 0x220; ++at) file[at] = '\x7F';
  Write(file);
  ElfProgram program(path_);
  const std::string sentence = ErrorOf([&] { program.FindLabel("nothing"); });
  EXPECT_EQ(sentence.find("broken debug information in '" + path_ + "' at offset 0x"), 0U)
      << sentence;
  EXPECT_EQ(ErrorCodeOf([&] { program.FindLabel("nothing"); }), ErrorCode::kBrokenInfo);
  // What lies before it, and in the other files, is still to be had.
  EXPECT_EQ(Evaluate(program, "external"), "24/4");
  EXPECT_NE(Evaluate(program, "nothing").find(" ! broken debug information"), std::string::npos);
}

TEST_F(BrokenProgramTest, DebugInformationThatCannotBeOpenedIsNotMissing) {
  std::string file = Contents(FixturePath("values-x64-dwarf5"));
  const auto [start, size] = Section(file, ".debug_info");
  for (std::size_t at = start; at < start + size; ++at) file[at] = '\xFF';
  Write(file);
  ElfProgram program(path_);
  EXPECT_EQ(ErrorCodeOf([&] { program.FindLabel("nothing"); }), ErrorCode::kBrokenInfo);
  // The symbol table still names it, without a type.
  EXPECT_FALSE(program.FindLabel("external")->typed);
}

}  // namespace
}  // namespace targettests

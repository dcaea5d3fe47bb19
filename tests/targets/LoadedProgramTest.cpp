#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>

#include "targets/LoadedProgram.h"
#include "tests/targets/CoreBuilder.h"
#include "tests/targets/ProgramUnderTest.h"

namespace targettests {
namespace {

using targets::LoadedFile;
using targets::LoadedProgram;

constexpr std::uint64_t kProgramBias = 0x555555554000;
constexpr std::uint64_t kLibraryBias = 0x7F0000000000;
constexpr std::uint64_t kPlainBias = 0x7F0000100000;

LoadedFile Loaded(const std::string& path, std::uint64_t bias) {
  return {.path = path, .loadBias = bias, .start = bias, .end = bias + 0x10000};
}

/// The memory of the files at the places where they are loaded, not relocated.
class FilesMemory final : public targets::MemorySource {
 public:
  explicit FilesMemory(const std::vector<LoadedFile>& files) {
    for (const LoadedFile& file : files) {
      images_[file.loadBias] = std::make_unique<targets::ElfProgram>(file.path);
    }
  }
  targets::MemoryRead Read(std::uint64_t address, std::uint8_t space,
                           std::span<std::byte> bytes) override {
    auto image = images_.upper_bound(address);
    if (image == images_.begin()) return {};
    --image;
    return image->second->Memory().Read(address - image->first, space, bytes);
  }

 private:
  std::map<std::uint64_t, std::unique_ptr<targets::ElfProgram>> images_;
};

class LoadedProgramTest : public testing::Test {
 protected:
  std::vector<LoadedFile> libraries_{Loaded(FixturePath("libuser.so"), kLibraryBias),
                                     Loaded(FixturePath("libplain.so"), kPlainBias)};
  LoadedFile program_ = Loaded(FixturePath("user"), kProgramBias);

  std::uint64_t Address(const std::string& file, const std::string& name) {
    return targets::ElfProgram(FixturePath(file)).FindLabel(name)->value;
  }
};

TEST_F(LoadedProgramTest, FindsNamesInTheProgramFirst) {
  LoadedProgram program(program_, libraries_, "");
  struct Row {
    std::string name;
    std::string file;
    std::uint64_t bias;
    bool typed;
  };
  const std::vector<Row> rows = {
      {"own", "user", kProgramBias, true},
      {"answer", "user", kProgramBias, true},
      {"hidden", "libuser.so", kLibraryBias, true},
      {"library_pair", "libuser.so", kLibraryBias, true},
      {"first", "libuser.so", kLibraryBias, true},
      // Declared in the program.
      {"shared_level", "libuser.so", kLibraryBias, true},
      {"constants", "libuser.so", kLibraryBias, true},
      {"defined_without_debug", "libplain.so", kPlainBias, true},
      // Known by nothing but its symbol.
      {"local_symbol", "libplain.so", kPlainBias, false},
      {"ask", "libuser.so", kLibraryBias, false},
      {"plain_function", "libplain.so", kPlainBias, false},
      {"main", "user", kProgramBias, false},
  };
  for (const Row& row : rows) {
    const auto label = program.FindLabel(row.name);
    ASSERT_TRUE(label) << row.name;
    EXPECT_EQ(label->value, Address(row.file, row.name) + row.bias) << row.name;
    EXPECT_EQ(label->typed, row.typed) << row.name;
  }
  EXPECT_EQ(program.FindLabel("LIBRARY_LIMIT")->value, 9U);
  EXPECT_FALSE(program.FindLabel("nowhere"));
  EXPECT_EQ(program.WhyIncomplete(), std::nullopt);
}

TEST_F(LoadedProgramTest, KeepsTypesOfOneNameApart) {
  LoadedProgram program(program_, libraries_, "");
  FilesMemory memory({program_, libraries_[0], libraries_[1]});
  struct Row {
    std::string expression;
    std::string value;
  };
  const std::vector<Row> rows = {
      {"user_pair.right", "7/4"},          {"library_pair.right", "4/2"},
      {"sizeof(struct pair)", "12/8"},     {"first.depth", "7/4"},
      {"constants[(1)+0]", "12/4"},        {"hidden+0", "31/8"},
      {"defined_without_debug+0", "51/8"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(Evaluate(program, memory, row.expression), row.value) << row.expression;
  }
}

TEST_F(LoadedProgramTest, CompletesAStructureThatTheProgramOnlyDeclares) {
  LoadedProgram program(program_, libraries_, "");
  EXPECT_FALSE(program.IsIncomplete("struct opaque"));
  EXPECT_EQ(program.FindType("struct opaque")->Size, 24U);
  EXPECT_TRUE(program.FindLabel("where")->typed);
  LoadedProgram alone(program_, {}, "");
  EXPECT_TRUE(alone.IsIncomplete("struct opaque"));
  EXPECT_EQ(alone.FindType("struct opaque")->Size, 0U);
}

TEST_F(LoadedProgramTest, SaysWhatIsOnlyDeclared) {
  LoadedProgram alone(program_, {}, "");
  EXPECT_EQ(ErrorCodeOf([&] { alone.FindLabel("shared_level"); }), targets::ErrorCode::kNotDefined);
}

TEST_F(LoadedProgramTest, GoesOnWithoutALibrary) {
  const TestFolder folder;
  libraries_.insert(libraries_.begin(), Loaded(folder.Path("gone.so"), 0x7E0000000000));
  libraries_.insert(libraries_.begin(), Loaded(FixturePath("libuser-m32.so"), 0x7D0000000000));
  LoadedProgram program(program_, libraries_, "");
  EXPECT_EQ(program.WhyIncomplete(), std::nullopt);
  EXPECT_EQ(program.FindLabel("hidden")->value, Address("libuser.so", "hidden") + kLibraryBias);
  const auto reason = program.WhyIncomplete();
  ASSERT_TRUE(reason);
  EXPECT_NE(reason->find("libuser-m32.so' cannot be used: it is for another machine"),
            std::string::npos)
      << *reason;
}

TEST_F(LoadedProgramTest, UsesNoLibraryThatWasReplaced) {
  libraries_[0].buildId.assign(20, std::byte{0xAB});
  LoadedProgram program(program_, libraries_, "");
  EXPECT_FALSE(program.FindLabel("hidden"));
  EXPECT_NE(program.WhyIncomplete().value_or("").find("it is not the file that was loaded"),
            std::string::npos);
}

TEST_F(LoadedProgramTest, TakesASourceFileOfALibraryAsTheCurrentOne) {
  LoadedProgram program(program_, libraries_, "");
  const std::uint64_t ours = Address("user", "own") + kProgramBias;
  const std::uint64_t theirs = Address("libuser.so", "own") + kLibraryBias;
  EXPECT_EQ(program.FindLabel("own")->value, ours);
  program.SetCurrentFile("library.c");
  EXPECT_EQ(program.FindLabel("own")->value, theirs);
  EXPECT_EQ(program.FindType("struct pair")->Size, 4U);
  program.SetCurrentFile("user.c");
  EXPECT_EQ(program.FindLabel("own")->value, ours);
  EXPECT_NE(ErrorOf([&] { program.SetCurrentFile("nowhere.c"); }).find("has no source file"),
            std::string::npos);
  const std::vector<std::string> files = program.SourceFiles();
  for (const std::string name : {"user.c", "library.c"}) {
    EXPECT_TRUE(std::any_of(files.begin(), files.end(), [&](const std::string& file) {
      return file.ends_with(name);
    })) << name;
  }
}

TEST_F(LoadedProgramTest, ListsWhatCanBeNamed) {
  LoadedProgram program(program_, libraries_, "");
  std::vector<std::string> labels;
  program.ListLabels([&](const targets::Listing& line) {
    if (line.name == "own" || line.name == "hidden" || line.name == "local_symbol") {
      labels.push_back(line.name + ": " + line.detail.substr(0, 3) +
                       (line.detail.find(", in lib") == std::string::npos ? "" : " in a library"));
    }
  });
  EXPECT_EQ(labels, (std::vector<std::string>{"hidden: int in a library",
                                              "local_symbol: sym in a library", "own: int"}));
  std::vector<std::string> types;
  program.ListTypes([&](const targets::Listing& line) {
    if (line.name.starts_with("struct ")) types.push_back(line.name);
  });
  EXPECT_EQ(types, (std::vector<std::string>{"struct opaque", "struct pair"}));
}

TEST_F(LoadedProgramTest, HasTypesAndShapesOfTheProgramsLibrariesOnlyWhenAsked) {
  LoadedProgram program(program_, {Loaded("/nowhere/gone.so", kLibraryBias)}, "");
  EXPECT_TRUE(program.HasType("int"));
  EXPECT_TRUE(program.HasType("struct pair"));
  EXPECT_FALSE(program.HasType("structpair"));
  EXPECT_FALSE(program.HasType("answer"));
  EXPECT_TRUE(program.FindLabel("answer"));
  // Nothing so far was a reason to open the library.
  EXPECT_EQ(program.WhyIncomplete(), std::nullopt);
  EXPECT_FALSE(program.HasType("nothing_like_it"));
  EXPECT_NE(program.WhyIncomplete(), std::nullopt);
  EXPECT_EQ(program.Shape(0), nullptr);
  EXPECT_EQ(program.Shape(~targets::TypeNumber{0}), nullptr);
  EXPECT_EQ(program.LabelAt(0x10), std::nullopt);
}

}  // namespace
}  // namespace targettests

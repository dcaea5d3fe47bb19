#include <elf.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>

#include "contract/LabelContract.h"
#include "contract/MemoryContract.h"
#include "targets/CoreDump.h"
#include "targets/LoadedProgram.h"
#include "tests/targets/CoreBuilder.h"
#include "tests/targets/ProgramUnderTest.h"

namespace targettests {
namespace {

using targets::CoreDump;
using targets::LoadedProgram;

struct Machine {
  std::string suffix;
  CoreBuilder::Kind kind;
  std::uint64_t programBias;
  std::uint64_t libraryBias;
  std::uint64_t plainBias;
  std::uint64_t headers;  ///< file address of the program headers
};

std::vector<Machine> Machines() {
  return {{"", CoreBuilder::X64(), 0x555555554000, 0x7F0000000000, 0x7F0000100000, 64},
          {"-m32", CoreBuilder::X86(), 0x56555000, 0xF7C00000, 0xF7D00000, 52}};
}

std::string LibraryPath(const Machine& machine) {
  return FixturePath("libuser" + machine.suffix + ".so");
}

/// A dump of `user` with its libraries.
CoreBuilder UserCore(const Machine& machine, const std::string& program) {
  CoreBuilder builder(machine.kind);
  builder.AddProcess().AddAuxiliary(AT_PHDR, machine.programBias + machine.headers);
  builder.Load(program, machine.programBias);
  builder.Load(LibraryPath(machine), machine.libraryBias);
  builder.Load(FixturePath("libplain" + machine.suffix + ".so"), machine.plainBias);
  return builder;
}

TEST(CoreDump, IsOpenedWithItsProgramAndLibraries) {
  const TestFolder folder;
  for (const Machine& machine : Machines()) {
    const std::string program = FixturePath("user" + machine.suffix);
    CoreDump dump(folder.Write("core", UserCore(machine, program).Bytes()));
    EXPECT_EQ(dump.Program().path, program);
    EXPECT_EQ(dump.Program().loadBias, machine.programBias);
    ASSERT_EQ(dump.Libraries().size(), 2U);
    EXPECT_EQ(dump.Libraries()[0].path, LibraryPath(machine));
    EXPECT_EQ(dump.Libraries()[0].loadBias, machine.libraryBias);
    EXPECT_FALSE(dump.Libraries()[0].buildId.empty());
    EXPECT_TRUE(dump.Warnings().empty());
    LoadedProgram labels(dump.Program(), dump.Libraries(), "");
    struct Row {
      std::string expression;
      std::string value;
    };
    const std::vector<Row> rows = {
        {"own", "1/4"},
        {"user_pair.right", "7/4"},
        {"numbers[(1)+0]", "22/4"},
        {"hidden", "31/4"},
        {"library_pair.right", "4/2"},
        {"constants[(2)+0]", "13/4"},
        {"first.depth", "7/4"},
        {"defined_without_debug", "51/4"},
        {"sizeof(struct opaque)", machine.suffix.empty() ? "24/8" : "16/8"},
    };
    for (const Row& row : rows) {
      EXPECT_EQ(Evaluate(labels, dump.Memory(), row.expression), row.value)
          << row.expression << machine.suffix;
    }
  }
}

TEST(CoreDump, KeepsThePromisesOfItsParts) {
  const TestFolder folder;
  for (const Machine& machine : Machines()) {
    const std::string program = FixturePath("user" + machine.suffix);
    CoreDump dump(folder.Write("core", UserCore(machine, program).Bytes()));
    LoadedProgram labels(dump.Program(), dump.Libraries(), "");
    contract::KnownLabels known;
    const auto address = [&](const char* name) { return labels.FindLabel(name)->value; };
    const auto variable = targets::LabelKind::kVariable;
    known.labels = {{"own", variable, address("own"), true, 4},
                    {"first", variable, address("first"), true, machine.suffix.empty() ? 24U : 16U},
                    {"LIBRARY_LIMIT", targets::LabelKind::kEnumerator, 9},
                    {"main", targets::LabelKind::kFunction, address("main")}};
    known.types = {"int", "struct opaque", "struct pair"};
    EXPECT_EQ(contract::CheckLabelSource(labels, known), std::vector<std::string>());
    contract::KnownMemory memory;
    memory.address = address("greeting");
    for (const char byte : {'g', 'o', 'o', 'd', ' ', 'd', 'a', 'y', '\0'}) {
      memory.bytes.push_back(static_cast<std::byte>(byte));
    }
    memory.gaps = {{0, targets::MemoryGap::kNotThere}, {0x1000, targets::MemoryGap::kNotThere}};
    EXPECT_EQ(contract::CheckMemorySource(dump.Memory(), memory), std::vector<std::string>());
  }
}

TEST(CoreDump, LeadsFromADeclarationToTheLibrary) {
  const TestFolder folder;
  const Machine machine = Machines().front();
  CoreBuilder builder = UserCore(machine, FixturePath("user"));
  // A pointer as the dynamic linker fills it in.
  const auto second = targets::ElfProgram(LibraryPath(machine)).FindLabel("second")->value;
  const std::uint64_t heap = 0x555555800000;
  builder.Add(heap, builder.Word(second + machine.libraryBias));
  CoreDump dump(folder.Write("core", builder.Bytes()));
  LoadedProgram labels(dump.Program(), dump.Libraries(), "");
  const std::string pointer = "(*(struct opaque**)" + std::to_string(heap) + ")->depth";
  EXPECT_EQ(Evaluate(labels, dump.Memory(), pointer), "8/4");
}

TEST(CoreDump, TakesHeadersThatWereNotSavedFromFilesThatAreOlder) {
  const TestFolder folder;
  const std::string library = folder.Path("libuser.so");
  std::filesystem::copy(FixturePath("libuser.so"), library);
  CoreBuilder builder(CoreBuilder::X64());
  const Machine machine = Machines().front();
  const auto others = CoreBuilder::Access::kRead;
  builder.Load(FixturePath("user"), machine.programBias, others, 0);
  builder.Load(library, machine.libraryBias, others, 0);
  builder.AddProcess().AddAuxiliary(AT_PHDR, machine.programBias + machine.headers);
  const std::string core = folder.Write("core", builder.Bytes());
  const CoreDump dump(core);
  EXPECT_EQ(dump.Program().loadBias, machine.programBias);
  ASSERT_EQ(dump.Libraries().size(), 1U);
  EXPECT_EQ(dump.Libraries().front().loadBias, machine.libraryBias);
  // Not from one that may have been built anew.
  std::filesystem::last_write_time(library,
                                   std::filesystem::last_write_time(core) + std::chrono::hours(1));
  EXPECT_TRUE(CoreDump(core).Libraries().empty());
}

TEST(CoreDump, FindsOutWhereTheProgramWasLoaded) {
  const TestFolder folder;
  const std::string program = FixturePath("values-x64-pie");
  const targets::ElfFile file(program);
  constexpr std::uint64_t kBias = 0x555555554000;
  const auto bias = [&](CoreBuilder builder, const std::optional<std::string>& named) {
    return CoreDump(folder.Write("core", builder.Bytes()), named).Program().loadBias;
  };
  // By the program headers, without a mapping; by the entry; by the mapping around the entry.
  EXPECT_EQ(
      bias(CoreBuilder(CoreBuilder::X64()).AddProcess().AddAuxiliary(AT_PHDR, kBias + 64), program),
      kBias);
  const std::uint64_t entry = kBias + file.Header().e_entry;
  EXPECT_EQ(
      bias(CoreBuilder(CoreBuilder::X64()).AddProcess().AddAuxiliary(AT_ENTRY, entry), program),
      kBias);
  CoreBuilder mapped(CoreBuilder::X64());
  mapped.Load(program, kBias).AddAuxiliary(AT_ENTRY, entry);
  EXPECT_EQ(bias(mapped, std::nullopt), kBias);
  // A program at fixed addresses needs no word about them.
  EXPECT_EQ(bias(CoreBuilder(CoreBuilder::X64()).AddProcess(), FixturePath("values-x64-dwarf5")),
            0U);
  // The program is named by the text that started it.
  CoreBuilder named(CoreBuilder::X64());
  named.Add(0x7FFF00000000, program + '\0').AddAuxiliary(AT_EXECFN, 0x7FFF00000000);
  named.AddAuxiliary(AT_PHDR, kBias + 64);
  EXPECT_EQ(bias(named, std::nullopt), kBias);
}

TEST(CoreDump, ThatCannotBeUsedSaysWhy) {
  const TestFolder folder;
  const std::string program = FixturePath("values-x64-pie");
  const auto write = [&](const CoreBuilder& builder) {
    return folder.Write("core", builder.Bytes());
  };
  const auto error = [](const std::string& core, const std::optional<std::string>& named) {
    return ErrorOf([&] { CoreDump(core, named); });
  };
  EXPECT_EQ(error(folder.Path("gone"), {}), "there is no file '" + folder.Path("gone") + "'");
  EXPECT_EQ(error(program, {}), "'" + program + "' is not a core dump");
  EXPECT_EQ(error(folder.Write("text", "hello"), {}),
            "'" + folder.Path("text") + "' is not an ELF file");
  const std::string core = "the core dump '" + folder.Path("core") + "'";
  EXPECT_EQ(error(write(CoreBuilder(CoreBuilder::X64()).Add(0x1000, "abcd")), program),
            core + " has no notes about its process");
  EXPECT_EQ(error(write(CoreBuilder(CoreBuilder::X64()).AddProcess()), program),
            core + " does not say where the program '" + program + "' was loaded");
  EXPECT_EQ(error(write(CoreBuilder(CoreBuilder::X64()).AddProcess()), {}),
            core + " does not say which program it is of: name the program");
  EXPECT_EQ(
      error(write(CoreBuilder(CoreBuilder::X86()).AddProcess()), program),
      "the program '" + program + "' is for 64-bit x86-64, and " + core + " is of 32-bit x86");
  CoreBuilder gone(CoreBuilder::X64());
  gone.AddAuxiliary(AT_PHDR, 0x1040).AddMapping({0x1000, 0x2000, 0, "/nowhere/prog"});
  EXPECT_EQ(error(write(gone), {}),
            "there is no file '/nowhere/prog', the program of " + core + ": name the program");
  // Cut off within the table of segments, and before the notes.
  const std::string cut = "the core dump '" + folder.Path("cut") + "' is cut off: ";
  gone.Add(0x1000, "abcd");
  EXPECT_EQ(error(folder.Write("cut", gone.Bytes().substr(0, 100)), program),
            cut + "its table of segments is not complete");
  EXPECT_EQ(error(folder.Write("cut", gone.Bytes().substr(0, 64 + 2 * 56)), program),
            cut + "it has no notes about its process");
}

TEST(CoreDump, WarnsOfWhatIsMissingOrOfAnotherBuild) {
  const TestFolder folder;
  const Machine machine = Machines().front();
  const std::string bytes = UserCore(machine, FixturePath("user")).Bytes();
  const std::string cut = folder.Write("cut", bytes.substr(0, bytes.size() - 10));
  EXPECT_EQ(CoreDump(cut).Warnings(),
            std::vector<std::string>{"the core dump '" + cut + "' is cut off: it has " +
                                     std::to_string(bytes.size() - 10) + " of " +
                                     std::to_string(bytes.size()) +
                                     " bytes, and the rest counts as not saved"});
  const std::string core = folder.Write("core", bytes);
  const CoreDump other(core, FixturePath("values-x64-pie"));
  ASSERT_EQ(other.Warnings().size(), 1U);
  EXPECT_EQ(other.Warnings().front().find("the program '" + FixturePath("values-x64-pie") +
                                          "' is not the one that the core dump '" + core +
                                          "' is of: its build-id is "),
            0U);
  EXPECT_EQ(other.Program().loadBias, machine.programBias);
  // Elsewhere than where the process had it, but the same.
  std::filesystem::copy(FixturePath("user"), folder.Path("moved"));
  EXPECT_TRUE(CoreDump(core, folder.Path("moved")).Warnings().empty());
}

}  // namespace
}  // namespace targettests

#include <gtest/gtest.h>

#include "tests/targets/ProgramUnderTest.h"

namespace targettests {
namespace {

using targets::ElfProgram;
using targets::ErrorCode;
using targets::LabelKind;

TEST(Label, KindsAndValues) {
  ElfProgram program(FixturePath("values-x64-dwarf5"));
  struct Row {
    std::string name;
    LabelKind kind;
    bool typed;
  };
  for (const Row& row :
       {Row{"si", LabelKind::kVariable, true}, Row{"o", LabelKind::kVariable, true},
        Row{"twice", LabelKind::kFunction, false}, Row{"GREEN", LabelKind::kEnumerator, false},
        Row{"_end", LabelKind::kSymbol, false}, Row{"_start", LabelKind::kFunction, false}}) {
    const auto label = program.FindLabel(row.name);
    ASSERT_TRUE(label) << row.name;
    EXPECT_EQ(label->kind, row.kind) << row.name;
    EXPECT_EQ(label->typed, row.typed) << row.name;
  }
  EXPECT_EQ(program.FindLabel("GREEN")->value, 5U);
  EXPECT_EQ(program.FindLabel("BLUE")->value, ~std::uint64_t{1});
  EXPECT_EQ(program.FindLabel("twice")->value, program.FindLabel("twice")->value);
  for (const char* name : {"", "nothing", "printf", "struct node", "node_t", "*", "int", "node"}) {
    EXPECT_FALSE(program.FindLabel(name)) << name;
  }
}

TEST(Label, AddressesAreThoseOfTheSymbolTable) {
  ElfProgram program(FixturePath("mixed"));
  // Declared with a type in one file, defined without debug information in another.
  const auto declared = program.FindLabel("defined_without_debug");
  ASSERT_TRUE(declared);
  EXPECT_TRUE(declared->typed);
  EXPECT_EQ(Evaluate(program, "defined_without_debug"), "51/4");
  const auto function = program.FindLabel("plain_function");
  ASSERT_TRUE(function);
  EXPECT_EQ(function->kind, LabelKind::kFunction);
  const auto local = program.FindLabel("local_symbol");
  ASSERT_TRUE(local);
  EXPECT_FALSE(local->typed);
  EXPECT_EQ(Evaluate(program, "*((int*)local_symbol)"), "52/4");
}

TEST(Label, OfOneNameTheCurrentFilesWins) {
  ElfProgram program(FixturePath("values-x64-pie"));
  EXPECT_EQ(Evaluate(program, "count"), "11/4");
  program.SetCurrentFile("other.c");
  EXPECT_EQ(Evaluate(program, "count"), "22/4");
  EXPECT_EQ(Evaluate(program, "only_in_other_file"), "23/4");
  // A lone static of another file.
  EXPECT_EQ(Evaluate(program, "only_here"), "12/4");
  program.SetCurrentFile("third.c");
  EXPECT_EQ(Evaluate(program, "count"), "33/4");
  EXPECT_EQ(Evaluate(program, "external"), "24/4");
}

TEST(Label, SeveralStaticsAndNoneCurrentAreAmbiguous) {
  ElfProgram program(FixturePath("values-x64-pie"));
  EXPECT_EQ(ErrorCodeOf([&] { program.FindLabel("only_in_other_file"); }), ErrorCode::kAmbiguous);
  EXPECT_EQ(ErrorOf([&] { program.FindLabel("only_in_other_file"); }),
            "'only_in_other_file' is ambiguous: there is one in other.c and third.c");
  EXPECT_EQ(
      Evaluate(program, "only_in_other_file"),
      "error: Undefined label only_in_other_file ! 'only_in_other_file' is ambiguous: there is "
      "one in other.c and third.c");
  EXPECT_FALSE(program.HasType("only_in_other_file"));
}

TEST(Label, StaticsInsideFunctions) {
  ElfProgram program(FixturePath("values-x64-pie"));
  EXPECT_EQ(Evaluate(program, "calls"), "77/4");
  EXPECT_EQ(Evaluate(program, "inside"), "88/4");
  EXPECT_EQ(
      ErrorOf([&] { program.FindLabel("shared_name"); }),
      "'shared_name' is ambiguous: there is one in main() of values.c and twice() of values.c");
  program.SetCurrentFile("other.c");
  EXPECT_EQ(Evaluate(program, "shared_name"), "3/4");
  // Automatic variables and parameters have no address of their own.
  EXPECT_FALSE(program.FindLabel("x"));
}

TEST(Label, WhatNoRecordCanStandForIsSaid) {
  struct Row {
    std::string fixture;
    std::string name;
    std::string sentence;
  };
  const std::string scalar = ", which is no integer, float or double of up to 8 bytes";
  const Row rows[] = {
      {"hosted", "ld", "'ld' is a long double of 16 bytes" + scalar},
      {"hosted", "huge", "'huge' is a __int128 of 16 bytes" + scalar},
      {"hosted", "cd", "'cd' is a complex double of 16 bytes" + scalar},
      {"hosted", "per_thread",
       "'per_thread' is thread-local: every thread has its own, at an address of its own"},
      {"hosted-dwarf2", "per_thread",
       "'per_thread' is thread-local: every thread has its own, at an address of its own"},
      {"classes", "method", "'method' is a pointer to member of 16 bytes" + scalar},
      {"optimized", "unused_static", "'unused_static' has no address: it was optimized away"},
      {"optimized", "dropped", "'dropped' has no address: it was optimized away"},
      {"optimized", "always",
       "'always' has no address: its code exists only where it was inlined, if at all"},
      {"mixed", "never_defined",
       "'never_defined' is declared, but this program does not define it"},
  };
  for (const Row& row : rows) {
    ElfProgram program(FixturePath(row.fixture));
    const auto find = [&] { program.FindLabel(row.name); };
    EXPECT_EQ(ErrorOf(find), row.sentence);
    const bool declared = row.name == std::string("never_defined");
    EXPECT_EQ(ErrorCodeOf(find), declared ? ErrorCode::kNotDefined : ErrorCode::kNotRepresented)
        << row.name;
  }
}

TEST(Label, ConstantsWithoutAnAddressAreValues) {
  ElfProgram program(FixturePath("optimized"));
  const auto folded = program.FindLabel("folded");
  ASSERT_TRUE(folded);
  EXPECT_FALSE(folded->typed);
  EXPECT_EQ(folded->kind, LabelKind::kVariable);
  EXPECT_EQ(folded->value, static_cast<std::uint64_t>(-6));
}

TEST(Label, NamespacesAndClasses) {
  ElfProgram program(FixturePath("classes"));
  EXPECT_EQ(Evaluate(program, "in_first"), "1/4");
  EXPECT_EQ(Evaluate(program, "point.y"), "4/4");
  EXPECT_EQ(Evaluate(program, "deep"), "5/4");
  EXPECT_EQ(Evaluate(program, "hidden"), "7/4");
  EXPECT_EQ(Evaluate(program, "counter"), "13/4");
  EXPECT_EQ(Evaluate(program, "kOn"), "200/8");
  EXPECT_EQ(Evaluate(program, "mode"), "200/1");
  EXPECT_EQ(
      ErrorOf([&] { program.FindLabel("in_both"); }),
      "'in_both' is ambiguous: there is one in first of classes.cpp and second of classes.cpp");
}

TEST(Label, DebugInformationInFilesOfItsOwn) {
  ElfProgram whole(FixturePath("split"));
  EXPECT_EQ(Evaluate(whole, "bits.whole"), "9/4");
  EXPECT_EQ(Evaluate(whole, "flex.items[1]"), "72/4");
  ElfProgram lost(FixturePath("split-lost"));
  EXPECT_EQ(ErrorCodeOf([&] { lost.FindLabel("nothing"); }), ErrorCode::kNoNames);
  EXPECT_NE(ErrorOf([&] { lost.FindLabel("nothing"); }).find("split-lost.dwo', which is not there"),
            std::string::npos);
  EXPECT_FALSE(lost.FindLabel("bits")->typed);
}

TEST(Label, WithoutItsTypeSaysWhy) {
  struct Row {
    std::string fixture;
    std::string label;
    std::string reason;
  };
  const std::string folder = FixturePath("");
  const auto split = [&](const std::string& name, const std::string& rest) {
    return "part of the debug information of '" + folder + name + "' lies in '" + folder + name +
           ".dwo', " + rest;
  };
  const auto zstd = [&](const std::string& name, const std::string& section) {
    return "the debug information of '" + folder + name + "' cannot be read: its section " +
           section + " is compressed with zstd, which this build cannot read";
  };
  const Row rows[] = {
      {"split-lost", "bits", split("split-lost", "which is not there")},
      {"split-other", "bits", split("split-other", "but what is there does not fit")},
      {"split-zstd", "bits",
       split("split-zstd", "but " + zstd("split-zstd.dwo", ".debug_info.dwo"))},
      {"hosted-zstd", "bits", zstd("hosted-zstd", ".debug_info")},
      {"supplementary", "bits",
       "part of the debug information of '" + folder +
           "supplementary' lies in a supplementary file of DWARF 5 (.debug_sup), which this build "
           "cannot read"},
      // Nothing is lost of these.
      {"split-lost", "main", ""},
      {"split", "bits", ""},
      {"split", "_IO_stdin_used", ""},
  };
  for (const Row& row : rows) {
    ElfProgram program(FixturePath(row.fixture));
    EXPECT_EQ(program.FindLabel(row.label)->whyUntyped, row.reason) << row.fixture;
    if (row.reason.empty()) continue;
    EXPECT_EQ(ErrorOf([&] { program.FindLabel("nothing"); }), row.reason) << row.fixture;
  }
}

TEST(Label, LinkTimeOptimizationKeepsFilesApart) {
  ElfProgram program(FixturePath("link-time"));
  EXPECT_EQ(Evaluate(program, "count"), "11/4");
  program.SetCurrentFile("other.c");
  EXPECT_EQ(Evaluate(program, "count"), "22/4");
  EXPECT_EQ(Evaluate(program, "other_same.second"), "62/4");
}

TEST(Label, AssemblyWithDebugInformation) {
  ElfProgram program(FixturePath("labels"));
  EXPECT_EQ(program.CurrentFile(), "labels.s");
  EXPECT_TRUE(program.CurrentFileIsAssembly());
  EXPECT_EQ(Evaluate(program, "table.second - table.first"), "4/8");
  EXPECT_EQ(Evaluate(program, "*((int*)table.second)"), "6/4");
  EXPECT_EQ(Evaluate(program, "*((unsigned int*)local_word)"), "7/4");
  EXPECT_EQ(Evaluate(program, "loop.inner - main"), "0/8");
}

TEST(Label, SymbolTableAlone) {
  ElfProgram program(FixturePath("labels-plain"));
  EXPECT_EQ(program.CurrentFile(), "");
  EXPECT_FALSE(program.CurrentFileIsAssembly());
  EXPECT_TRUE(program.SourceFiles().empty());
  EXPECT_EQ(program.FindLabel("main")->kind, LabelKind::kFunction);
  // There is nothing that the name could be checked against: it only selects the dialect.
  program.SetCurrentFile("anything.s");
  EXPECT_TRUE(program.CurrentFileIsAssembly());
  EXPECT_EQ(Evaluate(program, "*((int*)table.first)"), "5/4");
  EXPECT_EQ(Evaluate(program, "(short)70000"), "4464/2");
  EXPECT_TRUE(program.HasType("unsigned long"));
  EXPECT_FALSE(program.HasType("long double"));
  EXPECT_FALSE(program.HasType("struct node"));
}

TEST(Label, ABareNameIsATypeOnlyWhereNoLabelHidesIt) {
  ElfProgram program(FixturePath("values-x64-pie"));
  EXPECT_TRUE(program.HasType("constant_t"));
  EXPECT_TRUE(program.HasType("structural"));
  EXPECT_TRUE(program.HasType("struct node"));
  for (const char* name :
       {"node", "count", "calls", "twice", "GREEN", "nothing", "structnode", ""}) {
    EXPECT_FALSE(program.HasType(name)) << name;
  }
}

TEST(Label, LiesWhereTheProgramWasLoaded) {
  constexpr std::uint64_t kBias = 0x555555554000;
  ElfProgram file(FixturePath("values-x64-pie"));
  ElfProgram loaded(FixturePath("values-x64-pie"), {.loadBias = kBias});
  for (const char* name : {"si", "main"}) {
    EXPECT_EQ(loaded.FindLabel(name)->value, file.FindLabel(name)->value + kBias) << name;
  }
}

}  // namespace
}  // namespace targettests

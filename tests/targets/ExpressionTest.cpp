#include <gtest/gtest.h>

#include "tests/targets/ProgramUnderTest.h"

namespace targettests {
namespace {

struct Row {
  std::string expression;
  std::string outcome;
};

struct Format {
  std::string fixture;
  std::uint32_t pointerSize;
};

void PrintTo(const Format& format, std::ostream* stream) {
  *stream << format.fixture;
}

/// The same program in every format that this project reads.
class EveryFormat : public testing::TestWithParam<Format> {
 protected:
  void SetUp() override {
    if (!HasFixture(GetParam().fixture)) GTEST_SKIP() << "compiling this one needs clang and lld";
    program_.emplace(FixturePath(GetParam().fixture));
  }

  void Expect(const std::vector<Row>& rows) {
    for (const Row& row : rows)
      EXPECT_EQ(Evaluate(*program_, row.expression), row.outcome) << row.expression;
  }

  [[nodiscard]] std::string PointerSize() const { return std::to_string(GetParam().pointerSize); }

  std::optional<targets::ElfProgram> program_;
};

TEST_P(EveryFormat, Scalars) {
  const std::string word = "/" + PointerSize();
  Expect({
      {"sc", "-5/1"},
      {"uc", "200/1"},
      {"ss", "-300/2"},
      {"us", "65000/2"},
      {"si", "-70000/4"},
      {"ui", "4000000000/4"},
      {"sl", "-1234567" + word},
      {"ul", "7654321" + word},
      {"sll", "-6000000000/8"},
      {"ull", "18000000000000000000/8"},
      {"yes", "1/1"},
      {"f", "1.5f/4"},
      {"d", "-2.25f/8"},
      {"third", "0.333333f/8"},
      {"cv", "31/4"},
      {"ct", "19/4"},
      {"ub", "250/1"},
      {"uc + us", "65200/2"},
      {"f + d", "-0.75f/8"},
  });
}

TEST_P(EveryFormat, ArraysAndPointers) {
  Expect({
      {"a[3]", "40/4"},
      {"a[(i)+0]", "30/4"},
      {"*a", "10/4"},
      {"*p", "20/4"},
      {"*(p+1)", "30/4"},
      {"*(p-1)", "10/4"},
      {"**pp", "20/4"},
      {"c[0]", "104/1"},
      {"c[4]", "111/1"},
      {"c[9]", "0/1"},
      {"*c", "104/1"},
      {"tiny[1]", "98/1"},
      {"square[0][0]", "11/4"},
      {"square[1][2]", "17/4"},
      {"**square", "11/4"},
      {"il[1]", "92/4"},
      {"*text", "99/1"},
      {"*(text+1)", "111/1"},
      {"*(int*)anything", "30/4"},
      {"&a[2]-&a[0]", "8/" + PointerSize()},
      {"sizeof(a)", "16/8"},
  });
}

TEST_P(EveryFormat, RowsOfArraysKeepAsManyBytesOfTheirAddressAsTheirSizeLeaves) {
  // The row's size is what the first subscript is multiplied by, so it cannot be rounded. 12 leaves
  // 4 bytes: enough for any program that lies below 4 GiB.
  if (GetParam().fixture == "values-x64-high") {
    EXPECT_EQ(
        Evaluate(*program_, "m[1][2]").find("error: Error occurred ! cannot read memory at 0x5555"),
        0U);
    return;
  }
  Expect({{"m[0][0]", "1/4"}, {"m[1][2]", "6/4"}, {"**m", "1/4"}});
}

TEST_P(EveryFormat, Structures) {
  Expect({
      {"o.k", "7/4"},
      {"o.in.x", "8/4"},
      {"o.x", "9/4"},
      {"o.in.tag[1]", "121/1"},
      {"o.bits", "3221225472/4"},
      {"o.number", "-2f/4"},
      {"o.pair.lo", "-3/2"},
      {"o.pair.hi", "4/2"},
      {"o.list[2].second", "6/1"},
      {"o.list[0].first", "1/1"},
      {"o.link->x", "8/4"},
      {"po->x", "9/4"},
      {"po->in.x", "8/4"},
      {"(*po).k", "7/4"},
      {"un.q", "50/4"},
      {"units[1].name[0]", "99/1"},
      {"units[2].number", "3/1"},
      {"unit_pointers[0]->number", "3/1"},
      {"unit_pointers[1]->name[1]", "98/1"},
      {"head->v", "1/4"},
      {"head->next->v", "2/4"},
      {"head->next->next->v", "3/4"},
      {"head->next->next->next", "0/" + PointerSize()},
      {"(*head).v", "1/4"},
      {"n1.next->v", "2/4"},
      {"st.v", "44/4"},
      {"opaque", "0/" + PointerSize()},
      {"sizeof(struct unit)", "4/8"},
      {"sizeof(structnode)", GetParam().pointerSize == 8 ? "16/8" : "8/8"},
      {"sizeof(structural)", GetParam().pointerSize == 8 ? "16/8" : "8/8"},
      {"sizeof(int_list)", GetParam().pointerSize == 8 ? "14/8" : "12/8"},
      {"sizeof(constant_t)", "4/8"},
      {"sizeof(struct node*)", PointerSize() + "/8"},
      {"sizeof(const char *)", PointerSize() + "/8"},
      {"sizeof(unsigned long long int)", "8/8"},
  });
}

TEST_P(EveryFormat, EnumeratorsFunctionsAndStatics) {
  Expect({
      {"RED", "0/8"},
      {"GREEN", "5/8"},
      {"BLUE", "18446744073709551614/8"},
      {"HIGH", "200/8"},
      {"ANONYMOUS", "70000/8"},
      {"paint", "-2/4"},
      {"volume", "200/4"},
      {"count", "11/4"},
      {"only_here", "12/4"},
      {"external", "24/4"},
      {"calls", "77/4"},
      {"inside", "88/4"},
      {"secret.found", "63/4"},
      {"(twice) - twice", "0/8"},
  });
}

TEST_P(EveryFormat, Casts) {
  Expect({
      {"(unsigned char)sc", "251/1"},
      {"(int)uc", "200/4"},
      {"(constant_t)uc", "200/4"},
      {"(unsignedbyte)si", "144/1"},
      {"(enum level)5", "5/4"},
      {"((struct unit*)&units + 1) - (struct unit*)&units", "4/" + PointerSize()},
      {"(unsigned long long)ui", "4000000000/8"},
  });
}

TEST_P(EveryFormat, MembersThroughPointersToStructuresOfEverySize) {
  for (int size = 1; size <= 24; ++size) {
    const std::string n = std::to_string(size);
    Expect({
        {"pointer" + n + "->bytes[0]", "66/1"},
        {"array" + n + "[1].bytes[0]", "66/1"},
        {"array" + n + "[0].bytes[0]", "65/1"},
        {"chars" + n + "[0]", "67/1"},
        {"sizeof(struct sized" + n + ")", n + "/8"},
    });
  }
}

TEST_P(EveryFormat, WhatIsNotThereFails) {
  Expect({
      {"nothing", "error: Undefined label nothing"},
      {"o.nothing", "error: The specified field isn`t found in structure of type"},
      {"o.bits.x", "error: The specified field isn`t found in structure of type"},
      {"opaque->found", "error: Error occurred ! cannot read memory at 0x0"},
      {"head->next->next->next->v", "error: Error occurred ! cannot read memory at 0x0"},
      {"o + 1", "error: Can`t convert one type to another"},
      {"*(int*)0", "error: Error occurred ! cannot read memory at 0x0"},
  });
}

INSTANTIATE_TEST_SUITE_P(
    Values, EveryFormat,
    testing::Values(Format{"values-x64-pie", 8}, Format{"values-x64-static-pie", 8},
                    Format{"values-x64-high", 8}, Format{"values-x64-dwarf2", 8},
                    Format{"values-x64-dwarf3", 8}, Format{"values-x64-dwarf4", 8},
                    Format{"values-x64-dwarf5", 8}, Format{"values-x64-compressed", 8},
                    Format{"values-x64-type-units", 8}, Format{"values-x64-type-units4", 8},
                    Format{"values-x64-dwarf64", 8}, Format{"values-x64-clang", 8},
                    Format{"values-x64-dwarf5-shared", 8}, Format{"values-x64-dwarf5-partial", 8},
                    Format{"values-m32-dwarf4-shared", 4}, Format{"values-x64-clang4", 8},
                    Format{"values-m32-pie", 4}, Format{"values-m32-dwarf2", 4},
                    Format{"values-m32-dwarf3", 4}, Format{"values-m32-dwarf4", 4},
                    Format{"values-m32-dwarf5", 4}, Format{"values-powerpc", 4},
                    Format{"values-powerpc-pie", 4}, Format{"values-powerpc64", 8},
                    Format{"values-powerpc64-pie", 8}, Format{"values-mips", 4},
                    Format{"values-mips-pie", 4}, Format{"values-aarch64", 8},
                    Format{"values-aarch64-pie", 8}, Format{"values-arm-pie", 4}),
    [](const testing::TestParamInfo<Format>& format) {
      std::string name = format.param.fixture;
      for (char& c : name) {
        if (c == '-') c = '_';
      }
      return name;
    });

}  // namespace
}  // namespace targettests

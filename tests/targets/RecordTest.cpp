#include <gtest/gtest.h>

#include "tests/targets/ProgramUnderTest.h"
#include "tests/targets/RecordText.h"

namespace targettests {
namespace {

using targets::ElfProgram;

std::string LabelRecord(ElfProgram& program, const std::string& name) {
  const auto label = program.FindLabel(name);
  if (!label) return "not found";
  return label->typed ? RecordText(label->type) : "untyped";
}

std::string TypeRecord(ElfProgram& program, const std::string& name) {
  const auto type = program.FindType(name);
  return type ? RecordText(*type) : "not found";
}

/// The same object on four targets: their records differ in pointer size and rounding only.
struct Row {
  std::string name;
  std::string x64;
  std::string m32;
  std::string powerpc;
  std::string powerpc64;
};

Row Same(const std::string& name, const std::string& record) {
  return {name, record, record, record, record};
}

Row BySize(const std::string& name, const std::string& wide, const std::string& narrow) {
  return {name, wide, narrow, narrow, wide};
}

template <typename Record>
void Expect(const std::vector<Row>& rows, Record record) {
  struct Target {
    std::string fixture;
    std::string Row::*expected;
  };
  const Target all[] = {
      {"values-x64-pie", &Row::x64},        {"values-x64-dwarf2", &Row::x64},
      {"values-x64-type-units", &Row::x64}, {"values-m32-dwarf4", &Row::m32},
      {"values-powerpc", &Row::powerpc},    {"values-powerpc64", &Row::powerpc64}};
  for (const Target& target : all) {
    if (!HasFixture(target.fixture)) continue;
    ElfProgram program(FixturePath(target.fixture));
    for (const Row& row : rows) {
      EXPECT_EQ(record(program, row.name), row.*target.expected)
          << row.name << " of " << target.fixture;
    }
  }
}

TEST(Record, Scalars) {
  Expect({Same("sc", "signed char:1s"), Same("uc", "unsigned char:1"), Same("si", "int:4s"),
          Same("yes", "_Bool:1"), Same("f", "float:4f"), Same("d", "double:8d"),
          Same("cv", "int:4s"), Same("ct", "int:4s"), Same("ub", "unsigned char:1"),
          Same("paint", "enum colour:4s"), Same("volume", "enum level:4")},
         LabelRecord);
}

TEST(Record, Pointers) {
  Expect({BySize("p", "*:8{int:4s}", "*:4{int:4s}"),
          BySize("pp", "*:8{*:8{int:4s}}", "*:4{*:4{int:4s}}"),
          BySize("anything", "*:8{void:1}", "*:4{void:1}"),
          BySize("callback", "*:8{function ():1}", "*:4{function ():1}"),
          BySize("row", "*:8{[*]:14{int:4s}}", "*:4{[*]:12{int:4s}}")},
         LabelRecord);
}

TEST(Record, PointersToStructuresHoldAStubOfHarmlessSize) {
  const auto to = [](const char* pointer, const char* tag, const char* size) {
    return std::string(pointer) + "{struct " + tag + ":" + size + "<struct " + tag + "#>}";
  };
  Expect({{"head", to("*:8", "node", "16"), to("*:4", "node", "8"), to("*:4", "node", "12"),
           to("*:8", "node", "16")},
          {"pointer3", to("*:8", "sized3", "6"), to("*:4", "sized3", "4"), to("*:4", "sized3", "4"),
           to("*:8", "sized3", "8")},
          {"pointer9", to("*:8", "sized9", "14"), to("*:4", "sized9", "12"),
           to("*:4", "sized9", "12"), to("*:8", "sized9", "16")},
          {"opaque", to("*:8", "hidden", "6"), to("*:4", "hidden", "4"), to("*:4", "hidden", "4"),
           to("*:8", "hidden", "8")}},
         LabelRecord);
}

TEST(Record, Arrays) {
  Expect({Same("a", "[*]:16{int:4s}"),
          Same("m", "[*]:24{[*]:12{int:4s}}"),
          Same("none", "[*]:0{int:4s}"),
          {"c", "[*]:14{char:1s}", "[*]:12{char:1s}", "[*]:12{char:1}", "[*]:14{char:1}"},
          {"tiny", "[*]:6{char:1s}", "[*]:4{char:1s}", "[*]:4{char:1}", "[*]:6{char:1}"},
          BySize("pointers", "[]:24{*:8{int:4s}}", "[]:12{*:4{int:4s}}"),
          BySize("units", "[*]:14{struct unit:4<struct unit#>}",
                 "[*]:12{struct unit:4<struct unit#>}"),
          Same("array3", "[*]:6{struct sized3:3<struct sized3#>}"),
          {"unit_pointers", "[]:16{*:8{struct unit:6<struct unit#>}}",
           "[]:8{*:4{struct unit:4<struct unit#>}}", "[]:8{*:4{struct unit:4<struct unit#>}}",
           "[]:16{*:8{struct unit:8<struct unit#>}}"}},
         LabelRecord);
}

TEST(Record, LabelsOfStructureTypeAreStubs) {
  Expect({BySize("o", "struct outer:40<struct outer#>", "struct outer:36<struct outer#>"),
          BySize("st", "struct node:16<struct node#>", "struct node:8<struct node#>"),
          Same("un", "struct <anonymous>:12<struct <anonymous>#>"),
          Same("secret", "struct hidden:4<struct hidden#>")},
         LabelRecord);
}

TEST(Record, WhatHasNoTypeIsUntyped) {
  Expect({Same("main", "untyped"), Same("twice", "untyped"), Same("GREEN", "untyped"),
          Same("nothing", "not found")},
         LabelRecord);
}

TEST(Record, FullStructures) {
  const auto outer = [](const char* size, const std::string& link) {
    return std::string("struct outer:") + size +
           "{k:4s, +4 in:8{struct inner:8<struct inner#>}, +12 x:4s, +16 bits:4, +16 number:4f, "
           "+20 pair:4{struct <anonymous>:4<struct <anonymous>#>}, "
           "+24 list[*]:6{struct <anonymous>:2<struct <anonymous>#>}, +32 link" +
           link + "}";
  };
  const auto unnamed = [](const std::string& bytes) {
    return "struct <anonymous>:12{q:4s, +4 deep:4s, +8 deeper:4s, +8 bytes" + bytes + "}";
  };
  Expect({{"struct outer", outer("40", "*:8{struct inner:8<struct inner#>}"),
           outer("36", "*:4{struct inner:8<struct inner#>}"),
           outer("36", "*:4{struct inner:12<struct inner#>}"),
           outer("40", "*:8{struct inner:8<struct inner#>}")},
          {"struct node", "struct node:16{v:4s, +8 next*:8{struct node:16<struct node#>}}",
           "struct node:8{v:4s, +4 next*:4{struct node:8<struct node#>}}",
           "struct node:8{v:4s, +4 next*:4{struct node:12<struct node#>}}",
           "struct node:16{v:4s, +8 next*:8{struct node:16<struct node#>}}"},
          {"unnamed_t", unnamed("[*]:6{char:1s}"), unnamed("[*]:4{char:1s}"),
           unnamed("[*]:4{char:1}"), unnamed("[*]:6{char:1}")}},
         TypeRecord);
}

TEST(Record, TypesByName) {
  Expect({Same("int", "int:4s"), Same("unsigned short", "short unsigned int:2"),
          Same("constant_t", "int:4s"), Same("enum colour", "enum colour:4s"),
          Same("void", "void:1"), Same("struct hidden", "struct hidden:4{found:4s}"),
          BySize("int_list", "[*]:14{int:4s}", "[*]:12{int:4s}"), Same("colour", "not found"),
          Same("node", "not found"), Same("struct colour", "not found"),
          Same("union outer", "not found"), Same("struct", "not found"), Same("", "not found")},
         [](ElfProgram& program, const std::string& name) {
           std::string text = TypeRecord(program, name);
           // The compilers differ in how they spell it.
           if (text == "unsigned short:2") text = "short unsigned int:2";
           return text;
         });
}

TEST(Record, EveryLevelCarriesThePointerSize) {
  for (const auto& [fixture, size] :
       {std::pair("values-x64-pie", 8U), std::pair("values-m32-pie", 4U)}) {
    ElfProgram program(FixturePath(fixture));
    EXPECT_EQ(program.PointerSize(), size);
    for (const char* label : {"si", "pp", "m", "units", "unit_pointers", "o", "callback", "row"}) {
      EXPECT_TRUE(HasPointerSize(program.FindLabel(label)->type, size)) << label;
    }
    for (const char* type : {"int", "struct outer", "unnamed_t", "void", "long long"}) {
      EXPECT_TRUE(HasPointerSize(*program.FindType(type), size)) << type;
    }
  }
}

TEST(Record, NestedNamesLeadBackToExactlyThatType) {
  ElfProgram program(FixturePath("values-x64-pie"));
  const auto follow = [&](const std::string& label) {
    return TypeRecord(program, program.FindLabel(label)->type.NestedTypes.front());
  };
  // Two files each define a `struct same`.
  EXPECT_EQ(follow("other_same"), "struct same:8{only_in_other:4s, +4 second:4s}");
  EXPECT_EQ(follow("third_same"), "struct same:7{only_in_third[*]:7{char:1s}}");
  EXPECT_EQ(follow("other_same"), "struct same:8{only_in_other:4s, +4 second:4s}");
  const std::string unnamed = program.FindLabel("un")->type.NestedTypes.front();
  EXPECT_TRUE(program.HasType(unnamed));
  EXPECT_EQ(TypeRecord(program, unnamed), TypeRecord(program, "unnamed_t"));
  EXPECT_FALSE(program.HasType(unnamed + "0"));
  EXPECT_EQ(TypeRecord(program, unnamed + "0"), "not found");
}

TEST(Record, OfTypesOfOneNameTheCurrentFilesIsMeant) {
  ElfProgram program(FixturePath("values-x64-pie"));
  program.SetCurrentFile("third.c");
  EXPECT_EQ(TypeRecord(program, "struct same"), "struct same:7{only_in_third[*]:7{char:1s}}");
  program.SetCurrentFile("other.c");
  EXPECT_EQ(TypeRecord(program, "struct same"), "struct same:8{only_in_other:4s, +4 second:4s}");
}

TEST(Record, BitFieldsCoverTheirStorageUnit) {
  for (const char* fixture : {"hosted", "hosted-dwarf2"}) {
    ElfProgram program(FixturePath(fixture));
    EXPECT_EQ(TypeRecord(program, "struct flags"),
              "struct flags:16{a:4x, b:4x, c:4sx, wide:8x, +8 whole:4s}")
        << fixture;
    // `across` starts at bit 8 and does not end in the unit that starts at bit 0.
    EXPECT_EQ(TypeRecord(program, "struct tight"),
              "struct tight:6{first:1s, +1 across:4sx, +4 next:4sx}")
        << fixture;
    std::vector<std::string> remarks;
    for (const targets::MemberRemark& remark : program.Remarks()) {
      EXPECT_EQ(remark.kind, targets::MemberRemark::Kind::kBitField);
      remarks.push_back(remark.record + "." + remark.member + " is " + remark.declaration);
    }
    EXPECT_EQ(remarks,
              (std::vector<std::string>{
                  "struct flags.a is unsigned int : 3", "struct flags.b is unsigned int : 7",
                  "struct flags.c is int : 5", "struct flags.wide is long long unsigned int : 40",
                  "struct tight.across is int : 30", "struct tight.next is int : 7"}));
  }
}

TEST(Record, ScalarsAboveEightBytesAreOpaque) {
  ElfProgram program(FixturePath("hosted"));
  EXPECT_EQ(TypeRecord(program, "struct large"),
            "struct large:64{before:4s, +16 ld:16x<long double#>, +32 huge:16x<__int128#>, "
            "+48 cf:8x<complex float#>, +56 after:4s}");
  EXPECT_EQ(LabelRecord(program, "lds"), "[*]:32{long double:16x<long double#>}");
  EXPECT_EQ(LabelRecord(program, "ldp"), "*:8{long double:16x<long double#>}");
  const std::string name = program.FindType("long double")->NestedTypes.front();
  EXPECT_TRUE(program.FindType(name)->Members.empty());
  EXPECT_EQ(program.Remarks().size(), 3U);
  EXPECT_EQ(program.Remarks()[0].kind, targets::MemberRemark::Kind::kTooLarge);
  EXPECT_EQ(program.Remarks()[0].declaration, "long double");
  EXPECT_EQ(Evaluate(program, "lg.ld + 1"), "error: Can`t convert one type to another");
  EXPECT_EQ(Evaluate(program, "lg.after + lg.before"), "6/4");
  EXPECT_EQ(Evaluate(program, "plg->after"), "5/4");
}

TEST(Record, FlexibleArraysHaveNoSize) {
  ElfProgram program(FixturePath("hosted"));
  EXPECT_EQ(TypeRecord(program, "struct flexible"),
            "struct flexible:4{length:4s, +4 items[*]:0{int:4s}}");
  EXPECT_EQ(Evaluate(program, "flex.items[1]"), "72/4");
}

TEST(Record, ClassesHoldTheFieldsOfTheirBasesBehindTheirOwn) {
  ElfProgram program(FixturePath("classes"));
  const std::string derived =
      "class Derived:20{+12 own:4s, +16 same:4s, b:4s, +4 same:4s, +8 o:4s}";
  EXPECT_EQ(TypeRecord(program, "Derived"), derived);
  EXPECT_EQ(TypeRecord(program, "class Derived"), derived);
  EXPECT_EQ(TypeRecord(program, "Point"), "struct Point:8{x:4s, +4 y:4s}");
  EXPECT_EQ(TypeRecord(program, "Length"), "short unsigned int:2");
  EXPECT_EQ(LabelRecord(program, "reference"), "*:8{class Derived:22<class Derived#>}");
  EXPECT_EQ(LabelRecord(program, "member"), "pointer to member:8");
  EXPECT_EQ(LabelRecord(program, "mode"), "enum Mode:1");
  EXPECT_EQ(LabelRecord(program, "flag"), "bool:1");
  EXPECT_EQ(LabelRecord(program, "wide"), "type char16_t:2");
  EXPECT_EQ(Evaluate(program, "derived.same"), "12/4");
  EXPECT_EQ(Evaluate(program, "derived.o"), "10/4");
  EXPECT_EQ(Evaluate(program, "reference->own"), "11/4");
}

}  // namespace
}  // namespace targettests

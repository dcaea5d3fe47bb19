#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <set>

#include "tests/targets/ProgramUnderTest.h"

namespace targettests {
namespace {

using targets::ByteOrder;
using targets::ElfOptions;
using targets::ElfProgram;
using targets::FieldShape;
using targets::TypeShape;
using Kind = TypeShape::Kind;

const char* KindText(Kind kind) {
  constexpr std::array<const char*, 12> kNames = {
      "void",    "integer", "boolean",   "character", "floating", "enumeration",
      "pointer", "array",   "structure", "union",     "function", "other"};
  return kNames.at(static_cast<std::size_t>(kind));
}

/// `structure struct node 16 {v int 0, next struct node * 8}`
std::string ShapeText(ElfProgram& program, targets::TypeNumber number) {
  const TypeShape* const shape = program.Shape(number);
  if (shape == nullptr) return "no shape";
  std::string text = std::string(KindText(shape->kind)) + " " + shape->name;
  if (shape->size != 0) text += " " + std::to_string(shape->size);
  if (shape->isSigned) text += " signed";
  if (shape->isText) text += " text";
  if (shape->isIncomplete) text += " incomplete";
  if (shape->kind == Kind::kArray) {
    text += " of " + (shape->count ? std::to_string(*shape->count) : "any");
  }
  if (const TypeShape* const target = program.Shape(shape->target)) text += " -> " + target->name;
  std::string parts;
  for (const FieldShape& field : shape->fields) {
    const TypeShape* const type = program.Shape(field.type);
    parts += parts.empty() ? "" : ", ";
    parts += field.isBase ? "<base> " : field.name + " ";
    parts += (type == nullptr ? "?" : type->name) + " " + std::to_string(field.offset);
  }
  for (const targets::EnumeratorShape& enumerator : shape->enumerators) {
    parts += parts.empty() ? "" : ", ";
    parts += enumerator.name + " " + std::to_string(static_cast<std::int64_t>(enumerator.value));
  }
  return parts.empty() ? text : text + " {" + parts + "}";
}

std::string LabelShape(ElfProgram& program, const std::string& name) {
  const auto object = program.FindObject(name);
  return object ? ShapeText(program, object->type) : "not found";
}

struct Row {
  std::string name;
  std::string wide;    ///< on 64 bits
  std::string narrow;  ///< on 32 bits; empty: the same
};

void Expect(const std::string& fixture, bool wide, const std::vector<Row>& rows) {
  if (!HasFixture(fixture)) return;
  ElfProgram program(FixturePath(fixture));
  for (const Row& row : rows) {
    EXPECT_EQ(LabelShape(program, row.name), wide || row.narrow.empty() ? row.wide : row.narrow)
        << row.name << " of " << fixture;
  }
}

TEST(Shape, OfEveryKind) {
  const std::vector<Row> rows = {
      {"sc", "character signed char 1 signed", ""},
      {"uc", "character unsigned char 1", ""},
      {"yes", "boolean _Bool 1", ""},
      {"si", "integer int 4 signed", ""},
      {"cv", "integer int 4 signed", ""},
      {"ct", "integer constant_t 4 signed", ""},
      {"d", "floating double 8", ""},
      {"c", "array char [10] 10 of 10 -> char", ""},
      {"m", "array int [2][3] 24 of 2 -> int [3]", ""},
      {"il", "array int_list 12 of 3 -> int", ""},
      {"pp", "pointer int ** 8 -> int *", "pointer int ** 4 -> int *"},
      {"row", "pointer int (*)[3] 8 -> int [3]", "pointer int (*)[3] 4 -> int [3]"},
      {"anything", "pointer void * 8 -> void", "pointer void * 4 -> void"},
      {"callback", "pointer int (*)() 8 -> int ()", "pointer int (*)() 4 -> int ()"},
      {"opaque", "pointer struct hidden * 8 -> struct hidden",
       "pointer struct hidden * 4 -> struct hidden"},
      {"n1", "structure struct node 16 {v int 0, next struct node * 8}",
       "structure struct node 8 {v int 0, next struct node * 4}"},
      {"st", "structure structural 16 {v int 0, next struct node * 8}",
       "structure structural 8 {v int 0, next struct node * 4}"},
      {"paint", "enumeration enum colour 4 signed {RED 0, GREEN 5, BLUE -2}", ""},
      {"volume", "enumeration enum level 4 {LOW 1, HIGH 200}", ""},
      {"un", "structure unnamed_t 12 {q int 0,  struct <anonymous> 4}", ""},
  };
  const auto named = [&](const std::vector<Row>& all) {
    std::vector<Row> kept;
    std::copy_if(all.begin(), all.end(), std::back_inserter(kept), [](const Row& row) {
      return row.name != "c" && row.name != "callback" && row.name != "row";
    });
    return kept;
  };
  Expect("values-m32-dwarf2", false, named(rows));
  for (const char* fixture : {"values-x64-dwarf2", "values-x64-pie", "values-x64-type-units",
                              "values-x64-dwarf5-shared"}) {
    Expect(fixture, true, named(rows));
  }
  for (const char* fixture : {"values-powerpc", "values-mips"})
    Expect(fixture, false,
           named({{"n1", "", "structure struct node 8 {v int 0, next struct node * 4}"}}));
}

TEST(Shape, OfClasses) {
  ElfProgram program(FixturePath("classes"));
  EXPECT_EQ(LabelShape(program, "derived"),
            "structure class Derived 20 {<base> struct Base 0, <base> struct Other 8, own int 12, "
            "same int 16}");
  EXPECT_EQ(LabelShape(program, "mode"), "enumeration enum Mode 1 {kOff 0, kOn 200}");
  EXPECT_EQ(LabelShape(program, "flag"), "boolean bool 1");
  EXPECT_EQ(LabelShape(program, "wide"), "character char16_t 2 text");
  EXPECT_EQ(LabelShape(program, "box"), "structure struct Box<int> 4 {held int 0}");
}

/// The bits as the documentation of `FieldShape` counts them.
std::int64_t BitsAt(ElfProgram& program, std::uint64_t address, std::uint32_t first,
                    std::uint32_t bits, bool isSigned) {
  std::array<std::byte, 16> bytes{};
  const std::size_t size = (first + bits + 7) / 8;
  EXPECT_EQ(program.Memory().Read(address, 0, std::span(bytes).first(size)).size, size);
  std::uint64_t value = 0;
  for (std::uint32_t i = 0; i < bits; ++i) {
    const std::uint32_t at = first + i;
    const auto byte = std::to_integer<unsigned>(bytes.at(at / 8));
    if (program.Order() == ByteOrder::kBig) {
      value = value << 1U | (byte >> (7 - at % 8) & 1U);
    } else {
      value |= std::uint64_t{byte >> at % 8 & 1U} << i;
    }
  }
  const bool negative = isSigned && (value >> (bits - 1) & 1U) != 0;
  return static_cast<std::int64_t>(negative ? value - (std::uint64_t{1} << bits) : value);
}

/// Every bit-field of the structure called `name`, read as its field says and as the number of its
/// record says.
std::string BitValues(ElfProgram& program, const std::string& name) {
  const auto object = program.FindObject(name);
  const auto record = program.FindType("struct " + name);
  if (!object || !record) return "not found";
  std::string text;
  for (const FieldShape& field : program.Shape(object->type)->fields) {
    if (field.bits == 0) continue;
    const bool isSigned = program.Shape(field.type)->isSigned;
    const std::int64_t value =
        BitsAt(program, object->address + field.offset, field.firstBit, field.bits, isSigned);
    text += (text.empty() ? "" : ", ") + field.name + " " + std::to_string(value);
    for (const DataLableType& member : record->Members) {
      if (member.Name != field.name) continue;
      const TypeShape& shape = *program.Shape(member.TypeNumber);
      EXPECT_EQ(shape.bits, field.bits) << field.name;
      EXPECT_EQ(BitsAt(program, object->address + member.Offset, shape.firstBit, shape.bits,
                       shape.isSigned),
                value)
          << field.name;
    }
  }
  return text;
}

TEST(Shape, BitFieldsOfBothByteOrders) {
  for (const char* fixture :
       {"bits-x64-dwarf2", "bits-x64-dwarf3", "bits-x64-dwarf4", "bits-x64-dwarf5", "bits-m32",
        "bits-powerpc-dwarf2", "bits-powerpc-dwarf5", "bits-powerpc64-dwarf2",
        "bits-powerpc64-dwarf5", "bits-mips-dwarf2", "bits-mips-dwarf5", "bits-aarch64-dwarf2",
        "bits-aarch64-dwarf5"}) {
    if (!HasFixture(fixture)) continue;
    ElfProgram program(FixturePath(fixture));
    EXPECT_EQ(BitValues(program, "loose"), "a 5, b -9, c 737893491525, d 1, e 1, f 100") << fixture;
    EXPECT_EQ(BitValues(program, "tight"), "a 715827882, b 357913941, c -3") << fixture;
  }
}

TEST(Shape, WhatHasNoRecord) {
  ElfProgram program(FixturePath("bits-x64-dwarf5"));
  EXPECT_EQ(ErrorCodeOf([&] { program.FindLabel("extended"); }),
            targets::ErrorCode::kNotRepresented);
  EXPECT_EQ(LabelShape(program, "extended"), "floating long double 16");
  const auto object = program.FindObject("extended");
  ASSERT_TRUE(object);
  EXPECT_TRUE(program.Shape(object->type)->isExtended);
  EXPECT_EQ(LabelShape(program, "list"), "structure struct list 4 {count int 0, items int [] 4}");
  const TypeShape& list = *program.Shape(program.FindObject("list")->type);
  EXPECT_EQ(program.Shape(list.fields.at(1).type)->count, std::nullopt);
  EXPECT_FALSE(program.FindObject("main"));
  EXPECT_FALSE(program.FindObject("nowhere"));
  if (!HasFixture("bits-aarch64-dwarf5")) return;
  ElfProgram quad(FixturePath("bits-aarch64-dwarf5"));
  EXPECT_FALSE(quad.Shape(quad.FindObject("extended")->type)->isExtended);
}

TEST(Shape, ByName) {
  ElfProgram program(FixturePath("values-x64-dwarf5"), ElfOptions{.firstTypeNumber = 1000});
  EXPECT_EQ(ShapeText(program, program.FindShape("struct node")),
            "structure struct node 16 {v int 0, next struct node * 8}");
  EXPECT_EQ(ShapeText(program, program.FindShape("constant_t")), "integer constant_t 4 signed");
  EXPECT_EQ(ShapeText(program, program.FindShape("float")), "floating float 4");
  EXPECT_EQ(ShapeText(program, program.FindShape("void")), "void void");
  EXPECT_EQ(program.FindShape("struct nowhere"), 0U);
  EXPECT_EQ(program.FindShape("nowhere"), 0U);
  EXPECT_GE(program.FindShape("int"), 1000U);
  EXPECT_EQ(program.Shape(0), nullptr);
  EXPECT_EQ(program.Shape(999), nullptr);
  EXPECT_EQ(program.Shape(1U << 30), nullptr);
  ElfProgram plain(FixturePath("labels-plain"));
  EXPECT_EQ(ShapeText(plain, plain.FindShape("unsigned char")), "character unsigned char 1");
}

TEST(LabelAt, NamesWhatAnAddressLiesIn) {
  for (const std::uint64_t bias : {std::uint64_t{0}, std::uint64_t{0x555555550000}}) {
    ElfProgram program(FixturePath("values-x64-pie"), ElfOptions{.loadBias = bias});
    const std::uint64_t array = program.FindLabel("a")->value;
    const auto at = [&](std::uint64_t address) -> std::string {
      const auto label = program.LabelAt(address);
      return label ? label->name + "+" + std::to_string(label->offset) : "none";
    };
    EXPECT_EQ(at(array), "a+0");
    EXPECT_EQ(at(array + 8), "a+8");
    EXPECT_EQ(at(array + 15), "a+15");
    EXPECT_NE(at(array + 16).substr(0, 2), "a+");
    EXPECT_EQ(at(program.FindLabel("twice")->value + 1), "twice+1");
    EXPECT_EQ(at(bias + 1), "none");
    EXPECT_EQ(at(~std::uint64_t{0}), "none");
  }
  ElfProgram plain(FixturePath("labels-plain"));
  const auto first = plain.FindLabel("main");
  ASSERT_TRUE(first);
  EXPECT_EQ(plain.LabelAt(first->value)->offset, 0U);
}

TEST(Names, OfLabelsAndTypes) {
  ElfProgram program(FixturePath("values-x64-dwarf5"));
  std::set<std::string> labels;
  program.VisitLabelNames([&](std::string_view name) { labels.emplace(name); });
  for (const char* name : {"a", "twice", "main", "RED", "calls", "only_here"}) {
    EXPECT_EQ(labels.count(name), 1U) << name;
  }
  EXPECT_EQ(labels.count("struct node"), 0U);
  std::set<std::string> types;
  program.VisitTypeNames([&](std::string_view name) { types.emplace(name); });
  for (const char* name : {"struct node", "constant_t", "int", "enum colour"}) {
    EXPECT_EQ(types.count(name), 1U) << name;
  }
  EXPECT_EQ(types.count("twice"), 0U);
}

}  // namespace
}  // namespace targettests

#include "tools/resolve/Display.h"

#include <gtest/gtest.h>

#include "FakeShapes.h"
#include "targets/Error.h"

namespace {

using targets::ByteOrder;
using targets::FieldShape;
using targets::TypeNumber;
using tool::Denoted;
using tool::DisplayLimits;
using tool::Format;
using tooltests::FakeBytes;
using tooltests::FakeShapes;
using tooltests::Kind;

constexpr std::uint64_t kHere = 0x1000;

std::string Shown(FakeShapes& shapes, FakeBytes& memory, TypeNumber type,
                  Format format = Format::kNatural, const DisplayLimits& limits = {}) {
  Denoted denoted;
  denoted.type = type;
  denoted.address = kHere;
  try {
    return Display(denoted, shapes, memory, limits, format);
  } catch (const targets::Error& error) {
    return std::string("error: ") + error.what();
  }
}

std::string ShownBytes(FakeShapes& shapes, TypeNumber type, const std::vector<int>& bytes,
                       Format format = Format::kNatural) {
  FakeBytes memory;
  memory.Put(kHere, bytes);
  return Shown(shapes, memory, type, format);
}

TEST(Display, Scalars) {
  FakeShapes shapes;
  shapes.Label("a", 0x2000, 16);
  const TypeNumber s4 = shapes.Integer(4, true);
  const TypeNumber u8 = shapes.Integer(8, false);
  const TypeNumber s8 = shapes.Integer(8, true);
  const TypeNumber s16 = shapes.Integer(16, true);
  const TypeNumber letter = shapes.Character();
  const TypeNumber wide = shapes.Character(4);
  const TypeNumber truth = shapes.Add({.kind = Kind::kBoolean, .name = "_Bool", .size = 1});
  const TypeNumber pointer = shapes.Pointer(s4);
  const TypeNumber other = shapes.Add({.kind = Kind::kOther, .name = "complex", .size = 3});
  const std::vector<int> ff8(8, 0xFF);
  std::vector<int> lowest16(16, 0);
  lowest16[15] = 0x80;
  struct Row {
    TypeNumber type;
    std::vector<int> bytes;
    std::string shown;
  };
  for (const Row& row : std::vector<Row>{
           {s4, {0xFB, 0xFF, 0xFF, 0xFF}, "-5"},
           {u8, ff8, "18446744073709551615 (0xffffffffffffffff)"},
           {u8, {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x7F}, "9223372036854775807"},
           {s8, ff8, "-1"},
           {s16, lowest16, "-170141183460469231731687303715884105728"},
           {letter, {65}, "65 'A'"},
           {letter, {0}, "0 '\\0'"},
           {letter, {10}, "10 '\\n'"},
           {letter, {39}, "39 '\\''"},
           {letter, {0xC8}, "-56"},
           {wide, {0xAC, 0x20, 0, 0}, "8364 '€'"},
           {truth, {1}, "true"},
           {truth, {0}, "false"},
           {truth, {200}, "true (200)"},
           {pointer, {0x08, 0x20, 0, 0, 0, 0, 0, 0}, "0x2008 <a+8>"},
           {pointer, {0x00, 0x20, 0, 0, 0, 0, 0, 0}, "0x2000 <a>"},
           {pointer, {0x10, 0x20, 0, 0, 0, 0, 0, 0}, "0x2010"},
           {pointer, {0, 0, 0, 0, 0, 0, 0, 0}, "0x0"},
           {other, {1, 2, 3}, "0x30201"},
       }) {
    EXPECT_EQ(ShownBytes(shapes, row.type, row.bytes), row.shown);
  }
}

TEST(Display, Formats) {
  FakeShapes shapes;
  shapes.Label("a", 0x41, 16);
  const TypeNumber u4 = shapes.Integer(4, false);
  const TypeNumber single = shapes.Floating(4);
  const TypeNumber letter = shapes.Character();
  struct Row {
    TypeNumber type;
    std::vector<int> bytes;
    Format format;
    std::string shown;
  };
  for (const Row& row : std::vector<Row>{
           {u4, {0xFE, 0xFF, 0xFF, 0xFF}, Format::kNatural, "4294967294"},
           {u4, {0xFE, 0xFF, 0xFF, 0xFF}, Format::kHexadecimal, "0xfffffffe"},
           {u4, {0xFE, 0xFF, 0xFF, 0xFF}, Format::kDecimal, "-2"},
           {u4, {0xFE, 0xFF, 0xFF, 0xFF}, Format::kUnsigned, "4294967294"},
           {u4, {8, 0, 0, 0}, Format::kOctal, "010"},
           {u4, {0, 0, 0, 0}, Format::kOctal, "0"},
           {u4, {5, 0, 0, 0}, Format::kBinary, "0b101"},
           {u4, {0x41, 0, 0, 0}, Format::kCharacter, "65 'A'"},
           {letter, {0xC8}, Format::kCharacter, "-56 '\\xc8'"},
           {u4, {0x45, 0, 0, 0}, Format::kAddress, "0x45 <a+4>"},
           {u4, {0, 0, 0xC0, 0x3F}, Format::kFloating, "1.5"},
           {u4, {1, 2, 0xAB, 0}, Format::kRaw, "01 02 ab 00"},
           {single, {0, 0, 0xC0, 0x3F}, Format::kNatural, "1.5"},
           {single, {0, 0, 0xC0, 0x3F}, Format::kHexadecimal, "0x3fc00000"},
           {single, {0, 0, 0x80, 0x7F}, Format::kNatural, "inf"},
       }) {
    EXPECT_EQ(ShownBytes(shapes, row.type, row.bytes, row.format), row.shown);
  }
}

TEST(Display, Enumerations) {
  FakeShapes shapes;
  const TypeNumber color = shapes.Enumeration(
      {{"RED", 0}, {"GREEN", 5}, {"BLUE", 6}, {"NIGHT", ~std::uint64_t{0}}}, true);
  const TypeNumber access = shapes.Enumeration({{"READ", 1}, {"WRITE", 2}, {"EXECUTE", 4}});
  const TypeNumber masks = shapes.Enumeration({{"NONE", 0}, {"A", 1}, {"B", 8}, {"BOTH", 9}});
  const TypeNumber steps = shapes.Enumeration({{"ONE", 1}, {"TWO", 2}, {"THREE", 3}, {"FOUR", 4}});
  struct Row {
    TypeNumber type;
    int value;
    std::string shown;
  };
  for (const Row& row : std::vector<Row>{{color, 5, "GREEN (5)"},
                                         {color, -1, "NIGHT (-1)"},
                                         {color, 7, "7"},
                                         {color, 11, "11"},
                                         {access, 5, "READ|EXECUTE (5)"},
                                         {access, 4, "EXECUTE (4)"},
                                         {access, 0, "0"},
                                         {access, 18, "WRITE|0x10 (18)"},
                                         {access, 16, "16"},
                                         {masks, 0, "NONE (0)"},
                                         {masks, 9, "BOTH (9)"},
                                         {steps, 5, "5"},
                                         {steps, 3, "THREE (3)"}}) {
    EXPECT_EQ(ShownBytes(shapes, row.type,
                         {row.value & 0xFF, row.value >> 8 & 0xFF, row.value >> 16 & 0xFF,
                          row.value >> 24 & 0xFF}),
              row.shown);
  }
}

/// Every field of `{ready : 1, level : 3, bias : 4 (signed), rest : 24}` in both byte orders.
TEST(Display, BitFields) {
  struct Row {
    ByteOrder order;
    std::vector<int> bytes;
  };
  for (const Row& row : std::vector<Row>{{ByteOrder::kLittle, {0xDB, 0xDE, 0xBC, 0x0A}},
                                         {ByteOrder::kBig, {0xDD, 0x0A, 0xBC, 0xDE}}}) {
    FakeShapes shapes(row.order);
    const TypeNumber u4 = shapes.Integer(4, false);
    const TypeNumber s4 = shapes.Integer(4, true);
    const TypeNumber flags = shapes.Structure(4, {{"ready", u4, 0, 1, 0},
                                                  {"level", u4, 0, 3, 1},
                                                  {"bias", s4, 0, 4, 4},
                                                  {"rest", u4, 1, 24, 0}});
    EXPECT_EQ(ShownBytes(shapes, flags, row.bytes),
              "{ready = 1, level = 5, bias = -3, rest = 703710}");
    EXPECT_EQ(ShownBytes(shapes, flags, row.bytes, Format::kHexadecimal),
              "{ready = 0x1, level = 0x5, bias = 0xd, rest = 0xabcde}");
  }
}

TEST(Display, Aggregates) {
  FakeShapes shapes;
  const TypeNumber byte = shapes.Integer(1, false);
  const TypeNumber octet = shapes.Character(1, false);
  const TypeNumber row2 = shapes.Array(byte, 2);
  const TypeNumber pair = shapes.Structure(2, {{"x", byte, 0}, {"y", byte, 1}});
  const TypeNumber nested = shapes.Structure(
      6, {{"", pair, 0, 0, 0, true}, {"m", shapes.Array(row2, 2), 2}, {"", pair, 4}});
  const TypeNumber either =
      shapes.Structure(2, {{"whole", pair, 0}, {"first", byte, 0}}, Kind::kUnion);
  struct Row {
    TypeNumber type;
    std::vector<int> bytes;
    std::string shown;
  };
  for (const Row& row : std::vector<Row>{
           {pair, {1, 2}, "{x = 1, y = 2}"},
           {nested,
            {1, 2, 3, 4, 5, 6},
            "{<s> = {x = 1, y = 2}, m = {{3, 4}, {5, 6}}, {x = 5, y = 6}}"},
           {either, {1, 2}, "{whole = {x = 1, y = 2}, first = 1}"},
           {shapes.Structure(0, {}), {}, "{}"},
           {shapes.Array(byte, 0), {}, "{}"},
           {shapes.Array(byte, std::nullopt), {}, "<of unknown length>"},
           {shapes.Array(pair, 2), {1, 2, 3, 4}, "{{x = 1, y = 2}, {x = 3, y = 4}}"},
           // numbers, whatever characters they may be
           {shapes.Array(octet, 3), {65, 66, 200}, "{65, 66, 200}"},
           {shapes.Array(byte, 9), std::vector<int>(9, 7), "{7, 7, 7, 7, 7, 7, 7, 7, 7}"},
           {shapes.Array(byte, 10), std::vector<int>(10, 7), "{7 <repeats 10 times>}"},
           {shapes.Array(0, 3), {1, 2, 3}, "<elements of unknown type>"},
       }) {
    EXPECT_EQ(ShownBytes(shapes, row.type, row.bytes), row.shown);
  }
}

TEST(Display, Limits) {
  FakeShapes shapes;
  const TypeNumber byte = shapes.Integer(1, false);
  const TypeNumber five = shapes.Array(byte, 5);
  const TypeNumber pair = shapes.Structure(2, {{"x", byte, 0}, {"y", byte, 1}});
  const TypeNumber deep = shapes.Structure(2, {{"in", pair, 0}});
  FakeBytes memory;
  memory.Put(kHere, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10});
  const auto shown = [&](TypeNumber type, const DisplayLimits& limits) {
    return Shown(shapes, memory, type, Format::kNatural, limits);
  };
  EXPECT_EQ(shown(five, {.elements = 5}), "{1, 2, 3, 4, 5}");
  EXPECT_EQ(shown(five, {.elements = 4}), "{1, 2, 3, 4, ... 1 more}");
  EXPECT_EQ(shown(five, {.elements = 0}), "{... 5 more}");
  EXPECT_EQ(shown(shapes.Array(five, 2), {.elements = 7}), "{{1, 2, 3, 4, 5}, {6, 7, ... 3 more}}");
  EXPECT_EQ(shown(deep, {.depth = 1}), "{in = {... 2 members}}");
  EXPECT_EQ(shown(deep, {.depth = 2}), "{in = {x = 1, y = 2}}");
  EXPECT_EQ(shown(shapes.Structure(5, {{"list", five, 0}}), {.depth = 1}),
            "{list = {... 5 elements}}");
  EXPECT_EQ(shown(pair, {.members = 1}), "{x = 1, ... 1 more}");
  EXPECT_EQ(Shown(shapes, memory, five, Format::kRaw, {.rawBytes = 3}), "01 02 03 ... 2 more");
}

TEST(Display, OnlyWhatIsShownIsReadAndOnlyOnce) {
  FakeShapes shapes;
  const TypeNumber byte = shapes.Integer(1, false);
  const TypeNumber pair = shapes.Structure(2, {{"x", byte, 0}, {"y", byte, 1}});
  FakeBytes memory;
  memory.Put(kHere, {1, 2, 3, 4});
  EXPECT_EQ(Shown(shapes, memory, shapes.Array(pair, 2)), "{{x = 1, y = 2}, {x = 3, y = 4}}");
  const std::map<std::uint64_t, int> once{
      {kHere, 1}, {kHere + 1, 1}, {kHere + 2, 1}, {kHere + 3, 1}};
  EXPECT_EQ(memory.Asked(), once);
}

TEST(Display, UnreadableParts) {
  FakeShapes shapes;
  const TypeNumber byte = shapes.Integer(1, false);
  const TypeNumber two = shapes.Integer(2, false);
  const TypeNumber three = shapes.Structure(4, {{"a", byte, 0}, {"b", two, 1}, {"c", byte, 3}});
  FakeBytes memory;
  memory.Put(kHere, {1, 2});
  memory.Put(kHere + 3, {4});
  EXPECT_EQ(Shown(shapes, memory, three), "{a = 1, b = <cannot read memory at 0x1002>, c = 4}");
  EXPECT_EQ(Shown(shapes, memory, shapes.Array(byte, 5)),
            "{1, 2, <cannot read memory at 0x1002>, 4, <cannot read memory at 0x1004>}");
  EXPECT_EQ(
      Shown(shapes, memory, shapes.Array(byte, 9)),
      "{1, 2, <cannot read memory at 0x1002>, 4, <cannot read memory at 0x1004> (5 elements)}");
  EXPECT_EQ(Shown(shapes, memory, three, Format::kRaw), "01 02 <cannot read memory at 0x1002>");
  memory.Fail(targets::MemoryGap::kNotSaved);
  EXPECT_EQ(Shown(shapes, memory, shapes.Structure(4, {{"c", two, 2}, {"d", byte, 3}})),
            "{c = <cannot read memory at 0x1002: it was not saved>, d = 4}");
  FakeBytes nothing;
  EXPECT_EQ(Shown(shapes, nothing, three), "error: cannot read memory at 0x1000");
  EXPECT_EQ(Shown(shapes, nothing, byte), "error: cannot read memory at 0x1000");
}

TEST(Display, Text) {
  FakeShapes shapes;
  const TypeNumber letter = shapes.Character();
  struct Row {
    std::uint64_t count;
    std::string bytes;
    std::string shown;
  };
  using namespace std::string_literals;
  for (const Row& row : std::vector<Row>{
           {8, "lantern\0"s, R"("lantern")"},
           {10, "owl\0\0\0\0\0\0\0"s, R"("owl")"},
           {3, "owl", R"("owl" (no zero at its end))"},
           {6, "a\0b\0\0\0"s, R"("a\000b")"},
           {4, "\0\0\0\0"s, R"("")"},
           {8, "\t\"\\\n\x1b\x7f\xff\0"s, R"("\t\"\\\n\033\177\377")"},
           {6, "caf\xc3\xa9\0"s, "\"café\""},
           {5,
            "\x1b"
            "12\0\0"s,
            R"("\03312")"},
           {12, "0123456789\0\0"s, R"("01234567"... (2 more))"},
           {8, "owl", R"("owl"... <cannot read memory at 0x1003>)"},
           {8, "ow\0l"s, R"("ow\000l" <cannot read memory at 0x1004>)"},
       }) {
    FakeBytes memory;
    memory.PutText(kHere, row.bytes);
    EXPECT_EQ(
        Shown(shapes, memory, shapes.Array(letter, row.count), Format::kNatural, {.characters = 8}),
        row.shown);
  }
  FakeBytes wide;
  wide.Put(kHere, {0x48, 0, 0xAC, 0x20, 0x3D, 0xD8, 0x00, 0xDE, 0, 0});
  EXPECT_EQ(Shown(shapes, wide, shapes.Array(shapes.Character(2), 5)), "u\"H€😀\"");
  const TypeNumber octets = shapes.Array(shapes.Character(1, false), 2);
  EXPECT_EQ(ShownBytes(shapes, octets, {65, 0}, Format::kString), R"("A")");
  EXPECT_EQ(ShownBytes(shapes, shapes.Array(letter, 2), {65, 0}, Format::kHexadecimal),
            "{0x41, 0x0}");
}

TEST(Display, PointersToText) {
  FakeShapes shapes;
  const TypeNumber pointer = shapes.Pointer(shapes.Character());
  struct Row {
    std::string bytes;
    std::string shown;
  };
  for (const Row& row : std::vector<Row>{
           {std::string("owl\0more", 8), R"(0x2000 "owl")"},
           {"0123456789", R"(0x2000 "01234567"...)"},
           {"owl", R"(0x2000 "owl"... <cannot read memory at 0x2003>)"},
           {"", "0x2000 <cannot read memory at 0x2000>"},
       }) {
    FakeBytes memory;
    memory.Put(kHere, {0, 0x20, 0, 0, 0, 0, 0, 0});
    memory.PutText(0x2000, row.bytes);
    EXPECT_EQ(Shown(shapes, memory, pointer, Format::kNatural, {.characters = 8}), row.shown);
  }
}

TEST(Display, ValuesWithoutAnAddress) {
  FakeShapes shapes(ByteOrder::kBig);
  FakeBytes memory;
  Denoted denoted;
  denoted.made.kind = Kind::kInteger;
  denoted.made.size = 2;
  denoted.made.isSigned = true;
  denoted.bytes = tool::BytesOf(0xFFFE, 2, ByteOrder::kBig);
  EXPECT_EQ(Display(denoted, shapes, memory, {}), "-2");
}

TEST(Display, SeenAsElements) {
  FakeShapes shapes;
  const TypeNumber byte = shapes.Integer(1, false);
  const TypeNumber opaque = shapes.Structure(0, {});
  FakeBytes memory;
  memory.Put(kHere, {0, 0x20, 0, 0, 0, 0, 0, 0, 9});
  memory.Put(0x2000, {1, 2, 3});
  const auto seen = [&](TypeNumber type, std::uint64_t count) -> std::string {
    Denoted denoted;
    denoted.type = type;
    denoted.address = kHere;
    try {
      return Display(WithCount(denoted, count, shapes, memory), shapes, memory, {});
    } catch (const targets::Error& error) {
      return error.what();
    }
  };
  EXPECT_EQ(seen(shapes.Pointer(byte), 3), "{1, 2, 3}");
  EXPECT_EQ(seen(shapes.Pointer(byte), 4), "{1, 2, 3, <cannot read memory at 0x2003>}");
  EXPECT_EQ(seen(shapes.Array(byte, 1), 2), "{0, 32}");
  EXPECT_EQ(seen(byte, 2), "{0, 32}");
  EXPECT_EQ(seen(shapes.Pointer(opaque), 2), "has elements of unknown size (struct s)");
  EXPECT_EQ(seen(shapes.Pointer(0), 2), "has elements of unknown size");
  EXPECT_EQ(seen(shapes.Integer(8, false), ~std::uint64_t{0}), "has no room for so many elements");
}

}  // namespace

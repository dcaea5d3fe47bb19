#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "FakeShapes.h"
#include "tools/resolve/BitFields.h"
#include "tools/resolve/Denoted.h"
#include "tools/resolve/Format.h"
#include "tools/resolve/Layout.h"
#include "tools/resolve/WideFloat.h"

namespace {

using targets::ByteOrder;

std::vector<std::byte> Bytes(const std::vector<int>& values) {
  std::vector<std::byte> bytes;
  for (const int value : values) bytes.push_back(static_cast<std::byte>(value));
  return bytes;
}

TEST(BitsIn, BothByteOrders) {
  struct Row {
    ByteOrder order;
    std::vector<int> bytes;
    std::uint32_t firstBit;
    std::uint32_t bits;
    std::uint64_t value;
  };
  for (const Row& row : std::vector<Row>{
           {ByteOrder::kLittle, {0x96}, 0, 3, 6},
           {ByteOrder::kLittle, {0x96}, 4, 4, 9},
           {ByteOrder::kBig, {0x96}, 0, 3, 4},
           {ByteOrder::kBig, {0x96}, 4, 4, 6},
           // across a byte's border
           {ByteOrder::kLittle, {0x80, 0x01}, 7, 2, 3},
           {ByteOrder::kBig, {0x01, 0x80}, 7, 2, 3},
           {ByteOrder::kLittle,
            {0xE0, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x1F},
            5,
            64,
            ~std::uint64_t{0}},
           {ByteOrder::kBig, {0x12, 0x34, 0x56}, 4, 16, 0x2345},
       }) {
    EXPECT_EQ(static_cast<std::uint64_t>(
                  tool::BitsIn(Bytes(row.bytes), row.firstBit, row.bits, row.order)),
              row.value);
  }
  EXPECT_EQ(static_cast<int>(tool::SignExtended(5, 3)), -3);
  EXPECT_EQ(static_cast<int>(tool::SignExtended(5, 4)), 5);
}

TEST(FloatText, EveryFormat) {
  struct Row {
    std::vector<int> bytes;
    bool isExtended;
    std::string text;
  };
  for (const Row& row : std::vector<Row>{
           {{0x00, 0x3C}, false, "1"},
           {{0x66, 0x2E}, false, "0.1"},
           {{0x01, 0x00}, false, "6e-08"},
           {{0xFF, 0x7B}, false, "65500"},
           {{0x00, 0xFC}, false, "-inf"},
           {{0x00, 0x7E}, false, "nan"},
           {{0, 0, 0, 0, 0, 0, 0, 0xC0, 0xFF, 0x3F}, true, "1.5"},
           {{0xCD, 0xCC, 0xCC, 0xCC, 0xCC, 0xCC, 0xCC, 0xCC, 0xFB, 0x3F, 0, 0}, true, "0.1"},
           {{0, 0, 0, 0, 0, 0, 0, 0x80, 0xFF, 0x7F}, true, "inf"},
           {{0, 0, 0, 0, 0, 0, 0, 0xC0, 0xFF, 0xFF}, true, "-nan"},
           {{0, 0, 0, 0, 0, 0, 0, 0, 0, 0x80}, true, "-0"},
           {{1, 0, 0, 0, 0, 0, 0, 0, 0, 0}, true, "4e-4951"},
           {{0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFE, 0x7F},
            true,
            "1.189731495357231765e+4932"},
           {{0x9A, 0x99, 0x99, 0x99, 0x99, 0x99, 0x99, 0x99, 0x99, 0x99, 0x99, 0x99, 0x99, 0x99,
             0xFB, 0x3F},
            false,
            "0.1"},
           {{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x00, 0x40}, false, "2"},
           {{1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, false, "6e-4966"},
           {{1, 2, 3}, false, ""},
       }) {
    EXPECT_EQ(tool::FloatText(Bytes(row.bytes), ByteOrder::kLittle, row.isExtended), row.text);
  }
  // Read back by the standard library, which knows these two.
  for (const double value : {0.1, 1e10, 1e300, -2.5, 5e-324, 1.7976931348623157e308, 3.0, 123456.0,
                             9007199254740993.0, 1e-5, 0.0001}) {
    const auto bits = std::bit_cast<std::uint64_t>(value);
    const std::string text =
        tool::FloatText(tool::BytesOf(bits, 8, ByteOrder::kBig), ByteOrder::kBig, false);
    EXPECT_EQ(std::strtod(text.c_str(), nullptr), value) << text;
  }
}

TEST(Format, NamesAndSuffixes) {
  EXPECT_EQ(tool::FormatNamed("x"), tool::Format::kHexadecimal);
  EXPECT_EQ(tool::FormatNamed("hexadecimal"), tool::Format::kHexadecimal);
  EXPECT_EQ(tool::FormatNamed("raw"), tool::Format::kRaw);
  EXPECT_FALSE(tool::FormatNamed(""));
  EXPECT_FALSE(tool::FormatNamed("X"));
  struct Row {
    std::string text;
    bool valid;
    tool::Format format;
    std::optional<std::uint64_t> count;
  };
  for (const Row& row : std::vector<Row>{
           {"/x", true, tool::Format::kHexadecimal, {}},
           {"/8", true, tool::Format::kNatural, 8},
           {"/16t", true, tool::Format::kBinary, 16},
           {"/character", true, tool::Format::kCharacter, {}},
           {"/", false, {}, {}},
           {"x", false, {}, {}},
           {"/0x", false, {}, {}},
           {"/q", false, {}, {}},
           {"/8 x", false, {}, {}},
           {"/99999999999999999999", false, {}, {}},
       }) {
    const auto suffix = tool::ParseFormatSuffix(row.text);
    ASSERT_EQ(suffix.has_value(), row.valid) << row.text;
    if (!suffix) continue;
    EXPECT_EQ(suffix->format, row.format) << row.text;
    EXPECT_EQ(suffix->count, row.count) << row.text;
  }
}

TEST(Layout, OffsetsSizesAndHoles) {
  tooltests::FakeShapes shapes;
  const auto byte = shapes.Integer(1, false, "byte");
  const auto word = shapes.Integer(4, true, "word");
  const auto inner = shapes.Structure(8, {{"b", byte, 0}, {"w", word, 4}});
  EXPECT_EQ(tool::LayoutText(shapes, inner),
            "struct s, 8 bytes\n"
            "  0  1  b  byte\n"
            "  1  3     <hole>\n"
            "  4  4  w  word\n");
  const auto outer =
      shapes.Structure(16, {{"in", inner, 0}, {"low", word, 8, 3, 0}, {"high", word, 8, 2, 5}});
  EXPECT_EQ(tool::LayoutText(shapes, outer),
            "struct s, 16 bytes\n"
            "    0        8  in    struct s\n"
            "    0        1    b   byte\n"
            "    1        3        <hole>\n"
            "    4        4    w   word\n"
            "    8   3 bits  low   word\n"
            "  8:3   2 bits        <hole>\n"
            "  8:5   2 bits  high  word\n"
            "  8:7  57 bits        <hole>\n");
  EXPECT_EQ(tool::LayoutText(shapes, shapes.Structure(4, {{"w", word, 0}, {"b", byte, 0}},
                                                      tooltests::Kind::kUnion)),
            "struct s, 4 bytes\n"
            "  0  4  w  word\n"
            "  0  1  b  byte\n");
  EXPECT_EQ(tool::LayoutText(shapes, word), "word, 4 bytes\n");
  EXPECT_EQ(tool::LayoutText(shapes, 0), "");
}

}  // namespace

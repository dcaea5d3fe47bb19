#include "targets/RecordShapes.h"

#include <gtest/gtest.h>

#include "targets/Error.h"
#include "tests/targets/RecordText.h"

namespace targets {
namespace {

using Sizes = std::vector<std::uint64_t>;

TargetLayout Layout(std::uint32_t pointerSize, ByteOrder order, std::uint64_t highest) {
  return {pointerSize, order, highest, true, 0, {}};
}

/// What becomes of the sizes 0 to 16.
template <typename Round>
Sizes Rounded(Round round) {
  Sizes sizes;
  for (std::uint64_t size = 0; size <= 16; ++size) sizes.push_back(round(size));
  return sizes;
}

Sizes Arrays(const TargetLayout& layout, bool isPointer) {
  return Rounded([&](std::uint64_t size) { return ArrayRecordSize(layout, size, isPointer); });
}

Sizes Pointees(const TargetLayout& layout) {
  return Rounded([&](std::uint64_t size) { return PointeeRecordSize(layout, size); });
}

TEST(RecordShapes, ArraysKeepTheirAddressWhole) {
  const Sizes wide{0, 6, 6, 6, 6, 6, 6, 7, 8, 14, 14, 14, 14, 14, 14, 15, 16};
  const Sizes narrow{0, 4, 4, 4, 4, 5, 6, 7, 8, 12, 12, 12, 12, 13, 14, 15, 16};
  const Sizes kernel{0, 8, 8, 8, 8, 8, 8, 8, 8, 16, 16, 16, 16, 16, 16, 16, 16};
  for (const bool isPointer : {false, true}) {
    for (const ByteOrder order : {ByteOrder::kLittle, ByteOrder::kBig}) {
      EXPECT_EQ(Arrays(Layout(8, order, 0x404000), isPointer), wide);
      EXPECT_EQ(Arrays(Layout(4, order, 0xFFFFFFFF), isPointer), narrow);
    }
  }
  EXPECT_EQ(Arrays(Layout(8, ByteOrder::kLittle, 0x7FFFFFFFFFFF), false), wide);
  EXPECT_EQ(Arrays(Layout(8, ByteOrder::kLittle, ~std::uint64_t{0}), false), kernel);
}

TEST(RecordShapes, ShortArraysMarkedAsPointersKeepMoreThanFourBytesOfHighAddresses) {
  const Sizes high{8, 8, 8, 8, 8, 8, 8, 8, 8, 14, 14, 14, 14, 14, 14, 15, 16};
  EXPECT_EQ(Arrays(Layout(8, ByteOrder::kLittle, 0x555555558000), true), high);
}

TEST(RecordShapes, PointeesReadThePointerWhole) {
  const Sizes wide{0, 6, 6, 6, 6, 6, 6, 7, 8, 14, 14, 14, 14, 14, 14, 15, 16};
  const Sizes narrow{0, 4, 4, 4, 4, 5, 6, 7, 8, 12, 12, 12, 12, 13, 14, 15, 16};
  EXPECT_EQ(Pointees(Layout(8, ByteOrder::kLittle, 0x404000)), wide);
  EXPECT_EQ(Pointees(Layout(4, ByteOrder::kLittle, 0x404000)), narrow);
}

TEST(RecordShapes, BigEndianPointeesReadExactlyThePointer) {
  const Sizes wide{0, 8, 8, 8, 8, 8, 8, 8, 8, 16, 16, 16, 16, 16, 16, 16, 16};
  const Sizes narrow{4, 4, 4, 4, 4, 12, 12, 12, 12, 12, 12, 12, 12, 20, 20, 20, 20};
  EXPECT_EQ(Pointees(Layout(8, ByteOrder::kBig, 0x404000)), wide);
  EXPECT_EQ(Pointees(Layout(4, ByteOrder::kBig, 0x404000)), narrow);
}

TEST(RecordShapes, SizesMustFitARecord) {
  EXPECT_EQ(RecordSize(0xFFFFFFF7, "it"), 0xFFFFFFF7);
  try {
    RecordSize(0xFFFFFFF8, "the array");
    FAIL() << "a size that leaves no room for rounding was accepted";
  } catch (const Error& error) {
    EXPECT_EQ(error.Code(), ErrorCode::kNotRepresented);
    EXPECT_STREQ(error.what(),
                 "the array needs the number 4294967288, and records hold sizes and offsets below "
                 "4 GiB only");
  }
}

TEST(RecordShapes, BasicTypesFollowTheTarget) {
  struct Row {
    std::string name;
    std::string wide;
    std::string narrow;
  };
  const Row rows[] = {
      {"void", "void:1", "void:1"},
      {"_Bool", "_Bool:1", "_Bool:1"},
      {"char", "char:1s", "char:1s"},
      {"signed char", "signed char:1s", "signed char:1s"},
      {"unsigned char", "unsigned char:1", "unsigned char:1"},
      {"short", "short:2s", "short:2s"},
      {"unsigned short", "unsigned short:2", "unsigned short:2"},
      {"int", "int:4s", "int:4s"},
      {"unsigned int", "unsigned int:4", "unsigned int:4"},
      {"long", "long:8s", "long:4s"},
      {"unsigned long", "unsigned long:8", "unsigned long:4"},
      {"long long", "long long:8s", "long long:8s"},
      {"unsigned long long", "unsigned long long:8", "unsigned long long:8"},
      {"float", "float:4f", "float:4f"},
      {"double", "double:8d", "double:8d"},
      {"long double", "none", "none"},
      {"__int128", "none", "none"},
      {"unsigned", "none", "none"},
      {"", "none", "none"},
  };
  const auto text = [](const TargetLayout& layout, const std::string& name) {
    const auto record = BasicTypeRecord(layout, name);
    return record ? targettests::RecordText(*record) : "none";
  };
  for (const Row& row : rows) {
    EXPECT_EQ(text(Layout(8, ByteOrder::kLittle, 0), row.name), row.wide) << row.name;
    EXPECT_EQ(text(Layout(4, ByteOrder::kBig, 0), row.name), row.narrow) << row.name;
  }
  TargetLayout unsignedChar = Layout(4, ByteOrder::kLittle, 0);
  unsignedChar.plainCharIsSigned = false;
  EXPECT_EQ(text(unsignedChar, "char"), "char:1");
}

}  // namespace
}  // namespace targets

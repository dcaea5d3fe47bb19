// Long texts of every repetitive shape end, and end well. Sizes are those at which anything that
// grows with the square of the text, or with the machine's stack, would be seen: it would not end.

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/FakeHost.h"
#include "tests/support/Outcome.h"
#include "tests/support/Program.h"

namespace {

using testsupport::FakeHost;
using testsupport::LoadProgram;
using testsupport::Resolve;

std::string Repeat(const std::string& piece, std::size_t count) {
  std::string text;
  text.reserve(piece.size() * count);
  for (std::size_t i = 0; i < count; ++i) text += piece;
  return text;
}

/// `start`, then `piece` n times, then `middle`, then `end` n times.
struct Shape {
  std::string start;
  std::string piece;
  std::string middle;
  std::string end;
  std::string outcome;
};

void ExpectAll(const std::vector<Shape>& shapes, std::size_t count) {
  FakeHost host;
  LoadProgram(host);
  host.quiet = true;
  for (const Shape& shape : shapes) {
    const std::string text =
        shape.start + Repeat(shape.piece, count) + shape.middle + Repeat(shape.end, count);
    EXPECT_EQ(Resolve(host, text), shape.outcome)
        << shape.start << " (" << shape.piece << ")* " << shape.middle << " (" << shape.end << ")*";
  }
}

TEST(LongText, ShapesOfExpressions) {
  ExpectAll(
      {
          {"1", "+1", "", "", "100001/8"},
          {"1", "*1+1", "", "", "100001/8"},
          {"1", "+1*1<<0|0", "", "", "3/8"},
          {"u", "+u*1", "", "", "700007/8"},
          {"", "(", "1", ")", "1/8"},
          {"", "-(", "1", ")", "1/8"},
          {"1", "+(1)", "", "", "100001/8"},
          {"", "-~", "1", "", "100001/8"},
          {"0", "+arr[1]", "", "", "2000000/8"},
          {"0", "+s.b", "", "", "10100000/8"},
          {"0", "+sizeof u", "", "", "400000/8"},
          {"1.5", "+1.5", "", "", "150002f/8"},
          {"", "arr[0*", "1", "]", "10/4"},
          {"(int", "*", ")0", "", "0/8"},
          {"1", " ", "+1", "", "2/8"},
      },
      100'000);
}

TEST(LongText, ShapesThatAreErrors) {
  ExpectAll(
      {
          {"", "(", "", "", "error: Can`t find the end quote."},
          {"", "[", "", "", "error: Can`t find the end quote."},
          {"", "+", "", "", "error: Missing an address in the string"},
          {"1", "+1=", "1", "", "error: Internal error. Wrong relations between arguments"},
          {"", "#", "1", "", "error: Can`t do the dereference operation with this type"},
      },
      100'000);
}

/// A ")" right behind "[" closes the group that the bracket opens, and so the bracket is left to a
/// nested resolver; as many of them, to as many.
std::string NestedResolvers(std::size_t depth) {
  std::string text = "a";
  for (std::size_t level = 1; level <= depth; ++level) {
    text += "[" + std::string(level, ')') + "a";
  }
  return text + std::string(depth, ']');
}

/// Takes any text for a label, and counts the resolvers that are built on it.
class CredulousHost : public FakeHost {
 public:
  std::string GetFileName() override {
    ++resolvers;
    return "a.c";
  }
  std::uint64_t FindLabel(const char*, bool*, bool* confirmed) override {
    *confirmed = true;
    return 1;
  }
  std::size_t resolvers = 0;
};

TEST(LongText, NestedResolversAreBounded) {
  const std::vector<std::pair<std::size_t, std::size_t>> resolversOfDepth = {
      {1, 2}, {10, 11}, {99, 100}, {100, 101}, {101, 101}, {500, 101}};
  for (const auto& [depth, resolvers] : resolversOfDepth) {
    CredulousHost host;
    host.quiet = true;
    Resolve(host, NestedResolvers(depth));
    EXPECT_EQ(host.resolvers, resolvers) << depth;
  }
}

TEST(LongText, SixteenMebibytes) {
  constexpr std::size_t kSize = std::size_t{16} << 20;
  ExpectAll(
      {
          {"1", " ", "", "", "1/8"},
          {"", "(", "", "", "error: Can`t find the end quote."},
          {"", "-", "1", "", "1/8"},
          {"0.", "5", "", "", "0.555556f/8"},
          {"1", ",", "", "", "1f/8"},
      },
      kSize);
}

}  // namespace

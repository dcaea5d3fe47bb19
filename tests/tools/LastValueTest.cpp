#include "tools/resolve/LastValue.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <variant>
#include <vector>

#include "tools/resolve/Evaluator.h"
#include "tools/resolve/ExpressionText.h"
#include "tools/resolve/FileTarget.h"

namespace tool {
namespace {

class LastValueTest : public testing::Test {
 protected:
  Outcome Evaluate(const std::string& expression) {
    return Evaluator(target_.Labels(), target_.Memory(), Evaluator::Text::kC).Evaluate(expression);
  }

  void KeepValueOf(const std::string& expression) {
    const Outcome outcome = Evaluate(expression);
    ASSERT_TRUE(std::holds_alternative<Answer>(outcome)) << expression;
    last_.Keep(expression, std::get<Answer>(outcome), target_.Labels());
  }

  FileTarget target_{EXAMPLE_PROGRAM, "/usr/lib/debug"};
  LastValue last_;
};

struct ValueRow {
  std::string expression;
  /// With `$`, and the same without it.
  std::string uses;
  std::string same;
};

TEST_F(LastValueTest, StandsForWhatItWas) {
  const std::vector<ValueRow> rows = {
      {"x", "$ + 1", "x + 1"},
      {"x", "&$", "&x"},
      {"x", "sizeof($)", "sizeof(x)"},
      {"letter", "$ + 1", "letter + 1"},
      {"tiny", "$", "tiny"},
      {"pi", "$ * 2", "pi * 2"},
      {"half", "$ + 1", "half + 1"},
      {"paint", "$ == GREEN", "paint == GREEN"},
      {"head", "$->v", "head->v"},
      {"head->next", "$->next->v", "head->next->next->v"},
      {"*head", "$.v", "(*head).v"},
      {"p", "*$", "*p"},
      {"p", "*($ + 1)", "*(p + 1)"},
      {"pp", "**$", "**pp"},
      {"start", "*$", "*start"},
      {"&arr[1]", "$->x", "(&arr[1])->x"},
      {"&x", "*$", "*(&x)"},
      {"a", "$[2]", "a[2]"},
      {"m[1]", "$[2]", "m[1][2]"},
      {"arr[1]", "$.x", "arr[1].x"},
      {"arr", "$[1].x", "arr[1].x"},
      {"s", "$.in.x", "s.in.x"},
      {"s.in", "$.x", "s.in.x"},
      {"spot", "$.x", "spot.x"},
      {"nameless", "$.left", "nameless.left"},
      {"word32", "$.bytes[1]", "word32.bytes[1]"},
      {"flags.level", "$ + 1", "flags.level + 1"},
      {"x + 1", "$ + 1", "43 + 1"},
      {"x + 1", "$->v", "43->v"},
      {"-x", "$ + 50", "(-x) + 50"},
      {"(int)x - (int)50", "$ * (int)2", "((int)x - (int)50) * (int)2"},
      {"pi * 2", "$ / 2", "(pi * 2) / 2"},
      {"n", "$$", "$$"},
      {"n", "$x", "$x"},
      {"x", "'$' + $", "'$' + x"},
      {"x", "$+$", "x+x"},
  };
  const auto shown = [](const Outcome& outcome) {
    if (const auto* failure = std::get_if<Failure>(&outcome)) return failure->message;
    const auto& answer = std::get<Answer>(outcome);
    return FormatValue(answer) + ", " + FormatDetails(answer);
  };
  for (const ValueRow& row : rows) {
    KeepValueOf(row.expression);
    const LastValue::Inserted inserted = last_.Insert(row.uses);
    EXPECT_EQ(inserted.error, "") << row.uses;
    EXPECT_EQ(shown(Evaluate(inserted.text)), shown(Evaluate(row.same)))
        << row.expression << ", then " << row.uses << " as " << inserted.text;
  }
}

TEST_F(LastValueTest, DoesNotGrowWithUse) {
  KeepValueOf("head");
  std::size_t longest = 0;
  for (const char* member : {"next", "next", "v"}) {
    const std::string text = last_.Insert(std::string("$->") + member).text;
    longest = std::max(longest, text.size());
    KeepValueOf(text);
  }
  EXPECT_LT(longest, 60U);
}

TEST_F(LastValueTest, IsMissedOnlyWhereItIsUsed) {
  EXPECT_EQ(last_.Insert("x + 1").text, "x + 1");
  EXPECT_EQ(last_.Insert("$x + '$'").text, "$x + '$'");
  EXPECT_EQ(last_.Insert("$").error, "there is no last value for `$` yet");
  KeepValueOf("x");
  EXPECT_EQ(last_.Insert("$").error, "");
  last_.Forget();
  EXPECT_EQ(last_.Insert("1 + $").error, "there is no last value for `$` yet");
}

TEST_F(LastValueTest, IsNotRepeatedWithoutEnd) {
  std::string text;
  for (std::size_t n = 0; n < kLongestExpression / 2; ++n) text += "$+";
  KeepValueOf("head->next");
  EXPECT_EQ(last_.Insert(text).error,
            "the expression is too long with the last value for each `$`");
}

}  // namespace
}  // namespace tool

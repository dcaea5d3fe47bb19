#include "targets/Remembered.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace {

using targets::Remembered;

/// Answers with the length of the name, and counts how often it is asked.
class LengthOf {
 public:
  int operator()(const std::string& name) {
    return answers_.Get(name, [&] {
      ++asked;
      return static_cast<int>(name.size());
    });
  }
  void Forget() { answers_.Forget(); }

  int asked = 0;

 private:
  Remembered<int> answers_;
};

TEST(Remembered, ANameIsAskedAboutOnce) {
  LengthOf lengthOf;
  for (int round = 0; round < 3; ++round) {
    EXPECT_EQ(lengthOf("int"), 3);
    EXPECT_EQ(lengthOf(""), 0);
  }
  EXPECT_EQ(lengthOf.asked, 2);
  lengthOf.Forget();
  EXPECT_EQ(lengthOf("int"), 3);
  EXPECT_EQ(lengthOf.asked, 3);
}

TEST(Remembered, ManyNamesAndLongOnesTakeNoMemoryForGood) {
  LengthOf lengthOf;
  for (int name = 0; name < 10'000; ++name) {
    const std::string text = std::to_string(name);
    EXPECT_EQ(lengthOf(text), static_cast<int>(text.size()));
  }
  EXPECT_EQ(lengthOf("9999"), 4);
  EXPECT_EQ(lengthOf.asked, 10'000);
  EXPECT_EQ(lengthOf("0"), 1);
  EXPECT_EQ(lengthOf.asked, 10'001);

  const std::string longName(257, 'x');
  for (int round = 0; round < 2; ++round) EXPECT_EQ(lengthOf(longName), 257);
  EXPECT_EQ(lengthOf.asked, 10'003);
}

TEST(Remembered, WhatThrowsIsAskedAgain) {
  Remembered<int> answers;
  const auto fail = []() -> int { throw std::runtime_error("not now"); };
  EXPECT_THROW(answers.Get("x", fail), std::runtime_error);
  EXPECT_EQ(answers.Get("x", [] { return 1; }), 1);
  EXPECT_EQ(answers.Get("x", fail), 1);
}

}  // namespace

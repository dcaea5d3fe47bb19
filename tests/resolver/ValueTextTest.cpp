// Numbers to text and back, against string streams of the classic locale.
#include "resolver/ValueText.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <locale>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace {

template <typename Number>
Number FromStream(const std::string& text) {
  std::istringstream stream(text);
  stream.imbue(std::locale::classic());
  Number value = 0;
  stream >> value;
  return value;
}

template <typename Number>
std::string ToStream(Number value) {
  std::ostringstream stream;
  stream.imbue(std::locale::classic());
  stream << value;
  return stream.str();
}

void CheckRead(const std::string& text) {
  EXPECT_EQ(resolver::ReadUnsigned(text), FromStream<std::uint64_t>(text)) << "text: " << text;
  EXPECT_EQ(resolver::ReadDouble(text), FromStream<double>(text)) << "text: " << text;
  EXPECT_EQ(resolver::ReadFloat(text), FromStream<float>(text)) << "text: " << text;
}

TEST(ValueText, ReadsLikeAStream) {
  for (const char* text : {"",
                           " ",
                           "0",
                           "7",
                           "007",
                           "+7",
                           "-7",
                           "--7",
                           "+-7",
                           "-",
                           "+",
                           ".",
                           "-.",
                           "e",
                           "e5",
                           "1e",
                           "1e+",
                           "1e-",
                           "1e5",
                           "1E5",
                           "1e+5",
                           "1e-5",
                           "1e5.5",
                           ".5",
                           "-.5",
                           "5.",
                           "1.5",
                           "1..5",
                           "1.5.5",
                           "1,5",
                           "1.5e3x",
                           "0x10",
                           "0x1p3",
                           "0b1",
                           "1_000",
                           " 12",
                           "\t\n12",
                           "1 2",
                           "inf",
                           "-inf",
                           "infinity",
                           "nan",
                           "-nan",
                           "NaN",
                           "1e400",
                           "-1e400",
                           "1e-400",
                           "1e39",
                           "-1e39",
                           "3.5e38",
                           "1e308",
                           "1.8e308",
                           "18446744073709551615",
                           "18446744073709551616",
                           "-18446744073709551615",
                           "-18446744073709551616",
                           "99999999999999999999999999",
                           "-99999999999999999999999999",
                           "000000000000000000000000000001",
                           "0.1",
                           "0.333333",
                           "123456789.123456789",
                           "4.94066e-324",
                           "1e-45",
                           "1e-46",
                           "2.5abc",
                           "abc"}) {
    CheckRead(text);
  }
  // Out of range without an exponent.
  const std::string zeros(400, '0');
  for (const std::string& text : {"1" + zeros, "-1" + zeros, "0." + zeros + "1", zeros + "1"}) {
    CheckRead(text);
  }
}

TEST(ValueText, ReadsRandomTextsLikeAStream) {
  const std::string alphabet = "0123456789019+-.,eEx nif\t";
  std::mt19937_64 random(7);
  for (int n = 0; n < 20000; ++n) {
    std::string text;
    for (std::uint64_t length = random() % 14; length > 0; --length) {
      text += alphabet[random() % alphabet.size()];
    }
    CheckRead(text);
    if (HasFailure()) return;
  }
}

void CheckWritten(double value) {
  std::string text = "what stood there";
  resolver::WriteFloating(value, &text);
  EXPECT_EQ(text, ToStream(value)) << "value: " << value;
}

TEST(ValueText, WritesLikeAStream) {
  for (const std::uint64_t value :
       {std::uint64_t{0}, std::uint64_t{7}, std::uint64_t{1} << 63U, ~std::uint64_t{0}}) {
    resolver::Digits digits;
    EXPECT_EQ(resolver::WriteUnsigned(value, &digits), ToStream(value));
  }
  const double infinity = std::numeric_limits<double>::infinity();
  for (const double value :
       {0.0,     -0.0,        1.0,      1.5,       -1.5,     0.1,      1.0 / 3,  2.0 / 3,
        99999.0, 999999.0,    999999.5, 1000000.0, 1e5,      1e6,      1e10,     1e-4,
        1e-5,    123456789.0, 1e100,    1e308,     4.9e-324, infinity, -infinity}) {
    CheckWritten(value);
  }
  std::mt19937_64 random(8);
  std::uniform_real_distribution<double> mantissa(-10, 10);
  for (int n = 0; n < 5000; ++n) {
    const double value = mantissa(random) * std::pow(10.0, static_cast<int>(random() % 40) - 20);
    CheckWritten(value);
  }
}

TEST(ValueText, RoundsAtTheSixthDigitLikeAStream) {
  std::mt19937_64 random(9);
  for (int n = 0; n < 20000; ++n) {
    const double scale = std::pow(10.0, static_cast<int>(random() % 12) - 6);
    // A tie where the quotient is exact, and what lies beside it; multiples of a power of two,
    // among which are the exact ties; powers of ten.
    const double tie = (static_cast<double>(random() % 1'000'000) + 0.5) * scale;
    const double binary =
        std::ldexp(static_cast<double>(random() % 10'000'000), -static_cast<int>(random() % 24));
    for (const double value : {tie, binary, scale}) {
      CheckWritten(value);
      CheckWritten(-std::nextafter(value, 0.0));
      CheckWritten(std::nextafter(value, 1e30));
      CheckWritten(static_cast<double>(static_cast<float>(value)));
    }
    if (HasFailure()) return;
  }
}

TEST(ValueText, TruncatesEveryNumberToSixtyFourBits) {
  struct Case {
    double value;
    std::uint64_t expected;
  };
  const std::uint64_t top = std::uint64_t{1} << 63U;
  const double infinity = std::numeric_limits<double>::infinity();
  const std::vector<Case> rows = {
      {0.0, 0},
      {-0.0, 0},
      {0.99, 0},
      {-0.99, 0},
      {1.0, 1},
      {1.99, 1},
      {-1.0, ~0ULL},
      {-1.5, ~0ULL},
      {-2.0, ~0ULL - 1},
      {9007199254740993.0, 9007199254740992},
      {9223372036854774784.0, 9223372036854774784U},
      {9223372036854775808.0, top},
      {9223372036854777856.0, 9223372036854777856U},
      {18446744073709549568.0, 18446744073709549568U},
      {18446744073709551616.0, ~0ULL},
      {1e30, ~0ULL},
      {infinity, ~0ULL},
      {-9223372036854774784.0, top + 1024},
      {-9223372036854775808.0, top},
      {-1e30, top},
      {-infinity, top},
      {std::numeric_limits<double>::quiet_NaN(), 0},
  };
  for (const Case& row : rows) {
    EXPECT_EQ(resolver::TruncateToUnsigned(row.value), row.expected) << "value: " << row.value;
  }
}

}  // namespace

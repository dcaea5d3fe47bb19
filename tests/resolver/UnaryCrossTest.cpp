// Every unary operator and every cast on every kind of operand, against an oracle of a few lines
// for each rule.
#include <gtest/gtest.h>

#include <bit>
#include <string>
#include <vector>

#include "tests/resolver/OperandKinds.h"
#include "tests/support/Outcome.h"

namespace {

using operandkinds::AddOperands;
using operandkinds::FloatingOutcome;
using operandkinds::IntegerOutcome;
using operandkinds::Kind;
using operandkinds::LeadingDigits;
using operandkinds::MaskOf;
using operandkinds::Operand;
using operandkinds::SixDigits;
using operandkinds::Truncate;
using testsupport::FakeHost;
using testsupport::Resolve;

std::string Plain(const Operand& x) {
  if (x.valueKind == 1) return FloatingOutcome(SixDigits(x.single), x.size);
  if (x.valueKind == 2) return FloatingOutcome(SixDigits(x.twice), x.size);
  return IntegerOutcome(x.view, x.size, x.isSigned);
}

std::string Negated(const Operand& x) {
  // Of an array it is the address that is negated, and nothing lies there.
  if (x.kind == Kind::kArray) return "0/2";
  Operand negative = x;
  negative.view = 0 - x.view;
  negative.single = -x.single;
  negative.twice = -x.twice;
  return Plain(negative);
}

std::string Inverted(const Operand& x, bool logical) {
  if (x.valueKind != 0) {
    return std::string("error: Invalid type for ") + (logical ? "!" : "~") + " operation";
  }
  if (x.kind == Kind::kArray) return "0/2";
  const std::uint64_t value = logical ? (x.view == 0 ? 1 : 0) : ~x.view;
  return IntegerOutcome(value, x.size, x.isSigned);
}

std::string Dereferenced(const Operand& x) {
  if (x.kind == Kind::kPointer) return "0/4";
  if (x.kind == Kind::kArray) return Plain(x);
  return "error: Can`t do the dereference operation with this type";
}

TEST(UnaryCross, EveryOperatorOnEveryKind) {
  FakeHost host;
  host.quiet = true;
  for (const Operand& x : AddOperands(&host)) {
    SCOPED_TRACE("x = " + x.label + ", value " + std::to_string(x.view));
    EXPECT_EQ(Resolve(host, x.label), Plain(x));
    EXPECT_EQ(Resolve(host, "+" + x.label), Plain(x));
    EXPECT_EQ(Resolve(host, "-" + x.label), Negated(x));
    EXPECT_EQ(Resolve(host, "~" + x.label), Inverted(x, false));
    EXPECT_EQ(Resolve(host, "!" + x.label), Inverted(x, true));
    EXPECT_EQ(Resolve(host, "&" + x.label), std::to_string(x.address) + "/8");
    EXPECT_EQ(Resolve(host, "*" + x.label), Dereferenced(x));
    const std::uint32_t size = x.kind == Kind::kArray ? 8 : x.size;
    EXPECT_EQ(Resolve(host, "sizeof " + x.label), std::to_string(size) + "/8");
  }
  EXPECT_TRUE(host.violations.empty());
}

struct Target {
  std::string name;
  std::uint32_t size;
  bool isSigned;
  bool isFloat;
  bool isDouble;
};

std::string Cast(const Operand& operand, const Target& to) {
  Operand x = operand;
  if (x.kind == Kind::kArray) {
    // An array is not read: its value is its address.
    x.view = x.address;
    x.size = 8;
    x.isSigned = false;
  }
  if (x.valueKind != 0 && !to.isFloat) {
    x.view = Truncate(x.valueKind == 1 ? static_cast<double>(x.single) : x.twice);
    x.valueKind = 0;
  }
  if (x.valueKind == 0 && to.isFloat) {
    x.valueKind = 1;
    x.single = std::bit_cast<float>(static_cast<std::uint32_t>(x.view));
  }
  if (x.valueKind == 0 && to.isDouble) {
    x.valueKind = 2;
    x.twice = std::bit_cast<double>(x.view);
  }
  if (x.valueKind == 0 && x.isSigned && to.size > x.size) {
    const std::uint32_t shift = 8 * (to.size - x.size);
    x.view = static_cast<std::uint64_t>(static_cast<std::int64_t>(x.view << shift) >> shift);
  }
  if (x.valueKind == 0) return IntegerOutcome(x.view, to.size, to.isSigned);
  // The final conversion reads the digits of the text as a bit pattern.
  const std::string text = SixDigits(x.valueKind == 1 ? static_cast<double>(x.single) : x.twice);
  const std::uint64_t bits = LeadingDigits(text);
  return FloatingOutcome(to.isDouble ? static_cast<float>(std::bit_cast<double>(bits))
                                     : std::bit_cast<float>(static_cast<std::uint32_t>(bits)),
                         to.size);
}

TEST(UnaryCross, EveryCastOfEveryKind) {
  FakeHost host;
  host.quiet = true;
  const std::vector<Operand> operands = AddOperands(&host);
  std::vector<Target> targets = {{"single", 4, false, true, false},
                                 {"twice", 8, false, false, true},
                                 {"u4*", 8, false, false, false},
                                 {"record", 8, false, false, false}};
  host.AddType("single", host.types.Single());
  host.AddType("twice", host.types.Double());
  host.AddType("record",
               host.types.Struct("record", 8, {host.types.Field("x", 0, host.types.Signed(4))}));
  for (std::uint32_t size = 1; size <= 8; ++size) {
    const std::string digit = std::to_string(size);
    host.AddType("u" + digit, host.types.Unsigned(size));
    host.AddType("s" + digit, host.types.Signed(size));
    targets.push_back({"u" + digit, size, false, false, false});
    targets.push_back({"s" + digit, size, true, false, false});
  }
  for (const Target& target : targets) {
    for (const Operand& x : operands) {
      const std::string expression = "(" + target.name + ")" + x.label;
      EXPECT_EQ(Resolve(host, expression), Cast(x, target))
          << "expression: " << expression << ", value " << x.view;
    }
  }
  EXPECT_TRUE(host.violations.empty());
}

}  // namespace

// Every binary operator on every pair of kinds, against an oracle written down from the rules: what
// each operator computes from two numbers that have been read, which type the result gets, and how
// it is written.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/resolver/OperandKinds.h"
#include "tests/support/Outcome.h"

namespace {

using operandkinds::AddOperands;
using operandkinds::FloatingOutcome;
using operandkinds::IntegerOutcome;
using operandkinds::Kind;
using operandkinds::MaskOf;
using operandkinds::Operand;
using operandkinds::SignedValue;
using operandkinds::SixDigits;
using testsupport::FakeHost;
using testsupport::Resolve;

/// One side of the operator.
struct Side {
  std::uint64_t view = 0;
  float single = 0;
  double twice = 0;
  bool floating = false;
  bool negative = false;
  std::uint32_t size = 8;
  bool isSigned = false;
  bool pointer = false;
  bool structure = false;

  explicit Side(const Operand& x)
      : view(x.view),
        single(x.single),
        twice(x.twice),
        floating(x.valueKind != 0),
        size(x.size),
        isSigned(x.isSigned),
        pointer(x.kind == Kind::kPointer),
        structure(x.kind == Kind::kStructure) {
    if (floating) return;
    if (isSigned) {
      const std::int64_t value = SignedValue(view, size);
      view = static_cast<std::uint64_t>(value);
      single = static_cast<float>(value);
      twice = static_cast<double>(value);
    } else {
      single = static_cast<float>(view);
      twice = static_cast<double>(view);
    }
  }

  void TakeMagnitude() {
    negative = isSigned && (view >> (8 * size - 1)) != 0;
    if (negative) view = (0 - view) & MaskOf(size);
  }

  void BecomeDefault() {
    size = 8;
    isSigned = pointer = structure = false;
  }
};

template <typename Number>
bool Compare(const std::string& op, Number a, Number b) {
  if (op == "<") return a < b;
  if (op == "<=") return a <= b;
  if (op == ">") return a > b;
  if (op == ">=") return a >= b;
  if (op == "==") return a == b;
  return a != b;
}

bool IsOneOf(const std::string& op, const std::vector<std::string>& set) {
  return std::find(set.begin(), set.end(), op) != set.end();
}

std::string Expected(const Operand& left, const std::string& op, const Operand& right) {
  Side l(left);
  Side r(right);
  const bool floating = l.floating || r.floating;
  if (floating && IsOneOf(op, {"<<", ">>", "&", "^", "|", "&&", "||"})) {
    return "error: Invalid type for " + op + " operation";
  }
  std::uint64_t result = 0;
  float single = 0;
  double twice = 0;
  bool onlyInteger = false;
  if (op == "*") {
    result = l.view * r.view;
    single = l.single * r.single;
    twice = l.twice * r.twice;
  } else if (op == "/") {
    l.TakeMagnitude();
    r.TakeMagnitude();
    if (r.view == 0 && r.twice == 0.0) return "error: Division by zero";
    result = r.view == 0 ? 0 : l.view / r.view;
    if (l.negative != r.negative) result = 0 - result;
    if (floating) {
      single = l.single / r.single;
      twice = l.twice / r.twice;
    }
  } else if (op == "%") {
    if (r.view == 0) return "error: Division by zero";
    l.TakeMagnitude();
    r.TakeMagnitude();
    result = l.view % r.view;
    if (l.negative || r.negative) result = 0 - result;
    onlyInteger = true;
  } else if (op == "+" || op == "-") {
    if (!l.pointer && r.pointer) return "error: ";
    if (l.pointer && !r.pointer) {
      r.view *= 4;
      r.size = l.size;
      r.isSigned = r.structure = false;
    }
    result = op == "+" ? l.view + r.view : l.view - r.view;
    single = op == "+" ? l.single + r.single : l.single - r.single;
    twice = op == "+" ? l.twice + r.twice : l.twice - r.twice;
  } else if (op == "<<") {
    result = l.view << (r.view % 64);
  } else if (op == ">>") {
    result = l.view >> (r.view % 64);
  } else if (op == "&") {
    result = l.view & r.view;
  } else if (op == "^") {
    result = l.view ^ r.view;
  } else if (op == "|") {
    result = l.view | r.view;
  } else {
    if (op == "&&") {
      result = l.view != 0 && r.view != 0 ? 1 : 0;
    } else if (op == "||") {
      result = l.view != 0 || r.view != 0 ? 1 : 0;
    } else if (l.floating && r.floating) {
      single = Compare(op, l.single, r.single) ? 1.0F : 0.0F;
      twice = static_cast<double>(single);
    } else {
      onlyInteger = true;
      if (op != "==" && op != "!=") {
        l.TakeMagnitude();
        r.TakeMagnitude();
      }
      result = l.negative != r.negative ? (l.negative == (op[0] == '<') ? 1 : 0)
                                        : (Compare(op, l.view, r.view) ? 1 : 0);
    }
    l.BecomeDefault();
    r.BecomeDefault();
  }

  if (l.structure || r.structure) return "error: Can`t convert one type to another";
  const Side& type = l.size < r.size ? r : l;
  if (!floating) return IntegerOutcome(result, type.size, type.isSigned);
  if (onlyInteger) {
    single = static_cast<float>(result & MaskOf(type.size));
    twice = static_cast<double>(result & MaskOf(type.size));
  }
  const bool asDouble = std::max(left.valueKind, right.valueKind) == 2;
  return FloatingOutcome(SixDigits(asDouble ? twice : static_cast<double>(single)), type.size);
}

struct Named {
  std::string op;
  std::string name;
};

class BinaryCross : public testing::TestWithParam<Named> {};

TEST_P(BinaryCross, OnEveryPairOfKinds) {
  const std::string& op = GetParam().op;
  FakeHost host;
  host.quiet = true;
  const std::vector<Operand> operands = AddOperands(&host);
  // A third of the pairs: five values of each kind make that eight or nine for every pair of kinds.
  std::size_t turn = 0;
  for (const Operand& left : operands) {
    for (const Operand& right : operands) {
      const bool scarce = left.kind >= Kind::kPointer || right.kind >= Kind::kPointer;
      if (turn++ % 3 != 0 && !scarce) continue;
      const std::string expression = left.label + op + right.label;
      EXPECT_EQ(Resolve(host, expression), Expected(left, op, right))
          << "expression: " << expression << ", values " << left.view << " and " << right.view;
    }
  }
  EXPECT_TRUE(host.violations.empty());
}

const std::vector<Named>& Operators() {
  static const std::vector<Named> operators = {
      {"*", "Multiply"},     {"/", "Divide"},     {"%", "Remainder"},       {"+", "Add"},
      {"-", "Subtract"},     {"<<", "ShiftLeft"}, {">>", "ShiftRight"},     {"<", "Less"},
      {"<=", "LessOrEqual"}, {">", "Greater"},    {">=", "GreaterOrEqual"}, {"==", "Equal"},
      {"!=", "NotEqual"},    {"&", "BitAnd"},     {"^", "BitXor"},          {"|", "BitOr"},
      {"&&", "LogicalAnd"},  {"||", "LogicalOr"},
  };
  return operators;
}

INSTANTIATE_TEST_SUITE_P(Operator, BinaryCross, testing::ValuesIn(Operators()),
                         [](const auto& tested) { return tested.param.name; });

}  // namespace

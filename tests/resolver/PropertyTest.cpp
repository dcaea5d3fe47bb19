// Random expressions over unsigned 64-bit numbers, against what C++ computes from the tree that
// each text was written from.
#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/FakeHost.h"
#include "tests/support/Outcome.h"

namespace {

using testsupport::FakeHost;
using testsupport::Resolve;

struct Operator {
  const char* text;
  int row;
};

/// The language's own rows, tightest first: "<" and "<=" have one of their own above ">" and ">=".
constexpr std::array<Operator, 18> kOperators = {{{"*", 1},
                                                  {"/", 1},
                                                  {"%", 1},
                                                  {"+", 2},
                                                  {"-", 2},
                                                  {"<<", 3},
                                                  {">>", 3},
                                                  {"<", 4},
                                                  {"<=", 4},
                                                  {">", 5},
                                                  {">=", 5},
                                                  {"==", 6},
                                                  {"!=", 6},
                                                  {"&", 7},
                                                  {"^", 8},
                                                  {"|", 9},
                                                  {"&&", 10},
                                                  {"||", 11}}};

/// An expression: a leaf (`text` and `value`), a prefix operator on `left`, or a binary one.
struct Node {
  std::string text;
  std::uint64_t value = 0;
  char prefix = 0;
  const Operator* binary = nullptr;
  std::unique_ptr<Node> left;
  std::unique_ptr<Node> right;
};

/// Empty when a divisor is zero. Nothing is skipped, as in the language.
std::optional<std::uint64_t> Evaluate(const Node& node) {
  if (!node.left) return node.value;
  const std::optional<std::uint64_t> a = Evaluate(*node.left);
  if (node.prefix != 0) {
    if (!a || node.prefix == '+') return a;
    return node.prefix == '-' ? 0 - *a : node.prefix == '~' ? ~*a : std::uint64_t{*a == 0};
  }
  const std::optional<std::uint64_t> b = Evaluate(*node.right);
  if (!a || !b) return std::nullopt;
  const std::string_view op = node.binary->text;
  if (op == "*") return *a * *b;
  if (op == "/") return *b == 0 ? std::nullopt : std::optional(*a / *b);
  if (op == "%") return *b == 0 ? std::nullopt : std::optional(*a % *b);
  if (op == "+") return *a + *b;
  if (op == "-") return *a - *b;
  if (op == "<<") return *a << (*b % 64);
  if (op == ">>") return *a >> (*b % 64);
  if (op == "<") return std::uint64_t{*a < *b};
  if (op == "<=") return std::uint64_t{*a <= *b};
  if (op == ">") return std::uint64_t{*a > *b};
  if (op == ">=") return std::uint64_t{*a >= *b};
  if (op == "==") return std::uint64_t{*a == *b};
  if (op == "!=") return std::uint64_t{*a != *b};
  if (op == "&") return *a & *b;
  if (op == "^") return *a ^ *b;
  if (op == "|") return *a | *b;
  if (op == "&&") return std::uint64_t{*a != 0 && *b != 0};
  return std::uint64_t{*a != 0 || *b != 0};
}

class Generator {
 public:
  Generator(std::uint64_t seed, FakeHost* host) : random_(seed), host_(host) {}

  std::unique_ptr<Node> Tree(int size) {
    auto node = std::make_unique<Node>();
    if (size <= 1) {
      MakeLeaf(node.get());
    } else if (Below(5) == 0) {
      node->prefix = "-~!+"[Below(4)];
      node->left = Tree(size - 1);
    } else {
      node->binary = &kOperators[Below(kOperators.size())];
      const int first = 1 + static_cast<int>(Below(static_cast<std::uint64_t>(size - 1)));
      node->left = Tree(first);
      node->right = Tree(size - first);
    }
    return node;
  }

  /// The text of the tree, with the parentheses it needs, some that it does not, and blanks.
  std::string Text(const Node& node) {
    std::string text;
    if (!node.left) {
      text = node.text;
    } else if (node.prefix != 0) {
      text = node.prefix + Blank() + Operand(*node.left, 0);
    } else {
      const int row = node.binary->row;
      text = Operand(*node.left, row) + Blank() + node.binary->text + Blank() +
             Operand(*node.right, row - 1);
    }
    return Below(12) == 0 ? "(" + Blank() + text + Blank() + ")" : text;
  }

 private:
  std::uint64_t Below(std::uint64_t bound) { return random_() % bound; }

  std::string Blank() { return Below(4) == 0 ? " " : ""; }

  /// Small numbers, any numbers, and the ones at the edges.
  std::uint64_t Number() {
    switch (Below(4)) {
      case 0:
        return Below(8);
      case 1:
        return random_();
      case 2:
        return random_() >> Below(64);
      default:
        return (std::uint64_t{1} << Below(64)) - Below(2);
    }
  }

  void MakeLeaf(Node* node) {
    node->value = Number();
    switch (Below(4)) {
      case 0: {
        // In target memory, 8 bytes unsigned.
        node->text = "v" + std::to_string(labels_);
        const std::uint64_t address = 0x100000 + 8 * labels_++;
        host_->AddLabel(node->text, address, host_->types.Unsigned(8));
        host_->Poke(address, node->value, 8);
        break;
      }
      case 1:
        node->text = "k" + std::to_string(labels_++);
        host_->AddLabel(node->text, node->value);
        break;
      default:
        node->text = std::to_string(node->value);
    }
  }

  /// In parentheses when its operator binds less tightly than `row`.
  std::string Operand(const Node& node, int row) {
    const bool needed = node.binary != nullptr && node.binary->row > row;
    const std::string text = Text(node);
    return needed ? "(" + text + ")" : text;
  }

  std::mt19937_64 random_;
  FakeHost* host_;
  std::uint64_t labels_ = 0;
};

class Property : public testing::TestWithParam<const char*> {};

TEST_P(Property, UnsignedArithmeticIsThatOfCxx) {
  for (std::uint64_t seed = 1; seed <= 4000; ++seed) {
    FakeHost host(GetParam());
    host.quiet = true;
    Generator generator(seed, &host);
    const std::unique_ptr<Node> tree = generator.Tree(1 + static_cast<int>(seed % 16));
    const std::string text = generator.Text(*tree);
    const std::optional<std::uint64_t> value = Evaluate(*tree);
    ASSERT_EQ(Resolve(host, text),
              value ? std::to_string(*value) + "/8" : "error: Division by zero")
        << "seed " << seed << ", expression: " << text;
    ASSERT_TRUE(host.violations.empty()) << "seed " << seed << ": " << host.violations.front();
  }
}

INSTANTIATE_TEST_SUITE_P(Dialect, Property, testing::Values("main.c", "main.asm"),
                         [](const auto& tested) { return tested.index == 0 ? "C" : "Assembly"; });

/// Texts made of the language's pieces in any order: whatever they are, they end, in an answer or a
/// failure, and leave the resolver usable.
TEST_P(Property, NoSequenceOfPiecesIsTooStrange) {
  const std::vector<std::string> pieces = {
      "(",      ")",    "[",     "]",      "+",    "-",    "*",    "/",    "%",    "&",
      "|",      "^",    "!",     "~",      "<",    ">",    "=",    "->",   ".",    ",",
      "#",      "@",    " ",     "1",      "0",    "7",    "a",    "p",    "s",    "x",
      "1.5",    "1e+5", "e-",    "\r",     "\x0e", "\x0f", "\x18", "\x19", "\x08", "^*^*^^",
      "sizeof", "int",  "(int)", "(int*)", "&&",   "||",   ">>",   "<<"};
  std::mt19937_64 random(20260);
  FakeHost host(GetParam());
  host.quiet = true;
  host.AddType("int", host.types.Signed(4));
  host.AddType("record",
               host.types.Struct("record", 8, {host.types.Field("x", 4, host.types.Signed(4))}));
  host.AddLabel("a", 0x1000, host.types.Array(host.types.Signed(4), 4));
  host.AddLabel("p", 0x1100, host.types.Pointer(host.types.Signed(4)));
  host.AddLabel("s", 0x1200, host.types.Stub("record", 8));
  TStringResolver resolver(&host);
  int answers = 0;
  for (int n = 0; n < 4000; ++n) {
    std::string text;
    for (std::uint64_t length = 1 + random() % 12; length > 0; --length) {
      text += pieces[random() % pieces.size()];
    }
    if (resolver.SolveStringOfElements(text)) ++answers;
    ASSERT_EQ(Resolve(resolver, "(1+2)*3"), "9/8") << "text: " << testsupport::Visible(text);
  }
  EXPECT_GT(answers, 0);
  EXPECT_TRUE(host.violations.empty()) << host.violations.front();
}

}  // namespace

// What the binary operators of C, and those that the resolver does not have, become.

#include <utility>

#include "tools/resolve/CLevels.h"
#include "tools/resolve/CRewriting.h"

namespace tool {
namespace {

using Kind = CNode::Kind;
using TypeKind = CType::Kind;

bool IsComparison(const CNode& node) {
  const int level = LevelOf(node.op);
  return level == kRelationLevel || level == kEqualityLevel;
}

/// Does an operator take its operand's sign into account beyond the bits? As such, the top of the
/// expression does too.
bool MindsSign(const CNode* parent, bool isRight) {
  if (parent == nullptr) return true;
  if (parent->kind != Kind::kBinary) return false;
  if (parent->op == "/" || parent->op == "%") return true;
  if (parent->op == ">>") return !isRight;
  return LevelOf(parent->op) == kRelationLevel;
}

bool IsRounded(std::uint64_t size, std::uint32_t pointerSize) {
  const std::uint64_t left = size % 8;
  return left != 0 && left < pointerSize && left <= 5 && left != 4 + (pointerSize == 4 ? 0U : 4U);
}

}  // namespace

/// A pointer that steps by the exact size of what it points to.
std::string CRewriting::PointerOperand(const CNode& node, const CNode& parent) {
  const CNode& inner = WithoutGroups(node);
  const CType type = reading_.Of(inner).type;
  std::string text = Operand(node, {&parent, false}, kSumLevel);
  if (type.kind != TypeKind::kPointer || inner.kind == Kind::kCast) return text;
  const CType target = reading_.Target(type);
  if (target.kind != TypeKind::kRecord || target.name.empty() ||
      !IsRounded(target.size, labels_.PointerSize())) {
    return text;
  }
  Meet(Difference::kRoundedPointee);
  return "(" + target.name + "*)" + text;
}

CRewriting::Fix CRewriting::FixPointers(const CNode& node) {
  const CMeaning left = reading_.Operand(node.Part(0));
  const CMeaning right = reading_.Operand(node.Part(1));
  const bool leftPoints = left.type.kind == TypeKind::kPointer;
  const bool rightPoints = right.type.kind == TypeKind::kPointer;
  const bool leftArray = reading_.Of(node.Part(0)).type.kind == TypeKind::kArray;
  const bool rightArray = reading_.Of(node.Part(1)).type.kind == TypeKind::kArray;
  if (leftArray || rightArray) {
    const auto address = [this, &node](std::size_t part, bool array, int level) {
      const CNode& operand = node.Part(part);
      if (!array) return Operand(operand, {&node, part == 1}, level);
      return "&" + Operand(WithoutGroups(operand), {}, kPrimaryLevel) + "[0]";
    };
    Meet(Difference::kArrayName);
    const int level = LevelOf(node.op);
    std::string first = address(0, leftArray, level);
    std::string second = address(1, rightArray, level + 1);
    if (node.op == "+" && rightArray) std::swap(first, second);
    return Piece{first + node.op + second, level};
  }
  if (leftPoints && rightPoints && node.op == "-") {
    const CType target = reading_.Target(left.type);
    const CType other = reading_.Target(right.type);
    if (target.size != other.size || target.name != other.name) return std::nullopt;
    const std::string integer = labels_.PointerSize() == 4 ? "(int)" : "(long)";
    std::string text = integer + "(" + Unchanged(node, {}).text + ")";
    Meet(Difference::kPointerDifference);
    if (target.size == 1) return Piece{text, kUnaryLevel};
    if (!target.name.empty()) text += "/" + integer + "sizeof(" + target.name + ")";
    return Piece{text, kProductLevel};
  }
  if (node.op == "+" && rightPoints && left.type.kind == TypeKind::kInteger) {
    Meet(Difference::kPointerOnTheRight);
    return Piece{PointerOperand(node.Part(1), node) + "+" +
                     Operand(node.Part(0), {&node, false}, kProductLevel),
                 kSumLevel};
  }
  if (leftPoints && !rightPoints && (node.op == "+" || node.op == "-")) {
    const std::size_t before = met_.size();
    std::string pointer = PointerOperand(node.Part(0), node);
    if (met_.size() == before) return std::nullopt;
    return Piece{pointer + node.op + Operand(node.Part(1), {&node, true}, kProductLevel),
                 kSumLevel};
  }
  return std::nullopt;
}

CRewriting::Fix CRewriting::FixComparison(const CNode& node) {
  const CNode& leftNode = node.Part(0);
  const CMeaning left = reading_.Operand(leftNode);
  const CMeaning right = reading_.Operand(node.Part(1));
  const int level = LevelOf(node.op);
  const bool less = node.op[0] == '<';
  if (less && leftNode.kind == Kind::kBinary && leftNode.op[0] == '>' &&
      LevelOf(leftNode.op) == kRelationLevel) {
    Meet(Difference::kComparisonOrder);
    return Piece{"(" + Write(leftNode, {&node, false}).text + ")" + node.op +
                     Operand(node.Part(1), {&node, true}, level + 1),
                 level};
  }
  const bool leftFloats = left.type.kind == TypeKind::kFloating;
  const bool rightFloats = right.type.kind == TypeKind::kFloating;
  if (leftFloats != rightFloats && left.type.size <= 8 && right.type.size <= 8 &&
      (leftFloats ? right : left).type.kind == TypeKind::kInteger) {
    Meet(Difference::kFloatingComparison);
    const auto floating = [&](std::size_t part, bool already) {
      const CNode& operand = node.Part(part);
      const bool numeral = operand.kind == Kind::kInteger &&
                           operand.op.find_first_not_of("0123456789") == std::string::npos;
      if (numeral && !already) return operand.op + ".0";
      std::string text = Operand(operand, {&node, part == 1}, kSumLevel);
      return already ? text : text + "+0.0";
    };
    return Piece{floating(0, leftFloats) + node.op + floating(1, rightFloats), level};
  }
  if (left.type.kind != TypeKind::kInteger || right.type.kind != TypeKind::kInteger ||
      level != kRelationLevel) {
    return std::nullopt;
  }
  const Held a = HeldBy(leftNode);
  const Held b = HeldBy(node.Part(1));
  if (left.IsNegative() && right.IsNegative() && a.isSigned && b.isSigned) {
    Meet(Difference::kNegativeComparison);
    return Piece{Operand(leftNode, {&node, false}, kSumLevel) + "-" +
                     Operand(node.Part(1), {&node, true}, kProductLevel) + node.op + "0",
                 level};
  }
  if (left.IsNegative() && right.IsNegative() && (a.isSigned || b.isSigned)) {
    // A numeral's sign is lost: with it there are two negative numbers.
    Meet(Difference::kSignLost);
    const auto withSign = [&](std::size_t part, bool already, int needed) {
      std::string text =
          Operand(node.Part(part), {node.parts[part].get(), false}, already ? needed : kUnaryLevel);
      const CType type = (part == 0 ? left : right).type;
      return already ? text : "(" + type.name + ")" + text;
    };
    return Piece{withSign(0, a.isSigned, kSumLevel) + "-" + withSign(1, b.isSigned, kProductLevel) +
                     node.op + "0",
                 level};
  }
  if (left.IsNegative() && a.isSigned && !b.isSigned && !right.type.isSigned &&
      right.type.size >= left.type.size) {
    Meet(Difference::kMixedSigns);
    return Piece{"(" + right.type.name + ")" + Operand(leftNode, {&node, false}, kUnaryLevel) +
                     node.op + Operand(node.Part(1), {&node, true}, level + 1),
                 level};
  }
  if (right.IsNegative() && b.isSigned && !a.isSigned && !left.type.isSigned &&
      left.type.size >= right.type.size) {
    Meet(Difference::kMixedSigns);
    return Piece{Operand(leftNode, {&node, false}, level) + node.op + "(" + left.type.name + ")" +
                     Operand(node.Part(1), {&node, true}, kUnaryLevel),
                 level};
  }
  return std::nullopt;
}

CRewriting::Fix CRewriting::FixLogic(const CNode& node) {
  const CMeaning left = reading_.Operand(node.Part(0));
  const CMeaning right = reading_.Operand(node.Part(1));
  const bool leftFloats = left.type.kind == TypeKind::kFloating;
  const bool rightFloats = right.type.kind == TypeKind::kFloating;
  const int level = LevelOf(node.op);
  if (left.value && failed_) {
    const bool truth = left.value->floating ? left.value->number != 0 : left.value->bits != 0;
    if (truth == (node.op == "||")) {
      Meet(Difference::kBothSides);
      return Write(node.Part(0), {});
    }
  }
  if (!leftFloats && !rightFloats) return std::nullopt;
  Meet(Difference::kFloatingLogic);
  const auto side = [&](std::size_t part, bool floats, int needed) {
    std::string text =
        Operand(node.Part(part), {&node, part == 1}, floats ? kRelationLevel : needed);
    return floats ? "(" + text + "!=0.0)" : text;
  };
  return Piece{side(0, leftFloats, level) + node.op + side(1, rightFloats, level + 1), level};
}

CRewriting::Fix CRewriting::FixArithmetic(const CNode& node, const Place& place) {
  const CMeaning left = reading_.Operand(node.Part(0));
  const CMeaning right = reading_.Operand(node.Part(1));
  const CMeaning& whole = reading_.Of(node);
  if (whole.type.kind != TypeKind::kInteger || !whole.value || !left.value || !right.value) {
    return std::nullopt;
  }
  const Held a = HeldBy(node.Part(0));
  const Held b = HeldBy(node.Part(1));
  const Held held = HeldBy(node);
  const int level = LevelOf(node.op);
  const auto first = [&](int needed) { return Operand(node.Part(0), {&node, false}, needed); };
  const auto second = [&](int needed) { return Operand(node.Part(1), {&node, true}, needed); };
  if (node.op == "%" && !left.IsNegative() && right.IsNegative() && b.isSigned &&
      whole.value->bits != 0) {
    Meet(Difference::kRemainderSign);
    return Piece{first(level) + "%-" + second(kUnaryLevel), level};
  }
  if (node.op == ">>" && left.IsNegative() && left.type.size == 8 && a.isSigned) {
    Meet(Difference::kRightShift);
    return Piece{"~(~" + first(kUnaryLevel) + ">>" + second(level + 1) + ")", kUnaryLevel};
  }
  const bool bitwise = node.op == "&" || node.op == "|" || node.op == "^";
  CType heldType;
  heldType.kind = TypeKind::kInteger;
  heldType.size = held.size;
  heldType.isSigned = held.isSigned;
  if (held.size < 4 && ConvertNumber(*whole.value, heldType).bits != whole.value->bits) {
    Meet(Difference::kNoPromotion);
    const std::string widened = first(kSumLevel) + "+(int)0";
    if (level == kSumLevel) return Piece{widened + node.op + second(level + 1), level};
    return Piece{"(" + widened + ")" + node.op + second(level + 1), level};
  }
  if (held.size == whole.type.size && held.isSigned && !whole.type.isSigned && !bitwise &&
      MindsSign(place.parent, place.isRight) &&
      ConvertNumber(*whole.value, heldType).bits != whole.value->bits) {
    Meet(Difference::kMixedSigns);
    return Piece{"(" + whole.type.name + ")(" + Unchanged(node, place).text + ")", kUnaryLevel};
  }
  if (held.size == 8 && whole.type.size == 4 && !whole.type.isSigned && !bitwise) {
    std::uint64_t wide = left.value->bits;
    if (node.op == "+") wide += right.value->bits;
    if (node.op == "-") wide -= right.value->bits;
    if (node.op == "*") wide *= right.value->bits;
    if (node.op == "<<") wide <<= right.value->bits & 63U;
    if (LevelOf(node.op) >= kShiftLevel && node.op != "/" && node.op != "%" && node.op != ">>" &&
        wide != whole.value->bits) {
      Meet(Difference::kNumeralWidth);
      return Piece{"(" + Unchanged(node, place).text + "&0xffffffff)", kPrimaryLevel};
    }
  }
  return std::nullopt;
}

CRewriting::Fix CRewriting::FixBinary(const CNode& node, const Place& place) {
  if (node.op == "&&" || node.op == "||") return FixLogic(node);
  const CMeaning left = reading_.Operand(node.Part(0));
  const CMeaning right = reading_.Operand(node.Part(1));
  if (left.type.kind == TypeKind::kPointer || right.type.kind == TypeKind::kPointer) {
    return FixPointers(node);
  }
  return IsComparison(node) ? FixComparison(node) : FixArithmetic(node, place);
}

CRewriting::Fix CRewriting::FixSign(const CNode& node, const Place& place) {
  if (node.kind == Kind::kGroup || node.kind == Kind::kCast) return std::nullopt;
  const CMeaning& meaning = reading_.Of(node);
  if (!meaning.IsNegative() || meaning.isObject || meaning.value->floating) return std::nullopt;
  const CNode* parent = place.parent;
  bool minds = MindsSign(parent, place.isRight);
  if (parent != nullptr && parent->kind == Kind::kBinary &&
      reading_.Of(*parent).type.kind == TypeKind::kFloating) {
    minds = true;
  }
  const Held held = HeldBy(node);
  if (!minds || held.floating || held.isSigned || !meaning.type.isSigned ||
      meaning.type.name.empty()) {
    return std::nullopt;
  }
  Meet(Difference::kSignLost);
  const std::string text = Unchanged(node, place).text;
  const bool plain = node.kind == Kind::kName;
  return Piece{"(" + meaning.type.name + ")" + (plain ? text : "(" + text + ")"), kUnaryLevel};
}

CRewriting::Fix CRewriting::FixGroup(const CNode& node, const Place& place) {
  const CNode& inner = WithoutGroups(node);
  const CMeaning& meaning = reading_.Of(inner);
  const CNode* parent = place.parent;
  if (parent == nullptr || parent->kind != Kind::kBinary || inner.kind != Kind::kBinary ||
      IsComparison(inner) || meaning.type.kind != TypeKind::kFloating || meaning.isObject) {
    if (!(parent != nullptr && parent->kind == Kind::kBinary && inner.kind == Kind::kUnary &&
          inner.op == "-" && meaning.type.kind == TypeKind::kFloating)) {
      return std::nullopt;
    }
  }
  Meet(Difference::kFloatingGroup);
  const int level = LevelOf(parent->op);
  const bool free = place.isRight ? LevelOf(inner.op) > level : LevelOf(inner.op) >= level;
  if (inner.kind == Kind::kBinary && free) return Write(inner, place);
  return std::nullopt;
}

CRewriting::Fix CRewriting::FixUnknownToTheResolver(const CNode& node) {
  switch (node.kind) {
    case Kind::kPostfix:
      Meet(Difference::kIncrement);
      return Write(node.Part(0), {});
    case Kind::kAssignment:
      Meet(Difference::kAssignment);
      return std::nullopt;
    case Kind::kString:
      Meet(Difference::kStringLiteral);
      return std::nullopt;
    case Kind::kComma:
      Meet(Difference::kComma);
      return Write(node.Part(1), {});
    case Kind::kConditional: {
      Meet(Difference::kConditional);
      const auto truth = reading_.Operand(node.Part(0)).value;
      if (!truth) return std::nullopt;
      const bool first = truth->floating ? truth->number != 0 : truth->bits != 0;
      return Write(node.Part(first ? 1 : 2), {});
    }
    case Kind::kFloating: {
      const std::size_t point = node.op.find('.');
      if (point != std::string::npos && point != 0 && point + 1 < node.op.size()) break;
      const std::size_t exponent = node.op.find_first_of("eE");
      if (exponent != std::string::npos && point == std::string::npos &&
          exponent + 1 < node.op.size() &&
          (node.op[exponent + 1] == '+' || node.op[exponent + 1] == '-')) {
        break;
      }
      Meet(Difference::kFloatingNumeral);
      if (point == 0) return Piece{"0" + node.op, kPrimaryLevel};
      std::string text = node.op;
      if (point == std::string::npos) text.insert(std::min(exponent, text.size()), ".0");
      if (point != std::string::npos) text += "0";
      return Piece{text, kPrimaryLevel};
    }
    default:
      break;
  }
  return std::nullopt;
}

}  // namespace tool

// The operators of C, for `CReading`.

#include <cmath>
#include <utility>

#include "tools/resolve/CMeaning.h"

namespace tool {
namespace {

using Kind = CNode::Kind;
using TypeKind = CType::Kind;

std::optional<CNumber> Computed(std::string_view op, double left, double right) {
  if (op == "+") return CNumber{true, left + right, 0};
  if (op == "-") return CNumber{true, left - right, 0};
  if (op == "*") return CNumber{true, left * right, 0};
  if (op == "/" && right != 0.0) return CNumber{true, left / right, 0};
  return std::nullopt;
}

std::optional<std::uint64_t> Quotient(bool remainder, std::uint64_t left, std::uint64_t right,
                                      bool isSigned) {
  if (right == 0) return std::nullopt;
  if (!isSigned) return remainder ? left % right : left / right;
  const auto dividend = static_cast<std::int64_t>(left);
  const auto divisor = static_cast<std::int64_t>(right);
  if (divisor == -1) return remainder ? 0 : 0 - left;
  return static_cast<std::uint64_t>(remainder ? dividend % divisor : dividend / divisor);
}

std::optional<std::uint64_t> Computed(std::string_view op, std::uint64_t left, std::uint64_t right,
                                      const CType& type) {
  if (op == "+") return left + right;
  if (op == "-") return left - right;
  if (op == "*") return left * right;
  if (op == "&") return left & right;
  if (op == "|") return left | right;
  if (op == "^") return left ^ right;
  if (op == "/" || op == "%") return Quotient(op == "%", left, right, type.isSigned);
  if (op == "<<" || op == ">>") {
    if (right >= type.size * 8) return std::nullopt;
    if (op == "<<") return left << right;
    return type.isSigned ? static_cast<std::uint64_t>(static_cast<std::int64_t>(left) >> right)
                         : left >> right;
  }
  return std::nullopt;
}

template <typename Number>
std::optional<bool> Compared(std::string_view op, Number left, Number right) {
  if (op == "<") return left < right;
  if (op == "<=") return left <= right;
  if (op == ">") return left > right;
  if (op == ">=") return left >= right;
  if (op == "==") return left == right;
  if (op == "!=") return left != right;
  return std::nullopt;
}

bool IsComparison(std::string_view op) {
  return Compared(op, 0, 0).has_value();
}

std::optional<bool> Truth(const CMeaning& meaning) {
  if (!meaning.value) return std::nullopt;
  return meaning.value->floating ? meaning.value->number != 0.0 : meaning.value->bits != 0;
}

void SetBits(std::optional<std::uint64_t> bits, CMeaning* meaning) {
  if (bits) meaning->value = ConvertNumber(CNumber{false, 0.0, *bits}, meaning->type);
}

}  // namespace

CMeaning CReading::Work(const CNode& node) {
  switch (node.kind) {
    case Kind::kInteger:
      return WorkInteger(node);
    case Kind::kFloating:
      return WorkFloating(node);
    case Kind::kName:
      return WorkName(node);
    case Kind::kGroup:
      return Of(node.Part(0));
    case Kind::kUnary:
      return WorkUnary(node);
    case Kind::kCast: {
      CMeaning meaning = Operand(node.Part(0));
      meaning.type = Named(node.op);
      meaning.address.reset();
      if (meaning.value && meaning.type.IsScalar()) {
        meaning.value = ConvertNumber(*meaning.value, meaning.type);
      } else {
        meaning.value.reset();
      }
      return meaning;
    }
    case Kind::kSizeof:
    case Kind::kSizeofType: {
      const CType type = node.kind == Kind::kSizeofType ? Named(node.op) : Of(node.Part(0)).type;
      CMeaning meaning;
      meaning.type = basics_.unsignedLonger;
      if (type.size != 0 && type.bits == 0) SetBits(type.size, &meaning);
      return meaning;
    }
    case Kind::kBinary:
      return WorkBinary(node);
    case Kind::kIndex:
      return WorkIndex(node);
    case Kind::kMember:
    case Kind::kArrow:
      return WorkMember(node);
    case Kind::kConditional: {
      const auto truth = Truth(Operand(node.Part(0)));
      return truth ? Operand(node.Part(*truth ? 1 : 2)) : CMeaning();
    }
    case Kind::kComma:
      return Operand(node.Part(1));
    case Kind::kPostfix:
    case Kind::kAssignment:
    case Kind::kString:
      break;
  }
  return {};
}

CMeaning CReading::WorkUnary(const CNode& node) {
  const CNode& operand = node.Part(0);
  CMeaning meaning;
  if (node.op == "&") {
    const CMeaning& object = Of(operand);
    if (!object.isObject || object.type.kind == TypeKind::kUnknown || object.type.bits != 0) {
      return {};
    }
    meaning.type.kind = TypeKind::kPointer;
    meaning.type.size = labels_.PointerSize();
    meaning.type.target = std::make_shared<const CType>(object.type);
    SetBits(object.address, &meaning);
    return meaning;
  }
  const CMeaning inner = Operand(operand);
  if (node.op == "*") {
    if (inner.type.kind != TypeKind::kPointer) return {};
    meaning.type = Target(inner.type);
    meaning.isObject = true;
    if (!inner.value) return meaning;
    meaning.address = inner.value->bits;
    meaning.value = Load(meaning.type, *meaning.address);
    return meaning;
  }
  if (node.op == "!") {
    meaning.type = basics_.integer;
    if (const auto truth = Truth(inner)) SetBits(*truth ? 0 : 1, &meaning);
    return inner.type.IsScalar() ? meaning : CMeaning();
  }
  if (inner.type.kind != TypeKind::kInteger && inner.type.kind != TypeKind::kFloating) return {};
  meaning.type = inner.type;
  if (!inner.value) return meaning;
  if (node.op == "+") meaning.value = inner.value;
  if (inner.value->floating) {
    if (node.op == "-") meaning.value = CNumber{true, -inner.value->number, 0};
    return meaning;
  }
  if (node.op == "-") SetBits(0 - inner.value->bits, &meaning);
  if (node.op == "~") SetBits(~inner.value->bits, &meaning);
  if (node.op == "++") SetBits(inner.value->bits + 1, &meaning);
  if (node.op == "--") SetBits(inner.value->bits - 1, &meaning);
  return meaning;
}

CMeaning CReading::WorkLogic(const CNode& node) {
  const auto left = Truth(Operand(node.Part(0)));
  CMeaning meaning;
  meaning.type = basics_.integer;
  if (!left) return meaning;
  const bool decides = node.op == "||";
  if (*left == decides) {
    SetBits(decides ? 1 : 0, &meaning);
  } else if (const auto right = Truth(Operand(node.Part(1)))) {
    SetBits(*right ? 1 : 0, &meaning);
  }
  return meaning;
}

CMeaning CReading::WorkPointers(const CNode& node, const CMeaning& left, const CMeaning& right) {
  const bool leftPoints = left.type.kind == TypeKind::kPointer;
  const bool rightPoints = right.type.kind == TypeKind::kPointer;
  CMeaning meaning;
  if (IsComparison(node.op)) {
    meaning.type = basics_.integer;
    if (left.value && right.value && !left.value->floating && !right.value->floating) {
      SetBits(*Compared(node.op, left.value->bits, right.value->bits) ? 1 : 0, &meaning);
    }
    return meaning;
  }
  if (node.op != "+" && node.op != "-") return {};
  const CType& pointer = leftPoints ? left.type : right.type;
  const std::uint64_t step = Target(pointer).size;
  if (leftPoints && rightPoints) {
    if (node.op == "+" || step == 0) return {};
    meaning.type = basics_.longer;
    if (left.value && right.value) {
      const auto apart = static_cast<std::int64_t>(left.value->bits - right.value->bits);
      SetBits(static_cast<std::uint64_t>(apart / static_cast<std::int64_t>(step)), &meaning);
    }
    return meaning;
  }
  const CMeaning& count = leftPoints ? right : left;
  if (count.type.kind != TypeKind::kInteger || (node.op == "-" && rightPoints)) return {};
  meaning.type = pointer;
  if (left.value && right.value && step != 0) {
    const std::uint64_t offset = count.value->bits * step;
    const std::uint64_t start = leftPoints ? left.value->bits : right.value->bits;
    SetBits(node.op == "+" ? start + offset : start - offset, &meaning);
  }
  return meaning;
}

CMeaning CReading::WorkArithmetic(const CNode& node, const CMeaning& left,
                                  const CMeaning& right) const {
  const bool shift = node.op == "<<" || node.op == ">>";
  const CType common = shift ? left.type : Common(left.type, right.type);
  CMeaning meaning;
  meaning.type = IsComparison(node.op) ? basics_.integer : common;
  if (!left.value || !right.value) return meaning;
  const CNumber a = ConvertNumber(*left.value, common);
  const CNumber b = shift ? *right.value : ConvertNumber(*right.value, common);
  if (IsComparison(node.op)) {
    const auto truth = a.floating        ? Compared(node.op, a.number, b.number)
                       : common.isSigned ? Compared(node.op, static_cast<std::int64_t>(a.bits),
                                                    static_cast<std::int64_t>(b.bits))
                                         : Compared(node.op, a.bits, b.bits);
    if (truth) SetBits(*truth ? 1 : 0, &meaning);
  } else if (a.floating) {
    meaning.value = Computed(node.op, a.number, b.number);
    if (meaning.value) meaning.value = ConvertNumber(*meaning.value, common);
  } else {
    SetBits(Computed(node.op, a.bits, b.bits, common), &meaning);
  }
  return meaning;
}

CMeaning CReading::WorkBinary(const CNode& node) {
  if (node.op == "&&" || node.op == "||") return WorkLogic(node);
  const CMeaning left = Operand(node.Part(0));
  const CMeaning right = Operand(node.Part(1));
  if (!left.type.IsScalar() || !right.type.IsScalar()) return {};
  if (left.type.kind == TypeKind::kPointer || right.type.kind == TypeKind::kPointer) {
    return WorkPointers(node, left, right);
  }
  return WorkArithmetic(node, left, right);
}

}  // namespace tool

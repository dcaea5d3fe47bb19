#include "tools/resolve/CRewriting.h"

#include <algorithm>
#include <utility>

#include "tools/resolve/CLevels.h"

namespace tool {

using Kind = CNode::Kind;
using TypeKind = CType::Kind;

int LevelOf(std::string_view op) {
  if (op == "||") return kOrLevel;
  if (op == "&&") return kOrLevel + 1;
  if (op == "|") return kOrLevel + 2;
  if (op == "^") return kOrLevel + 3;
  if (op == "&") return kOrLevel + 4;
  if (op == "==" || op == "!=") return kEqualityLevel;
  if (op == "<" || op == ">" || op == "<=" || op == ">=") return kRelationLevel;
  if (op == "<<" || op == ">>") return kShiftLevel;
  if (op == "+" || op == "-") return kSumLevel;
  if (op == "*" || op == "/" || op == "%") return kProductLevel;
  return 0;
}

const CNode& WithoutGroups(const CNode& node) {
  const CNode* inner = &node;
  while (inner->kind == Kind::kGroup) inner = &inner->Part(0);
  return *inner;
}

std::string CRewriting::Rewrite(const CNode& root) {
  return Write(root, {}).text;
}

void CRewriting::Meet(Difference difference) {
  if (std::find(met_.begin(), met_.end(), difference) == met_.end()) met_.push_back(difference);
}

std::string CRewriting::Source(const CNode& node) const {
  return std::string(text_.substr(node.begin, node.end - node.begin));
}

CRewriting::Piece CRewriting::Write(const CNode& node, const Place& place) {
  if (Fix fixed = Replace(node, place)) return *std::move(fixed);
  return Unchanged(node, place);
}

std::string CRewriting::Operand(const CNode& node, const Place& place, int level) {
  Piece piece = Write(node, place);
  return piece.level >= level ? std::move(piece.text) : "(" + piece.text + ")";
}

/// The node's own text, with what became of its parts.
CRewriting::Piece CRewriting::Unchanged(const CNode& node, const Place& place) {
  int level = kPrimaryLevel;
  std::string text;
  std::size_t at = node.begin;
  if (node.kind == Kind::kBinary) level = LevelOf(node.op);
  if (node.kind == Kind::kUnary || node.kind == Kind::kCast || node.kind == Kind::kSizeof) {
    level = kUnaryLevel;
  }
  const bool transparent = node.kind == Kind::kGroup;
  const bool loose = node.kind == Kind::kConditional || node.kind == Kind::kAssignment ||
                     node.kind == Kind::kComma;
  if (loose) level = 0;
  for (std::size_t i = 0; i < node.parts.size(); ++i) {
    const CNode& part = node.Part(i);
    int needed = level;
    if (node.kind == Kind::kBinary && i == 1) needed = level + 1;
    if (transparent || (node.kind == Kind::kIndex && i == 1)) needed = 0;
    const Place below = transparent ? place : Place{&node, i == 1};
    text.append(text_.substr(at, part.begin - at));
    text += Operand(part, below, needed);
    at = part.end;
  }
  return {text.append(text_.substr(at, node.end - at)), level};
}

CRewriting::Held CRewriting::HeldBy(const CNode& node) {
  switch (node.kind) {
    case Kind::kGroup:
      return HeldBy(node.Part(0));
    case Kind::kFloating:
      return {true, 8, false};
    case Kind::kUnary:
      if (node.op == "*" || node.op == "&") break;
      return HeldBy(node.Part(0));
    case Kind::kBinary: {
      const Held left = HeldBy(node.Part(0));
      const Held right = HeldBy(node.Part(1));
      if (LevelOf(node.op) == kRelationLevel || LevelOf(node.op) == kEqualityLevel ||
          node.op == "&&" || node.op == "||") {
        return {};
      }
      if (left.floating || right.floating) return {true, 8, false};
      return right.size > left.size ? right : left;
    }
    case Kind::kName:
      if (!reading_.Of(node).isObject) return {};
      break;
    case Kind::kCast:
    case Kind::kIndex:
    case Kind::kMember:
    case Kind::kArrow:
      break;
    default:
      return {};
  }
  CType type = reading_.Of(node).type;
  while (type.kind == TypeKind::kArray) type = reading_.Target(type);
  if (!type.IsScalar()) return {};
  return {type.kind == TypeKind::kFloating, type.size, type.isSigned};
}

CRewriting::Fix CRewriting::Replace(const CNode& node, const Place& place) {
  Fix fixed;
  switch (node.kind) {
    case Kind::kUnary:
      fixed = FixUnary(node, place);
      break;
    case Kind::kCast:
      fixed = FixCast(node, place);
      break;
    case Kind::kSizeof:
      fixed = FixSizeof(node);
      break;
    case Kind::kBinary:
      fixed = FixBinary(node, place);
      break;
    case Kind::kIndex:
      fixed = FixIndex(node);
      break;
    case Kind::kMember:
    case Kind::kArrow:
      fixed = FixBitField(node, place);
      if (!fixed && node.kind == Kind::kArrow) fixed = FixArrow(node);
      break;
    case Kind::kGroup:
      fixed = FixGroup(node, place);
      break;
    default:
      fixed = FixUnknownToTheResolver(node);
      break;
  }
  return fixed ? std::move(fixed) : FixSign(node, place);
}

CRewriting::Fix CRewriting::FixUnaryBeforeSubscript(const CNode& node, const CNode& index) {
  const CMeaning& base = reading_.Of(index.Part(0));
  const CMeaning& element = reading_.Of(index);
  if (base.type.kind != TypeKind::kArray) return std::nullopt;
  const Place inside{&node, false};
  const bool member = WithoutGroups(index.Part(0)).kind == Kind::kMember ||
                      WithoutGroups(index.Part(0)).kind == Kind::kArrow;
  if (node.kind == Kind::kUnary && node.op == "&") {
    // A group is right already.
    if (!member || node.Part(0).kind == Kind::kGroup) return std::nullopt;
    Meet(Difference::kUnaryBeforeSubscript);
    return Piece{"&(" + Write(index, inside).text + ")", kUnaryLevel};
  }
  if (!element.type.IsScalar()) return std::nullopt;
  if (node.kind == Kind::kSizeof) return std::nullopt;
  Meet(Difference::kUnaryBeforeSubscript);
  const std::string object = Operand(index, inside, kSumLevel);
  if (element.type.kind == TypeKind::kFloating) {
    if (node.op == "!") return Piece{object + "==0.0", kEqualityLevel};
    if (node.op == "-") return Piece{"0-" + object, kSumLevel};
    if (node.kind == Kind::kCast) return Piece{object + "*1.0", kProductLevel};
  }
  const std::string value = "(" + object + "+0)";
  if (node.kind == Kind::kCast) return Piece{"(" + node.op + ")" + value, kUnaryLevel};
  const CType type = reading_.Operand(index).type;
  const bool plain = node.op == "!" || node.op == "*" || type.name.empty();
  return Piece{node.op + (plain ? "" : "(" + type.name + ")") + value, kUnaryLevel};
}

CRewriting::Fix CRewriting::FixUnary(const CNode& node, const Place& place) {
  const CNode& operand = WithoutGroups(node.Part(0));
  const CMeaning& inner = reading_.Of(operand);
  const Place inside{&node, false};
  if (node.op == "++" || node.op == "--") {
    Meet(Difference::kIncrement);
    const std::string one = inner.type.kind == TypeKind::kPointer ? "1" : "(int)1";
    return Piece{Operand(operand, inside, kSumLevel) + node.op.substr(1) + one, kSumLevel};
  }
  if (operand.kind == Kind::kIndex) {
    if (Fix fixed = FixUnaryBeforeSubscript(node, operand)) return fixed;
  }
  if (node.op == "!" && inner.type.kind == TypeKind::kFloating) {
    Meet(Difference::kFloatingLogic);
    return Piece{Operand(operand, inside, kRelationLevel) + "==0.0", kEqualityLevel};
  }
  if (node.op == "&" && failed_ && operand.kind == Kind::kName && !inner.isObject) {
    const auto label = labels_.FindLabel(operand.op);
    if (label && label->kind == targets::LabelKind::kFunction) {
      Meet(Difference::kFunctionAddress);
      return Piece{operand.op, kPrimaryLevel};
    }
  }
  // The element of an array that is named for its first: *(a + n) is a[n].
  if (node.op == "*" && operand.kind == Kind::kBinary && operand.op == "+") {
    const CNode& array = WithoutGroups(operand.Part(0));
    if (reading_.Of(array).type.kind == TypeKind::kArray && array.kind != Kind::kUnary) {
      Meet(Difference::kArrayName);
      return Piece{Operand(array, inside, kPrimaryLevel) + "[" +
                       Write(operand.Part(1), {&operand, true}).text + "]",
                   kPrimaryLevel};
    }
  }
  // An array record is a pointer as well, but for arrays of pointers.
  if (node.op == "*" && failed_ && inner.isObject && inner.type.kind == TypeKind::kArray &&
      reading_.Target(inner.type).kind == TypeKind::kPointer) {
    Meet(Difference::kArrayName);
    return Piece{"(" + Operand(operand, inside, kPrimaryLevel) + "[0]+0)", kPrimaryLevel};
  }
  const Held held = HeldBy(operand);
  const CMeaning& whole = reading_.Of(node);
  if ((node.op == "-" || node.op == "~") && !held.floating && held.size < 4 && inner.value &&
      whole.value && inner.type.bits == 0) {
    CType narrow = inner.type;
    if (ConvertNumber(*whole.value, narrow).bits != whole.value->bits) {
      Meet(Difference::kNoPromotion);
      return Piece{node.op + "(" + Operand(operand, inside, kSumLevel) + "+(int)0)", kUnaryLevel};
    }
  }
  return FixSign(node, place);
}

CRewriting::Fix CRewriting::FixCutRow(const CNode& node) {
  // The positions of the rows are kept in as many bytes as their size leaves over 8.
  std::vector<const CNode*> subscripts;
  const CNode* at = &node;
  bool cut = false;
  while (at->kind == Kind::kIndex && reading_.Of(at->Part(0)).type.kind == TypeKind::kArray) {
    subscripts.push_back(&at->Part(1));
    const CMeaning& base = reading_.Of(at->Part(0));
    const std::uint64_t left = base.type.size % 8;
    const bool row = WithoutGroups(at->Part(0)).kind == Kind::kIndex;
    cut = cut || (row && left != 0 && left < labels_.PointerSize() && base.address &&
                  *base.address >> (8 * left) != 0);
    at = &WithoutGroups(at->Part(0));
  }
  const CType& element = reading_.Of(node).type;
  if (!cut || element.size == 0 || element.name.empty() || !element.IsScalar()) {
    return std::nullopt;
  }
  Meet(Difference::kCutRow);
  std::string text = "*((" + element.name + "*)&" + Source(*at);
  std::vector<std::string> terms;
  const CNode* index = &node;
  for (const CNode* subscript : subscripts) {
    const std::uint64_t step = reading_.Of(*index).type.size / element.size;
    const std::string count = Operand(*subscript, {}, kProductLevel + 1);
    terms.push_back(step == 1 ? count : count + "*" + std::to_string(step));
    index = &WithoutGroups(index->Part(0));
  }
  for (auto term = terms.rbegin(); term != terms.rend(); ++term) text += "+" + *term;
  return Piece{text + ")", kUnaryLevel};
}

CRewriting::Fix CRewriting::FixIndex(const CNode& node) {
  const CMeaning& base = reading_.Of(node.Part(0));
  if (Fix fixed = FixCutRow(node)) return fixed;
  if (base.type.kind != TypeKind::kPointer) return std::nullopt;
  Meet(Difference::kPointerSubscript);
  return Piece{"*(" + PointerOperand(node.Part(0), node) + "+" +
                   Operand(node.Part(1), {&node, true}, kSumLevel + 1) + ")",
               kUnaryLevel};
}

CRewriting::Fix CRewriting::FixArrow(const CNode& node) {
  const CNode& base = WithoutGroups(node.Part(0));
  if (base.kind != Kind::kBinary && base.kind != Kind::kCast) return std::nullopt;
  if (reading_.Of(node).type.kind == TypeKind::kUnknown) return std::nullopt;
  Meet(Difference::kArrowOnValue);
  return Piece{"(*" + Operand(node.Part(0), {&node, false}, kUnaryLevel) + ")." + node.op,
               kPrimaryLevel};
}

CRewriting::Fix CRewriting::FixBitField(const CNode& node, const Place& place) {
  const CMeaning& member = reading_.Of(node);
  if (member.type.bits == 0 || !member.value) return std::nullopt;
  const CNode* parent = place.parent;
  const bool valued = parent == nullptr
                          ? numbersOnly_
                          : parent->kind == Kind::kBinary || parent->kind == Kind::kCast ||
                                (parent->kind == Kind::kUnary && parent->op != "&");
  if (!valued) return std::nullopt;
  Meet(Difference::kBitField);
  for (const HostEvent& event : log_.events) {
    if (event.kind != HostEvent::Kind::kTypeRecord) continue;
    for (const DataLableType& field : event.type.Members) {
      const targets::TypeShape* shape =
          field.Name == node.op ? labels_.Shape(field.TypeNumber) : nullptr;
      if (shape == nullptr || shape->bits != member.type.bits) continue;
      const std::uint64_t mask = (std::uint64_t{2} << (shape->bits - 1)) - 1;
      std::string text = Unchanged(node, place).text;
      if (shape->firstBit != 0) text += ">>" + std::to_string(shape->firstBit);
      text += "&" + std::to_string(mask);
      if (!member.type.isSigned) return Piece{"(" + text + ")", kPrimaryLevel};
      const std::string sign = std::to_string((mask >> 1U) + 1);
      return Piece{"(int)((" + text + "^" + sign + ")-" + sign + ")", kUnaryLevel};
    }
  }
  return std::nullopt;
}

CRewriting::Fix CRewriting::FixCast(const CNode& node, const Place& place) {
  const CNode& operand = WithoutGroups(node.Part(0));
  const CType type = reading_.Named(node.op);
  const CMeaning inner = reading_.Operand(node.Part(0));
  const Place inside{&node, false};
  if (operand.kind == Kind::kIndex) {
    if (Fix fixed = FixUnaryBeforeSubscript(node, operand)) return fixed;
  }
  if (type.kind == TypeKind::kFloating) {
    if (inner.type.kind == TypeKind::kUnknown) return std::nullopt;
    Meet(Difference::kFloatingCast);
    if (inner.type.kind == TypeKind::kFloating) return Write(node.Part(0), place);
    return Piece{Operand(operand, inside, kProductLevel) + "*1.0", kProductLevel};
  }
  if (type.kind != TypeKind::kInteger || !inner.value || inner.value->floating) {
    return std::nullopt;
  }
  const CNumber result = ConvertNumber(*inner.value, type);
  const Held held = HeldBy(operand);
  if (type.size > held.size && type.size < 8 && held.isSigned && inner.IsNegative()) {
    Meet(Difference::kWideningCast);
    return Piece{Operand(operand, inside, kSumLevel) + "+(" + node.op + ")0", kSumLevel};
  }
  if (type.size < 8 && result.bits != inner.value->bits && place.parent != nullptr) {
    Meet(Difference::kNarrowingCast);
    const std::uint64_t mask = (std::uint64_t{1} << (8 * type.size)) - 1;
    const std::string cut =
        Operand(node.Part(0), inside, kEqualityLevel) + "&" + std::to_string(mask);
    if (!type.isSigned) return Piece{"(" + cut + ")", kPrimaryLevel};
    const std::string sign = std::to_string((mask >> 1U) + 1);
    return Piece{"(int)((" + cut + "^" + sign + ")-" + sign + ")", kUnaryLevel};
  }
  return std::nullopt;
}

std::string CRewriting::SizeText(const CType& type) {
  if (type.kind == TypeKind::kArray) {
    const std::string element = SizeText(reading_.Target(type));
    return element.empty() || !type.count ? "" : element + "*" + std::to_string(*type.count);
  }
  return type.name.empty() ? "" : "sizeof(" + type.name + ")";
}

CRewriting::Fix CRewriting::FixSizeof(const CNode& node) {
  const CMeaning operand = reading_.Of(node.Part(0));
  const CNode& inner = WithoutGroups(node.Part(0));
  if (operand.type.kind == TypeKind::kUnknown || operand.type.size == 0) return std::nullopt;
  const bool element =
      inner.kind == Kind::kIndex && reading_.Of(inner.Part(0)).type.kind == TypeKind::kArray;
  if (operand.type.kind == TypeKind::kArray) {
    const std::uint64_t left = operand.type.size % 8;
    const bool exact = left == 0 || left >= labels_.PointerSize() || (left > 5);
    if (exact && !element) return std::nullopt;
  } else if (operand.isObject) {
    if (!element) return std::nullopt;
  } else if (HeldBy(inner).size == operand.type.size || !operand.type.IsScalar() ||
             operand.type.kind == TypeKind::kPointer) {
    return std::nullopt;
  }
  Meet(element ? Difference::kUnaryBeforeSubscript : Difference::kSizeofExpression);
  const std::string text = SizeText(operand.type);
  if (text.empty()) return Unchanged(node, {});
  return Piece{text, text.find('*') == text.npos ? kUnaryLevel : kProductLevel};
}

}  // namespace tool

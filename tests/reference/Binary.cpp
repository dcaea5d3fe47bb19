#include <algorithm>
#include <cstdint>
#include <string>

#include "tests/reference/Resolver.h"
#include "tests/reference/Values.h"

namespace reference {
namespace {

/// One operand as the operators see it.
struct View {
  std::uint64_t integer = 0;
  float single = 0;
  double wide = 0;
  bool negative = false;
};

/// What an operator computed. A floating part that it left out is filled in at the end.
struct Outcome {
  std::uint64_t integer = 0;
  float single = 0;
  double wide = 0;
  bool hasSingle = false;
  bool hasWide = false;
};

View ViewOf(const AreaBlock& block) {
  View view;
  view.integer = ReadNumber<std::uint64_t>(block.AreaText);
  if (block.ValueKind != 0) {
    view.single = block.FloatValue;
    view.wide = block.DoubleValue;
  } else if (block.Type.IsSigned && ((view.integer >> SignBit(block.Type.Size)) & 1) != 0) {
    unsigned doublings = 0;
    while (static_cast<std::int64_t>(view.integer) > 0) {
      view.integer *= 2;
      ++doublings;
    }
    view.integer = ArithmeticShiftRight(view.integer, doublings);
    view.single = static_cast<float>(static_cast<std::int64_t>(view.integer));
    view.wide = static_cast<double>(static_cast<std::int64_t>(view.integer));
  } else {
    view.single = static_cast<float>(view.integer);
    view.wide = static_cast<double>(view.integer);
  }
  return view;
}

/// A negative view becomes its magnitude, and is marked.
void TakeSign(const DataLableType& type, View* view) {
  if (type.IsSigned && (view->integer >> SignBit(type.Size)) != 0) {
    view->negative = true;
    view->integer = (0 - view->integer) & MaskOfSize(type.Size);
  }
}

int RowOf(int relation) {
  switch (relation) {
    case 4:
    case 5:
    case 11:
      return 1;
    case 2:
    case 3:
      return 2;
    case 12:
    case 13:
      return 3;
    case 14:
    case 15:
      return 4;
    case 16:
    case 17:
      return 5;
    case 18:
    case 19:
      return 6;
    case 20:
      return 7;
    case 22:
      return 8;
    case 21:
      return 9;
    case 23:
      return 10;
    case 24:
      return 11;
    default:
      return 0;
  }
}

template <typename Number>
bool Ordered(int relation, Number left, Number right) {
  if (relation == 14) return left < right;
  if (relation == 15) return left <= right;
  if (relation == 16) return left > right;
  return left >= right;
}

bool IsStructureValue(const DataLableType& type) {
  return !type.NestedTypes.empty() || (!type.Members.empty() && !type.IsPointer);
}

/// What a pointer of this type steps by.
std::uint64_t StepOf(Resolver& resolver, const DataLableType& pointer) {
  DataLableType element = resolver.FirstMember(pointer);
  if (element.IsArray) {
    const DataLableType inner = resolver.FirstMember(element);
    element = inner;
  }
  return element.Size;
}

/// Counts of elements become counts of bytes. False: the operation fails, with what message there
/// is.
bool ScaleByPointer(Resolver& resolver, AreaBlock* left, AreaBlock* right, View* leftView,
                    View* rightView) {
  if (left->Type.IsPointer && !right->Type.IsPointer) {
    if (!resolver.SecondRaw(right)) return false;
    if (right->Type.IsPointer) return true;
    rightView->integer *= StepOf(resolver, left->Type);
    right->Type = left->Type;
  } else if (!left->Type.IsPointer && right->Type.IsPointer) {
    if (resolver.SecondRaw(left)) return false;  // the other way round on purpose
    if (left->Type.IsPointer) return true;
    leftView->integer *= StepOf(resolver, right->Type);
    left->Type = right->Type;
  }
  return true;
}

/// Divides and takes remainders. False: a division by zero.
bool Divide(int relation, const AreaBlock& left, const AreaBlock& right, View l, View r,
            Outcome* outcome) {
  if (relation == 11) {
    if (r.integer == 0) return false;
    TakeSign(left.Type, &l);
    TakeSign(right.Type, &r);
    if (r.integer == 0) return false;
    outcome->integer = l.integer % r.integer;
    if (l.negative || r.negative) outcome->integer = 0 - outcome->integer;
    return true;
  }
  TakeSign(left.Type, &l);
  TakeSign(right.Type, &r);
  if (r.integer == 0 && r.wide == 0.0) return false;
  outcome->integer = r.integer == 0 ? 0 : l.integer / r.integer;
  if (l.negative != r.negative) outcome->integer = 0 - outcome->integer;
  outcome->single = l.single / r.single;
  outcome->wide = l.wide / r.wide;
  outcome->hasSingle = outcome->hasWide = true;
  return true;
}

void Compare(int relation, const AreaBlock& left, const AreaBlock& right, View l, View r,
             Outcome* outcome) {
  if (left.ValueKind != 0 && right.ValueKind != 0) {
    bool holds = false;
    if (relation == 18) {
      holds = l.single == r.single;
    } else if (relation == 19) {
      holds = !(l.single == r.single);
    } else {
      holds = Ordered(relation, l.single, r.single);
    }
    outcome->single = holds ? 1.0F : 0.0F;
    outcome->hasSingle = true;
    return;
  }
  bool holds = false;
  if (relation == 18) {
    holds = l.integer == r.integer;
  } else if (relation == 19) {
    holds = l.integer != r.integer;
  } else {
    TakeSign(left.Type, &l);
    TakeSign(right.Type, &r);
    if (l.negative && !r.negative) {
      holds = relation == 14 || relation == 15;
    } else if (r.negative && !l.negative) {
      holds = relation == 16 || relation == 17;
    } else {
      holds = Ordered(relation, l.integer, r.integer);
    }
  }
  outcome->integer = holds ? 1 : 0;
}

void FetchOperand(Resolver& resolver, AreaBlock* block) {
  bool space = false;
  if (block->Type.IsAddress) {
    resolver.MoveFromPointerToObject(block, &space);
    block->ReferenceLevel += 1;
  }
}

void FetchArray(Resolver& resolver, AreaBlock* block) {
  bool space = false;
  while (block->Type.IsArray) {
    if (!resolver.MoveFromPointerToObject(block, &space)) break;
  }
}

}  // namespace

int Resolver::ThirdRawRaw(AreaBlock* left, AreaBlock* right, int relation, int row) {
  // All of this happens in every row, also in those that leave the pair alone.
  FetchOperand(*this, left);
  FetchOperand(*this, right);
  FetchArray(*this, left);
  FetchArray(*this, right);
  RestoreFloatingPointStr(&left->AreaText);
  RestoreFloatingPointStr(&right->AreaText);
  View l = ViewOf(*left);
  View r = ViewOf(*right);

  if (RowOf(relation) == 0) {
    Fail("Undefined relations between arguments");
    return 0;
  }
  if (row != RowOf(relation)) return 1;

  const bool anyFloating = left->ValueKind != 0 || right->ValueKind != 0;
  const auto refuse = [&](const char* operation) {
    Fail(std::string("Invalid type for ") + operation + " operation");
    return 0;
  };
  Outcome outcome;
  bool plainTypes = false;  // both types become the default one
  switch (relation) {
    case 4:
      outcome = {l.integer * r.integer, l.single * r.single, l.wide * r.wide, true, true};
      break;
    case 5:
    case 11:
      if (!Divide(relation, *left, *right, l, r, &outcome)) {
        Fail("Division by zero");
        return 0;
      }
      break;
    case 2:
      if (!ScaleByPointer(*this, left, right, &l, &r)) return 0;
      outcome = {l.integer + r.integer, l.single + r.single, l.wide + r.wide, true, true};
      break;
    case 3:
      if (!ScaleByPointer(*this, left, right, &l, &r)) return 0;
      outcome = {l.integer - r.integer, l.single - r.single, l.wide - r.wide, true, true};
      break;
    case 12:
      if (anyFloating) return refuse("<<");
      outcome.integer = l.integer << (r.integer % 64);
      break;
    case 13:
      if (anyFloating) return refuse(">>");
      outcome.integer = l.integer >> (r.integer % 64);
      break;
    case 20:
      if (anyFloating) return refuse("&");
      outcome.integer = l.integer & r.integer;
      break;
    case 22:
      if (anyFloating) return refuse("^");
      outcome.integer = l.integer ^ r.integer;
      break;
    case 21:
      if (anyFloating) return refuse("|");
      outcome.integer = l.integer | r.integer;
      break;
    case 23:
      if (anyFloating) return refuse("&&");
      outcome.integer = l.integer != 0 && r.integer != 0 ? 1 : 0;
      plainTypes = true;
      break;
    case 24:
      if (anyFloating) return refuse("||");
      outcome.integer = l.integer != 0 || r.integer != 0 ? 1 : 0;
      plainTypes = true;
      break;
    default:
      Compare(relation, *left, *right, l, r, &outcome);
      plainTypes = true;
      break;
  }
  if (plainTypes) {
    left->Type = defaultType;
    right->Type = defaultType;
  }

  if (IsStructureValue(left->Type) || IsStructureValue(right->Type)) {
    Fail("Can`t convert one type to another");
    return 0;
  }
  if (!left->Type.IsFloat && !right->Type.IsFloat) {
    if (left->Type.Size < right->Type.Size) left->Type = right->Type;
  } else if (!left->Type.IsFloat) {
    left->Type = right->Type;
  }
  outcome.integer &= MaskOfSize(left->Type.Size);
  if (!outcome.hasSingle) {
    outcome.single = static_cast<float>(outcome.integer);
    outcome.wide = static_cast<double>(outcome.integer);
  } else if (!outcome.hasWide) {
    outcome.wide = static_cast<double>(outcome.single);
  }
  left->ValueKind = std::max(left->ValueKind, right->ValueKind);

  if (left->ValueKind == 0) {
    left->AreaText = WriteNumber(outcome.integer);
  } else if (left->ValueKind == 1) {
    left->AreaText = WriteNumber(outcome.single);
    left->Value = Truncate(outcome.single);
    left->FloatValue = outcome.single;
    left->DoubleValue = static_cast<double>(outcome.single);
  } else {
    left->AreaText = WriteNumber(outcome.wide);
    left->Value = Truncate(outcome.wide);
    left->FloatValue = static_cast<float>(outcome.wide);
    left->DoubleValue = outcome.wide;
  }
  CheckFloatingPointStr(&left->AreaText);
  left->MemorySpace = left->MemorySpace | right->MemorySpace;
  right->IsConsumed = true;
  return 2;
}

}  // namespace reference

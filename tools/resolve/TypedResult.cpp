#include "tools/resolve/TypedResult.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <string_view>

#include "targets/Error.h"
#include "tools/resolve/BitFields.h"

namespace tool {
namespace {

using targets::TypeShape;
using Kind = TypeShape::Kind;

// What the resolver says when only the final read failed.
constexpr std::string_view kFinalReadFailed = "Error occurred";

bool IsName(std::string_view text) {
  const auto fits = [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
           c == '.' || c == '$' || c == '@';
  };
  return !text.empty() && !(text.front() >= '0' && text.front() <= '9') &&
         std::all_of(text.begin(), text.end(), fits);
}

bool IsObject(const ResolverView& resolver) {
  return resolver.Result().Type.IsAddress || resolver.Result().Type.IsArray;
}

/// Was everything read that the result's place depends on? Its own value need not have been.
bool KnowsPlace(bool solved, const ResolverView& resolver, const WatchingHost& host) {
  if (!solved && resolver.errorMessage != kFinalReadFailed) return false;
  if (!resolver.HasResult()) return false;
  const auto& failure = host.FirstFailure();
  return !failure || (failure->Code() != targets::ErrorCode::kTargetLost && host.FailedLast() &&
                      IsObject(resolver));
}

/// A name that stands alone for what has no type of its own says more than its number does.
void TakeLabel(const std::string& name, targets::LabelSource& labels, Denoted* denoted) {
  const std::optional<targets::Label> label = labels.FindLabel(name);
  if (!label || label->typed) return;
  TypeShape& made = denoted->made;
  switch (label->kind) {
    case targets::LabelKind::kEnumerator:
      made.kind = Kind::kEnumeration;
      made.isSigned = true;
      made.enumerators.push_back({name, label->value});
      break;
    case targets::LabelKind::kFunction:
    case targets::LabelKind::kSymbol:
      made.kind = Kind::kPointer;
      break;
    case targets::LabelKind::kVariable:
      break;
  }
}

void TakeFloating(const ResolverView& resolver, const WatchingHost& host,
                  targets::LabelSource& labels, Denoted* denoted) {
  const AreaBlock& block = resolver.Result();
  const TypeShape& shape = ShapeOf(*denoted, labels);
  const bool fits = shape.kind == Kind::kFloating && !shape.isExtended;
  double value = block.DoubleValue;
  std::uint64_t size = block.ValueKind == 2 ? 8 : 4;
  if (IsObject(resolver)) {
    value = host.LastFloating();
    if (fits) size = shape.size;
  }
  if (!fits || shape.size != size) {
    denoted->type = 0;
    denoted->made = {};
    denoted->made.kind = Kind::kFloating;
    denoted->made.size = size;
  }
  const std::uint64_t bits = size == 8 ? std::bit_cast<std::uint64_t>(value)
                                       : std::bit_cast<std::uint32_t>(static_cast<float>(value));
  denoted->bytes = BytesOf(bits, size, labels.Order());
}

void TakeInteger(const ResolverView& resolver, const std::string& text,
                 targets::LabelSource& labels, Denoted* denoted) {
  const std::uint64_t size = resolver.resultSize;
  const std::uint64_t bits =
      resolver.resultNegative ? 0 - resolver.resultValue : resolver.resultValue;
  const TypeShape& shape = ShapeOf(*denoted, labels);
  if (denoted->address) {
    const bool fits =
        shape.bits != 0 ? BytesOfBits(shape.firstBit, shape.bits) <= size : shape.size == size;
    if (fits) denoted->bytes = BytesOf(bits, size, labels.Order());
    return;
  }
  // Whatever is computed from a bit-field is computed from the unit that holds it.
  if (denoted->type != 0 && (shape.bits != 0 || shape.size != size)) {
    denoted->made = {};
    denoted->made.kind = Kind::kInteger;
    denoted->made.isSigned = resolver.Result().Type.IsSigned;
    denoted->type = 0;
  }
  if (denoted->type == 0) {
    if (denoted->made.kind != Kind::kPointer) denoted->made.kind = Kind::kInteger;
    denoted->made.size = size;
    if (IsName(text)) TakeLabel(text, labels, denoted);
  }
  denoted->bytes = BytesOf(bits, size, labels.Order());
}

}  // namespace

TypedResult ReadType(const std::string& text, bool solved, const ResolverView& resolver,
                     const WatchingHost& host, targets::LabelSource& labels) {
  TypedResult result;
  const auto& failure = host.FirstFailure();
  if (failure && failure->Code() == targets::ErrorCode::kNotRepresented && host.FailedLast() &&
      IsName(text)) {
    const auto object = labels.FindObject(text);
    if (object && labels.Shape(object->type) != nullptr) {
      result.denoted.emplace();
      result.denoted->type = object->type;
      result.denoted->address = object->address;
      result.isWhole = true;
      return result;
    }
  }
  if (!KnowsPlace(solved, resolver, host)) return result;
  Denoted denoted = DenotedBy(resolver, labels);
  const TypeShape& shape = ShapeOf(denoted, labels);
  const bool incomplete = shape.isIncomplete || shape.kind == Kind::kVoid;
  if (IsObject(resolver) && !incomplete && shape.bits == 0) {
    const bool infinite = shape.kind == Kind::kFloating && failure &&
                          failure->Code() == targets::ErrorCode::kNotRepresented;
    const bool wide = denoted.type != 0 && (shape.size > 8 || shape.kind == Kind::kOther);
    const bool odd = shape.kind == Kind::kFloating && shape.size != 4 && shape.size != 8;
    result.isWhole = (IsAggregate(shape) && denoted.type != 0) || infinite || wide || odd;
  }
  if (!result.isWhole) {
    if (!solved || failure) return result;
    result.isBitField = shape.bits != 0 && IsObject(resolver);
    if (resolver.resultFloating) {
      result.isExactFloating = IsObject(resolver) || resolver.Result().ValueKind == 2;
      TakeFloating(resolver, host, labels, &denoted);
    } else {
      TakeInteger(resolver, text, labels, &denoted);
    }
  }
  result.denoted = std::move(denoted);
  return result;
}

}  // namespace tool

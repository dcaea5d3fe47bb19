#include "tools/resolve/Evaluator.h"

#include <algorithm>
#include <cfloat>
#include <charconv>
#include <cmath>
#include <optional>
#include <utility>
#include <vector>

#include "targets/TypeNames.h"
#include "tools/resolve/ExpressionText.h"
#include "tools/resolve/Printable.h"
#include "tools/resolve/ResolverView.h"
#include "tools/resolve/TypedResult.h"

namespace tool {
namespace {

constexpr std::string_view kSizeofGroup = "sizeof(";
constexpr std::string_view kUndefinedLabel = "Undefined label ";
constexpr const char* kOnlyEightBytes = ": only values of up to 8 bytes can be used";
// What the resolver says when only the final read failed.
constexpr std::string_view kFinalReadFailed = "Error occurred";

/// A structure, or what the labels' source has no value for: both are known by name only.
bool IsComposite(const DataLableType& type) {
  return !type.IsPointer && !type.IsArray && (!type.NestedTypes.empty() || !type.Members.empty());
}

/// A field of structure type holds what stands for its structure as its only member; a structure
/// described in full holds its fields.
bool IsFieldOfStructure(const DataLableType& type) {
  if (!type.NestedTypes.empty() || type.Members.size() != 1) return false;
  const DataLableType& only = type.Members.front();
  return !only.NestedTypes.empty() && !only.ExtraFlag;
}

/// An element of an array has the array's type until it is read, so only the text tells them apart.
bool EndsInSubscript(std::string_view text) {
  const std::size_t behind = text.find_last_not_of(')');
  return behind != std::string_view::npos && text[behind] == ']';
}

/// Does a "&" stand in `text` that is not half of "&&"?
bool TakesAddress(std::string_view text) {
  for (std::size_t at = text.find('&'); at != std::string_view::npos; at = text.find('&', at + 1)) {
    if (at + 1 == text.size() || text[at + 1] != '&') return true;
    ++at;
  }
  return false;
}

/// One resolution, from the text that the resolver gets to the outcome.
class Resolution {
 public:
  Resolution(targets::LabelSource& labels, ExplainingHost& host, std::string text)
      : labels_(labels), host_(host), text_(std::move(text)), resolver_(&host) {}

  Outcome Run(bool numbersOnly) {
    solved_ = resolver_.SolveStringOfElements(text_);
    host_.Log().confirmed = solved_ && resolver_.allLabelsConfirmed;
    TypedResult typed;
    if (!numbersOnly) typed = ReadType(text_, solved_, resolver_, host_, labels_);
    whole_ = typed.isWhole;
    exactFloating_ = typed.isExactFloating;
    if (std::optional<std::string> reason = WhyNotToTrust()) return Failure{*std::move(reason)};
    const std::string& untyped = host_.FirstUntyped();
    if (!solved_ && !whole_) {
      return Failure{ResolverSentence() + (untyped.empty() ? "" : "; " + untyped)};
    }
    Answer answer = whole_ ? WholeAnswer(typed) : MakeAnswer();
    if (typed.isBitField) {
      const targets::TypeShape& shape = ShapeOf(*typed.denoted, labels_);
      answer.bits = shape.bits;
      answer.isSigned = shape.isSigned;
    }
    answer.denoted = std::move(typed.denoted);
    // The bits of a bit-field are shown as what they are, but for those that are operands.
    const std::string own = typed.isBitField ? MemberNames(text_).back() : "";
    for (const targets::MemberRemark& remark : labels_.Remarks()) {
      if (remark.kind == targets::MemberRemark::Kind::kBitField && remark.member != own &&
          Concerns(remark)) {
        AddNote({kBitFieldNote, BitFieldNote(remark)}, &answer);
      }
    }
    if (!whole_ && !typed.isBitField && resolver_.ObjectType().ExtraFlag && answer.notes.empty()) {
      AddNote({kBitFieldNote, "the value is the whole unit that holds the bits of a bit-field"},
              &answer);
    }
    if (!untyped.empty()) AddNote({kUntypedNote, untyped}, &answer);
    return answer;
  }

 private:
  /// Why the resolver's answer cannot be given, whatever the resolver says; empty when it can.
  std::optional<std::string> WhyNotToTrust() {
    if (const auto& failure = host_.FirstFailure()) {
      // No other expression will fare better.
      if (failure->Code() == targets::ErrorCode::kTargetLost) throw targets::Error(*failure);
      if (!whole_) return failure->what();
    }
    if (whole_) return resolver_.HasResult() ? TooLargeOperand() : std::nullopt;
    const bool hasResult = solved_ || resolver_.errorMessage == kFinalReadFailed;
    if (hasResult && IsComposite(resolver_.ObjectType())) {
      return CompositeSentence(resolver_.ObjectType());
    }
    if (auto sentence = TooLargeSentence()) return sentence;
    if (auto sentence = UnknownSizeSentence()) return sentence;
    if (solved_ && resolver_.resultFloating && !exactFloating_) return OutsideFloatRange();
    return std::nullopt;
  }

  /// The resolver gives floating results in single precision only.
  std::optional<std::string> OutsideFloatRange() const {
    const double value = ReadFromMemory() ? host_.LastFloating() : resolver_.Result().DoubleValue;
    const bool vanishes = value != 0.0 && static_cast<float>(value) == 0.0F;
    if (std::fabs(value) <= FLT_MAX && !vanishes) return std::nullopt;
    std::string digits(32, '\0');
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
    digits.resize(static_cast<std::size_t>(end - digits.data()));
    return "is " + digits + ", outside the range of single precision, in which results are given";
  }

  /// About a structure, or a scalar that no record can hold. What stands for it names neither its
  /// members nor, behind a pointer, its exact size; the full record does.
  std::string CompositeSentence(const DataLableType& type) const {
    const DataLableType* stub = IsFieldOfStructure(type) ? &type.Members.front() : &type;
    std::string name = stub->Name;
    std::uint64_t size = stub->Size;
    if (!stub->NestedTypes.empty()) {
      if (const auto full = labels_.FindType(stub->NestedTypes.front())) {
        name = full->Name;
        size = full->Size;
      }
    }
    if (stub->ExtraFlag) {
      return "is a " + name + " (" + FormatBytes(size) + ")" + Place() + kOnlyEightBytes;
    }
    if (size == 0) return "is a " + name + Place() + ", which has no members here";
    const std::string kind = name.rfind("union", 0) == 0 ? "union" : "structure";
    const std::string details = (name.empty() ? "" : name + ", ") + FormatBytes(size);
    if (resolver_.IsArray() && !EndsInSubscript(text_)) {
      return "is an array of " + kind + "s (" + details + " each)" + Place() +
             ": name an element and one of its members";
    }
    return "is a " + kind + " (" + details + ")" + Place() + ": name one of its members";
  }

  /// The size of a type that is only declared counts as 0, so that pointers to it can be had.
  std::optional<std::string> UnknownSizeSentence() const {
    if (!solved_) return std::nullopt;
    const std::string_view text = text_;
    const auto known = [this](std::string_view base) { return labels_.HasType(base); };
    for (std::size_t at = text.find(kSizeofGroup); at != text.npos;
         at = text.find(kSizeofGroup, at + 1)) {
      const std::size_t start = at + kSizeofGroup.size();
      const std::size_t end = text.find_first_of("()", start);
      if (end == text.npos || text[end] != ')') continue;
      const auto name = targets::CanonicalTypeName(text.substr(start, end - start), known);
      if (name && name->stars == 0 && labels_.IsIncomplete(name->base)) {
        return name->base + " is declared, but not defined: its size is not known";
      }
    }
    return std::nullopt;
  }

  /// Operands that are too large fail for a reason that does not say so, or count with their first
  /// bytes. Only their addresses and sizes are good for something.
  std::optional<std::string> TooLargeSentence() const {
    if (TakesAddress(text_) || text_.find("sizeof") != std::string::npos) return std::nullopt;
    for (const targets::MemberRemark& remark : labels_.Remarks()) {
      if (remark.kind == targets::MemberRemark::Kind::kTooLarge && Concerns(remark)) {
        return "member " + remark.member + " of " + remark.record + " is a " + remark.declaration +
               kOnlyEightBytes;
      }
    }
    return std::nullopt;
  }

  /// The same about the operands of a whole object, which may be too large itself.
  std::optional<std::string> TooLargeOperand() const {
    const bool itself = resolver_.ObjectType().ExtraFlag;
    return itself ? std::nullopt : TooLargeSentence();
  }

  std::string ResolverSentence() const {
    if (resolver_.errorMessage == kFinalReadFailed) return "the type of the result has no size";
    if (!resolver_.errorMessage.empty()) return resolver_.errorMessage + DottedLabelAdvice();
    if (text_.find_first_not_of("() ") == std::string::npos) return "the parentheses are empty";
    if (resolver_.EndedAtPointerOnTheRight()) {
      return "a pointer must stand on the left of + and -, as in `p + 1`";
    }
    if (text_.find('[') != std::string::npos) return "a subscript could not be evaluated";
    return "the resolver gave no reason";
  }

  /// A label with points, as assembly sources have them, falls apart where a point selects a
  /// member.
  std::string DottedLabelAdvice() const {
    const std::string& message = resolver_.errorMessage;
    if (message.rfind(kUndefinedLabel, 0) != 0) return "";
    const std::string dotted = DottedName(text_, message.substr(kUndefinedLabel.size()));
    if (dotted.empty() || !labels_.FindLabel(dotted)) return "";
    return "; `" + dotted +
           "` is one name where the current file is an assembly source, see --file";
  }

  Answer WholeAnswer(const TypedResult& typed) const {
    const targets::TypeShape& shape = ShapeOf(*typed.denoted, labels_);
    Answer answer;
    answer.isNumber = false;
    answer.size = shape.size;
    answer.typeName = shape.name;
    answer.address = typed.denoted->address;
    answer.space = typed.denoted->space;
    return answer;
  }

  Answer MakeAnswer() const {
    Answer answer;
    answer.floating = resolver_.resultFloating;
    answer.number = resolver_.resultFloat;
    answer.negative = resolver_.resultNegative;
    answer.magnitude = resolver_.resultValue;
    answer.size = resolver_.resultSize;
    answer.isSigned = !answer.floating && resolver_.ObjectType().IsSigned;
    answer.space = resolver_.resultMemorySpace ? 1 : 0;
    if (ReadFromMemory()) {
      answer.address = host_.Accesses().back().address;
      answer.space = host_.Accesses().back().space;
    }
    return answer;
  }

  /// Is the result an object in memory, read by the final read?
  bool ReadFromMemory() const {
    return resolver_.Result().Type.IsAddress && !host_.Accesses().empty();
  }

  std::string Place() const {
    return ReadFromMemory() ? " at " + FormatAddress(host_.Accesses().back().address) : "";
  }

  /// Does the expression read the member that the remark is about, as far as its text tells?
  bool Concerns(const targets::MemberRemark& remark) const {
    if (host_.Accesses().empty() || !host_.Described(remark.record)) return false;
    const std::vector<std::string> names = MemberNames(text_);
    return std::find(names.begin(), names.end(), remark.member) != names.end();
  }

  static std::string BitFieldNote(const targets::MemberRemark& remark) {
    return "member " + remark.member + " of " + remark.record + " is a bit-field (" +
           remark.declaration + "); its value is the whole unit that holds the bits";
  }

  static void AddNote(NamedNote note, Answer* answer) {
    auto& notes = answer->notes;
    const bool there = std::any_of(notes.begin(), notes.end(),
                                   [&](const NamedNote& other) { return other.text == note.text; });
    if (!there) notes.push_back(std::move(note));
  }

  targets::LabelSource& labels_;
  ExplainingHost& host_;
  std::string text_;
  ResolverView resolver_;
  bool solved_ = false;
  /// The answer is an object that is shown whole, without the resolver's number.
  bool whole_ = false;
  /// The answer is a floating number that is not cut to single precision.
  bool exactFloating_ = false;
};

}  // namespace

Outcome Evaluator::Evaluate(std::string_view expression) {
  host_.Log().Start(std::string(expression.substr(0, kLongestExpression)), "");
  if (expression.size() > kLongestExpression) {
    return Failure{"the expression is longer than " + FormatBytes(kLongestExpression)};
  }
  std::string text(expression);
  if (text_ == Text::kC) {
    text = PrepareExpression(expression);
    if (const auto control = FindControlCharacter(text)) {
      return Failure{"an expression cannot hold the control character " +
                     Printable({&*control, 1})};
    }
    if (auto sentence = FindMissingOperator(text)) return Failure{*std::move(sentence)};
    // To the resolver a comma is a point that it hid itself.
    if (text.find(',') != std::string::npos) return Failure{"there is no operator `,`"};
  } else if (text.find('\0') != std::string::npos) {
    // A name ends there, so the rest would be dropped without a word.
    return Failure{"an expression cannot hold the control character \\x00"};
  }
  if (text.empty()) return Failure{"the expression is empty"};
  host_.Start();
  host_.Log().prepared = text;
  try {
    return Resolution(labels_, host_, std::move(text)).Run(numbersOnly_);
  } catch (const targets::Error& error) {
    if (error.Code() == targets::ErrorCode::kTargetLost) throw;
    return Failure{error.what()};
  }
}

}  // namespace tool

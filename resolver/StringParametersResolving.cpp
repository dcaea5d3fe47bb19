#include "resolver/StringParametersResolving.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstring>
#include <iterator>
#include <string_view>
#include <utility>

#include "resolver/CharacterClass.h"
#include "resolver/GapText.h"
#include "resolver/Markers.h"
#include "resolver/Owed.h"
#include "resolver/SizeMask.h"
#include "resolver/ValueText.h"

namespace {

/// Longest text and most blocks that an object keeps room for between two resolutions.
constexpr std::size_t kKeptText = 4096;
constexpr std::size_t kKeptBlocks = 64;

bool NamesAssembly(std::string_view fileName) {
  for (std::size_t at = fileName.find('.'); at != std::string_view::npos;
       at = fileName.find('.', at + 1)) {
    const std::string_view extension = fileName.substr(at);
    if (extension.starts_with(".s") || extension.starts_with(".asm")) return true;
  }
  return false;
}

void MarkStars(std::string* typeText) {
  for (char& c : *typeText) {
    if (c == '*') c = resolver::kTypeStarMark;
  }
}

/// How deep in parentheses the end of a text is that loses characters from its end.
class Nesting {
 public:
  explicit Nesting(std::string_view text) {
    for (const char c : text) {
      depth_ += DepthOf(c);
      // What follows a stray closing one cannot be told by counting.
      regular_ = regular_ && depth_ >= 0;
    }
  }
  void Leave(std::string_view end) {
    for (const char c : end) depth_ -= DepthOf(c);
  }
  [[nodiscard]] bool Outermost() const { return regular_ && depth_ == 0; }

 private:
  static int DepthOf(char c) { return c == '(' ? 1 : c == ')' ? -1 : 0; }

  long depth_ = 0;
  bool regular_ = true;
};

/// Do these texts put what is between them in the first brackets of an operand? Not of one with
/// marks in it, which are read before brackets are joined, nor of one behind a parenthesis: an
/// empty group vanishes and joins what is around it.
bool IsFirstSubscript(std::string_view before, std::string_view behind, unsigned delimiters) {
  constexpr unsigned kUnfit =
      resolver::kBracket | resolver::kSubResultOrSpace | resolver::kParenthesis;
  if (!before.ends_with('[') || !behind.starts_with(']')) return false;
  const std::size_t bracket = before.size() - 1;
  std::size_t operand = bracket;
  while (operand > 0 && !resolver::IsOf(before[operand - 1], delimiters)) {
    --operand;
    if (resolver::IsOf(before[operand], kUnfit)) return false;
  }
  return operand < bracket;
}

/// Takes the number out of a sub-result of digits only that `text` begins with; empty for any
/// other.
std::string_view TakePlainSubResult(std::string_view* text) {
  std::string_view rest = *text;
  if (!rest.starts_with(resolver::kSubResultStart)) return {};
  rest.remove_prefix(rest.find(resolver::kSubResultClose) + 1);
  const std::string_view number = rest.substr(0, rest.find_first_not_of("0123456789"));
  rest.remove_prefix(number.size());
  if (!rest.starts_with(resolver::kSubResultFence)) return {};
  rest.remove_prefix(resolver::kSubResultFence.size());
  *text = rest;
  return number;
}

/// Is the text nothing but operators that no part of a sub-result's encoding can be taken for?
bool IsPrefix(std::string_view text, unsigned delimiters) {
  for (const char c : text) {
    if (!resolver::IsOf(c, delimiters) || c == resolver::kSubResultFence[0]) return false;
  }
  return true;
}

/// Puts the number of a first subscript behind the gap, and takes the fences off the further
/// subscripts of numbers that follow it: "][" and a sub-result each. The lexer would join all of
/// them to the operand, at three times the cost.
void JoinSubscripts(std::uint64_t number, resolver::GapText* text) {
  std::string joined = resolver::WriteUnsigned(number);
  std::string_view rest = text->Behind();
  while (rest.starts_with("][")) {
    std::string_view behind = rest.substr(2);
    const std::string_view next = TakePlainSubResult(&behind);
    if (next.empty() || !behind.starts_with(']')) break;
    joined.append("][").append(next);
    rest = behind;
  }
  text->DropBehind(text->Behind().size() - rest.size());
  text->PutBehind(joined);
}

/// Writes each bracket with a parenthesis inside it, so that every subscript is a group.
void GroupSubscripts(std::string_view text, resolver::GapText* grouped) {
  std::size_t copied = 0;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const char c = text[at];
    if (c != '[' && c != ']') continue;
    grouped->PutBefore(text.substr(copied, at - copied));
    grouped->PutBefore(c == '[' ? "[(" : ")]");
    copied = at + 1;
  }
  grouped->PutBefore(text.substr(copied));
}

}  // namespace

/// What holds during a resolution only.
class TStringResolver::Resolution {
 public:
  explicit Resolution(TStringResolver* resolver) : resolver_(resolver) {
    resolver_->finger_ = &finger_;
  }
  Resolution(const Resolution&) = delete;
  Resolution& operator=(const Resolution&) = delete;
  void Finish() { finished_ = true; }
  ~Resolution() {
    resolver_->finger_ = nullptr;
    // Something was thrown; what the blocks owe will not be written.
    if (!finished_) resolver_->areaBlocks.clear();
    // One long text must not hold its memory for the object's life.
    if (resolver_->text_.capacity() > kKeptText) std::string().swap(resolver_->text_);
    auto& spare = resolver_->spareBlocks_;
    if (spare.size() > kKeptBlocks) {
      spare.erase(std::next(spare.begin(), kKeptBlocks), spare.end());
    }
  }

 private:
  TStringResolver* resolver_;
  // Positions are looked up near each other while a text is reduced; between two resolutions a
  // derived class may change the list.
  SavedTypeFinger finger_;
  bool finished_ = false;
};

const TStringResolver::DelimiterSets& TStringResolver::DelimiterSets::Of(bool assembly) {
  constexpr auto setsOf = [](std::string_view characters) {
    DelimiterSets sets;
    characters.copy(sets.withParentheses.data(), characters.size());
    characters.copy(sets.without.data(), characters.size(), resolver::kParentheses);
    return sets;
  };
  static constexpr DelimiterSets kAssembly = setsOf(resolver::kAssemblyDelimiters);
  static constexpr DelimiterSets kC = setsOf(resolver::kCDelimiters);
  return assembly ? kAssembly : kC;
}

TStringResolver::TStringResolver(TParrentInterface* parent)
    : TStringResolver(parent, parent->GetFileName()) {}

TStringResolver::TStringResolver(TParrentInterface* parent, std::string_view fileName)
    : parentInterface(parent) {
  const bool assembly = NamesAssembly(fileName);
  delimiterClass_ = assembly ? resolver::kAssemblyDelimiter : resolver::kCDelimiter;
  delimiterSets_ = DelimiterSets::Of(assembly);
  delimitersWithParentheses = delimiterSets_.withParentheses.data();
  delimiters = delimiterSets_.without.data();
}

bool TStringResolver::SolveStringOfElements(std::string_view expression) {
  Resolution scope(this);
  const bool solved = Resolve(expression);
  for (AreaBlock& block : areaBlocks) resolver::WriteOwed(&block);
  scope.Finish();
  return solved;
}

bool TStringResolver::Resolve(std::string_view expression) {
  text_ = expression;
  const unsigned classes = resolver::ClassesOf(text_);
  // A keyword is marked at the blank before it.
  if ((classes & resolver::kBlank) != 0) ProcessBasickTypes(&text_);
  if ((classes & resolver::kLetterOfSizeof) != 0 && !RewriteSizeofs(&text_)) return false;
  if ((classes & resolver::kBlank) != 0) std::erase(text_, ' ');
  if (resolver::MayHoldFloatingLiteral(classes)) CheckFloatingPointStr(&text_);
  if ((classes & (resolver::kParenthesis | resolver::kBracket)) == 0) {
    if (text_.empty() || !SolveElement(text_)) return false;
  } else {
    resolver::GapText grouped;
    const bool hasBrackets = (classes & resolver::kBracket) != 0;
    if (hasBrackets) {
      GroupSubscripts(text_, &grouped);
    } else {
      grouped.PutBefore(text_);
    }
    if (!SolveGroups(&grouped, hasBrackets)) return false;
  }
  return StoreResult(&areaBlocks.front());
}

/// Replaces `sizeof` of a type by its size, and any other by the unary mark. False, without a
/// message, when the host does not know a type that it had accepted.
bool TStringResolver::RewriteSizeofs(std::string* text) {
  constexpr std::string_view kKeyword = "sizeof";
  // What has been rewritten is moved together at the text's start, so that the rest moves once.
  std::size_t rewritten = 0;
  std::size_t copied = 0;
  const auto keepUntil = [&](std::size_t end) {
    if (rewritten != copied) std::memmove(&(*text)[rewritten], &(*text)[copied], end - copied);
    rewritten += end - copied;
  };
  std::size_t close = 0;
  std::size_t at = 0;
  while ((at = text->find(kKeyword, at)) != std::string::npos) {
    std::size_t behind = at + kKeyword.size();
    if (behind == text->size() || ((*text)[behind] != ' ' && (*text)[behind] != '(')) {
      ++at;
      continue;
    }
    keepUntil(at);
    if (close < behind) close = text->find(')', behind);
    std::array<char, 20> digits;
    std::string_view replacement(&resolver::kSizeofMark, 1);
    if ((*text)[behind] == '(' && close != std::string::npos) {
      std::string operand = text->substr(behind + 1, close - behind - 1);
      std::erase(operand, ' ');
      if (parentInterface->IsTypeName(operand)) {
        MarkStars(&operand);
        bool unknown = false;
        const DataLableType type = DescribeType(&operand, &unknown);
        if (unknown) return false;
        replacement = resolver::WriteUnsigned(type.Size, &digits);
        behind = close + 1;
      }
    }
    // Of all types only those of ten digits may take more room than what they stand for.
    if (rewritten + replacement.size() > behind) {
      const std::size_t room = 1 + text->size() / 8;
      text->insert(behind, room, ' ');
      behind += room;
      if (close != std::string::npos) close += room;
    }
    replacement.copy(&(*text)[rewritten], replacement.size());
    rewritten += replacement.size();
    copied = at = behind;
  }
  if (copied == 0) return true;
  keepUntil(text->size());
  text->resize(rewritten);
  return true;
}

/// Evaluates the innermost group, the last one, until no group is left, and then what is left.
bool TStringResolver::SolveGroups(resolver::GapText* text, bool hasBrackets) {
  std::size_t open = 0;
  // Only what stands in brackets is treated differently inside of a group.
  Nesting nesting(hasBrackets ? text->Before() : std::string_view());
  while ((open = text->Before().rfind('(')) != std::string_view::npos) {
    if (hasBrackets) nesting.Leave(text->Before().substr(open));
    text->MoveGap(open);
    const std::size_t close = text->Behind().find(')');
    if (close == std::string_view::npos) return Fail("Can`t find the end quote.");
    if (close == 1) {
      text->DropBehind(2);
      continue;
    }
    const std::string_view group = text->Behind().substr(1, close - 1);
    if (parentInterface->IsTypeName(std::string(group))) {
      std::string cast(group);
      MarkStars(&cast);
      if (RegisterType(&cast)) return false;
      text->DropBehind(close + 1);
      text->PutBehind(cast);
      continue;
    }
    if (!SolveElement(group)) return false;
    text->DropBehind(close + 1);
    AreaBlock& result = areaBlocks.front();
    resolver::WriteOwedPointer(&result);
    savedTypes.push_back(result.Type);
    const bool isPlain =
        result.Owed == OwedText::kInteger && result.ValueKind == 0 && result.MemorySpace == 0;
    if (isPlain && IsPrefix(text->Before(), delimiterClass_) && text->Behind().empty()) {
      return SolvePrefixed(text->Before());
    }
    // Not inside of a group, whose text the host gets to see.
    if (isPlain && hasBrackets && nesting.Outermost() &&
        IsFirstSubscript(text->Before(), text->Behind(), delimiterClass_)) {
      JoinSubscripts(result.OwedNumber, text);
    } else {
      PutSubResult(&result, text);
    }
  }
  const std::string_view element = text->Join();
  return !element.empty() && SolveElement(element);
}

/// Puts the encoded form of a sub-result behind the gap. Its type is the last that was saved.
void TStringResolver::PutSubResult(AreaBlock* result, resolver::GapText* text) {
  resolver::WriteOwedText(result);
  if (result->ValueKind != 0) CheckFloatingPointStr(&result->AreaText);
  std::array<char, 20> digits;
  text->PutBehind(resolver::kSubResultFence);
  text->PutBehind(result->AreaText);
  if (result->MemorySpace != 0) text->PutBehind({&resolver::kMemorySpaceMark, 1});
  text->PutBehind({&resolver::kSubResultClose, 1});
  text->PutBehind(resolver::WriteUnsigned(savedTypes.size() - 1, &digits));
  text->PutBehind(resolver::kSubResultStart);
}

/// Evaluates prefix operators in front of the sub-result that `areaBlocks` holds, which is all that
/// an element of its encoded form would do: `sizeof(s)` in 3 000 instructions instead of 3 600.
bool TStringResolver::SolvePrefixed(std::string_view operators) {
  AreaBlock& block = areaBlocks.front();
  resolver::WriteOwedText(&block);
  ResetBlock(&block);
  block.BeforeText = operators;
  block.AfterText.clear();
  // Its type is the one that was saved for it.
  block.HasCastType = true;
  return RunRows(&areaBlocks, 0);
}

/// Fills the result fields from the last element's block, after the reads that it still owes. The
/// block itself stays as it is: its type says what the text denotes.
bool TStringResolver::StoreResult(AreaBlock* element) {
  if (element->ValueKind != 0) resolver::WriteOwedText(element);
  const std::uint64_t integer = resolver::IntegerOf(*element);
  // Hosts treat this field as a 32-bit address.
  resultAddress = static_cast<std::uint32_t>(integer);
  resultMemorySpace = element->MemorySpace != 0;
  if (resolver::IsAddress(*element) || element->Type.IsArray) return StoreObject(*element);
  const DataLableType& type = element->Type;
  if (!StoreSize(*element, type)) return false;
  if (element->ValueKind == 0) {
    StoreInteger(integer, type.IsSigned);
  } else if (type.IsDouble) {
    StoreFloating(static_cast<float>(std::bit_cast<double>(integer)));
  } else if (type.IsFloat) {
    StoreFloating(std::bit_cast<float>(static_cast<std::uint32_t>(integer)));
  } else {
    std::string text = element->AreaText;
    RestoreFloatingPointStr(&text);
    StoreFloating(resolver::ReadFloat(text));
  }
  return true;
}

/// Reads the object at the block's address, through as many arrays as lie between, and fills the
/// result fields from it.
bool TStringResolver::StoreObject(const AreaBlock& location) {
  Location at{location.Value, location.MemorySpace, location.ValueKind, location.FloatValue,
              location.DoubleValue};
  const DataLableType* object = &location.Type;
  std::string text;
  bool isRead = false;
  if (location.OwesPointer) {
    at.value &= resolver::SizeMask(object->PointerSize);
    if (!ReadLocation(*object, &at, &text)) return Fail("Error occurred");
    isRead = true;
  }
  while (!isRead || object->IsArray) {
    at.value &= resolver::SizeMask(object->Size);
    object = &ObjectType(*object);
    if (!ReadLocation(*object, &at, &text)) return Fail("Error occurred");
    isRead = true;
  }
  if (!StoreSize(location, *object)) return false;
  if (at.kind == 0) {
    StoreInteger(at.value, object->IsSigned);
  } else {
    resolver::WriteFloating(at.kind == 1 ? static_cast<double>(at.single) : at.full, &text);
    StoreFloating(resolver::ReadFloat(text));
  }
  return true;
}

/// The size of a result of this type. False for none at all.
bool TStringResolver::StoreSize(const AreaBlock& result, const DataLableType& type) {
  if (result.HasCastType && type.Size == 0) return Fail("Error occurred");
  resultSize = result.HasCastType ? type.Size : 8;
  return true;
}

void TStringResolver::StoreInteger(std::uint64_t integer, bool isSigned) {
  const std::uint64_t mask = resolver::SizeMask(resultSize);
  resultValue = integer & mask;
  resultNegative = isSigned && (resolver::FromSignBit(resultValue, resultSize) & 1) != 0;
  if (resultNegative) resultValue = (0 - resultValue) & mask;
  resultFloating = false;
}

void TStringResolver::StoreFloating(float value) {
  resultFloat = value;
  resultValue = resolver::TruncateToUnsigned(static_cast<double>(value));
  resultNegative = false;
  resultFloating = true;
}

bool TStringResolver::Fail(std::string_view message) {
  errorMessage = message;
  return false;
}

bool TStringResolver::Fail(std::string_view message, std::string_view detail) {
  errorMessage = message;
  errorMessage += detail;
  return false;
}

/// The pointee of a pointer, the element of an array; the default type where the host names none.
const DataLableType& TStringResolver::FirstMember(const DataLableType& type) const {
  return type.Members.empty() ? defaultType : type.Members.front();
}

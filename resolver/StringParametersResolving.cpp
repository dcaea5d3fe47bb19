#include "resolver/StringParametersResolving.h"

#include <bit>
#include <cstddef>
#include <iterator>
#include <string_view>
#include <utility>

#include "resolver/CharacterClass.h"
#include "resolver/Owed.h"
#include "resolver/SizeMask.h"
#include "resolver/SparePool.h"
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

TStringResolver::~TStringResolver() {
  resolver::LeaveSpares(&areaBlocks);
  resolver::LeaveSpares(&spareBlocks_);
  resolver::LeaveSpares(&savedTypes);
}

bool TStringResolver::SolveStringOfElements(std::string_view expression) {
  Resolution scope(this);
  const bool solved = Resolve(expression);
  for (AreaBlock& block : areaBlocks) resolver::WriteOwed(&block);
  scope.Finish();
  return solved;
}

bool TStringResolver::Resolve(std::string_view expression) {
  const unsigned classes = resolver::ClassesOf(expression);
  const bool hasBlanks = (classes & resolver::kBlank) != 0;
  const bool mayHoldSizeof = (classes & resolver::kLetterOfSizeof) != 0;
  if (!mayHoldSizeof || hasBlanks) text_ = expression;
  // A keyword is marked at the blank before it.
  if (hasBlanks) ProcessBasickTypes(&text_);
  if (mayHoldSizeof) {
    const std::string marked = hasBlanks ? std::move(text_) : std::string();
    if (!RewriteSizeofs(hasBlanks ? marked : expression, &text_)) return false;
  }
  if (hasBlanks) std::erase(text_, ' ');
  if ((classes & resolver::kPoint) != 0) ProtectPoints(&text_);
  if (resolver::MayHoldSignedExponent(classes)) ProtectSignedExponents(&text_);
  const bool hasGroups = (classes & (resolver::kParenthesis | resolver::kBracket)) != 0;
  const bool solved =
      hasGroups ? SolveGroups(text_, classes) : !text_.empty() && SolveElement(text_);
  return solved && StoreResult(&areaBlocks.front());
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

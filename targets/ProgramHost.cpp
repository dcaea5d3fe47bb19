#include "targets/ProgramHost.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <string_view>
#include <utility>

#include "targets/NumeralReader.h"
#include "targets/Texts.h"
#include "targets/TypeNames.h"

namespace targets {
namespace {

/// The type that the resolver asks for when "#" selects the second memory space.
constexpr std::string_view kSecondSpaceWord = "ZV_Lorn";
constexpr std::string_view kKeywordBlank = ":@:";

DataLableType Word(std::uint32_t size, std::uint32_t pointerSize) {
  DataLableType word;
  word.Size = size;
  word.PointerSize = pointerSize;
  return word;
}

/// The operand without the resolver's marks: leading stars, and blanks before keywords.
std::string OperandText(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of('*'), text.size()));
  std::string plain;
  while (true) {
    const std::size_t blank = text.find(kKeywordBlank);
    plain += text.substr(0, blank);
    if (blank == text.npos) return plain;
    text.remove_prefix(blank + kKeywordBlank.size());
  }
}

std::string AddressText(std::uint64_t address, std::uint64_t space) {
  std::string text = Hexadecimal(address);
  if (space != 0) text += " in space " + std::to_string(space);
  return text;
}

std::string GapText(MemoryGap gap) {
  switch (gap) {
    case MemoryGap::kNotSaved:
      return ": it was not saved";
    case MemoryGap::kNotAllowed:
      return ": that is not allowed";
    case MemoryGap::kNotThere:
      break;
  }
  return "";
}

std::uint64_t Assemble(const std::array<std::byte, 8>& bytes, std::size_t size, ByteOrder order) {
  std::uint64_t value = 0;
  for (std::size_t i = 0; i < size; ++i) {
    const std::byte byte = bytes[order == ByteOrder::kBig ? i : size - 1 - i];
    value = value << 8 | std::to_integer<std::uint64_t>(byte);
  }
  return value;
}

template <typename Number>
std::string Decimal(Number value) {
  std::array<char, 32> text{};
  const auto end = std::to_chars(text.data(), text.data() + text.size(), value).ptr;
  return {text.data(), end};
}

}  // namespace

Error UnreadableMemory(std::uint64_t address, std::uint8_t space, MemoryGap gap) {
  return {ErrorCode::kUnreadable,
          "cannot read memory at " + AddressText(address, space) + GapText(gap)};
}

void ProgramHost::StartResolution() {
  failure_.reset();
  untyped_.clear();
  accesses_.clear();
  fetchedAny_ = false;
  memory_.Refresh();
}

void ProgramHost::Remember(const Error& error) {
  if (!failure_) failure_ = error;
}

std::uint32_t ProgramHost::AccessBytes(std::uint8_t space) const {
  const std::uint32_t size = std::clamp(accessSize, 1U, 8U);
  // In the second space the resolver asks for 8 bytes and keeps the lower ones of the number, which
  // are the word only where the bytes behind it come out higher.
  if (space == 0 || labels_.Order() == ByteOrder::kLittle) return size;
  return std::min(size, wordSize_.value_or(labels_.PointerSize()));
}

bool ProgramHost::Fetch(std::uint64_t address, std::uint8_t space, std::uint32_t size) {
  // Whatever is not read, such as what lies past the end of memory, counts as zero: "->" may read a
  // pointer with more bytes than it has.
  fetched_ = {address, size, space, {}};
  fetchedAny_ = false;
  try {
    const MemoryRead read = memory_.Read(address, space, std::span(fetched_.bytes).first(size));
    fetchedAny_ = read.size != 0;
    if (!fetchedAny_) Remember(UnreadableMemory(address, space, read.gap));
  } catch (const Error& error) {
    Remember(error);
  }
  return fetchedAny_;
}

bool ProgramHost::CheckAddress(std::uint64_t address, std::uint8_t memorySpace) {
  return Fetch(address, memorySpace, AccessBytes(memorySpace));
}

std::string ProgramHost::GetFileName() {
  // The resolver takes ".s" anywhere in the name for assembly. The directory and the inner points
  // of the name say nothing about that, so they must not decide.
  std::string name(BaseName(labels_.CurrentFile()));
  if (labels_.CurrentFileIsAssembly()) {
    return name.find(".s") == name.npos && name.find(".asm") == name.npos ? name + ".s" : name;
  }
  for (const std::string_view mark : {".s", ".asm"}) {
    for (std::size_t at = name.find(mark); at != name.npos; at = name.find(mark)) name[at] = '_';
  }
  return name;
}

bool ProgramHost::IsTypeName(std::string text) {
  try {
    const auto known = [this](std::string_view base) {
      return base == kSecondSpaceWord || labels_.HasType(base);
    };
    return CanonicalTypeName(text, known).has_value();
  } catch (const Error& error) {
    Remember(error);
    return false;
  }
}

DataLableType ProgramHost::GetTypeDescription(std::string typeName, bool* unknown) {
  if (typeName == kSecondSpaceWord)
    return Word(wordSize_.value_or(labels_.PointerSize()), labels_.PointerSize());
  try {
    const auto known = [this](std::string_view base) { return labels_.HasType(base); };
    std::optional<TypeName> name = CanonicalTypeName(typeName, known);
    // What is no type name may be the name of a record that this host gave to the resolver.
    if (!name) name = TypeName{std::move(typeName), 0};
    if (std::optional<DataLableType> type = labels_.FindType(name->base)) {
      for (std::size_t star = 0; star < name->stars; ++star) type->BecomePointer();
      return std::move(*type);
    }
  } catch (const Error& error) {
    Remember(error);
  }
  *unknown = true;
  return Word(labels_.PointerSize(), labels_.PointerSize());
}

std::uint64_t ProgramHost::FindLabel(const char* text, bool* undefined, bool* confirmed) {
  const std::string_view whole = text;
  const std::string stripped = whole.starts_with('*') || whole.find(kKeywordBlank) != whole.npos
                                   ? OperandText(whole)
                                   : std::string();
  const std::string_view name = stripped.empty() ? whole : std::string_view(stripped);
  if (const std::optional<std::uint64_t> numeral = ReadNumeral(name)) {
    *confirmed = true;
    return *numeral;
  }
  try {
    if (std::optional<Label> label = labels_.FindLabel(name)) {
      *confirmed = true;
      if (label->typed) {
        LabelTyped = true;
        LabelType.Swap(label->type);
        LabelType.PointerSize = labels_.PointerSize();
      } else if (!label->whyUntyped.empty() && untyped_.empty()) {
        untyped_ = "of '" + std::string(name) + "' only the address is known: " + label->whyUntyped;
      }
      return label->value;
    }
  } catch (const Error& error) {
    Remember(error);
  }
  *undefined = true;
  return 0;
}

void ProgramHost::ReadMemory(std::uint64_t first, std::uint64_t /*last*/, std::uint16_t memorySpace,
                             std::uint8_t, std::string* text, std::uint32_t, bool isFloat,
                             bool isDouble) {
  const auto space = static_cast<std::uint8_t>(memorySpace);
  const std::uint32_t size = isDouble ? 8 : isFloat ? 4 : AccessBytes(space);
  // The resolver asks whether an object can be read right before it is read: memory is asked once.
  const bool known =
      fetchedAny_ && fetched_.address == first && fetched_.space == space && fetched_.size >= size;
  if (!known && !Fetch(first, space, size)) return;
  fetchedAny_ = false;
  accesses_.push_back({first, size, space});
  const std::uint64_t bits = Assemble(fetched_.bytes, size, labels_.Order());
  if (!isFloat && !isDouble) {
    *text = Decimal(bits);
    return;
  }
  // A float is written as the double that it equals, whose digits read back to exactly it.
  const double value = isDouble ? std::bit_cast<double>(bits)
                                : std::bit_cast<float>(static_cast<std::uint32_t>(bits));
  if (!std::isfinite(value)) {
    Remember(
        Error(ErrorCode::kNotRepresented, "the number at " + AddressText(first, space) + " is " +
                                              (std::isnan(value) ? "not a number" : "infinite") +
                                              ", and no result can carry that"));
  }
  *text = Decimal(value);
}

}  // namespace targets

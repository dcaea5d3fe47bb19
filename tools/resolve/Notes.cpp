#include "tools/resolve/Notes.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cstddef>
#include <optional>
#include <utility>
#include <variant>

#include "targets/TypeNames.h"
#include "tools/resolve/CRewriting.h"
#include "tools/resolve/CTree.h"
#include "tools/resolve/ExpressionText.h"
#include "tools/resolve/NoteTable.h"

namespace tool {
namespace {

// As many as floating results have here.
constexpr int kSignificantDigits = 6;

std::string FloatingText(double number) {
  std::array<char, 64> digits{};
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number,
                                 std::chars_format::general, kSignificantDigits)
                       .ptr;
  return {digits.data(), end};
}

std::string ValueText(const CMeaning& meaning) {
  if (meaning.value->floating) return FloatingText(meaning.value->number);
  if (meaning.type.kind == CType::Kind::kPointer) return FormatAddress(meaning.value->bits);
  if (meaning.IsNegative()) return "-" + std::to_string(0 - meaning.value->bits);
  return std::to_string(meaning.value->bits);
}

/// Is the answer what the expression is in C?
bool Agree(const CMeaning& meaning, const Answer& answer) {
  if (!meaning.value) {
    return meaning.isObject && meaning.address && answer.address == meaning.address;
  }
  if (meaning.value->floating) {
    const double value = answer.floating   ? static_cast<double>(answer.number)
                         : answer.negative ? -static_cast<double>(answer.magnitude)
                                           : static_cast<double>(answer.magnitude);
    return FloatingText(value) == FloatingText(meaning.value->number);
  }
  if (answer.floating) {
    const CNumber number = *meaning.value;
    const double value = meaning.IsNegative()
                             ? static_cast<double>(static_cast<std::int64_t>(number.bits))
                             : static_cast<double>(number.bits);
    return static_cast<double>(answer.number) == value;
  }
  const std::uint64_t bits = answer.negative ? 0 - answer.magnitude : answer.magnitude;
  return bits == meaning.value->bits && answer.negative == meaning.IsNegative();
}

/// Is every name one that the program has? If not, that is what is wrong.
bool NamesAreKnown(const CNode& node, targets::LabelSource& labels) {
  if (node.kind == CNode::Kind::kName && !labels.FindLabel(node.op)) return false;
  return std::all_of(node.parts.begin(), node.parts.end(),
                     [&](const auto& part) { return NamesAreKnown(*part, labels); });
}

std::string_view Trimmed(std::string_view text) {
  while (!text.empty() && IsBlankText(text.substr(0, 1))) text.remove_prefix(1);
  while (!text.empty() && IsBlankText(text.substr(text.size() - 1))) text.remove_suffix(1);
  return text;
}

}  // namespace

CReading::Memory NoteFinder::MemoryFor(const ResolutionLog& log) {
  return [this, &log](std::uint64_t address, std::uint32_t size) -> std::optional<std::uint64_t> {
    if (reading_ == Reading::kAlreadyRead) {
      for (const HostEvent& event : log.events) {
        if (event.kind != HostEvent::Kind::kRead || event.address != address ||
            event.size != size || event.space != 0) {
          continue;
        }
        std::uint64_t bits = 0;
        double number = 0.0;
        const char* const first = event.number.data();
        const char* const last = first + event.number.size();
        if (!event.floating) {
          if (std::from_chars(first, last, bits).ec == std::errc()) return bits;
        } else if (std::from_chars(first, last, number).ec == std::errc()) {
          return size == sizeof(double) ? std::bit_cast<std::uint64_t>(number)
                                        : std::bit_cast<std::uint32_t>(static_cast<float>(number));
        }
      }
      return std::nullopt;
    }
    std::array<std::byte, 8> bytes{};
    try {
      if (memory_.Read(address, 0, std::span(bytes).first(size)).size != size) return std::nullopt;
    } catch (const targets::Error&) {
      return std::nullopt;
    }
    std::uint64_t bits = 0;
    for (std::uint32_t i = 0; i < size; ++i) {
      const bool big = labels_.Order() == targets::ByteOrder::kBig;
      bits = bits << 8U | std::to_integer<std::uint64_t>(bytes[big ? i : size - 1 - i]);
    }
    return bits;
  };
}

bool NoteFinder::Confirms(const std::string& text, const CMeaning& wanted) {
  if (reading_ != Reading::kFree) return false;
  const Outcome outcome = evaluator_.Evaluate(text);
  const auto* answer = std::get_if<Answer>(&outcome);
  return answer != nullptr && Agree(wanted, *answer);
}

std::vector<NamedNote> NoteFinder::Find(std::string_view expression, const Outcome& outcome,
                                        const ResolutionLog& log) {
  std::vector<NamedNote> notes;
  agreed_ = false;
  // Points belong to names there.
  if (labels_.CurrentFileIsAssembly() || expression.find('#') != expression.npos) return notes;
  const auto isType = [this](std::string_view name) {
    try {
      return targets::CanonicalTypeName(
                 name, [this](std::string_view base) { return labels_.HasType(base); })
          .has_value();
    } catch (const targets::Error&) {
      return false;
    }
  };
  const std::unique_ptr<CNode> tree = ReadCExpression(expression, isType);
  if (tree == nullptr) return notes;
  CReading reading(labels_, MemoryFor(log));
  const CMeaning meaning = reading.Of(*tree);
  const auto* answer = std::get_if<Answer>(&outcome);
  // An enumerator is shown with the sign that its enumeration gives it.
  const bool enumerator =
      answer != nullptr && answer->denoted && tree->kind == CNode::Kind::kName &&
      ShapeOf(*answer->denoted, labels_).kind == targets::TypeShape::Kind::kEnumeration;
  agreed_ = answer != nullptr && (enumerator || Agree(meaning, *answer));
  if (agreed_) return notes;
  CRewriting rewriting(expression, reading, labels_, log, answer == nullptr,
                       answer != nullptr && !answer->denoted);
  std::string rewritten;
  try {
    if (!NamesAreKnown(*tree, labels_)) return notes;
    rewritten = std::string(Trimmed(rewriting.Rewrite(*tree)));
  } catch (const targets::Error&) {
    return notes;
  }
  if (rewriting.Met().empty()) return notes;
  std::string advice;
  if (rewritten != expression && Confirms(rewritten, meaning)) {
    advice = meaning.value ? "; in C it is " + ValueText(meaning) : "";
    advice += ": write `" + rewritten + "`";
  }
  for (const Difference difference : rewriting.Met()) {
    const DifferenceRow& row = RowOf(difference);
    std::string text(row.does);
    text += advice.empty() ? "; " + std::string(row.instead) : advice;
    notes.push_back({std::string(row.name), std::move(text)});
  }
  return notes;
}

}  // namespace tool

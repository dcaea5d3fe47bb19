#include "tools/resolve/ExplainingHost.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "targets/NumeralReader.h"

namespace tool {
namespace {

constexpr std::string_view kKeywordBlank = ":@:";
// How a text carries sub-results while it is reduced; see docs/LANGUAGE.md, "Reserved bytes".
constexpr std::string_view kFence = "^*^*^^";
constexpr char kTypeReference = '\x0d';
constexpr char kTypeReferenceEnd = '\x0e';

/// `text` without the resolver's marks: the stars before an operand are marks, those behind a type
/// are not.
std::string PlainName(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of('*'), text.size()));
  std::string plain;
  for (std::size_t at = text.find(kKeywordBlank); at != text.npos; at = text.find(kKeywordBlank)) {
    plain += text.substr(0, at);
    if (!plain.empty()) plain += ' ';
    text.remove_prefix(at + kKeywordBlank.size());
  }
  return plain += text;
}

/// A group's text, in which a sub-result stands between fences, with a reference to its type:
/// shown as `<42>`.
std::string GroupText(std::string_view text) {
  std::string shown;
  bool inside = false;
  while (!text.empty()) {
    if (text.starts_with(kFence)) {
      shown += inside ? '>' : '<';
      inside = !inside;
      text.remove_prefix(kFence.size());
    } else if (text.front() == kTypeReference && text.find(kTypeReferenceEnd) != text.npos) {
      text.remove_prefix(text.find(kTypeReferenceEnd) + 1);
    } else {
      shown += text.front();
      text.remove_prefix(1);
    }
  }
  return shown;
}

}  // namespace

bool ExplainingHost::CheckAddress(std::uint64_t address, std::uint8_t memorySpace) {
  const bool failedBefore = FirstFailure().has_value();
  if (WatchingHost::CheckAddress(address, memorySpace)) return true;
  HostEvent event;
  event.kind = HostEvent::Kind::kRefusal;
  event.address = address;
  event.size = std::clamp(accessSize, 1U, 8U);
  event.space = memorySpace;
  if (!failedBefore && FirstFailure()) event.reason = FirstFailure()->what();
  log_.Add(std::move(event));
  return false;
}

std::string ExplainingHost::GetFileName() {
  std::string name = WatchingHost::GetFileName();
  // Subscripts ask as well, and get the same answer.
  const bool asked = std::any_of(log_.events.begin(), log_.events.end(), [](const HostEvent& e) {
    return e.kind == HostEvent::Kind::kFile;
  });
  if (!asked) {
    HostEvent event;
    event.kind = HostEvent::Kind::kFile;
    event.text = name;
    log_.Add(std::move(event));
  }
  return name;
}

bool ExplainingHost::IsTypeName(std::string text) {
  HostEvent event;
  event.kind = HostEvent::Kind::kTypeName;
  event.text = GroupText(PlainName(text));
  event.known = WatchingHost::IsTypeName(std::move(text));
  const bool known = event.known;
  log_.Add(std::move(event));
  return known;
}

DataLableType ExplainingHost::GetTypeDescription(std::string typeName, bool* unknown) {
  HostEvent event;
  event.kind = HostEvent::Kind::kTypeRecord;
  event.text = PlainName(typeName);
  DataLableType type = WatchingHost::GetTypeDescription(std::move(typeName), unknown);
  event.known = !*unknown;
  if (event.known) event.type = type;
  log_.Add(std::move(event));
  return type;
}

std::uint64_t ExplainingHost::FindLabel(const char* text, bool* undefined, bool* confirmed) {
  HostEvent event;
  event.text = PlainName(text);
  const bool numeral = targets::ReadNumeral(event.text).has_value();
  event.kind = numeral ? HostEvent::Kind::kNumeral : HostEvent::Kind::kLabel;
  event.value = WatchingHost::FindLabel(text, undefined, confirmed);
  event.known = !*undefined;
  event.typed = LabelTyped;
  if (event.typed) event.type = LabelType;
  if (!event.known && FirstFailure()) event.reason = FirstFailure()->what();
  const std::uint64_t value = event.value;
  log_.Add(std::move(event));
  return value;
}

void ExplainingHost::ReadMemory(std::uint64_t first, std::uint64_t last, std::uint16_t memorySpace,
                                std::uint8_t count, std::string* text, std::uint32_t step,
                                bool isFloat, bool isDouble) {
  HostEvent event;
  const std::size_t before = Accesses().size();
  WatchingHost::ReadMemory(first, last, memorySpace, count, text, step, isFloat, isDouble);
  if (Accesses().size() == before) return;
  event.kind = HostEvent::Kind::kRead;
  event.address = first;
  event.size = Accesses().back().size;
  event.space = static_cast<std::uint8_t>(memorySpace);
  event.floating = isFloat || isDouble;
  event.number = *text;
  log_.Add(std::move(event));
}

}  // namespace tool

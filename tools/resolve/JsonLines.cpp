#include "tools/resolve/JsonLines.h"

#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <nlohmann/json.hpp>
#include <variant>

#include "tools/resolve/BitFields.h"
#include "tools/resolve/Denoted.h"
#include "tools/resolve/Explanation.h"
#include "tools/resolve/ScalarText.h"

namespace tool {
namespace {

// The order in which the keys are put in is the order in which people read them.
using Json = nlohmann::ordered_json;

/// Every integer up to here is a number of its own in double precision, which is all that many
/// readers of JSON have.
constexpr std::uint64_t kLargestExact = std::uint64_t{1} << 53U;

std::string Write(const Json& object) {
  return object.dump(-1, ' ', false, Json::error_handler_t::replace);
}

/// A number as JSON has them, or else its digits as a text.
Json NumberOf(const std::string& digits, bool floating) {
  if (floating) {
    double number = 0.0;
    const auto read = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (read.ec == std::errc() && std::isfinite(number)) return number;
    return digits;
  }
  const bool negative = !digits.empty() && digits.front() == '-';
  std::uint64_t magnitude = 0;
  const char* const first = digits.data() + (negative ? 1 : 0);
  const auto read = std::from_chars(first, digits.data() + digits.size(), magnitude);
  if (read.ec != std::errc() || magnitude > kLargestExact) return digits;
  const auto number = static_cast<std::int64_t>(magnitude);
  return negative ? -number : number;
}

Json ReadsOf(const ResolutionLog& log) {
  Json reads = Json::array();
  for (const HostEvent& event : log.events) {
    if (event.kind != HostEvent::Kind::kRead) continue;
    reads.push_back({{"address", FormatAddress(event.address)},
                     {"space", event.space},
                     {"size", event.size},
                     {"value", NumberOf(event.number, event.floating)}});
  }
  return reads;
}

const char* KindName(const HostEvent& event) {
  switch (event.kind) {
    case HostEvent::Kind::kFile:
      return "file";
    case HostEvent::Kind::kTypeName:
      return "is-type";
    case HostEvent::Kind::kTypeRecord:
      return "type";
    case HostEvent::Kind::kNumeral:
      return "number";
    case HostEvent::Kind::kLabel:
      return "label";
    case HostEvent::Kind::kRead:
      return "read";
    case HostEvent::Kind::kRefusal:
      break;
  }
  return "refused";
}

Json EventOf(const HostEvent& event, targets::LabelSource& labels) {
  Json entry = {{"asked", KindName(event)}};
  switch (event.kind) {
    case HostEvent::Kind::kFile:
      entry["name"] = event.text;
      break;
    case HostEvent::Kind::kTypeName:
      entry["name"] = event.text;
      entry["known"] = event.known;
      break;
    case HostEvent::Kind::kTypeRecord:
      entry["name"] = event.text;
      entry["known"] = event.known;
      if (event.known) entry["size"] = event.type.Size;
      break;
    case HostEvent::Kind::kNumeral:
      entry["name"] = event.text;
      entry["value"] = NumberOf(std::to_string(event.value), false);
      break;
    case HostEvent::Kind::kLabel:
      entry["name"] = event.text;
      entry["known"] = event.known;
      if (event.known) entry["value"] = FormatAddress(event.value);
      if (event.typed) entry["type"] = TypeText(event.type, labels);
      if (!event.reason.empty()) entry["reason"] = event.reason;
      break;
    case HostEvent::Kind::kRead:
    case HostEvent::Kind::kRefusal:
      entry["address"] = FormatAddress(event.address);
      entry["space"] = event.space;
      entry["size"] = event.size;
      if (event.kind == HostEvent::Kind::kRead) {
        entry["value"] = NumberOf(event.number, event.floating);
      } else if (!event.reason.empty()) {
        entry["reason"] = event.reason;
      }
      break;
  }
  return entry;
}

template <typename Number>
std::string Digits(Number number) {
  std::array<char, 64> text{};
  const auto end = std::to_chars(text.data(), text.data() + text.size(), number).ptr;
  return {text.data(), end};
}

/// The value as a number, with all the digits that it has; null when it has none.
Json ValueOf(const Answer& answer, targets::LabelSource& labels) {
  if (!answer.denoted) return NumberOf(FormatValue(answer), answer.floating);
  const targets::TypeShape& shape = ShapeOf(*answer.denoted, labels);
  const std::vector<std::byte>& bytes = answer.denoted->bytes;
  if (IsAggregate(shape)) return nullptr;
  if (shape.kind == targets::TypeShape::Kind::kFloating) {
    if (bytes.size() < shape.size || !answer.isNumber) return nullptr;
    const auto bits = static_cast<std::uint64_t>(IntegerIn(bytes, labels.Order()));
    if (shape.size == sizeof(double)) return NumberOf(Digits(std::bit_cast<double>(bits)), true);
    if (shape.size != sizeof(float)) return nullptr;
    return NumberOf(Digits(std::bit_cast<float>(static_cast<std::uint32_t>(bits))), true);
  }
  if (shape.bits != 0 && bytes.size() >= BytesOfBits(shape.firstBit, shape.bits)) {
    const WideUnsigned bits = BitsIn(bytes, shape.firstBit, shape.bits, labels.Order());
    return NumberOf(NumberText(bits, shape.bits, shape.isSigned), false);
  }
  return answer.isNumber ? NumberOf(FormatValue(answer), answer.floating) : Json();
}

void AddAnswer(const Answer& answer, const std::string& text, targets::LabelSource& labels,
               Json* object) {
  std::string type = answer.typeName;
  if (answer.denoted) type = ShapeOf(*answer.denoted, labels).name;
  (*object)["value"] = ValueOf(answer, labels);
  (*object)["text"] = text;
  (*object)["type"] = type.empty() ? Json() : Json(type);
  (*object)["size"] = answer.size;
  (*object)["bits"] = answer.bits != 0 ? Json(answer.bits) : Json();
  (*object)["signed"] = answer.isSigned;
  (*object)["floating"] = answer.floating;
  (*object)["address"] = answer.address ? Json(FormatAddress(*answer.address)) : Json();
  (*object)["space"] = answer.space;
}

}  // namespace

std::string JsonOfResolution(const ResolutionLog& log, const Outcome& outcome,
                             const std::string& text, const std::vector<NamedNote>& notes,
                             bool withLog, targets::LabelSource& labels) {
  const auto* answer = std::get_if<Answer>(&outcome);
  Json object = {{"expression", log.given}, {"prepared", nullptr}};
  if (!log.prepared.empty()) object["prepared"] = log.prepared;
  object["status"] = answer != nullptr ? "resolved" : "failed";
  object["message"] = nullptr;
  if (answer != nullptr) {
    AddAnswer(*answer, text, labels, &object);
  } else {
    object["message"] = std::get<Failure>(outcome).message;
  }
  object["confirmed"] = log.confirmed;
  object["reads"] = ReadsOf(log);
  Json list = Json::array();
  for (const NamedNote& note : notes) list.push_back({{"name", note.name}, {"text", note.text}});
  object["notes"] = std::move(list);
  if (withLog) {
    Json events = Json::array();
    for (const HostEvent& event : log.events) events.push_back(EventOf(event, labels));
    object["log"] = std::move(events);
    object["dropped"] = log.dropped;
  }
  return Write(object);
}

std::string JsonOfError(const std::string& message) {
  return Write({{"status", "unusable"}, {"message", message}});
}

std::string JsonOfListing(const targets::Listing& entry) {
  return Write({{"name", entry.name}, {"detail", entry.detail}});
}

}  // namespace tool

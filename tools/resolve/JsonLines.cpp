#include "tools/resolve/JsonLines.h"

#include <charconv>
#include <cmath>
#include <nlohmann/json.hpp>
#include <variant>

#include "tools/resolve/Explanation.h"

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

void AddAnswer(const Answer& answer, Json* object) {
  const std::string text = FormatValue(answer);
  (*object)["value"] = NumberOf(text, answer.floating);
  (*object)["text"] = text;
  (*object)["type"] = nullptr;
  (*object)["size"] = answer.size;
  (*object)["signed"] = answer.isSigned;
  (*object)["floating"] = answer.floating;
  (*object)["address"] = answer.address ? Json(FormatAddress(*answer.address)) : Json();
  (*object)["space"] = answer.space;
}

}  // namespace

std::string JsonOfResolution(const ResolutionLog& log, const Outcome& outcome,
                             const std::vector<NamedNote>& notes, bool withLog,
                             targets::LabelSource& labels) {
  const auto* answer = std::get_if<Answer>(&outcome);
  Json object = {{"expression", log.given}, {"prepared", nullptr}};
  if (!log.prepared.empty()) object["prepared"] = log.prepared;
  object["status"] = answer != nullptr ? "resolved" : "failed";
  object["message"] = nullptr;
  if (answer != nullptr) {
    AddAnswer(*answer, &object);
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

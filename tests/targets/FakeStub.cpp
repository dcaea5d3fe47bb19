#include "tests/targets/FakeStub.h"

#include <algorithm>
#include <utility>

#include "targets/Error.h"

namespace targettests {
namespace {

constexpr std::string_view kDigits = "0123456789abcdef";

std::string Escaped(std::string_view bytes) {
  std::string text;
  for (const char byte : bytes) {
    const bool special = byte == '#' || byte == '$' || byte == '}' || byte == '*';
    text += special ? std::string{'}', static_cast<char>(byte ^ 0x20)} : std::string{byte};
  }
  return text;
}

}  // namespace

std::vector<std::string> FakeStub::TakeRequests() {
  return std::exchange(requests_, {});
}

void FakeStub::Send(std::string_view bytes, targets::RemoteClock::time_point) {
  frames_.SetLongest(1000);
  for (const char byte : bytes) {
    const auto event = frames_.Take(byte);
    if (!event || event->kind != targets::RemoteFrames::Event::Kind::kPacket) continue;
    if (acknowledges_) pending_ += '+';
    pending_ += targets::FrameRequest(AnswerTo(event->payload));
  }
}

std::string_view FakeStub::Receive(targets::RemoteClock::time_point) {
  if (pending_.empty()) throw targets::Error(targets::ErrorCode::kTargetLost, "nothing was asked");
  handedOut_ = std::exchange(pending_, {});
  return handedOut_;
}

std::string FakeStub::AnswerTo(const std::string& request) {
  if (request == "qSupported") return features_;
  if (request == "?") return "T05";
  if (request == "QStartNoAckMode") {
    acknowledges_ = false;
    return "OK";
  }
  requests_.push_back(request);
  if (request == "D") return "OK";
  if (request == "qOffsets") return offsets.value_or("");
  if (request.starts_with("qXfer:auxv:read::0,") && auxiliaryVector) {
    return "l" + Escaped(*auxiliaryVector);
  }
  if (request.starts_with('m')) return Memory(request.substr(1), false);
  if (request.starts_with('x')) return Memory(request.substr(1), true);
  return "";
}

std::string FakeStub::Memory(const std::string& range, bool isBinary) {
  const std::size_t comma = range.find(',');
  const std::uint64_t address = std::stoull(range.substr(0, comma), nullptr, 16);
  std::string bytes(std::min(std::stoul(range.substr(comma + 1), nullptr, 16), mostBytes), '\0');
  const auto read = memory_.Read(address, 0, std::as_writable_bytes(std::span(bytes)));
  if (read.size < bytes.size()) {
    return read.gap == targets::MemoryGap::kNotAllowed ? "E0d" : "E01";
  }
  if (isBinary) return "b" + Escaped(bytes);
  std::string text;
  for (const char byte : bytes) {
    const auto value = static_cast<unsigned char>(byte);
    text += {kDigits[value >> 4U], kDigits[value & 15U]};
  }
  return text;
}

}  // namespace targettests

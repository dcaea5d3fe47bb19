#include "tests/targets/ScriptedLink.h"

#include <algorithm>
#include <utility>

#include "targets/Error.h"
#include "targets/RemoteFrames.h"

namespace targettests {
namespace {

constexpr std::string_view kClose = "{close}";

}  // namespace

std::string OnTheWire(std::string_view text) {
  std::string wire;
  while (!text.empty()) {
    const std::size_t start = std::min(text.find('<'), text.size());
    wire += text.substr(0, start);
    text.remove_prefix(start);
    if (text.empty()) break;
    const std::size_t end = text.find('>');
    wire += targets::FrameRequest(text.substr(1, end - 1));
    text.remove_prefix(end + 1);
  }
  return wire;
}

ScriptedLink::ScriptedLink(std::vector<Exchange> script, std::size_t pieceSize)
    : script_(std::move(script)), pieceSize_(pieceSize) {
  for (Exchange& exchange : script_) {
    exchange = {OnTheWire(exchange.expected), OnTheWire(exchange.sent)};
  }
}

void ScriptedLink::Send(std::string_view bytes, targets::RemoteClock::time_point) {
  unmatched_ += bytes;
  while (next_ < script_.size() && unmatched_.starts_with(script_[next_].expected)) {
    unmatched_.erase(0, script_[next_].expected.size());
    std::string sent = script_[next_++].sent;
    if (sent.ends_with(kClose)) {
      closes_ = true;
      sent.resize(sent.size() - kClose.size());
    }
    pending_ += sent;
  }
}

std::string_view ScriptedLink::Receive(targets::RemoteClock::time_point) {
  if (given_ == pending_.size()) {
    throw targets::Error(targets::ErrorCode::kTargetLost, closes_ ? "closed" : "took too long");
  }
  piece_ = pending_.substr(given_, pieceSize_);
  given_ += piece_.size();
  return piece_;
}

std::string ScriptedLink::Departure() const {
  if (!unmatched_.empty()) return "not in the script: " + unmatched_;
  if (next_ < script_.size()) return "was not sent: " + script_[next_].expected;
  return "";
}

}  // namespace targettests

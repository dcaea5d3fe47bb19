#include "targets/RemotePackets.h"

#include "targets/Error.h"

namespace targets {
namespace {

using Kind = RemoteFrames::Event::Kind;

/// What may come besides one answer: notifications, acknowledgements, noise on the line.
constexpr std::size_t kMostAside = 65536;

}  // namespace

void RemotePackets::Fail(const std::string& what) const {
  throw Error(ErrorCode::kTargetLost, "the stub at '" + link_.Name() + "' " + what);
}

void RemotePackets::StopAcknowledging() {
  acknowledges_ = false;
  frames_.SetCheck(false);
}

void RemotePackets::Allow(std::size_t longest) {
  frames_.SetLongest(longest);
  allowed_ = longest * kMostTries + kMostAside;
}

RemoteFrames::Event RemotePackets::Next(RemoteClock::time_point deadline) {
  while (true) {
    while (!received_.empty()) {
      const char byte = received_.front();
      received_.remove_prefix(1);
      if (allowed_ == 0) Fail("sends without end");
      --allowed_;
      if (auto event = frames_.Take(byte)) {
        if (event->kind == Kind::kTooLong) Fail("sent more than was asked for");
        return *std::move(event);
      }
    }
    received_ = link_.Receive(deadline);
  }
}

void RemotePackets::Accept(RemoteClock::time_point deadline) {
  if (acknowledges_) link_.Send("+", deadline);
}

void RemotePackets::AwaitAcceptance(const std::string& frame, RemoteClock::time_point deadline) {
  int tries = 1;
  while (true) {
    const RemoteFrames::Event event = Next(deadline);
    switch (event.kind) {
      case Kind::kAccepted:
        return;
      case Kind::kRejected:
        if (tries++ == kMostTries) Fail("rejects every packet as damaged");
        link_.Send(frame, deadline);
        break;
      case Kind::kPacket:
      case Kind::kDamaged:
        // Sent before the stub had the request: it answers something else.
        Accept(deadline);
        break;
      case Kind::kNotification:
      case Kind::kTooLong:
        break;
    }
  }
}

std::string RemotePackets::Ask(std::string_view request, std::size_t longest,
                               RemoteClock::time_point deadline) {
  const std::string frame = FrameRequest(request);
  Allow(longest);
  link_.Send(frame, deadline);
  if (acknowledges_) AwaitAcceptance(frame, deadline);
  return Receive(longest, deadline);
}

std::string RemotePackets::Receive(std::size_t longest, RemoteClock::time_point deadline) {
  Allow(longest);
  int tries = 1;
  while (true) {
    RemoteFrames::Event event = Next(deadline);
    if (event.kind == Kind::kPacket) {
      Accept(deadline);
      return std::move(event.payload);
    }
    if (event.kind != Kind::kDamaged) continue;
    if (!acknowledges_) Fail("sent a damaged packet");
    if (tries++ == kMostTries) Fail("sends nothing but damaged packets");
    link_.Send("-", deadline);
  }
}

void RemotePackets::Part(std::string_view request, RemoteClock::time_point deadline) noexcept {
  try {
    link_.Send(FrameRequest(request), deadline);
    Allow(kMostAside);
    // Answers to what was asked before may come first.
    while (true) {
      const RemoteFrames::Event event = Next(deadline);
      if (event.kind != Kind::kPacket) continue;
      Accept(deadline);
      const std::string& answer = event.payload;
      if (answer.empty() || answer == "OK" || (answer[0] == 'E' && answer.size() == 3)) return;
    }
  } catch (...) {
    // The target goes its own way; nobody is left to be told.
  }
}

}  // namespace targets

#include "targets/RemoteStub.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <utility>

#include "targets/Texts.h"

namespace targets {
namespace {

/// What a stub takes and sends that announces no size; the least that memory can be read with; and
/// the most that is made use of.
constexpr std::uint64_t kUsualPacket = 400;
constexpr std::uint64_t kSmallestPacket = 32;
constexpr std::uint64_t kLargestPacket = 65536;
/// For the answers that are a few words, lists of features among them.
constexpr std::size_t kWords = 16384;
/// An auxiliary vector has some 20 entries of 16 bytes.
constexpr std::size_t kLargestVector = 65536;
constexpr int kMostConsoleLines = 1000;
constexpr std::chrono::milliseconds kPartingTime(1000);

std::optional<std::uint64_t> ReadHexadecimal(std::string_view text) {
  std::uint64_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, 16);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

std::string Digits(std::uint64_t value) {
  return Hexadecimal(value).substr(2);
}

/// `E01`, or `E.` and words. Never the beginning of data: those have an even number of digits.
bool IsRefusal(std::string_view answer) {
  return answer.starts_with("E.") ||
         (answer.size() == 3 && answer.front() == 'E' && ReadHexadecimal(answer.substr(1)));
}

/// The number is the stub's own error number, and most are just any; EACCES is the same everywhere.
MemoryGap GapOf(std::string_view refusal) {
  const bool isForbidden = refusal == "E0d" || refusal == "E0D";
  return isForbidden ? MemoryGap::kNotAllowed : MemoryGap::kNotThere;
}

/// Calls `visit` for each part of `text` between semicolons.
template <typename Visit>
void ForEachPart(std::string_view text, Visit visit) {
  while (!text.empty()) {
    const std::size_t end = std::min(text.find(';'), text.size());
    visit(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
}

/// The beginning of an answer, for a message.
std::string Shown(std::string_view answer) {
  constexpr std::size_t kMostShown = 40;
  if (answer.empty()) return "nothing";
  return "'" + std::string(answer.substr(0, kMostShown)) +
         (answer.size() > kMostShown ? "...'" : "'");
}

}  // namespace

RemoteStub::RemoteStub(RemoteLink& link, std::chrono::milliseconds timeout, Leaving leaving)
    : link_(link), packets_(link), timeout_(timeout), leaving_(leaving) {
  LimitPackets(kUsualPacket);
  try {
    Greet();
  } catch (const Error&) {
    // The stub may have stopped its target for this connection.
    Leave();
    throw;
  }
}

RemoteStub::~RemoteStub() {
  Leave();
}

void RemoteStub::Leave() noexcept {
  if (leaving_ == Leaving::kStopped) return;
  // After an interruption too: the target would stay stopped for ever.
  link_.IgnoreInterruption();
  packets_.Part("D", RemoteClock::now() + std::min(timeout_, kPartingTime));
}

void RemoteStub::Fail(const std::string& what) const {
  throw Error(ErrorCode::kTargetLost, "the stub at '" + Name() + "' " + what);
}

std::string RemoteStub::Ask(std::string_view request, std::size_t longest) {
  return packets_.Ask(request, longest, Deadline());
}

void RemoteStub::Greet() {
  // Whatever the stub has sent to the one before is not to be sent again.
  link_.Send("+", Deadline());
  const std::string features = Ask("qSupported", kWords);
  if (!IsRefusal(features)) ReadFeatures(features);
  RequireStopped(Ask("?", kWords));
}

void RemoteStub::ReadFeatures(std::string_view features) {
  bool offersQuiet = false;
  ForEachPart(features, [&](std::string_view feature) {
    constexpr std::string_view kPacketSize = "PacketSize=";
    if (feature.starts_with(kPacketSize)) {
      LimitPackets(ReadHexadecimal(feature.substr(kPacketSize.size())).value_or(0));
    }
    if (feature == "QStartNoAckMode+") offersQuiet = true;
    if (feature == "binary-upload+") readsBinary_ = true;
    if (feature == "qXfer:auxv:read+") hasAuxiliaryVector_ = true;
  });
  if (offersQuiet && Ask("QStartNoAckMode", kWords) == "OK") packets_.StopAcknowledging();
}

void RemoteStub::LimitPackets(std::uint64_t size) {
  if (size < kSmallestPacket) Fail("announces packets too small to read memory with");
  // In an answer every byte takes two characters: two digits, or at worst an escape.
  mostBytes_ = static_cast<std::size_t>((std::min(size, kLargestPacket) - 1) / 2);
}

void RemoteStub::RequireStopped(std::string answer) {
  // A target that has just been stopped may still have something to say.
  for (int line = 0; answer.starts_with('O') && answer != "OK"; ++line) {
    if (line == kMostConsoleLines) Fail("does not say whether its target is stopped");
    answer = packets_.Receive(kLargestPacket, Deadline());
  }
  if (answer.starts_with('T') || answer.starts_with('S')) return;
  if (answer.starts_with('W') || answer.starts_with('X') || answer.starts_with('N')) {
    Fail("has no program that runs");
  }
  Fail("does not say whether its target is stopped: it answers " + Shown(answer));
}

template <typename Operation>
auto RemoteStub::Guarded(Operation operation) {
  if (lost_) throw Error(*lost_);
  try {
    return operation();
  } catch (const Error& error) {
    lost_ = error;
    throw;
  }
}

RemoteStub::Answer RemoteStub::ReadMemory(std::uint64_t address, std::span<std::byte> bytes) {
  return Guarded([&]() -> Answer {
    const std::string range = Digits(address) + "," + Digits(bytes.size());
    const std::size_t longest = 2 * bytes.size() + kWords;
    if (readsBinary_) {
      if (const auto taken = TakeBinary(Ask("x" + range, longest), bytes)) return *taken;
      // The request has another meaning among stubs, or none.
      readsBinary_ = false;
    }
    return TakeHexadecimal(Ask("m" + range, longest), bytes);
  });
}

std::optional<RemoteStub::Answer> RemoteStub::TakeBinary(const std::string& answer,
                                                         std::span<std::byte> bytes) const {
  if (IsRefusal(answer)) return Answer{0, GapOf(answer)};
  if (!answer.starts_with('b') || answer.size() - 1 > bytes.size()) return std::nullopt;
  const std::size_t size = answer.size() - 1;
  if (size == 0) return Answer{0, MemoryGap::kNotThere};
  std::memcpy(bytes.data(), answer.data() + 1, size);
  return Answer{size, std::nullopt};
}

RemoteStub::Answer RemoteStub::TakeHexadecimal(const std::string& answer,
                                               std::span<std::byte> bytes) const {
  if (IsRefusal(answer)) return {0, GapOf(answer)};
  if (answer.empty()) Fail("cannot read memory: it does not know that request");
  const std::size_t size = answer.size() / 2;
  if (answer.size() % 2 != 0 || size > bytes.size()) {
    Fail("answers a request for " + std::to_string(bytes.size()) + " bytes with " + Shown(answer));
  }
  // Nothing is handed out before all of it is known to be good.
  std::string plain;
  for (std::size_t at = 0; at < answer.size(); at += 2) {
    const auto value = ReadHexadecimal(std::string_view(answer).substr(at, 2));
    if (!value) Fail("answers a request for memory with " + Shown(answer));
    plain += static_cast<char>(*value);
  }
  std::memcpy(bytes.data(), plain.data(), size);
  return {size, std::nullopt};
}

std::optional<std::string> RemoteStub::AuxiliaryVector() {
  if (!hasAuxiliaryVector_) return std::nullopt;
  return Guarded([&]() -> std::optional<std::string> {
    const std::string size = Digits(std::min(mostBytes_ - 1, kWords / 4));
    std::string vector;
    while (vector.size() <= kLargestVector) {
      const std::string answer =
          Ask("qXfer:auxv:read::" + Digits(vector.size()) + "," + size, kWords);
      const bool isLast = answer.starts_with('l');
      if (!isLast && !answer.starts_with('m')) return std::nullopt;
      vector.append(answer, 1);
      if (isLast) return vector;
      if (answer.size() == 1) break;
    }
    Fail("sends an auxiliary vector without end");
  });
}

std::optional<RemoteStub::Offsets> RemoteStub::ProgramOffsets() {
  return Guarded([&]() -> std::optional<Offsets> {
    // "Text=" and "Data=" are differences. "TextSeg=" and "DataSeg=" would be addresses of
    // segments.
    std::optional<std::uint64_t> text;
    std::optional<std::uint64_t> data;
    ForEachPart(Ask("qOffsets", kWords), [&](std::string_view part) {
      if (part.starts_with("Text=")) text = ReadHexadecimal(part.substr(5));
      if (part.starts_with("Data=")) data = ReadHexadecimal(part.substr(5));
    });
    if (!text || !data) return std::nullopt;
    return Offsets{*text, *data};
  });
}

}  // namespace targets

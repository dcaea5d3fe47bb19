#include "targets/RemoteFrames.h"

#include <charconv>

namespace targets {
namespace {

constexpr char kEscape = '}';
constexpr char kEscapeFlip = 0x20;
constexpr char kRun = '*';
/// A run's count is a printable character, 3 more than its distance from the blank.
constexpr char kFirstCount = ' ';
constexpr char kLastCount = '~';
constexpr std::size_t kShortestRun = 3;

std::uint8_t Sum(std::string_view payload) {
  std::uint8_t sum = 0;
  for (const char byte : payload)
    sum = static_cast<std::uint8_t>(sum + static_cast<unsigned char>(byte));
  return sum;
}

std::string WithoutEscapes(std::string_view text) {
  std::string plain;
  plain.reserve(text.size());
  for (std::size_t at = 0; at < text.size(); ++at) {
    const bool escaped = text[at] == kEscape && at + 1 < text.size();
    plain += escaped ? static_cast<char>(text[++at] ^ kEscapeFlip) : text[at];
  }
  return plain;
}

RemoteFrames::Event WithoutPayload(RemoteFrames::Event::Kind kind) {
  RemoteFrames::Event event;
  event.kind = kind;
  return event;
}

}  // namespace

std::string FrameRequest(std::string_view payload) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  const std::uint8_t sum = Sum(payload);
  std::string frame = "$";
  frame += payload;
  frame += '#';
  frame += kDigits[sum >> 4U];
  frame += kDigits[sum & 15U];
  return frame;
}

std::optional<RemoteFrames::Event> RemoteFrames::Take(char byte) {
  if (place_ == Place::kOutside || byte == '$') return TakeOutside(byte);
  return TakeInside(byte);
}

std::optional<RemoteFrames::Event> RemoteFrames::TakeOutside(char byte) {
  if (byte == '$' || byte == '%') {
    // Inside a frame too: no payload holds a "$", so the frame that it stands in broke off.
    place_ = Place::kInside;
    isNotification_ = byte == '%';
    isDamaged_ = false;
    isTooLong_ = false;
    sum_ = 0;
    digits_.clear();
    expanded_.clear();
  }
  if (byte == '+') return WithoutPayload(Event::Kind::kAccepted);
  if (byte == '-') return WithoutPayload(Event::Kind::kRejected);
  return std::nullopt;
}

std::optional<RemoteFrames::Event> RemoteFrames::TakeInside(char byte) {
  if (place_ == Place::kFirstDigit || place_ == Place::kSecondDigit) {
    digits_ += byte;
    if (place_ == Place::kSecondDigit) return Finish();
    place_ = Place::kSecondDigit;
    return std::nullopt;
  }
  if (byte == '#') {
    isDamaged_ = isDamaged_ || place_ == Place::kRun;
    place_ = Place::kFirstDigit;
    return std::nullopt;
  }
  sum_ = static_cast<std::uint8_t>(sum_ + static_cast<unsigned char>(byte));
  if (place_ == Place::kRun) {
    place_ = Place::kInside;
    if (byte < kFirstCount || byte > kLastCount || expanded_.empty()) {
      isDamaged_ = true;
    } else {
      Append(static_cast<std::size_t>(byte - kFirstCount) + kShortestRun, expanded_.back());
    }
  } else if (byte == kRun) {
    place_ = Place::kRun;
  } else {
    Append(1, byte);
  }
  return std::nullopt;
}

void RemoteFrames::Append(std::size_t count, char byte) {
  if (isNotification_ || isTooLong_) {
    // Kept short: only what a run would repeat.
    expanded_.assign(1, byte);
    return;
  }
  // The longest may have become less since the packet began.
  if (expanded_.size() > longest_ || count > longest_ - expanded_.size()) {
    isTooLong_ = true;
    expanded_.assign(1, byte);
    return;
  }
  expanded_.append(count, byte);
}

std::optional<RemoteFrames::Event> RemoteFrames::Finish() {
  place_ = Place::kOutside;
  if (isNotification_) return WithoutPayload(Event::Kind::kNotification);
  unsigned sum = 0;
  const auto [end, error] =
      std::from_chars(digits_.data(), digits_.data() + digits_.size(), sum, 16);
  const bool isSum = error == std::errc() && end == digits_.data() + digits_.size();
  if (isDamaged_ || (check_ && (!isSum || sum != sum_)))
    return WithoutPayload(Event::Kind::kDamaged);
  if (isTooLong_) return WithoutPayload(Event::Kind::kTooLong);
  return Event{Event::Kind::kPacket, WithoutEscapes(expanded_)};
}

}  // namespace targets

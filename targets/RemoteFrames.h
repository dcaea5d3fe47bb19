#ifndef STRINGRESOLVER_TARGETS_REMOTEFRAMES_H
#define STRINGRESOLVER_TARGETS_REMOTEFRAMES_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace targets {

/// `payload` as it travels: `$`, the payload, `#` and the checksum. The payload holds none of `$`,
/// `#`, `}` and `*`, as no request made here does.
std::string FrameRequest(std::string_view payload);

/// What a stub sends, cut into frames. Takes any bytes.
class RemoteFrames {
 public:
  struct Event {
    enum class Kind {
      kAccepted,      ///< `+`: the stub has the request
      kRejected,      ///< `-`: the stub wants it once more
      kPacket,        ///< `payload` is complete
      kDamaged,       ///< a packet whose checksum or run-length encoding is wrong
      kNotification,  ///< `%...`: asked for by nobody
      kTooLong,       ///< a packet of more than the longest payload; the rest of it is skipped
    };
    Kind kind;
    /// Of `kPacket`: runs expanded, escapes undone.
    std::string payload;
  };

  /// The most bytes that a payload may have, counted before escapes are undone.
  void SetLongest(std::size_t longest) { longest_ = longest; }

  /// Whether a wrong checksum counts. Where nothing is acknowledged, a stub need not compute it.
  void SetCheck(bool check) { check_ = check; }

  /// Takes the next byte. What stands between frames is skipped.
  std::optional<Event> Take(char byte);

 private:
  enum class Place { kOutside, kInside, kRun, kFirstDigit, kSecondDigit };

  std::optional<Event> TakeOutside(char byte);
  std::optional<Event> TakeInside(char byte);
  void Append(std::size_t count, char byte);
  std::optional<Event> Finish();

  std::size_t longest_ = 0;
  bool check_ = true;
  Place place_ = Place::kOutside;
  bool isNotification_ = false;
  bool isDamaged_ = false;
  bool isTooLong_ = false;
  std::uint8_t sum_ = 0;
  std::string digits_;
  std::string expanded_;
};

}  // namespace targets

#endif  // STRINGRESOLVER_TARGETS_REMOTEFRAMES_H

#ifndef STRINGRESOLVER_TESTS_TARGETS_SCRIPTEDLINK_H
#define STRINGRESOLVER_TESTS_TARGETS_SCRIPTEDLINK_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "targets/RemoteLink.h"

namespace targettests {

/// What a stub is to receive, and what it sends then. `<text>` stands for text in a frame with its
/// checksum; `{close}` for the end of the connection; everything else for itself. When nothing is
/// left to be sent, a wait takes too long.
struct Exchange {
  std::string expected;
  std::string sent;
};

/// `text` with each `<...>` framed.
std::string OnTheWire(std::string_view text);

/// A stub that follows a script.
class ScriptedLink final : public targets::RemoteLink {
 public:
  /// What the stub sends arrives in pieces of `pieceSize` bytes.
  explicit ScriptedLink(std::vector<Exchange> script, std::size_t pieceSize = 1000);

  [[nodiscard]] const std::string& Name() const override { return name_; }
  void Send(std::string_view bytes, targets::RemoteClock::time_point deadline) override;
  std::string_view Receive(targets::RemoteClock::time_point deadline) override;

  /// What went otherwise than in the script, or what is left of it; empty when all is well.
  [[nodiscard]] std::string Departure() const;

 private:
  std::string name_ = "stub";
  std::vector<Exchange> script_;
  std::size_t pieceSize_;
  std::size_t next_ = 0;
  std::string unmatched_;
  std::string pending_;
  std::size_t given_ = 0;  ///< of `pending_`
  std::string piece_;
  bool closes_ = false;
};

}  // namespace targettests

#endif  // STRINGRESOLVER_TESTS_TARGETS_SCRIPTEDLINK_H

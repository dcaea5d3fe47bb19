#ifndef STRINGRESOLVER_TESTS_TARGETS_FAKESTUB_H
#define STRINGRESOLVER_TESTS_TARGETS_FAKESTUB_H

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "targets/MemorySource.h"
#include "targets/RemoteFrames.h"
#include "targets/RemoteLink.h"

namespace targettests {

/// A stub that keeps to the protocol and writes down what it is asked. It refuses a request for
/// memory of which any byte cannot be read, as real ones do.
class FakeStub final : public targets::RemoteLink {
 public:
  /// Answers `m` and `x` requests from `memory`, which is borrowed. `features` is the answer to
  /// `qSupported`.
  explicit FakeStub(targets::MemorySource& memory, std::string features = "QStartNoAckMode+")
      : memory_(memory), features_(std::move(features)) {}

  /// What it tells of the process; without, it knows none.
  std::optional<std::string> auxiliaryVector;
  std::optional<std::string> offsets;
  /// The most bytes of memory in one answer.
  std::size_t mostBytes = 100000;

  /// Every request since the last call, without greetings.
  std::vector<std::string> TakeRequests();

  [[nodiscard]] const std::string& Name() const override { return name_; }
  void Send(std::string_view bytes, targets::RemoteClock::time_point deadline) override;
  std::string_view Receive(targets::RemoteClock::time_point deadline) override;

 private:
  std::string AnswerTo(const std::string& request);
  std::string Memory(const std::string& range, bool isBinary);

  targets::MemorySource& memory_;
  std::string features_;
  std::string name_ = "fake";
  targets::RemoteFrames frames_;
  bool acknowledges_ = true;
  std::vector<std::string> requests_;
  std::string pending_;
  std::string handedOut_;
};

}  // namespace targettests

#endif  // STRINGRESOLVER_TESTS_TARGETS_FAKESTUB_H

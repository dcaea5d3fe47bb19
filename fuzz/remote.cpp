// A session with a stub that sends whatever the input says. The first byte chooses what the pieces
// are (1: the payloads of well-made packets, each acknowledged), the size of addresses (2: 4 bytes)
// and how the session ends (4: the target stays stopped). Then pieces follow, each a byte for its
// length and its bytes: one is sent whenever the other side waits. When none is left, the stub has
// hung up.

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "fuzz/ByteSource.h"
#include "fuzz/Require.h"
#include "targets/Error.h"
#include "targets/RemoteAddress.h"
#include "targets/RemoteFrames.h"
#include "targets/RemoteLink.h"
#include "targets/RemoteMemory.h"
#include "targets/RemoteStub.h"

namespace {

using fuzzing::Require;

class FuzzedLink final : public targets::RemoteLink {
 public:
  FuzzedLink(fuzzing::ByteSource* bytes, bool framed) : bytes_(bytes), framed_(framed) {}

  [[nodiscard]] const std::string& Name() const override { return name_; }

  void Send(std::string_view bytes, targets::RemoteClock::time_point) override {
    Require(!bytes.empty() && bytes.size() < 100, "requests are short");
    // Nothing is sent but acknowledgements and answers to what came.
    Require(++sent_ <= 100 + 8 * received_, "what is sent is bounded by what came");
  }

  std::string_view Receive(targets::RemoteClock::time_point) override {
    const std::size_t length = bytes_->Byte();
    piece_ = bytes_->Text(length);
    if (piece_.empty()) throw targets::Error(targets::ErrorCode::kTargetLost, "hung up");
    received_ += piece_.size();
    if (framed_) piece_ = "+" + targets::FrameRequest(piece_);
    return piece_;
  }

 private:
  fuzzing::ByteSource* bytes_;
  bool framed_;
  std::string name_ = "stub";
  std::string piece_;
  std::size_t sent_ = 0;
  std::size_t received_ = 0;
};

constexpr std::byte kUntouched{0xEE};

void CheckRead(targets::RemoteMemory& memory, std::uint64_t address, std::size_t size) {
  std::array<std::byte, 64> bytes{};
  bytes.fill(kUntouched);
  const auto asked = std::span(bytes).first(size);
  const targets::MemoryRead read = memory.Read(address, 0, asked);
  Require(read.size <= size, "no more is read than asked for");
  for (std::size_t i = read.size; i < bytes.size(); ++i) {
    Require(bytes[i] == kUntouched, "what cannot be read is not written");
  }
  std::array<std::byte, 64> again{};
  again.fill(kUntouched);
  const targets::MemoryRead second = memory.Read(address, 0, std::span(again).first(size));
  Require(second.size == read.size && again == bytes, "what was read stays until it is forgotten");
}

void Converse(targets::RemoteLink& link, unsigned choice) {
  using Leaving = targets::RemoteStub::Leaving;
  targets::RemoteStub stub(link, std::chrono::milliseconds(1),
                           (choice & 4U) != 0 ? Leaving::kStopped : Leaving::kGoOn);
  Require(stub.MostBytes() >= 8, "a word can be read");
  if (const auto vector = stub.AuxiliaryVector()) {
    Require(vector->size() < 1'000'000, "an auxiliary vector is bounded");
  }
  stub.ProgramOffsets();
  targets::RemoteMemory memory(stub, (choice & 2U) != 0 ? 4 : 8);
  for (int round = 0; round < 4; ++round) {
    CheckRead(memory, 0x1000, 4);
    CheckRead(memory, 0x1002, 8);
    CheckRead(memory, 0xfff, 64);
    CheckRead(memory, 0xfffffffe, 8);
    CheckRead(memory, ~std::uint64_t{0} - 2, 8);
    memory.Refresh();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view input = fuzzing::AsText(data, size);
  targets::ReadRemoteAddress(input);
  fuzzing::ByteSource bytes(input);
  const unsigned choice = bytes.Byte();
  FuzzedLink link(&bytes, (choice & 1U) != 0);
  try {
    Converse(link, choice);
  } catch (const targets::Error& error) {
    Require(error.Code() == targets::ErrorCode::kTargetLost, "a stub can only be lost");
  }
  return 0;
}

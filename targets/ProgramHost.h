#ifndef STRINGRESOLVER_TARGETS_PROGRAMHOST_H
#define STRINGRESOLVER_TARGETS_PROGRAMHOST_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/ParrentInterface.h"
#include "targets/Error.h"
#include "targets/LabelSource.h"
#include "targets/MemorySource.h"

namespace targets {

/// One read of target memory made for the resolver.
struct MemoryAccess {
  std::uint64_t address = 0;  ///< in target bytes
  std::uint32_t size = 0;     ///< bytes asked for
  std::uint8_t space = 0;
};

/// `kUnreadable`, with the address and, where there is more to say than that, the reason.
Error UnreadableMemory(std::uint64_t address, std::uint8_t space, MemoryGap gap);

/// A resolver's host made of two parts: where labels and types come from, and where memory comes
/// from. Both are borrowed and must outlive it.
///
/// The resolver's interface has no way to say "failed", and counts an operand that cannot be read
/// as 0. So the host remembers: after each resolution, `FirstFailure` tells whether its answer may
/// be relied on.
class ProgramHost : public TParrentInterface {
 public:
  ProgramHost(LabelSource& labels, MemorySource& memory) : labels_(labels), memory_(memory) {}

  /// Size in bytes, 1 to 8, of the word that `#` reads in the second memory space; the pointer size
  /// until it is set.
  void SetWordSize(std::uint32_t size) { wordSize_ = size; }

  /// Forgets the accesses, the failure and the untyped label of the resolution before, and what the
  /// memory source kept of a target that may have changed. Types and labels stay. Throws what
  /// `MemorySource::Refresh` throws.
  void StartResolution();

  /// The first thing that failed since `StartResolution`: memory that could not be read (the
  /// sentence names its address), or a label or type that failed or is not representable.
  [[nodiscard]] const std::optional<Error>& FirstFailure() const { return failure_; }

  /// About the first label since `StartResolution` that came without the type it may have, and why;
  /// empty when there was none. Whatever the expression does to it is done to its address.
  [[nodiscard]] const std::string& FirstUntyped() const { return untyped_; }

  /// The reads that succeeded since `StartResolution`, in order.
  [[nodiscard]] const std::vector<MemoryAccess>& Accesses() const { return accesses_; }

  bool CheckAddress(std::uint64_t address, std::uint8_t memorySpace) override;
  std::string GetFileName() override;
  bool IsTypeName(std::string text) override;
  DataLableType GetTypeDescription(std::string typeName, bool* unknown) override;
  std::uint64_t FindLabel(const char* text, bool* undefined, bool* confirmed) override;
  void ReadMemory(std::uint64_t first, std::uint64_t last, std::uint16_t memorySpace, std::uint8_t,
                  std::string* text, std::uint32_t, bool isFloat, bool isDouble) override;

 private:
  /// What was read last: `size` bytes from `address`, those that could not be read as zero.
  struct Fetched {
    std::uint64_t address = 0;
    std::uint32_t size = 0;
    std::uint8_t space = 0;
    std::array<std::byte, 8> bytes{};
  };

  void Remember(const Error& error);
  /// How many bytes the resolver's next read in `space` is about: 1 to 8.
  [[nodiscard]] std::uint32_t AccessBytes(std::uint8_t space) const;
  /// Can at least the first byte be read? If not, remembers why.
  bool Fetch(std::uint64_t address, std::uint8_t space, std::uint32_t size);

  LabelSource& labels_;
  MemorySource& memory_;
  std::optional<std::uint32_t> wordSize_;
  Fetched fetched_;
  /// `fetched_` holds an object that `CheckAddress` read for the `ReadMemory` to come.
  bool fetchedAny_ = false;
  std::optional<Error> failure_;
  std::string untyped_;
  std::vector<MemoryAccess> accesses_;
};

}  // namespace targets

#endif  // STRINGRESOLVER_TARGETS_PROGRAMHOST_H

#ifndef STRINGRESOLVER_TARGETS_REMOTEPLACEMENT_H
#define STRINGRESOLVER_TARGETS_REMOTEPLACEMENT_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "targets/ElfFile.h"
#include "targets/RemoteStub.h"

namespace targets {

/// Where a program lies in the target's memory.
struct Placement {
  /// Run-time address minus file address.
  std::uint64_t loadBias = 0;
  /// Why this may be wrong: a sentence without a full stop. Empty when there is no doubt.
  std::string doubt;
};

/// What a stub tells about a program's place; each may be missing.
struct PlacementFacts {
  std::optional<std::string> auxiliaryVector;
  std::optional<RemoteStub::Offsets> offsets;
};

/// Asks `stub` for as much as finding the place of `file` takes: nothing is read from memory.
/// Throws `Error` (`kTargetLost`).
Placement FindPlacement(const ElfFile& file, RemoteStub& stub);

/// The place of `file` by what is known. `name` is what the doubt calls the stub.
Placement PlacementOf(const ElfFile& file, const PlacementFacts& facts, const std::string& name);

/// An entry of an auxiliary vector, which is stored as `file` says: the value of `key`, a number of
/// <elf.h> such as AT_ENTRY. Nothing when there is none.
std::optional<std::uint64_t> VectorEntry(const ElfFile& file, std::string_view vector,
                                         std::uint64_t key);

}  // namespace targets

#endif  // STRINGRESOLVER_TARGETS_REMOTEPLACEMENT_H

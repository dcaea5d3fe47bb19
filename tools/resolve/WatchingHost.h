#ifndef STRINGRESOLVER_TOOLS_RESOLVE_WATCHINGHOST_H
#define STRINGRESOLVER_TOOLS_RESOLVE_WATCHINGHOST_H

#include <cstdint>
#include <set>
#include <string>

#include "targets/ProgramHost.h"

namespace tool {

/// A program's host that also notes what the resolver's answer alone does not tell. Everything it
/// notes is about the resolution that began with the last `Start`.
class WatchingHost : public targets::ProgramHost {
 public:
  using ProgramHost::ProgramHost;

  void Start();

  /// Was the structure called `record` described in full? `record` is what a person would write:
  /// `struct node`, or the name that a typedef gives to a structure without one. The latter are all
  /// alike in their records, so any of them counts.
  [[nodiscard]] bool Described(const std::string& record) const;

  /// The floating number read last, as exactly as the target holds it.
  [[nodiscard]] double LastFloating() const { return lastFloating_; }

  /// Did the first failure come with the last call of all?
  [[nodiscard]] bool FailedLast() const { return failedLast_; }

  bool CheckAddress(std::uint64_t address, std::uint8_t memorySpace) override;
  DataLableType GetTypeDescription(std::string typeName, bool* unknown) override;
  std::uint64_t FindLabel(const char* text, bool* undefined, bool* confirmed) override;
  void ReadMemory(std::uint64_t first, std::uint64_t last, std::uint16_t memorySpace,
                  std::uint8_t count, std::string* text, std::uint32_t step, bool isFloat,
                  bool isDouble) override;

 private:
  std::set<std::string> described_;
  double lastFloating_ = 0.0;
  bool failedLast_ = false;
};

}  // namespace tool

#endif  // STRINGRESOLVER_TOOLS_RESOLVE_WATCHINGHOST_H

#ifndef STRINGRESOLVER_TOOLS_RESOLVE_OVERLAIDTARGET_H
#define STRINGRESOLVER_TOOLS_RESOLVE_OVERLAIDTARGET_H

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "targets/MemoryRegions.h"
#include "targets/RegionRequest.h"
#include "tools/resolve/Target.h"

namespace tool {

/// Another target with files of memory laid over its own memory, or with a word of another size in
/// its second memory space.
class OverlaidTarget final : public Target {
 public:
  /// Throws `targets::Error`.
  OverlaidTarget(std::unique_ptr<Target> below, std::vector<targets::RegionRequest> requests,
                 std::optional<std::uint32_t> wordSize);

  [[nodiscard]] targets::LabelSource& Labels() override { return below_->Labels(); }
  [[nodiscard]] targets::MemorySource& Memory() override { return *regions_; }
  [[nodiscard]] std::string Description() const override;
  [[nodiscard]] std::string Name() const override { return below_->Name(); }
  void SetCurrentFile(const std::string& name) override { below_->SetCurrentFile(name); }
  [[nodiscard]] std::vector<std::string> SourceFiles() const override;
  [[nodiscard]] std::optional<std::string> WhyIncomplete() const override;
  [[nodiscard]] std::vector<std::string> Warnings() const override { return below_->Warnings(); }
  [[nodiscard]] std::optional<std::uint32_t> WordSize() const override;
  [[nodiscard]] bool IsLive() const override { return below_->IsLive(); }
  void Reload() override;

 private:
  [[nodiscard]] std::unique_ptr<targets::MemoryRegions> ReadRegions() const;

  std::unique_ptr<Target> below_;
  std::vector<targets::RegionRequest> requests_;
  std::optional<std::uint32_t> wordSize_;
  std::unique_ptr<targets::MemoryRegions> regions_;
};

/// The last address that the files of `requests` fill in space 0, or 0: what the records of a
/// target below them must be able to point at. Throws `targets::Error`.
std::uint64_t HighestAddressOf(const std::vector<targets::RegionRequest>& requests);

}  // namespace tool

#endif  // STRINGRESOLVER_TOOLS_RESOLVE_OVERLAIDTARGET_H

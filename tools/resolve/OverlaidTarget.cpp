#include "tools/resolve/OverlaidTarget.h"

#include <utility>

namespace tool {
namespace {

constexpr std::uint32_t kLargestPointer = 8;

}  // namespace

OverlaidTarget::OverlaidTarget(std::unique_ptr<Target> below,
                               std::vector<targets::RegionRequest> requests,
                               std::optional<std::uint32_t> wordSize)
    : below_(std::move(below)),
      requests_(std::move(requests)),
      wordSize_(wordSize),
      regions_(ReadRegions()) {
  regions_->SetBelow(&below_->Memory());
}

std::unique_ptr<targets::MemoryRegions> OverlaidTarget::ReadRegions() const {
  auto regions = std::make_unique<targets::MemoryRegions>(below_->Labels().PointerSize());
  for (const targets::RegionRequest& request : requests_) AddRegions(request, regions.get());
  return regions;
}

std::string OverlaidTarget::Description() const {
  std::string text = below_->Description();
  const char* separator = " under ";
  for (const targets::RegionRequest& request : requests_) {
    text += separator + request.path;
    separator = ", ";
  }
  return text;
}

std::vector<std::string> OverlaidTarget::SourceFiles() const {
  return below_->SourceFiles();
}

std::optional<std::string> OverlaidTarget::WhyIncomplete() const {
  return below_->WhyIncomplete();
}

std::optional<std::uint32_t> OverlaidTarget::WordSize() const {
  return wordSize_ ? wordSize_ : below_->WordSize();
}

void OverlaidTarget::Reload() {
  // Both may fail; what is below the regions is the last that changes.
  auto regions = ReadRegions();
  below_->Reload();
  regions->SetBelow(&below_->Memory());
  regions_ = std::move(regions);
}

std::uint64_t HighestAddressOf(const std::vector<targets::RegionRequest>& requests) {
  targets::MemoryRegions regions(kLargestPointer);
  for (const targets::RegionRequest& request : requests) AddRegions(request, &regions);
  return regions.HighestAddress().value_or(0);
}

}  // namespace tool

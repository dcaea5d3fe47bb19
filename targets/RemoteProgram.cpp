#include "targets/RemoteProgram.h"

#include <cstdint>
#include <utility>

#include "targets/ElfFile.h"

namespace targets {
namespace {

/// The highest address that a program can have objects at, its heap and stack and devices included.
std::uint64_t HighestAddress(const ElfFile& file, const Placement& placement, bool isProcess) {
  if (file.PointerSize() == 4) return 0xffffffffU;
  // Processes have the lower half of the 48 bits that machines translate; bare machines and kernels
  // may have all 64.
  constexpr std::uint64_t kProcessEnd = (std::uint64_t{1} << 47) - 1;
  const std::uint64_t own = file.HighestAddress() + placement.loadBias;
  return isProcess && own <= kProcessEnd ? kProcessEnd : ~std::uint64_t{0};
}

}  // namespace

RemoteProgram::RemoteProgram(std::string path, const Connect& connect, Options options)
    : path_(ElfFile(path).Path()),
      link_(connect()),
      options_(std::move(options)),
      stub_(*link_, options_.timeout, options_.leaving) {
  Reload();
}

void RemoteProgram::Reload(const std::optional<std::string>& currentFile) {
  const ElfFile file(path_);
  Placement placement = FindPlacement(file, stub_);
  auto program = std::make_unique<ElfProgram>(
      path_, ElfOptions{.debugFolder = options_.debugFolder,
                        .loadBias = placement.loadBias,
                        .highestAddress = HighestAddress(file, placement, stub_.HoldsProcess())});
  if (currentFile) program->SetCurrentFile(*currentFile);
  auto memory = std::make_unique<RemoteMemory>(stub_, file.PointerSize());
  placement_ = std::move(placement);
  program_ = std::move(program);
  memory_ = std::move(memory);
}

}  // namespace targets

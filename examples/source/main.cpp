// A memory source of one's own under the labels of an ELF file: here a buffer, in place of what a
// probe or a simulator would read. First the source is held against what every source must do, then
// an expression is evaluated.
//
// usage: source PROGRAM LABEL EXPRESSION
#include <algorithm>
#include <cstdio>
#include <vector>

#include "contract/MemoryContract.h"
#include "resolver/StringParametersResolving.h"
#include "targets/ElfProgram.h"
#include "targets/ProgramHost.h"

namespace {

/// Bytes from `start` on, in space 0.
class Buffer final : public targets::MemorySource {
 public:
  Buffer(std::uint64_t start, std::vector<std::byte> bytes)
      : start_(start), bytes_(std::move(bytes)) {}

  targets::MemoryRead Read(std::uint64_t address, std::uint8_t space,
                           std::span<std::byte> bytes) override {
    if (space != 0 || address < start_ || address - start_ >= bytes_.size()) return {};
    const std::size_t first = static_cast<std::size_t>(address - start_);
    const std::size_t size = std::min(bytes.size(), bytes_.size() - first);
    std::copy_n(bytes_.begin() + static_cast<std::ptrdiff_t>(first), size, bytes.begin());
    return {size, targets::MemoryGap::kNotThere};
  }

 private:
  std::uint64_t start_;
  std::vector<std::byte> bytes_;
};

int Run(const char* path, const char* name, const char* expression) {
  targets::ElfProgram program(path);
  const auto label = program.FindLabel(name);
  if (!label) {
    std::printf("there is no %s\n", name);
    return 2;
  }
  // Where LABEL is, this target has eight bytes of its own.
  const std::vector<std::byte> bytes(8, std::byte{1});
  Buffer memory(label->value, bytes);
  const auto broken = contract::CheckMemorySource(
      memory, {0, label->value, bytes, targets::MemoryGap::kNotThere, {{0, {}}}});
  for (const std::string& sentence : broken) std::printf("broken: %s\n", sentence.c_str());

  targets::ProgramHost host(program, memory);
  TStringResolver resolver(&host);
  host.StartResolution();
  const bool solved = resolver.SolveStringOfElements(expression);
  if (!solved || host.FirstFailure()) {
    std::printf("%s\n", solved ? host.FirstFailure()->what() : resolver.errorMessage.c_str());
    return 1;
  }
  std::printf("%s = %llu\n", expression, static_cast<unsigned long long>(resolver.resultValue));
  return broken.empty() ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    std::puts("usage: source PROGRAM LABEL EXPRESSION");
    return 2;
  }
  try {
    return Run(argv[1], argv[2], argv[3]);
  } catch (const targets::Error& error) {
    std::printf("%s\n", error.what());
    return 2;
  }
}

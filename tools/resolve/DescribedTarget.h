#ifndef STRINGRESOLVER_TOOLS_RESOLVE_DESCRIBEDTARGET_H
#define STRINGRESOLVER_TOOLS_RESOLVE_DESCRIBEDTARGET_H

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "targets/DescribedProgram.h"
#include "tools/resolve/Target.h"

namespace tool {

/// A program that a description in TOML stands for, with the memory that it gives.
class DescribedTarget final : public Target {
 public:
  /// No object lies above `highestAddress`, nor above what the description itself holds.
  DescribedTarget(std::string path, std::uint64_t highestAddress);

  [[nodiscard]] targets::LabelSource& Labels() override { return *program_; }
  [[nodiscard]] targets::MemorySource& Memory() override { return program_->Memory(); }
  [[nodiscard]] std::string Description() const override;
  [[nodiscard]] std::string Name() const override { return path_; }
  void SetCurrentFile(const std::string& name) override;
  [[nodiscard]] std::optional<std::uint32_t> WordSize() const override;
  void Reload() override;

 private:
  std::string path_;
  std::uint64_t highestAddress_;
  std::optional<std::string> file_;
  std::unique_ptr<targets::DescribedProgram> program_;
};

}  // namespace tool

#endif  // STRINGRESOLVER_TOOLS_RESOLVE_DESCRIBEDTARGET_H

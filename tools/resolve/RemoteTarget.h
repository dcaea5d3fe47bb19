#ifndef STRINGRESOLVER_TOOLS_RESOLVE_REMOTETARGET_H
#define STRINGRESOLVER_TOOLS_RESOLVE_REMOTETARGET_H

#include <string>
#include <vector>

#include "targets/RemoteProgram.h"
#include "tools/resolve/Interruption.h"
#include "tools/resolve/Target.h"

namespace tool {

/// A program that runs behind a gdb remote stub.
class RemoteTarget final : public Target {
 public:
  /// Of `options`: the program, where the stub listens, how long to wait for it, how to leave it. A
  /// signal ends every wait, so that the target can be left in order.
  explicit RemoteTarget(const TargetOptions& options);

  [[nodiscard]] targets::LabelSource& Labels() override { return program_.Program(); }
  [[nodiscard]] targets::MemorySource& Memory() override { return program_.Memory(); }
  [[nodiscard]] std::string Description() const override;
  [[nodiscard]] std::string Name() const override { return path_; }
  void SetCurrentFile(const std::string& name) override;
  [[nodiscard]] std::vector<std::string> SourceFiles() const override;
  [[nodiscard]] std::optional<std::string> WhyIncomplete() const override;
  [[nodiscard]] std::vector<std::string> Warnings() const override;
  /// The stub keeps the processor stopped, but not its peripherals.
  [[nodiscard]] bool IsLive() const override { return true; }
  void Reload() override;

 private:
  /// First, so that the signal is passed on after the target has been left.
  Interruption interruption_;
  std::string path_;
  std::string stub_;
  std::optional<std::string> file_;
  targets::RemoteProgram program_;
};

}  // namespace tool

#endif  // STRINGRESOLVER_TOOLS_RESOLVE_REMOTETARGET_H

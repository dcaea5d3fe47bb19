#ifndef STRINGRESOLVER_TOOLS_RESOLVE_PROCESSTARGET_H
#define STRINGRESOLVER_TOOLS_RESOLVE_PROCESSTARGET_H

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "targets/LoadedProgram.h"
#include "targets/Process.h"
#include "targets/ProcessMaps.h"
#include "targets/ProcessMemory.h"
#include "targets/ProcessStop.h"
#include "tools/resolve/Interruption.h"
#include "tools/resolve/Target.h"

namespace tool {

/// A running process: the program and the libraries that it has loaded, and its memory as it is.
class ProcessTarget final : public Target {
 public:
  struct Choices {
    std::int64_t process = 0;  ///< its number
    /// Where names and types come from instead of the file that the process was started from.
    std::optional<std::string> program;
    std::optional<std::string> file;  ///< the current source file, if chosen
    std::string debugFolder;
    bool stop = false;  ///< hold the process as long as the target lives
  };

  explicit ProcessTarget(Choices choices);

  [[nodiscard]] targets::LabelSource& Labels() override { return *program_; }
  [[nodiscard]] targets::MemorySource& Memory() override { return memory_; }
  [[nodiscard]] std::string Description() const override;
  [[nodiscard]] std::string Name() const override;
  void SetCurrentFile(const std::string& name) override;
  [[nodiscard]] std::vector<std::string> SourceFiles() const override;
  [[nodiscard]] std::optional<std::string> WhyIncomplete() const override;
  [[nodiscard]] std::vector<std::string> Warnings() const override;
  [[nodiscard]] bool IsLive() const override { return true; }
  void Reload() override;

 private:
  [[nodiscard]] std::unique_ptr<targets::LoadedProgram> Open(
      const targets::ProcessFiles& files) const;

  Choices choices_;
  targets::Process process_;
  targets::ProcessMemory memory_;
  targets::ProcessFiles files_;
  std::unique_ptr<targets::LoadedProgram> program_;
  /// In this order, so that a signal is passed on after the process has been let go.
  std::optional<Interruption> interruption_;
  std::optional<targets::ProcessStop> stop_;
};

}  // namespace tool

#endif  // STRINGRESOLVER_TOOLS_RESOLVE_PROCESSTARGET_H

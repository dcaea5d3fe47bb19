#ifndef STRINGRESOLVER_TOOLS_RESOLVE_CORETARGET_H
#define STRINGRESOLVER_TOOLS_RESOLVE_CORETARGET_H

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "targets/CoreDump.h"
#include "targets/LoadedProgram.h"
#include "tools/resolve/Target.h"

namespace tool {

/// A process as a core dump holds it: its memory, and the names of its program and libraries.
class CoreTarget final : public Target {
 public:
  /// Without `program`, the one that the dump names. Throws `targets::Error`.
  CoreTarget(std::string core, std::optional<std::string> program, std::string debugFolder);

  [[nodiscard]] targets::LabelSource& Labels() override { return *opened_.labels; }
  [[nodiscard]] targets::MemorySource& Memory() override { return opened_.dump->Memory(); }
  [[nodiscard]] std::string Description() const override;
  [[nodiscard]] std::string Name() const override { return opened_.dump->Program().path; }
  void SetCurrentFile(const std::string& name) override;
  [[nodiscard]] std::vector<std::string> SourceFiles() const override;
  [[nodiscard]] std::optional<std::string> WhyIncomplete() const override;
  [[nodiscard]] std::vector<std::string> Warnings() const override;
  void Reload() override;

 private:
  struct Opened {
    std::unique_ptr<targets::CoreDump> dump;
    std::unique_ptr<targets::LoadedProgram> labels;
  };
  [[nodiscard]] Opened Open() const;

  std::string core_;
  std::optional<std::string> program_;
  std::string debugFolder_;
  std::optional<std::string> file_;
  Opened opened_;
};

}  // namespace tool

#endif  // STRINGRESOLVER_TOOLS_RESOLVE_CORETARGET_H

#ifndef STRINGRESOLVER_TOOLS_RESOLVE_FILETARGET_H
#define STRINGRESOLVER_TOOLS_RESOLVE_FILETARGET_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "targets/ElfProgram.h"
#include "tools/resolve/Target.h"

namespace tool {

/// A program in an ELF file, with the memory that it starts with.
class FileTarget final : public Target {
 public:
  /// Objects may lie up to `highestAddress`, besides those of the program itself.
  FileTarget(std::string path, std::string debugFolder, std::uint64_t highestAddress = 0);

  [[nodiscard]] targets::LabelSource& Labels() override { return *program_; }
  [[nodiscard]] targets::MemorySource& Memory() override { return program_->Memory(); }
  [[nodiscard]] std::string Description() const override;
  [[nodiscard]] std::string Name() const override { return path_; }
  void SetCurrentFile(const std::string& name) override;
  [[nodiscard]] std::vector<std::string> SourceFiles() const override;
  [[nodiscard]] std::optional<std::string> WhyIncomplete() const override;
  void Reload() override;

 private:
  [[nodiscard]] std::unique_ptr<targets::ElfProgram> Open() const;

  std::string path_;
  std::string debugFolder_;
  std::uint64_t highestAddress_;
  std::optional<std::string> file_;
  std::unique_ptr<targets::ElfProgram> program_;
};

}  // namespace tool

#endif  // STRINGRESOLVER_TOOLS_RESOLVE_FILETARGET_H

#include "tools/resolve/ProcessTarget.h"

#include <utility>

#include "targets/ElfFile.h"

namespace tool {

ProcessTarget::ProcessTarget(Choices choices)
    : choices_(std::move(choices)),
      process_(choices_.process),
      memory_(process_),
      files_(targets::FindProcessFiles(process_, memory_)),
      program_(Open(files_)) {
  if (!choices_.stop) return;
  // Reading debug information takes longest, so it comes first: the process is held briefly.
  interruption_.emplace();
  stop_.emplace(process_, &Interruption::Check);
  if (targets::FindProcessFiles(process_, memory_) != files_) Reload();
}

std::unique_ptr<targets::LoadedProgram> ProcessTarget::Open(
    const targets::ProcessFiles& files) const {
  targets::LoadedFile file = files.program;
  if (choices_.program) file.path = *choices_.program;
  auto program = std::make_unique<targets::LoadedProgram>(std::move(file), files.libraries,
                                                          choices_.debugFolder);
  if (choices_.file) program->SetCurrentFile(*choices_.file);
  return program;
}

std::string ProcessTarget::Description() const {
  return "the memory of " + Name() + ", which " + (stop_ ? "is held" : "goes on running") +
         ", with the names of " + choices_.program.value_or(files_.program.path);
}

std::string ProcessTarget::Name() const {
  return "process " + std::to_string(process_.Id());
}

void ProcessTarget::SetCurrentFile(const std::string& name) {
  program_->SetCurrentFile(name);
  choices_.file = name;
}

std::vector<std::string> ProcessTarget::SourceFiles() const {
  return program_->SourceFiles();
}

std::optional<std::string> ProcessTarget::WhyIncomplete() const {
  return program_->WhyIncomplete();
}

std::vector<std::string> ProcessTarget::Warnings() const {
  if (!choices_.program || files_.program.buildId.empty()) return {};
  const targets::ElfFile file(*choices_.program);
  const auto id = file.BuildId();
  const std::vector<std::byte> own(id.begin(), id.end());
  if (own == files_.program.buildId) return {};
  return {*choices_.program + " is not what " + Name() + " runs: its build-id is " +
          (own.empty() ? "missing" : targets::BuildIdText(own)) + ", not " +
          targets::BuildIdText(files_.program.buildId)};
}

void ProcessTarget::Reload() {
  targets::ProcessFiles files = targets::FindProcessFiles(process_, memory_);
  program_ = Open(files);
  files_ = std::move(files);
}

}  // namespace tool

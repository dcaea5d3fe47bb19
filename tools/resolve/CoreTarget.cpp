#include "tools/resolve/CoreTarget.h"

#include <utility>

namespace tool {

CoreTarget::CoreTarget(std::string core, std::optional<std::string> program,
                       std::string debugFolder)
    : core_(std::move(core)),
      program_(std::move(program)),
      debugFolder_(std::move(debugFolder)),
      opened_(Open()) {}

CoreTarget::Opened CoreTarget::Open() const {
  Opened opened;
  opened.dump = std::make_unique<targets::CoreDump>(core_, program_);
  opened.labels = std::make_unique<targets::LoadedProgram>(opened.dump->Program(),
                                                           opened.dump->Libraries(), debugFolder_);
  if (file_) opened.labels->SetCurrentFile(*file_);
  return opened;
}

std::string CoreTarget::Description() const {
  return "the core dump " + core_ + " of " + Name();
}

void CoreTarget::SetCurrentFile(const std::string& name) {
  opened_.labels->SetCurrentFile(name);
  file_ = name;
}

std::vector<std::string> CoreTarget::SourceFiles() const {
  return opened_.labels->SourceFiles();
}

std::optional<std::string> CoreTarget::WhyIncomplete() const {
  return opened_.labels->WhyIncomplete();
}

std::vector<std::string> CoreTarget::Warnings() const {
  return opened_.dump->Warnings();
}

void CoreTarget::Reload() {
  opened_ = Open();
}

}  // namespace tool

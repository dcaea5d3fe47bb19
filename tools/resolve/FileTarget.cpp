#include "tools/resolve/FileTarget.h"

#include <utility>

namespace tool {

FileTarget::FileTarget(std::string path, std::string debugFolder, std::uint64_t highestAddress)
    : path_(std::move(path)),
      debugFolder_(std::move(debugFolder)),
      highestAddress_(highestAddress),
      program_(Open()) {}

std::unique_ptr<targets::ElfProgram> FileTarget::Open() const {
  targets::ElfOptions options;
  options.debugFolder = debugFolder_;
  // Beyond 4 GiB, all that addresses can be: the program's own objects may lie higher still.
  if (highestAddress_ >> 32 != 0) options.highestAddress = ~std::uint64_t{0};
  auto program = std::make_unique<targets::ElfProgram>(path_, options);
  if (file_) program->SetCurrentFile(*file_);
  return program;
}

std::string FileTarget::Description() const {
  return "the initial memory of " + path_;
}

void FileTarget::SetCurrentFile(const std::string& name) {
  program_->SetCurrentFile(name);
  file_ = name;
}

std::vector<std::string> FileTarget::SourceFiles() const {
  return program_->SourceFiles();
}

std::optional<std::string> FileTarget::WhyIncomplete() const {
  return program_->WhyIncomplete();
}

void FileTarget::Reload() {
  program_ = Open();
}

}  // namespace tool

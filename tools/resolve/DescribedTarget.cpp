#include "tools/resolve/DescribedTarget.h"

#include <utility>

namespace tool {

DescribedTarget::DescribedTarget(std::string path, std::uint64_t highestAddress)
    : path_(std::move(path)),
      highestAddress_(highestAddress),
      program_(targets::DescribedProgram::Open(path_, highestAddress_)) {}

std::string DescribedTarget::Description() const {
  return "the memory that " + path_ + " describes";
}

void DescribedTarget::SetCurrentFile(const std::string& name) {
  program_->SetCurrentFile(name);
  file_ = name;
}

std::optional<std::uint32_t> DescribedTarget::WordSize() const {
  return program_->WordSize();
}

void DescribedTarget::Reload() {
  auto program = targets::DescribedProgram::Open(path_, highestAddress_);
  if (file_) program->SetCurrentFile(*file_);
  program_ = std::move(program);
}

}  // namespace tool

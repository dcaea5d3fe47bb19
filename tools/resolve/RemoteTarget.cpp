#include "tools/resolve/RemoteTarget.h"

#include <chrono>
#include <memory>

#include "targets/RemoteAddress.h"
#include "targets/RemoteSocket.h"

namespace tool {
namespace {

std::chrono::milliseconds Timeout(const TargetOptions& options) {
  return std::chrono::ceil<std::chrono::milliseconds>(
      std::chrono::duration<double>(options.timeout));
}

targets::RemoteProgram Open(const TargetOptions& options) {
  const std::string& name = *options.remote;
  const auto address = targets::ReadRemoteAddress(name);
  if (!address) throw UsageError("there can be no stub at " + name);
  const auto connect = [&] {
    const auto deadline = targets::RemoteClock::now() + Timeout(options);
    return std::make_unique<targets::RemoteSocket>(*address, name, deadline,
                                                   Interruption::Descriptor());
  };
  using Leaving = targets::RemoteStub::Leaving;
  return {options.program, connect,
          targets::RemoteProgram::Options{
              .debugFolder = options.debugFolder,
              .timeout = Timeout(options),
              .leaving = options.leaveStopped ? Leaving::kStopped : Leaving::kGoOn}};
}

}  // namespace

RemoteTarget::RemoteTarget(const TargetOptions& options)
    : path_(options.program), stub_(*options.remote), program_(Open(options)) {}

std::string RemoteTarget::Description() const {
  return "the target behind " + stub_ + ", as " + path_;
}

void RemoteTarget::SetCurrentFile(const std::string& name) {
  program_.Program().SetCurrentFile(name);
  file_ = name;
}

std::vector<std::string> RemoteTarget::SourceFiles() const {
  return program_.Program().SourceFiles();
}

std::optional<std::string> RemoteTarget::WhyIncomplete() const {
  return program_.Program().WhyIncomplete();
}

std::vector<std::string> RemoteTarget::Warnings() const {
  if (program_.Doubt().empty()) return {};
  return {program_.Doubt()};
}

void RemoteTarget::Reload() {
  program_.Reload(file_);
}

}  // namespace tool

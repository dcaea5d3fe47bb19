#include "tools/resolve/Output.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "tools/resolve/Interruption.h"
#include "tools/resolve/StreamError.h"

namespace tool {
namespace {

constexpr std::size_t kGatheredBytes = std::size_t{64} * 1024;

}  // namespace

void Output::Write(std::string_view text) {
  pending_ += text;
  if (pending_.size() >= kGatheredBytes) Flush();
}

void Output::WriteLine(std::string_view line) {
  pending_ += line;
  Write("\n");
}

void Output::Flush() {
  std::string_view rest = pending_;
  while (!rest.empty()) {
    const std::size_t most = std::min(rest.size(), Interruption::AwaitOutput(descriptor_));
    const ssize_t written = write(descriptor_, rest.data(), most);
    if (written >= 0) {
      rest.remove_prefix(static_cast<std::size_t>(written));
    } else if (errno != EINTR) {
      const std::string reason = std::strerror(errno);
      pending_.clear();
      throw StreamError("cannot write to " + name_ + ": " + reason);
    }
  }
  pending_.clear();
}

}  // namespace tool

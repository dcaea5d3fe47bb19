#include "tools/resolve/LineReader.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "tools/resolve/Interruption.h"
#include "tools/resolve/StreamError.h"

namespace tool {
namespace {

constexpr std::size_t kReadBytes = std::size_t{64} * 1024;

}  // namespace

bool LineReader::Read(std::string* line) {
  line->clear();
  bool any = false;
  while (at_ < buffer_.size() || Fill()) {
    any = true;
    const std::size_t end = buffer_.find('\n', at_);
    const std::size_t length = (end == std::string::npos ? buffer_.size() : end) - at_;
    line->append(buffer_, at_, std::min(length, mostKept_ - line->size()));
    at_ = end == std::string::npos ? buffer_.size() : end + 1;
    if (end != std::string::npos) return true;
  }
  return any;
}

/// Replaces the used-up buffer by what can be read now, or waits for it. False at the end.
bool LineReader::Fill() {
  buffer_.resize(kReadBytes);
  at_ = 0;
  ssize_t count = 0;
  do {
    Interruption::AwaitInput(descriptor_);
    count = read(descriptor_, buffer_.data(), buffer_.size());
  } while (count < 0 && errno == EINTR);
  if (count < 0) {
    const std::string reason = std::strerror(errno);
    buffer_.clear();
    throw StreamError("cannot read " + name_ + ": " + reason);
  }
  buffer_.resize(static_cast<std::size_t>(count));
  return count > 0;
}

}  // namespace tool

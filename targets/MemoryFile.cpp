#include "targets/MemoryFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>

#include "targets/Error.h"

namespace targets {
namespace {

[[noreturn]] void Unusable(const std::string& sentence) {
  throw Error(ErrorCode::kFileUnusable, sentence);
}

[[noreturn]] void CannotRead(const std::string& path) {
  Unusable("the file '" + path + "' cannot be read: " + std::strerror(errno));
}

}  // namespace

MemoryFile::MemoryFile(const std::string& path) : path_(path) {
  if (path.find('\0') != std::string::npos) Unusable("a file name cannot hold a zero byte");
  struct stat status {};
  // Asked before opening, because opening a pipe would wait for a writer.
  if (stat(path.c_str(), &status) != 0) {
    if (errno == ENOENT || errno == ENOTDIR) Unusable("there is no file '" + path + "'");
    CannotRead(path);
  }
  if (S_ISDIR(status.st_mode)) Unusable("'" + path + "' is a directory, not a file");
  if (!S_ISREG(status.st_mode)) Unusable("'" + path + "' is not a regular file");
  if (status.st_size <= 0) Unusable("the file '" + path + "' is empty");
  size_ = static_cast<std::uint64_t>(status.st_size);
  descriptor_ = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (descriptor_ < 0) CannotRead(path);
}

MemoryFile::~MemoryFile() {
  if (descriptor_ >= 0) close(descriptor_);
}

std::size_t MemoryFile::Read(std::uint64_t offset, std::span<std::byte> bytes) const {
  std::size_t done = 0;
  constexpr std::uint64_t kLast = std::numeric_limits<off_t>::max();
  while (done < bytes.size() && offset <= kLast && done <= kLast - offset) {
    const ssize_t got = pread(descriptor_, bytes.data() + done, bytes.size() - done,
                              static_cast<off_t>(offset + done));
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) CannotRead(path_);
    if (got == 0) break;
    done += static_cast<std::size_t>(got);
  }
  return done;
}

std::string MemoryFile::Text() const {
  std::string text(static_cast<std::size_t>(size_), '\0');
  text.resize(Read(0, std::as_writable_bytes(std::span(text))));
  return text;
}

}  // namespace targets

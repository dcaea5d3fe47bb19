#include "tools/resolve/HistoryFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <utility>

namespace tool {
namespace {

constexpr mode_t kForUserAlone = S_IRUSR | S_IWUSR;
// A file that another program made may be anything; this much of it is looked at.
constexpr std::size_t kLargestFile = 2 * HistoryFile::kMostLines * HistoryFile::kLongestLine;
// Others hold the lock while they write a short file. One that holds it longer is stuck.
constexpr int kLockAttempts = 200;
constexpr timespec kLockPause = {.tv_sec = 0, .tv_nsec = 10'000'000};

[[noreturn]] void Fail(const std::string& what, const std::string& path, int error) {
  throw HistoryError(what + " " + path + ": " + std::strerror(error));
}

class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    if (number_ >= 0) close(number_);
  }
  [[nodiscard]] int Number() const { return number_; }
  [[nodiscard]] bool IsOpen() const { return number_ >= 0; }

 private:
  int number_;
};

std::string ReadAll(const Descriptor& file, const std::string& path) {
  std::string content;
  std::array<char, 16384> part{};
  while (content.size() < kLargestFile) {
    const ssize_t count = read(file.Number(), part.data(), part.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) Fail("cannot read", path, errno);
    if (count == 0) break;
    content.append(part.data(), static_cast<std::size_t>(count));
  }
  return content;
}

void WriteAll(const Descriptor& file, std::string_view content, const std::string& path) {
  while (!content.empty()) {
    const ssize_t count = write(file.Number(), content.data(), content.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) Fail("cannot write", path, errno);
    content.remove_prefix(static_cast<std::size_t>(count));
  }
}

void MakeFolder(const std::filesystem::path& folder) {
  // What is made here is for the user alone; folders that are there keep their modes.
  std::vector<std::filesystem::path> missing;
  std::error_code error;
  for (auto at = folder; !at.empty() && !std::filesystem::exists(at, error);
       at = at.parent_path()) {
    missing.push_back(at);
    if (at == at.parent_path()) break;
  }
  for (auto at = missing.rbegin(); at != missing.rend(); ++at) {
    if (mkdir(at->c_str(), S_IRWXU) != 0 && errno != EEXIST) Fail("cannot make", *at, errno);
  }
}

void Lock(const Descriptor& lock, const std::string& path) {
  for (int attempt = 0; attempt < kLockAttempts; ++attempt) {
    if (flock(lock.Number(), LOCK_EX | LOCK_NB) == 0) return;
    if (errno != EWOULDBLOCK && errno != EINTR) break;
    nanosleep(&kLockPause, nullptr);
  }
  Fail("cannot lock", path, errno);
}

/// Where the file lies, behind symbolic links: replacing the file must not replace the link.
std::string RealPath(const std::string& path) {
  std::error_code error;
  const auto real = std::filesystem::canonical(path, error);
  return error ? path : real.string();
}

bool CanBeKept(const std::string& line) {
  if (line.empty() || line.size() > HistoryFile::kLongestLine) return false;
  for (const char c : line) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x20 || byte == 0x7F) return false;
  }
  return true;
}

}  // namespace

HistoryFile HistoryFile::OfUser() {
  const char* const state = std::getenv("XDG_STATE_HOME");
  if (state != nullptr && state[0] == '/') {
    return HistoryFile(std::string(state) + "/resolve/history");
  }
  const char* const home = std::getenv("HOME");
  if (home == nullptr || home[0] != '/') {
    throw HistoryError("neither XDG_STATE_HOME nor HOME names a folder");
  }
  return HistoryFile(std::string(home) + "/.local/state/resolve/history");
}

std::vector<std::string> HistoryFile::Read() const {
  // Does not wait for whoever may be at the other end, if it is no file.
  const Descriptor file(open(path_.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  if (!file.IsOpen()) {
    if (errno == ENOENT) return {};
    Fail("cannot read", path_, errno);
  }
  struct stat status {};
  if (fstat(file.Number(), &status) != 0) Fail("cannot read", path_, errno);
  if (!S_ISREG(status.st_mode)) throw HistoryError("cannot read " + path_ + ": it is no file");
  const std::string content = ReadAll(file, path_);
  std::vector<std::string> lines;
  for (std::size_t start = 0; start < content.size();) {
    const std::size_t end = std::min(content.find('\n', start), content.size());
    std::string line = content.substr(start, end - start);
    if (CanBeKept(line)) lines.push_back(std::move(line));
    start = end + 1;
  }
  if (lines.size() > kMostLines) {
    lines.erase(lines.begin(), lines.end() - static_cast<std::ptrdiff_t>(kMostLines));
  }
  return lines;
}

void HistoryFile::Add(const std::string& line) const {
  if (!CanBeKept(line)) return;
  const std::string path = RealPath(path_);
  MakeFolder(std::filesystem::path(path).parent_path());
  const std::string lockPath = path + ".lock";
  const Descriptor lock(open(lockPath.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, kForUserAlone));
  if (!lock.IsOpen()) Fail("cannot write", lockPath, errno);
  Lock(lock, lockPath);
  std::vector<std::string> lines = HistoryFile(path).Read();
  if (!lines.empty() && lines.back() == line) return;
  lines.push_back(line);
  if (lines.size() > kMostLines) lines.erase(lines.begin());
  std::string content;
  for (const std::string& kept : lines) content += kept + '\n';
  const std::string newPath = path + ".new";
  // One that a session left behind when it died is overwritten: nobody else writes under the lock.
  unlink(newPath.c_str());
  {
    const Descriptor file(
        open(newPath.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kForUserAlone));
    if (!file.IsOpen()) Fail("cannot write", newPath, errno);
    WriteAll(file, content, newPath);
  }
  if (rename(newPath.c_str(), path.c_str()) != 0) Fail("cannot write", path, errno);
}

}  // namespace tool

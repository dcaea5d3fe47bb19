#include "targets/Process.h"

#include <dirent.h>
#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <climits>
#include <csignal>
#include <cstring>
#include <fstream>
#include <memory>
#include <optional>
#include <sstream>

namespace targets {
namespace {

std::string Folder(std::int64_t process) {
  return "/proc/" + std::to_string(process);
}

std::string Called(std::int64_t process) {
  return "process " + std::to_string(process);
}

Error Lost(const std::string& sentence) {
  return {ErrorCode::kTargetLost, sentence};
}

/// The text of a file that the system makes up when it is read; nothing when it cannot be read.
std::optional<std::string> TextOf(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  if (!stream) return std::nullopt;
  std::ostringstream text;
  // An empty file makes this fail, and leaves the text empty.
  text << stream.rdbuf();
  if (stream.bad()) return std::nullopt;
  return std::move(text).str();
}

std::optional<std::int64_t> ToNumber(std::string_view digits) {
  std::int64_t number = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  if (error != std::errc() || end == digits.data()) return std::nullopt;
  return number;
}

/// The first number behind `key` in the status of a process or thread; nothing when there is none.
std::optional<std::int64_t> StatusNumber(std::int64_t process, std::string_view key) {
  const std::optional<std::string> text = TextOf(Folder(process) + "/status");
  if (!text) return std::nullopt;
  const std::string_view whole = *text;
  const std::size_t line = whole.find("\n" + std::string(key) + ":");
  if (line == whole.npos) return std::nullopt;
  const std::size_t digit = whole.find_first_not_of("\t ", line + key.size() + 2);
  return digit == whole.npos ? std::nullopt : ToNumber(whole.substr(digit));
}

bool HasEnded(char state) {
  return state == 'Z' || state == 'X' || state == 'x' || state == ' ';
}

std::string UserName(uid_t user) {
  std::array<char, 4096> buffer{};
  passwd entry{};
  passwd* found = nullptr;
  if (getpwuid_r(user, &entry, buffer.data(), buffer.size(), &found) == 0 && found != nullptr) {
    return found->pw_name;
  }
  return "number " + std::to_string(user);
}

}  // namespace

char ThreadState(int process, int thread) {
  const auto text = TextOf(Folder(process) + "/task/" + std::to_string(thread) + "/stat");
  if (!text) return ' ';
  // The name of the program stands before it, in parentheses, and may hold some itself.
  const std::size_t name = text->rfind(") ");
  return name == text->npos || name + 2 >= text->size() ? ' ' : (*text)[name + 2];
}

Process::Process(std::int64_t id) {
  const bool possible = id > 0 && id <= INT_MAX;
  if (!possible || (kill(static_cast<pid_t>(id), 0) != 0 && errno == ESRCH)) {
    throw Lost("there is no " + Called(id));
  }
  const std::int64_t process = StatusNumber(id, "Tgid").value_or(id);
  id_ = static_cast<int>(process);
  thread_ = id_;
  if (HasEnded(ThreadState(id_, thread_))) FindLivingThread();
  OpenMemory();
}

Process::~Process() {
  if (addressSpace_ >= 0) close(addressSpace_);
}

void Process::OpenMemory() {
  addressSpace_ = open(Path("mem").c_str(), O_RDONLY | O_CLOEXEC);
  if (addressSpace_ < 0 && (errno == EACCES || errno == EPERM)) throw Refusal("read");
  if (HasAddressSpace()) return;
  if (addressSpace_ >= 0) close(addressSpace_);
  addressSpace_ = -1;
  if (HasEnded(ThreadState(id_, thread_))) throw Lost(Called(id_) + " has ended");
  throw Error(ErrorCode::kUnreadable,
              Called(id_) + " is a thread of the kernel: it has no memory of its own");
}

bool Process::HasAddressSpace() const {
  // A mapped page gives a byte, an unmapped one an error, and nothing at all is read at the end of
  // an address space: that of a thread of the kernel, or one that is gone.
  std::byte byte{};
  ssize_t count = 0;
  do {
    count = pread(addressSpace_, &byte, 1, 0);
  } while (count < 0 && errno == EINTR);
  return count != 0 && (count > 0 || errno == EIO);
}

void Process::FindLivingThread() {
  const std::vector<int> threads = Threads();
  const auto found = std::find_if(threads.begin(), threads.end(), [this](int thread) {
    return !HasEnded(ThreadState(id_, thread));
  });
  if (found == threads.end()) throw Lost(Called(id_) + " has ended");
  thread_ = *found;
}

void Process::CheckSame() const {
  if (HasAddressSpace()) return;
  for (const int thread : Threads()) {
    if (!HasEnded(ThreadState(id_, thread))) {
      throw Lost(Called(id_) + " no longer runs the program that it ran");
    }
  }
  throw Lost(Called(id_) + " has ended");
}

std::string Process::Path(std::string_view name) const {
  return (Folder(thread_) += '/') += name;
}

std::string Process::Contents(std::string_view name) {
  std::optional<std::string> text = TextOf(Path(name));
  if (!text || text->empty()) {
    // What a thread that has ended shows is empty.
    FindLivingThread();
    text = TextOf(Path(name));
  }
  CheckSame();
  if (!text) throw Lost("cannot read " + Path(name));
  return *std::move(text);
}

std::vector<int> Process::Threads() const {
  std::vector<int> threads;
  const std::unique_ptr<DIR, int (*)(DIR*)> folder(opendir((Folder(id_) + "/task").c_str()),
                                                   closedir);
  if (!folder) return threads;
  // No other thread of this command reads this folder.
  // NOLINTNEXTLINE(concurrency-mt-unsafe)
  while (const dirent* const entry = readdir(folder.get())) {
    const auto thread = ToNumber(static_cast<const char*>(entry->d_name));
    if (thread) threads.push_back(static_cast<int>(*thread));
  }
  return threads;
}

Error Process::Refusal(std::string_view action) const {
  std::string sentence = "not allowed to " + std::string(action) + " " + Called(id_);
  const auto user = StatusNumber(id_, "Uid");
  const auto tracer = StatusNumber(id_, "TracerPid");
  const auto scope = TextOf("/proc/sys/kernel/yama/ptrace_scope");
  if (action != "read" && tracer && *tracer != 0) {
    sentence += ": " + Called(*tracer) + " is debugging it already";
  } else if (user && *user != geteuid()) {
    sentence += ": it belongs to user " + UserName(static_cast<uid_t>(*user)) +
                ", and that takes the capability CAP_SYS_PTRACE";
  } else if (scope && ToNumber(*scope).value_or(0) != 0) {
    sentence += ": the system setting kernel.yama.ptrace_scope is " +
                std::to_string(*ToNumber(*scope)) +
                ", and then that takes the capability CAP_SYS_PTRACE";
  } else {
    sentence +=
        ": it has more rights than its user, or this command has fewer; that takes the capability "
        "CAP_SYS_PTRACE";
  }
  return {ErrorCode::kUnreadable, sentence};
}

}  // namespace targets

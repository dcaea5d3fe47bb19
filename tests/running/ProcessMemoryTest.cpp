#include "targets/ProcessMemory.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "contract/MemoryContract.h"
#include "targets/Error.h"

namespace targets {
namespace {

const auto kPage = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
constexpr std::uint64_t kLast = std::numeric_limits<std::uint64_t>::max();

/// Pages of this process: `open` readable ones, then one that is closed, then one that is not
/// there.
class Pages {
 public:
  explicit Pages(std::size_t open) : size_((open + 2) * kPage) {
    void* const start =
        mmap(nullptr, size_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (start == MAP_FAILED) std::abort();
    bytes_ = static_cast<unsigned char*>(start);
    for (std::size_t i = 0; i < open * kPage; ++i) bytes_[i] = Byte(i);
    mprotect(bytes_ + open * kPage, kPage, PROT_NONE);
    munmap(bytes_ + (open + 1) * kPage, kPage);
  }
  Pages(const Pages&) = delete;
  Pages& operator=(const Pages&) = delete;
  ~Pages() { munmap(bytes_, size_ - kPage); }

  static unsigned char Byte(std::size_t at) {
    return static_cast<unsigned char>(at * 7 + at / 251);
  }
  [[nodiscard]] std::uint64_t Address() const { return reinterpret_cast<std::uintptr_t>(bytes_); }

 private:
  std::size_t size_;
  unsigned char* bytes_ = nullptr;
};

TEST(ProcessMemory, EndsAtTheFirstByteThatCannotBeRead) {
  // More pages than are asked for at a time.
  constexpr std::size_t kOpen = 130;
  const Pages pages(kOpen);
  Process process(getpid());
  ProcessMemory memory(process);
  const std::size_t end = kOpen * kPage;
  const std::size_t starts[] = {0,          1,       kPage - 1, kPage, 64 * kPage - 1,
                                64 * kPage, end - 8, end - 1};
  const std::size_t sizes[] = {1,   2,          8, kPage, kPage + 1, 64 * kPage, 64 * kPage + 1,
                               end, end + kPage};
  for (const std::size_t start : starts) {
    for (const std::size_t size : sizes) {
      std::vector<std::byte> bytes(size, std::byte{0xEE});
      const MemoryRead read = memory.Read(pages.Address() + start, 0, bytes);
      const std::size_t expected = std::min(size, end - start);
      ASSERT_EQ(read.size, expected) << start << " " << size;
      if (expected < size) {
        EXPECT_EQ(read.gap, MemoryGap::kNotAllowed);
        EXPECT_EQ(bytes[expected], std::byte{0xEE}) << "what could not be read was changed";
      }
      for (std::size_t i = 0; i < expected; ++i) {
        ASSERT_EQ(std::to_integer<unsigned>(bytes[i]), Pages::Byte(start + i)) << start << " " << i;
      }
    }
  }
}

TEST(ProcessMemory, SaysWhyAByteCannotBeRead) {
  const Pages pages(1);
  Process process(getpid());
  ProcessMemory memory(process);
  const std::uint64_t closed = pages.Address() + kPage;
  struct Row {
    std::uint64_t address;
    MemoryGap gap;
  };
  for (const Row& row : {Row{closed, MemoryGap::kNotAllowed},
                         {closed + kPage - 1, MemoryGap::kNotAllowed},
                         {closed + kPage, MemoryGap::kNotThere},
                         {0, MemoryGap::kNotThere},
                         {8, MemoryGap::kNotThere},
                         {std::uint64_t{1} << 63, MemoryGap::kNotThere},
                         {kLast - 3, MemoryGap::kNotThere},
                         {kLast, MemoryGap::kNotThere}}) {
    std::array<std::byte, 8> bytes{};
    const MemoryRead read = memory.Read(row.address, 0, bytes);
    EXPECT_EQ(read.size, 0U) << row.address;
    EXPECT_EQ(read.gap, row.gap) << std::hex << row.address;
  }
}

TEST(ProcessMemory, KeepsTheContract) {
  const Pages pages(2);
  Process process(getpid());
  ProcessMemory memory(process);
  contract::KnownMemory known;
  const std::uint64_t end = pages.Address() + 2 * kPage;
  known.address = end - kPage - 100;
  for (std::size_t i = kPage - 100; i < 2 * kPage; ++i) {
    known.bytes.push_back(std::byte{Pages::Byte(i)});
  }
  known.end = MemoryGap::kNotAllowed;
  known.gaps = {{0, MemoryGap::kNotThere},
                {end, MemoryGap::kNotAllowed},
                {end + kPage, MemoryGap::kNotThere},
                {kLast, MemoryGap::kNotThere}};
  for (const std::string& broken : contract::CheckMemorySource(memory, known)) {
    ADD_FAILURE() << broken;
  }
}

TEST(ProcessMemory, HasOneSpaceAndReadsNothingWhenNothingIsAsked) {
  const Pages pages(1);
  Process process(getpid());
  ProcessMemory memory(process);
  std::array<std::byte, 8> bytes{};
  EXPECT_EQ(memory.Read(pages.Address(), 0, bytes).size, 8U);
  EXPECT_EQ(memory.Read(pages.Address(), 1, bytes).size, 0U);
  EXPECT_EQ(memory.Read(pages.Address(), 0, {}).size, 0U);
  EXPECT_EQ(memory.Read(0, 0, {}).size, 0U);
}

/// A process that waits, and then does `end`.
class Child {
 public:
  explicit Child(void (*end)()) {
    if (pipe(wait_.data()) != 0) std::abort();
    id_ = fork();
    if (id_ != 0) return;
    char byte = 0;
    if (read(wait_[0], &byte, 1) == 1) end();
    _exit(0);
  }
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;
  ~Child() {
    kill(id_, SIGKILL);
    if (!reaped_) waitpid(id_, nullptr, 0);
    for (const int end : wait_) close(end);
  }

  [[nodiscard]] pid_t Id() const { return id_; }
  void Go() { ASSERT_EQ(write(wait_[1], "x", 1), 1); }
  void Reap() {
    ASSERT_EQ(waitpid(id_, nullptr, 0), id_);
    reaped_ = true;
  }

 private:
  std::array<int, 2> wait_{};
  pid_t id_ = 0;
  bool reaped_ = false;
};

/// The sentence that `action` fails with; empty when it does not, or for another reason than that
/// the process is lost.
template <typename Action>
std::string Loss(Action action) {
  try {
    action();
  } catch (const Error& error) {
    if (error.Code() == ErrorCode::kTargetLost) return error.what();
  }
  return "";
}

TEST(ProcessMemory, IsLostWithTheProcess) {
  static const int kObject = 41;
  Child child([] {});
  std::array<std::byte, 4> bytes{};
  const auto address = reinterpret_cast<std::uintptr_t>(&kObject);
  std::optional<Process> process;
  std::optional<ProcessMemory> memory;
  try {
    process.emplace(child.Id());
    memory.emplace(*process);
  } catch (const Error& error) {
    GTEST_SKIP() << "this system lets no process read its child: " << error.what();
  }
  EXPECT_EQ(memory->Read(address, 0, bytes).size, 4U);
  EXPECT_EQ(bytes[0], std::byte{41});
  EXPECT_EQ(Loss([&] { memory->Refresh(); }), "");
  child.Go();
  child.Reap();
  const std::string ended = "process " + std::to_string(child.Id()) + " has ended";
  EXPECT_EQ(Loss([&] { memory->Read(address, 0, bytes); }), ended);
  EXPECT_EQ(Loss([&] { memory->Refresh(); }), ended);
  EXPECT_EQ(Loss([&] { EXPECT_EQ(process->Contents("maps"), ""); }), ended);
  const std::string none = "there is no process " + std::to_string(child.Id());
  EXPECT_EQ(Loss([&] { Process again(child.Id()); }), none);
}

TEST(ProcessMemory, IsLostWhenAnotherProgramStarts) {
  Child child([] { execl("/bin/sleep", "sleep", "1000", nullptr); });
  std::optional<Process> process;
  try {
    process.emplace(child.Id());
  } catch (const Error& error) {
    GTEST_SKIP() << "this system lets no process read its child: " << error.what();
  }
  child.Go();
  // Until the new program has begun, the old one is there.
  std::string loss;
  for (int i = 0; i < 12000 && loss.empty(); ++i) {
    usleep(10000);
    loss = Loss([&] { process->CheckSame(); });
  }
  EXPECT_EQ(loss,
            "process " + std::to_string(child.Id()) + " no longer runs the program that it ran");
}

}  // namespace
}  // namespace targets

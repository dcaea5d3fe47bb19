#include "contract/MemoryContract.h"

#include <algorithm>
#include <exception>
#include <limits>
#include <span>

namespace contract {
namespace {

using targets::MemoryGap;
using targets::MemoryRead;
using targets::MemorySource;

constexpr std::byte kUntouched{0xA5};

std::string Hex(std::uint64_t value) {
  constexpr const char* kDigits = "0123456789abcdef";
  std::string text;
  do {
    text.insert(text.begin(), kDigits[value % 16]);
    value /= 16;
  } while (value != 0);
  return "0x" + text;
}

std::string GapName(MemoryGap gap) {
  switch (gap) {
    case MemoryGap::kNotSaved:
      return "not saved";
    case MemoryGap::kNotAllowed:
      return "not allowed";
    case MemoryGap::kNotThere:
      break;
  }
  return "not there";
}

class Check {
 public:
  Check(MemorySource& source, const KnownMemory& known) : source_(source), known_(known) {}

  std::vector<std::string> Run() {
    Pieces();
    source_.Refresh();
    Pieces();
    Nothing();
    if (known_.end) End(*known_.end);
    for (const KnownGap& gap : known_.gaps) Gap(gap);
    TopOfMemory();
    return std::move(complaints_);
  }

 private:
  struct Seen {
    MemoryRead read;
    std::vector<std::byte> bytes;
  };

  Seen Read(std::uint64_t address, std::size_t size) {
    Seen seen;
    seen.bytes.assign(size, kUntouched);
    try {
      seen.read = source_.Read(address, known_.space, seen.bytes);
    } catch (const std::exception& error) {
      Complain(address, size, std::string("it throws: ") + error.what());
    }
    if (seen.read.size > size) {
      Complain(address, size, "more is read than was asked for");
      seen.read.size = size;
    }
    const auto tail = std::span(seen.bytes).subspan(seen.read.size);
    if (std::any_of(tail.begin(), tail.end(), [](std::byte b) { return b != kUntouched; })) {
      Complain(address, size, "bytes behind those that were read have changed");
    }
    return seen;
  }

  /// Every short piece, and the whole.
  void Pieces() {
    const std::size_t all = known_.bytes.size();
    constexpr std::size_t kLongest = 16;
    for (std::size_t first = 0; first < std::min<std::size_t>(all, 64); ++first) {
      for (std::size_t size = 1; size <= std::min(kLongest, all - first); ++size) {
        Expect(first, size);
      }
    }
    if (all != 0) Expect(0, all);
  }

  void Expect(std::size_t first, std::size_t size) {
    const std::uint64_t address = known_.address + first;
    const Seen seen = Read(address, size);
    if (seen.read.size != size) {
      Complain(address, size, "only " + std::to_string(seen.read.size) + " are read");
      return;
    }
    const auto expected = std::span(known_.bytes).subspan(first, size);
    if (!std::equal(expected.begin(), expected.end(), seen.bytes.begin())) {
      Complain(address, size, "the contents are others");
    }
  }

  void Nothing() {
    if (Read(known_.address, 0).read.size != 0) Complain(known_.address, 0, "something is read");
    for (const KnownGap& gap : known_.gaps) Read(gap.address, 0);
  }

  /// Reads that go past the end stop right there.
  void End(MemoryGap gap) {
    const std::size_t all = known_.bytes.size();
    for (std::size_t before = 0; before <= std::min<std::size_t>(all, 8); ++before) {
      const std::uint64_t address = known_.address + all - before;
      for (const std::size_t beyond : {1U, 7U, 4096U}) {
        const Seen seen = Read(address, before + beyond);
        if (seen.read.size != before) {
          Complain(address, before + beyond,
                   std::to_string(seen.read.size) + " are read, although memory ends after " +
                       std::to_string(before));
        } else {
          ExpectGap(address, before + beyond, seen.read.gap, gap);
        }
      }
    }
  }

  void Gap(const KnownGap& known) {
    for (const std::size_t size : {1U, 8U, 5000U}) {
      const Seen seen = Read(known.address, size);
      if (seen.read.size != 0) {
        Complain(known.address, size, "something is read where nothing can be");
      } else {
        ExpectGap(known.address, size, seen.read.gap, known.gap);
      }
    }
  }

  void TopOfMemory() {
    constexpr std::uint64_t kTop = std::numeric_limits<std::uint64_t>::max();
    for (const std::uint64_t left : {1U, 4U, 16U}) {
      const std::uint64_t address = kTop - (left - 1);
      const Seen seen = Read(address, 32);
      if (seen.read.size > left) Complain(address, 32, "the read wraps around");
    }
  }

  void ExpectGap(std::uint64_t address, std::size_t size, MemoryGap actual, MemoryGap expected) {
    if (actual == expected) return;
    Complain(address, size,
             "the reason is '" + GapName(actual) + "' instead of '" + GapName(expected) + "'");
  }

  void Complain(std::uint64_t address, std::size_t size, const std::string& what) {
    complaints_.push_back("reading " + std::to_string(size) + " bytes at " + Hex(address) +
                          " of space " + std::to_string(known_.space) + ": " + what);
  }

  MemorySource& source_;
  const KnownMemory& known_;
  std::vector<std::string> complaints_;
};

}  // namespace

std::vector<std::string> CheckMemorySource(MemorySource& source, const KnownMemory& known) {
  return Check(source, known).Run();
}

}  // namespace contract

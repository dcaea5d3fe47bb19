#include "targets/RemoteMemory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "contract/MemoryContract.h"
#include "targets/FetchedBytes.h"
#include "tests/targets/FakeStub.h"

namespace targettests {
namespace {

using targets::MemoryGap;
using targets::MemoryRead;
using targets::RemoteMemory;
using targets::RemoteStub;
using Requests = std::vector<std::string>;

/// Readable from 0x1000 to 0x1fff, each byte the low one of its address; forbidden from there to
/// 0x2fff.
class Page final : public targets::MemorySource {
 public:
  MemoryRead Read(std::uint64_t address, std::uint8_t, std::span<std::byte> bytes) override {
    std::size_t size = 0;
    for (; size < bytes.size() && (address + size) >> 12U == 1; ++size) {
      bytes[size] = static_cast<std::byte>(address + size);
    }
    return {size, (address + size) >> 12U == 2 ? MemoryGap::kNotAllowed : MemoryGap::kNotThere};
  }
};

class RemoteMemoryTest : public testing::Test {
 protected:
  void Open(std::uint32_t addressSize, const std::string& features = "QStartNoAckMode+") {
    link_.emplace(page_, features);
    stub_.emplace(*link_, std::chrono::milliseconds(1), RemoteStub::Leaving::kStopped);
    memory_.emplace(*stub_, addressSize);
  }

  /// `4` when that many were read, `4 not there` or `4 not allowed` when they were fewer than
  /// asked.
  std::string Read(std::uint64_t address, std::size_t size, std::uint8_t space = 0) {
    std::vector<std::byte> bytes(size, std::byte{0xEE});
    const MemoryRead read = memory_->Read(address, space, bytes);
    for (std::size_t i = 0; i < size; ++i) {
      const auto expected = i < read.size ? static_cast<std::byte>(address + i) : std::byte{0xEE};
      EXPECT_EQ(bytes[i], expected) << "at " << address + i;
    }
    std::string text = std::to_string(read.size);
    if (read.size < size) {
      text += read.gap == MemoryGap::kNotAllowed ? " not allowed" : " not there";
    }
    return text;
  }

  Page page_;
  std::optional<FakeStub> link_;
  std::optional<RemoteStub> stub_;
  std::optional<RemoteMemory> memory_;
};

struct Row {
  std::uint64_t address;
  std::size_t size;
  std::string outcome;
  Requests requests;
};

TEST_F(RemoteMemoryTest, AsksForNoByteTwiceNorForMoreThanIsRead) {
  Open(8);
  const std::vector<Row> rows = {
      {0x1010, 4, "4", {"m1010,4"}}, {0x1010, 4, "4", {}},
      {0x1012, 1, "1", {}},          {0x1012, 4, "4", {"m1014,2"}},
      {0x100e, 4, "4", {"m100e,2"}}, {0x100c, 12, "12", {"m100c,2", "m1016,2"}},
      {0x1020, 2, "2", {"m1020,2"}}, {0x101e, 6, "6", {"m101e,2", "m1022,2"}},
      {0x1000, 0, "0", {}},          {0, 0, "0", {}},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(Read(row.address, row.size), row.outcome) << std::hex << row.address;
    EXPECT_EQ(link_->TakeRequests(), row.requests) << std::hex << row.address;
  }
  memory_->Refresh();
  EXPECT_EQ(Read(0x1010, 4), "4");
  EXPECT_EQ(link_->TakeRequests(), Requests{"m1010,4"});
}

TEST_F(RemoteMemoryTest, FindsTheFirstByteThatCannotBeRead) {
  const std::vector<Row> rows = {
      {0, 8, "0 not there", {"m0,8", "m0,4", "m0,2", "m0,1"}},
      {0x3000, 1, "0 not there", {"m3000,1"}},
      {0x2000, 2, "0 not allowed", {"m2000,2", "m2000,1"}},
      {0x1ffc, 4, "4", {"m1ffc,4"}},
      {0x1ffc, 8, "4 not allowed", {"m1ffc,8", "m1ffc,4", "m2000,4", "m2000,2", "m2000,1"}},
      {0x1fff, 2, "1 not allowed", {"m1fff,2", "m1fff,1", "m2000,1"}},
      {0xffe, 4, "0 not there", {"mffe,4", "mffe,2", "mffe,1"}},
  };
  for (const Row& row : rows) {
    Open(8);
    EXPECT_EQ(Read(row.address, row.size), row.outcome) << std::hex << row.address;
    EXPECT_EQ(link_->TakeRequests(), row.requests) << std::hex << row.address;
    // What could not be read is not asked for again either.
    EXPECT_EQ(Read(row.address, row.size), row.outcome) << std::hex << row.address;
    EXPECT_EQ(link_->TakeRequests(), Requests{}) << std::hex << row.address;
  }
}

TEST_F(RemoteMemoryTest, EndsWithTheAddressSpace) {
  struct Limit {
    std::uint32_t addressSize;
    std::uint64_t address;
    std::size_t size;
    Requests requests;
  };
  const std::vector<Limit> rows = {
      {4, 0xfffffffc, 4, {"mfffffffc,4", "mfffffffc,2", "mfffffffc,1"}},
      {4, 0xfffffffe, 4, {"mfffffffe,2", "mfffffffe,1"}},
      {4, 0x100000000, 4, {}},
      {4, ~std::uint64_t{0}, 4, {}},
      {8, ~std::uint64_t{0}, 4, {}},
      {8, ~std::uint64_t{0} - 2, 8, {"mfffffffffffffffd,2", "mfffffffffffffffd,1"}},
      {2, 0xffff, 8, {"mffff,1"}},
  };
  for (const Limit& row : rows) {
    Open(row.addressSize);
    EXPECT_EQ(Read(row.address, row.size), "0 not there") << std::hex << row.address;
    EXPECT_EQ(link_->TakeRequests(), row.requests) << std::hex << row.address;
  }
}

TEST_F(RemoteMemoryTest, KeepsThePromisesOfEverySource) {
  contract::KnownMemory known;
  known.address = 0x1fc0;
  for (int i = 0; i < 64; ++i) known.bytes.push_back(static_cast<std::byte>(0xc0 + i));
  known.end = MemoryGap::kNotAllowed;
  known.gaps = {{0, MemoryGap::kNotThere}, {0x2800, MemoryGap::kNotAllowed}};
  for (const char* features : {"QStartNoAckMode+", "PacketSize=30", "binary-upload+"}) {
    for (const std::uint32_t addressSize : {4U, 8U}) {
      Open(addressSize, features);
      EXPECT_EQ(contract::CheckMemorySource(*memory_, known), std::vector<std::string>{});
    }
  }
}

TEST_F(RemoteMemoryTest, HasOneSpaceOnly) {
  Open(8);
  EXPECT_EQ(Read(0x1000, 4, 1), "0 not there");
  EXPECT_EQ(link_->TakeRequests(), Requests{});
}

TEST_F(RemoteMemoryTest, KeepsToTheSizeOfPackets) {
  Open(8, "PacketSize=41");
  EXPECT_EQ(Read(0x1000, 70), "70");
  EXPECT_EQ(link_->TakeRequests(), (Requests{"m1000,20", "m1020,20", "m1040,6"}));
  Open(8, "PacketSize=41;binary-upload+");
  EXPECT_EQ(Read(0x1020, 40), "40");
  EXPECT_EQ(link_->TakeRequests(), (Requests{"x1020,20", "x1040,8"}));
}

TEST_F(RemoteMemoryTest, GoesOnWhereAStubGivesLess) {
  Open(8);
  link_->mostBytes = 3;
  EXPECT_EQ(Read(0x1000, 8), "8");
  EXPECT_EQ(link_->TakeRequests(), (Requests{"m1000,8", "m1003,5", "m1006,2"}));
}

TEST(FetchedBytes, AgreeWithAListOfBytesWhateverIsKept) {
  std::mt19937 random(7);
  for (int round = 0; round < 300; ++round) {
    targets::FetchedBytes fetched;
    std::vector<int> known(64, -1);
    for (int step = 0; step < 20; ++step) {
      const std::size_t address = random() % known.size();
      const std::size_t asked = 1 + random() % (known.size() - address);
      const auto end = known.begin() + static_cast<std::ptrdiff_t>(address + asked);
      const auto start = known.begin() + static_cast<std::ptrdiff_t>(address);
      const auto unknown = static_cast<std::size_t>(
          std::find_if(start, end, [](int byte) { return byte >= 0; }) - start);
      ASSERT_EQ(fetched.Unknown(address, asked), unknown);
      const std::size_t size = std::min<std::size_t>(unknown, 1 + random() % 8);
      std::vector<std::byte> bytes(size);
      for (std::size_t i = 0; i < size; ++i) {
        known[address + i] = static_cast<int>(random() % 256);
        bytes[i] = static_cast<std::byte>(known[address + i]);
      }
      fetched.Keep(address, bytes);
      std::vector<std::byte> copied(asked);
      const std::size_t copiedSize = fetched.Copy(address, copied);
      const auto firstUnknown = static_cast<std::size_t>(std::find(start, end, -1) - start);
      ASSERT_EQ(copiedSize, firstUnknown);
      for (std::size_t i = 0; i < copiedSize; ++i) {
        ASSERT_EQ(static_cast<int>(copied[i]), known[address + i]);
      }
    }
  }
}

}  // namespace
}  // namespace targettests

// Files of records: Intel HEX and S-records. The first byte says which of them the rest is.

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/ByteSource.h"
#include "fuzz/Require.h"
#include "targets/Error.h"
#include "targets/ImageReader.h"
#include "targets/RegionRequest.h"

namespace {

using fuzzing::Require;
using targets::ImageBlock;
using targets::ImageFormat;

void CheckBlocks(const std::vector<ImageBlock>& blocks, std::size_t size) {
  constexpr std::uint64_t kEnd = std::uint64_t{1} << 32U;
  std::uint64_t next = 0;
  std::size_t bytes = 0;
  Require(!blocks.empty(), "a file without data is an error");
  for (const ImageBlock& block : blocks) {
    Require(!block.bytes.empty(), "no block is empty");
    Require(&block == &blocks.front() || block.address > next, "blocks ascend and do not adjoin");
    next = std::uint64_t{block.address} + block.bytes.size();
    Require(next <= kEnd, "no block leaves 32 bits");
    bytes += block.bytes.size();
  }
  Require(bytes <= size / 2, "every byte takes two digits");
}

std::string Hexadecimal(const std::vector<unsigned>& bytes) {
  std::string text;
  for (const unsigned byte : bytes) {
    std::array<char, 3> digits{};
    std::snprintf(digits.data(), digits.size(), "%02X", byte & 0xFFU);
    text += digits.data();
  }
  return text;
}

unsigned Sum(const std::vector<unsigned>& bytes) {
  unsigned sum = 0;
  for (const unsigned byte : bytes) sum += byte;
  return sum;
}

/// One record for each byte, so that the reader has to put them together.
std::string Written(ImageFormat format, const std::vector<ImageBlock>& blocks) {
  std::string text;
  for (const ImageBlock& block : blocks) {
    for (std::size_t i = 0; i < block.bytes.size(); ++i) {
      const auto address = static_cast<std::uint32_t>(block.address + i);
      const auto byte = std::to_integer<unsigned>(block.bytes[i]);
      if (format == ImageFormat::kIntelHex) {
        std::vector<unsigned> base{2, 0, 0, 4, address >> 24U, address >> 16U & 0xFFU};
        base.push_back(0U - Sum(base));
        std::vector<unsigned> data{1, address >> 8U & 0xFFU, address & 0xFFU, 0, byte};
        data.push_back(0U - Sum(data));
        text += ":" + Hexadecimal(base) + "\n:" + Hexadecimal(data) + "\n";
      } else {
        std::vector<unsigned> data{
            6,   address >> 24U, address >> 16U & 0xFFU, address >> 8U & 0xFFU, address & 0xFFU,
            byte};
        data.push_back(~Sum(data));
        text += "S3" + Hexadecimal(data) + "\n";
      }
    }
  }
  return text + (format == ImageFormat::kIntelHex ? ":00000001FF\n" : "S70500000000FA\n");
}

void CheckSame(const std::vector<ImageBlock>& blocks, const std::vector<ImageBlock>& again) {
  Require(blocks.size() == again.size(), "what is written again reads as many blocks");
  for (std::size_t i = 0; i < blocks.size(); ++i) {
    Require(blocks[i].address == again[i].address && blocks[i].bytes == again[i].bytes,
            "what is written again reads the same");
  }
}

void CheckRequest(std::string_view text) {
  try {
    const targets::RegionRequest request = targets::ReadRegionRequest(text);
    Require(request.space <= 1, "there are two spaces");
    Require(!request.length || request.offset, "a length follows an offset");
    Require(text.find(request.path) != text.npos, "the path is part of the text");
  } catch (const targets::Error& error) {
    Require(!std::string_view(error.what()).empty(), "an error says what is wrong");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string_view text = fuzzing::AsText(data, size);
  CheckRequest(text);
  fuzzing::ByteSource header(text);
  const ImageFormat format =
      header.Byte() % 2 == 0 ? ImageFormat::kIntelHex : ImageFormat::kMotorolaS;
  text.remove_prefix(text.empty() ? 0 : 1);
  targets::FormatOf("input", text);
  try {
    const std::vector<ImageBlock> blocks = targets::ReadImage(format, text, "input");
    CheckBlocks(blocks, text.size());
    CheckSame(blocks, targets::ReadImage(format, Written(format, blocks), "again"));
  } catch (const targets::Error& error) {
    Require(std::string_view(error.what()).starts_with("'input', line "),
            "an error names the line");
  }
  return 0;
}

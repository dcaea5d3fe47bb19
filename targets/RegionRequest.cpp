#include "targets/RegionRequest.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <span>
#include <utility>

#include "targets/Error.h"
#include "targets/ImageReader.h"
#include "targets/Texts.h"

namespace targets {
namespace {

[[noreturn]] void Unusable(const std::string& sentence) {
  throw Error(ErrorCode::kFileUnusable, sentence);
}

/// Takes `@OFFSET[:LENGTH]` off the end of `file`, if it stands there.
void TakePart(std::string_view* file, RegionRequest* request) {
  const std::size_t mark = file->rfind('@');
  if (mark == file->npos) return;
  const std::string_view part = file->substr(mark + 1);
  const std::size_t colon = part.find(':');
  const auto offset = ReadPlainNumber(part.substr(0, colon));
  const auto length =
      colon == part.npos ? std::optional<std::uint64_t>() : ReadPlainNumber(part.substr(colon + 1));
  if (!offset || (colon != part.npos && !length)) return;
  request->offset = offset;
  request->length = length;
  *file = file->substr(0, mark);
}

void AddRaw(const RegionRequest& request, std::shared_ptr<const MemoryFile> file,
            MemoryRegions* regions) {
  const std::string bytes = std::to_string(file->Size()) + " bytes";
  const std::uint64_t offset = request.offset.value_or(0);
  if (offset >= file->Size()) {
    Unusable("the offset " + Hexadecimal(offset) + " lies behind the end of '" + request.path +
             "', which has " + bytes);
  }
  const std::uint64_t left = file->Size() - offset;
  const std::uint64_t length = request.length.value_or(left);
  if (length == 0) Unusable("a length of 0 leaves nothing of '" + request.path + "'");
  if (length > left) {
    Unusable("'" + request.path + "' has no " + std::to_string(length) + " bytes behind offset " +
             Hexadecimal(offset) + ", but " + std::to_string(left));
  }
  MemoryRegion region;
  region.space = request.space;
  region.address = request.address;
  region.size = length;
  region.origin = "'" + request.path + "'";
  region.file = std::move(file);
  region.fileOffset = offset;
  regions->Add(std::move(region));
}

void AddRecords(const RegionRequest& request, ImageFormat format, const MemoryFile& file,
                MemoryRegions* regions) {
  const std::string name = "'" + request.path + "'";
  const std::string kind(FormatName(format));
  if (request.offset || request.length) {
    Unusable(name + " holds " + kind + ": an offset and a length count the bytes of raw files");
  }
  if (file.Size() > kLargestRecordFile) {
    Unusable(name + " has more than " + std::to_string(kLargestRecordFile >> 20U) +
             " MiB, too much for " + kind);
  }
  for (ImageBlock& block : ReadImage(format, file.Text(), request.path)) {
    if (block.address > std::numeric_limits<std::uint64_t>::max() - request.address) {
      Unusable("the address " + Hexadecimal(block.address) + " in " + name + ", moved by " +
               Hexadecimal(request.address) + ", is past the end of the address space");
    }
    MemoryRegion region;
    region.space = request.space;
    region.address = request.address + block.address;
    region.size = block.bytes.size();
    region.origin = name;
    region.bytes = std::move(block.bytes);
    regions->Add(std::move(region));
  }
}

}  // namespace

std::optional<std::uint64_t> ReadPlainNumber(std::string_view text) {
  int base = 10;
  if (text.starts_with("0x") || text.starts_with("0X")) {
    text.remove_prefix(2);
    base = 16;
  }
  std::uint64_t value = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value, base);
  if (error != std::errc() || stop != end) return std::nullopt;
  return value;
}

RegionRequest ReadRegionRequest(std::string_view text) {
  const std::size_t equals = text.find('=');
  if (equals == text.npos || equals + 1 == text.size()) {
    Unusable("'" + std::string(text) +
             "' is no region of memory: " + "[SPACE:]ADDRESS=FILE[@OFFSET[:LENGTH]] is");
  }
  RegionRequest request;
  std::string_view place = text.substr(0, equals);
  if (const std::size_t colon = place.find(':'); colon != place.npos) {
    const std::string_view space = place.substr(0, colon);
    if (space != "0" && space != "1") {
      Unusable("'" + std::string(space) + "' in '" + std::string(text) +
               "' is no memory space: 0 and 1 are");
    }
    request.space = space == "1" ? 1 : 0;
    place.remove_prefix(colon + 1);
  }
  const auto address = ReadPlainNumber(place);
  if (!address) {
    Unusable("'" + std::string(place) + "' in '" + std::string(text) +
             "' is no address: a decimal number or one behind 0x is, below 2^64");
  }
  request.address = *address;
  std::string_view file = text.substr(equals + 1);
  TakePart(&file, &request);
  request.path = std::string(file);
  return request;
}

void AddRegions(const RegionRequest& request, MemoryRegions* regions) {
  auto file = std::make_shared<const MemoryFile>(request.path);
  // No record is longer than this.
  std::string beginning(600, '\0');
  beginning.resize(file->Read(0, std::as_writable_bytes(std::span(beginning))));
  const bool part = request.offset || request.length;
  const ImageFormat format = FormatOf(request.path, part ? std::string_view() : beginning);
  if (format == ImageFormat::kRaw) {
    AddRaw(request, std::move(file), regions);
  } else {
    AddRecords(request, format, *file, regions);
  }
}

}  // namespace targets

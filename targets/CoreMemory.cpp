#include "targets/CoreMemory.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace targets {
namespace {

/// The last of `pieces`, in order of their addresses, that begins at or before `address`.
template <typename Piece, typename Start>
const Piece* LastBefore(const std::vector<Piece>& pieces, std::uint64_t address, Start start) {
  const auto behind =
      std::upper_bound(pieces.begin(), pieces.end(), address,
                       [&](std::uint64_t at, const Piece& piece) { return at < start(piece); });
  return behind == pieces.begin() ? nullptr : &*(behind - 1);
}

/// The segments in order of their addresses. Where they overlap, which no good dump has, the one
/// that begins first has the bytes.
std::vector<Segment> Disjoint(std::vector<Segment> segments) {
  std::stable_sort(segments.begin(), segments.end(),
                   [](const Segment& a, const Segment& b) { return a.address < b.address; });
  std::vector<Segment> disjoint;
  std::uint64_t end = 0;
  for (Segment& segment : segments) {
    const std::uint64_t hidden = end > segment.address ? end - segment.address : 0;
    if (hidden >= segment.memorySize) continue;
    segment.address += hidden;
    segment.memorySize -= hidden;
    segment.fileOffset += hidden;
    segment.fileSize -= std::min(hidden, segment.fileSize);
    end = segment.address + segment.memorySize;
    disjoint.push_back(segment);
  }
  return disjoint;
}

}  // namespace

CoreMemory::CoreMemory(const ElfFile& core, std::vector<FileMapping> mappings)
    : core_(core), segments_(Disjoint(core.Segments())), mappings_(std::move(mappings)) {
  for (const Segment& segment : core.Segments()) {
    const std::uint64_t end = segment.fileOffset + segment.fileSize;
    if (end >= segment.fileOffset) completeSize_ = std::max(completeSize_, end);
  }
  savesWritten_ = SavesWrittenMemory();
}

void CoreMemory::UseFiles(std::vector<LoadedFile> files, std::vector<FileMapping> mappings,
                          std::time_t dumped) {
  files_.emplace(
      std::move(mappings), std::move(files),
      [this](std::uint64_t address, std::span<std::byte> bytes) {
        return ReadSaved(address, bytes);
      },
      dumped);
}

MemoryRead CoreMemory::Read(std::uint64_t address, std::uint8_t space, std::span<std::byte> bytes) {
  if (space != 0) return {};
  std::size_t done = 0;
  while (done < bytes.size()) {
    const std::uint64_t at = address + done;
    if (at < address) return {done, MemoryGap::kNotThere};
    const std::span<std::byte> rest = bytes.subspan(done);
    const Segment* const segment = SegmentAt(at);
    std::size_t size = 0;
    if (segment != nullptr && at - segment->address < segment->fileSize) {
      size = ReadSaved(at, rest);
    } else {
      size = ReadLeftOut(segment, at, rest);
    }
    if (size == 0) {
      const bool wasThere = segment != nullptr || MappingAt(at) != nullptr;
      return {done, wasThere ? MemoryGap::kNotSaved : MemoryGap::kNotThere};
    }
    done += size;
  }
  return {done, MemoryGap::kNotThere};
}

const Segment* CoreMemory::SegmentAt(std::uint64_t address) const {
  const Segment* const segment =
      LastBefore(segments_, address, [](const Segment& s) { return s.address; });
  return segment != nullptr && address - segment->address < segment->memorySize ? segment : nullptr;
}

const FileMapping* CoreMemory::MappingAt(std::uint64_t address) const {
  const FileMapping* const mapping =
      LastBefore(mappings_, address, [](const FileMapping& m) { return m.start; });
  return mapping != nullptr && address < mapping->end ? mapping : nullptr;
}

/// A kernel leaves out what was never written, and, where it is told so, all that belongs to no
/// file. In the second case there is not a single such segment with contents, the stack included.
bool CoreMemory::SavesWrittenMemory() const {
  return std::any_of(segments_.begin(), segments_.end(), [this](const Segment& segment) {
    return segment.isWritable && segment.fileSize == segment.memorySize &&
           MappingAt(segment.address) == nullptr;
  });
}

/// Up to the first byte that the dump should hold, but does not, or that it left out.
std::size_t CoreMemory::ReadSaved(std::uint64_t address, std::span<std::byte> bytes) const {
  const Segment* const segment = SegmentAt(address);
  if (segment == nullptr) return 0;
  const std::uint64_t inside = address - segment->address;
  const std::uint64_t offset = segment->fileOffset + inside;
  const std::span<const std::byte> contents = core_.Contents();
  if (inside >= segment->fileSize || offset < inside || offset >= contents.size()) return 0;
  const auto size =
      static_cast<std::size_t>(std::min({std::uint64_t{bytes.size()}, segment->fileSize - inside,
                                         std::uint64_t{contents.size()} - offset}));
  std::memcpy(bytes.data(), contents.data() + offset, size);
  return size;
}

std::size_t CoreMemory::ReadLeftOut(const Segment* segment, std::uint64_t address,
                                    std::span<std::byte> bytes) {
  if (!files_) return 0;
  std::uint64_t size = bytes.size();
  if (segment != nullptr) {
    size = std::min(size, segment->memorySize - (address - segment->address));
  } else {
    const auto next =
        std::upper_bound(segments_.begin(), segments_.end(), address,
                         [](std::uint64_t at, const Segment& other) { return at < other.address; });
    if (next != segments_.end()) size = std::min(size, next->address - address);
  }
  const std::span<std::byte> part = bytes.first(static_cast<std::size_t>(size));
  if (segment == nullptr || !segment->isWritable) return files_->Read(address, part);
  if (!savesWritten_ || segment->fileSize != 0) return 0;
  const std::uint64_t zeros = std::min(size, files_->ZeroFilled(address));
  std::memset(part.data(), 0, static_cast<std::size_t>(zeros));
  return static_cast<std::size_t>(zeros);
}

}  // namespace targets

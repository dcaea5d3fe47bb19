#ifndef STRINGRESOLVER_TARGETS_MEMORYFILE_H
#define STRINGRESOLVER_TARGETS_MEMORYFILE_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace targets {

/// A regular file whose bytes are read when they are asked for. Nothing of it is kept in memory, so
/// that its size does not matter, and one that becomes shorter meanwhile only reads short.
class MemoryFile {
 public:
  /// Opens `path`. Throws `Error` (`kFileUnusable`): missing, unreadable, a directory, a pipe or a
  /// device, empty.
  explicit MemoryFile(const std::string& path);
  ~MemoryFile();
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  [[nodiscard]] const std::string& Path() const { return path_; }
  /// In bytes, when the file was opened: at least 1.
  [[nodiscard]] std::uint64_t Size() const { return size_; }

  /// Copies the bytes from `offset` on into `bytes`, and returns how many there were. Throws
  /// `Error` (`kFileUnusable`) when reading fails.
  std::size_t Read(std::uint64_t offset, std::span<std::byte> bytes) const;

  /// All of it, for files whose `Size` is known to be small. Throws as `Read` does.
  [[nodiscard]] std::string Text() const;

 private:
  std::string path_;
  int descriptor_ = -1;
  std::uint64_t size_ = 0;
};

}  // namespace targets

#endif  // STRINGRESOLVER_TARGETS_MEMORYFILE_H

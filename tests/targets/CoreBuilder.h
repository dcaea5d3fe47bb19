#ifndef STRINGRESOLVER_TESTS_TARGETS_COREBUILDER_H
#define STRINGRESOLVER_TESTS_TARGETS_COREBUILDER_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "targets/LabelSource.h"
#include "targets/LoadedFiles.h"

namespace targettests {

/// Makes core dumps by hand: segments and notes, as a kernel writes them.
class CoreBuilder {
 public:
  struct Kind {
    std::uint16_t machine;
    std::uint32_t pointerSize;
    targets::ByteOrder order;
  };
  static Kind X64();
  static Kind X86();
  static Kind PowerPc();  ///< 32-bit, big-endian

  explicit CoreBuilder(Kind kind) : kind_(kind) {}

  enum class Access { kRead, kWrite };

  /// A segment of `memorySize` bytes, of which the dump holds `bytes`.
  CoreBuilder& Add(std::uint64_t address, std::string bytes, std::uint64_t memorySize,
                   Access access = Access::kWrite);
  /// A segment that the dump holds whole.
  CoreBuilder& Add(std::uint64_t address, std::string bytes, Access access = Access::kWrite) {
    const std::size_t size = bytes.size();
    return Add(address, std::move(bytes), size, access);
  }
  CoreBuilder& AddMapping(targets::FileMapping mapping);
  /// An entry of the auxiliary vector.
  CoreBuilder& AddAuxiliary(std::uint64_t type, std::uint64_t value);
  /// A note of a process.
  CoreBuilder& AddProcess();
  /// Loads the program or library `path` in pages of 4 KiB, with a mapping for each segment. The
  /// dump holds its writable segments whole, and of the others, to which the process had this
  /// access, the beginning of the first.
  CoreBuilder& Load(const std::string& path, std::uint64_t loadBias, Access others = Access::kRead,
                    std::size_t beginning = 4096);

  /// `value` as the target holds it.
  [[nodiscard]] std::string Number(std::uint64_t value, std::size_t size) const;
  [[nodiscard]] std::string Word(std::uint64_t value) const {
    return Number(value, kind_.pointerSize);
  }

  /// The dump.
  [[nodiscard]] std::string Bytes() const;

 private:
  struct Piece {
    std::uint64_t address;
    std::string bytes;
    std::uint64_t memorySize;
    Access access;
  };

  [[nodiscard]] std::string Notes() const;
  [[nodiscard]] std::string Note(std::uint32_t type, const std::string& contents) const;
  [[nodiscard]] std::string Header(std::uint64_t count) const;
  [[nodiscard]] std::string ProgramHeader(std::uint32_t type, std::uint32_t flags,
                                          std::uint64_t offset, std::uint64_t address,
                                          std::uint64_t fileSize, std::uint64_t memorySize) const;

  Kind kind_;
  std::vector<Piece> pieces_;
  std::vector<targets::FileMapping> mappings_;
  std::string auxiliary_;
  bool hasProcess_ = false;
};

/// A folder for the files of one test, removed at its end.
class TestFolder {
 public:
  TestFolder();
  TestFolder(const TestFolder&) = delete;
  TestFolder& operator=(const TestFolder&) = delete;
  ~TestFolder();
  /// Writes a file, and returns its path.
  std::string Write(const std::string& name, const std::string& bytes) const;
  [[nodiscard]] std::string Path(const std::string& name) const { return path_ + "/" + name; }

 private:
  std::string path_;
};

}  // namespace targettests

#endif  // STRINGRESOLVER_TESTS_TARGETS_COREBUILDER_H

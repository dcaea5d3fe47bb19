#ifndef STRINGRESOLVER_TARGETS_COREDUMP_H
#define STRINGRESOLVER_TARGETS_COREDUMP_H

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "targets/CoreMemory.h"
#include "targets/CoreNotes.h"
#include "targets/ElfFile.h"
#include "targets/LoadedFiles.h"
#include "targets/MemorySource.h"

namespace targets {

/// A core dump: the memory of a process in an ELF file, and the files that it had loaded. With
/// `Program` and `Libraries` a `LoadedProgram` is made, the labels that belong to this memory.
/// Not for use by two threads at once.
class CoreDump {
 public:
  /// Opens the core dump `path` of the program `program`, or else of the one that it names itself.
  /// Throws `Error` (`kFileUnusable`) when one of them is missing or no file of its kind, when they
  /// are of different machines, and when the dump does not say where the program was loaded.
  explicit CoreDump(const std::string& path, const std::optional<std::string>& program = {});

  /// Owned by this object.
  [[nodiscard]] MemorySource& Memory() { return memory_; }

  /// The program, `path` being the file to read.
  [[nodiscard]] const LoadedFile& Program() const { return program_; }

  /// The shared libraries in the order in which the dynamic linker searches them, as far as the
  /// dump has it, else in order of their addresses.
  [[nodiscard]] const std::vector<LoadedFile>& Libraries() const { return libraries_; }

  /// What is wrong with the dump, or with the program as its, that does not prevent reading it:
  /// sentences without a full stop.
  [[nodiscard]] const std::vector<std::string>& Warnings() const { return warnings_; }

 private:
  void CheckContents();
  [[nodiscard]] std::optional<LoadedFile> FindProgram(const std::vector<LoadedFile>& files) const;
  [[nodiscard]] std::string FindProgramPath(const std::optional<LoadedFile>& loaded);
  void CheckMachine(const ElfFile& program) const;
  [[nodiscard]] std::uint64_t LoadBias(const ElfFile& program,
                                       const std::optional<LoadedFile>& loaded) const;
  void WarnOfOtherBuild(const ElfFile& program, const std::optional<LoadedFile>& loaded);
  void UseFiles(const std::optional<LoadedFile>& loaded, std::vector<LoadedFile> files);

  ElfFile core_;
  CoreNotes notes_;
  CoreMemory memory_;
  LoadedFile program_;
  std::vector<LoadedFile> libraries_;
  std::vector<std::string> warnings_;
};

}  // namespace targets

#endif  // STRINGRESOLVER_TARGETS_COREDUMP_H

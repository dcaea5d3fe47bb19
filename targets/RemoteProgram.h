#ifndef STRINGRESOLVER_TARGETS_REMOTEPROGRAM_H
#define STRINGRESOLVER_TARGETS_REMOTEPROGRAM_H

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "targets/ElfProgram.h"
#include "targets/RemoteLink.h"
#include "targets/RemoteMemory.h"
#include "targets/RemotePlacement.h"
#include "targets/RemoteStub.h"

namespace targets {

/// A program in an ELF file that runs behind a stub: labels and types from the file, at the
/// addresses where the target has them, and memory from the stub. The target stays stopped as long
/// as this object lives. Of what else the target has loaded, nothing is known.
class RemoteProgram {
 public:
  struct Options {
    std::string debugFolder = "/usr/lib/debug";
    /// The time for each answer of the stub, above 0.
    std::chrono::milliseconds timeout{5000};
    RemoteStub::Leaving leaving = RemoteStub::Leaving::kGoOn;
  };

  using Connect = std::function<std::unique_ptr<RemoteLink>()>;

  /// Speaks with the stub that `connect` leads to about the program in the file `path`. `connect`
  /// is called once, when the file is known to be a program. Throws what it throws, and `Error`: as
  /// `ElfProgram` does, and `kTargetLost`.
  RemoteProgram(std::string path, const Connect& connect, Options options);

  /// Both are owned by this object, and are the same ones until `Reload`.
  [[nodiscard]] ElfProgram& Program() { return *program_; }
  [[nodiscard]] const ElfProgram& Program() const { return *program_; }
  [[nodiscard]] MemorySource& Memory() { return *memory_; }

  /// Why addresses may be wrong: a sentence without a full stop, or empty.
  [[nodiscard]] const std::string& Doubt() const { return placement_.doubt; }

  /// Opens the file anew and asks the stub anew where the program lies, over the same connection:
  /// many a stub ends with it. `currentFile` becomes the current source file, if given. Throws as
  /// the constructor does; everything then stays as it was, unless the stub is lost.
  void Reload(const std::optional<std::string>& currentFile = std::nullopt);

 private:
  std::string path_;
  std::unique_ptr<RemoteLink> link_;
  Options options_;
  RemoteStub stub_;
  Placement placement_;
  std::unique_ptr<ElfProgram> program_;
  std::unique_ptr<RemoteMemory> memory_;
};

}  // namespace targets

#endif  // STRINGRESOLVER_TARGETS_REMOTEPROGRAM_H

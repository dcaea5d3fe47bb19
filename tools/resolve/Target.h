#ifndef STRINGRESOLVER_TOOLS_RESOLVE_TARGET_H
#define STRINGRESOLVER_TOOLS_RESOLVE_TARGET_H

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "targets/LabelSource.h"
#include "targets/MemorySource.h"
#include "tools/resolve/TargetOptions.h"

namespace tool {

/// What expressions are evaluated over: labels and types from one place, memory from the same or
/// from another.
class Target {
 public:
  Target() = default;
  Target(const Target&) = delete;
  Target& operator=(const Target&) = delete;
  virtual ~Target() = default;

  /// Both are owned by the target, and are the same ones until `Reload`.
  [[nodiscard]] virtual targets::LabelSource& Labels() = 0;
  [[nodiscard]] virtual targets::MemorySource& Memory() = 0;

  /// What is read, for people: `the initial memory of prog`.
  [[nodiscard]] virtual std::string Description() const = 0;

  /// How messages call the target: `prog`.
  [[nodiscard]] virtual std::string Name() const = 0;

  /// Makes `name` the current source file. Throws `targets::Error`.
  virtual void SetCurrentFile(const std::string& name) = 0;

  /// The source files that may be made the current one, sorted, each once.
  [[nodiscard]] virtual std::vector<std::string> SourceFiles() const { return {}; }

  /// Why names may be missing, or stand without their types; nothing when all could be read so far.
  [[nodiscard]] virtual std::optional<std::string> WhyIncomplete() const { return std::nullopt; }

  /// What the user should know before anything is evaluated: sentences without a full stop.
  [[nodiscard]] virtual std::vector<std::string> Warnings() const { return {}; }

  /// Size in bytes of the word that `#` reads in the second memory space; the pointer size unless
  /// given.
  [[nodiscard]] virtual std::optional<std::uint32_t> WordSize() const { return std::nullopt; }

  /// May its memory change while it is looked at?
  [[nodiscard]] virtual bool IsLive() const { return false; }

  /// Opens everything anew, since the program may have been built anew or has loaded libraries: the
  /// sources change. Throws `targets::Error`; the target then stays as it was.
  virtual void Reload() = 0;
};

/// Opens what the command line asks for, with its current source file. Throws `targets::Error`.
std::unique_ptr<Target> OpenTarget(const TargetOptions& options);

}  // namespace tool

#endif  // STRINGRESOLVER_TOOLS_RESOLVE_TARGET_H

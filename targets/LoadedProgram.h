#ifndef STRINGRESOLVER_TARGETS_LOADEDPROGRAM_H
#define STRINGRESOLVER_TARGETS_LOADEDPROGRAM_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "targets/ElfProgram.h"
#include "targets/Error.h"
#include "targets/LabelSource.h"
#include "targets/LoadedFiles.h"

namespace targets {

/// No object of a user's program lies above this address, wherever its heap and stacks are: the
/// widest user space of a 64-bit machine in common use is AArch64's, and that of x86-64 is half.
inline constexpr std::uint64_t kHighestUserAddress = (std::uint64_t{1} << 48U) - 1;

/// The labels and types of a program as it was loaded, with its shared libraries.
///
/// A name is looked for in the program first, then in the libraries in their order, each of which
/// is opened when a name, a type or an address leads to it. Names of the program hide those of the
/// libraries. What is only declared where it is used, a variable or a structure, is completed by
/// the file that defines it.
///
/// A library that cannot be used stops nothing: see `WhyIncomplete`. Not for use by two threads at
/// once.
class LoadedProgram final : public LabelSource {
 public:
  /// Opens `program`, with the errors of `ElfProgram`; `program.path` is the file that is read.
  /// `libraries` stand in the order in which they are searched.
  LoadedProgram(LoadedFile program, std::vector<LoadedFile> libraries, std::string debugFolder);
  ~LoadedProgram() override;

  /// Makes `name` the current source file: one of the program, or else of the first library that
  /// has it, whose names then come before the program's. Errors as `ElfProgram::SetCurrentFile`.
  void SetCurrentFile(const std::string& name);

  /// The source files of the program and of every library, sorted, each once. Opens all libraries.
  [[nodiscard]] std::vector<std::string> SourceFiles();

  /// Why names may be missing, or stand without their types; nothing when all could be read so far.
  [[nodiscard]] std::optional<std::string> WhyIncomplete() const;

  [[nodiscard]] std::uint32_t PointerSize() const override;
  [[nodiscard]] ByteOrder Order() const override;
  [[nodiscard]] std::string CurrentFile() const override;
  [[nodiscard]] bool CurrentFileIsAssembly() const override;
  std::optional<Label> FindLabel(std::string_view name) override;
  bool HasType(std::string_view name) override;
  std::optional<DataLableType> FindType(std::string_view name) override;
  bool IsIncomplete(std::string_view name) override;
  [[nodiscard]] const std::vector<MemberRemark>& Remarks() const override;
  void ListLabels(const std::function<void(const Listing&)>& visit) override;
  void ListTypes(const std::function<void(const Listing&)>& visit) override;
  std::optional<NamedObject> FindObject(std::string_view name) override;
  const TypeShape* Shape(TypeNumber type) override;
  TypeNumber FindShape(std::string_view name) override;
  std::optional<NearestLabel> LabelAt(std::uint64_t address) override;
  void VisitLabelNames(const std::function<void(std::string_view)>& visit) override;
  void VisitTypeNames(const std::function<void(std::string_view)>& visit) override;

 private:
  /// The program, or a library.
  struct Module {
    LoadedFile file;
    std::unique_ptr<ElfProgram> program;  ///< null before it is opened, and when it cannot be
    bool tried = false;
    /// Why it cannot be used, or not all of it; empty when there is nothing to say.
    std::string reason;
  };

  [[nodiscard]] ElfOptions OptionsOf(std::size_t index) const;
  /// Null when the module cannot be used.
  ElfProgram* Open(std::size_t index);
  /// Calls `visit` for the modules in the order of the search, until it returns true.
  bool Search(const std::function<bool(ElfProgram&)>& visit);
  [[nodiscard]] ElfProgram& Current() const { return *modules_[current_].program; }
  /// The module that gave a record this name; nothing when it is no such name.
  [[nodiscard]] std::optional<std::size_t> ModuleOfRecord(std::string_view name) const;
  std::optional<Label> FindElsewhere(std::string_view name, std::optional<Error> failure);
  DataLableType Complete(DataLableType record);
  /// The module that gives types such numbers; it may be one that does not exist.
  [[nodiscard]] static std::size_t ModuleOfType(TypeNumber type);
  using Lister = void (ElfProgram::*)(const std::function<void(const Listing&)>&);
  void List(Lister lister, const std::function<void(const Listing&)>& visit);

  std::vector<Module> modules_;  ///< the program first; all but it may be unopened
  std::size_t current_ = 0;      ///< the module with the current source file
  std::string debugFolder_;
  mutable std::vector<MemberRemark> remarks_;
};

}  // namespace targets

#endif  // STRINGRESOLVER_TARGETS_LOADEDPROGRAM_H

#ifndef STRINGRESOLVER_TARGETS_ELFPROGRAM_H
#define STRINGRESOLVER_TARGETS_ELFPROGRAM_H

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "targets/LabelSource.h"
#include "targets/MemorySource.h"

namespace targets {

/// How a program is opened.
struct ElfOptions {
  /// Where separate debug information is looked for, besides beside the program.
  std::string debugFolder = "/usr/lib/debug";
  /// Run-time address minus file address of everything in the file: where the program, or a shared
  /// library, was loaded. Every address handed out includes it; wraps within the pointer size.
  std::uint64_t loadBias = 0;
  /// No object lies above this run-time address, cut to what a pointer holds; that of the file's
  /// own last one unless given. The records of a target with a heap and a stack need theirs.
  std::optional<std::uint64_t> highestAddress = std::nullopt;
  /// Added to the names of records, so that those of several programs stay apart.
  std::string recordMark = {};
  /// The first number that types get. The numbers of several programs stay apart when each has a
  /// range of its own.
  TypeNumber firstTypeNumber = 1;
};

/// A linked program in an ELF file: labels and types from its DWARF debug information (versions 2
/// to 5) and its symbol table, memory from its loadable segments. Labels have the addresses
/// that they have once the program is loaded with `ElfOptions::loadBias`.
///
/// Names are indexed when the program is opened; types are built when first asked for, and kept.
/// Not for use by two threads at once.
class ElfProgram final : public LabelSource {
 public:
  /// Opens `path`, and with it the file that its debug information was moved to, which is looked
  /// for beside the program and under `ElfOptions::debugFolder`: that file counts where it belongs
  /// to the program by build-id and checksum; when it does not, or is not there, a name that is not
  /// found fails with that reason. The current source file is the one that defines `main`, or else
  /// the first of the program. Throws `Error` (`kFileUnusable`, `kNoNames`, and `kBrokenInfo` when
  /// nothing at all can be read). Debug information that is broken in part does not stop the
  /// opening: what can be read is used, and a name that is not found there fails with `kBrokenInfo`
  /// instead of counting as unknown. The listings end with the same failure, after all that could
  /// be read.
  explicit ElfProgram(const std::string& path, ElfOptions options = {});
  ~ElfProgram() override;

  /// The program's initial memory, owned by this object, at the addresses of the file, whatever the
  /// load bias. Only space 0 has contents.
  [[nodiscard]] MemorySource& Memory();

  /// Makes `name` the current source file. It may be the full path, a trailing part of it that
  /// starts after a slash, or the base name. Throws `Error` (`kFileUnusable`) that names similar
  /// files when the program has no such file, `kAmbiguous` when several are meant; the current file
  /// then stays. A program without debug information takes any name: it only selects the dialect.
  void SetCurrentFile(const std::string& name);

  /// The program's source files as its debug information names them, sorted, each once.
  [[nodiscard]] std::vector<std::string> SourceFiles() const;

  /// Why names may be missing, or stand without their types; nothing when all could be read so far.
  [[nodiscard]] std::optional<std::string> WhyIncomplete() const;

  /// The label that a declaration of the variable `name` makes of what another file defines at the
  /// run-time address `address`. Nothing without a declaration. Errors as `FindLabel`.
  std::optional<Label> FindDeclared(std::string_view name, std::uint64_t address);

  [[nodiscard]] std::uint32_t PointerSize() const override;
  [[nodiscard]] ByteOrder Order() const override;
  [[nodiscard]] std::string CurrentFile() const override;
  [[nodiscard]] bool CurrentFileIsAssembly() const override;
  std::optional<Label> FindLabel(std::string_view name) override;
  std::optional<NamedObject> FindObject(std::string_view name) override;
  bool HasType(std::string_view name) override;
  std::optional<DataLableType> FindType(std::string_view name) override;
  bool IsIncomplete(std::string_view name) override;
  [[nodiscard]] const std::vector<MemberRemark>& Remarks() const override;
  void ListLabels(const std::function<void(const Listing&)>& visit) override;
  void ListTypes(const std::function<void(const Listing&)>& visit) override;
  const TypeShape* Shape(TypeNumber type) override;
  TypeNumber FindShape(std::string_view name) override;
  std::optional<NearestLabel> LabelAt(std::uint64_t address) override;
  void VisitLabelNames(const std::function<void(std::string_view)>& visit) override;
  void VisitTypeNames(const std::function<void(std::string_view)>& visit) override;

 private:
  struct Parts;
  std::unique_ptr<Parts> parts_;
};

}  // namespace targets

#endif  // STRINGRESOLVER_TARGETS_ELFPROGRAM_H

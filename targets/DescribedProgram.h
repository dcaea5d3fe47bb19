#ifndef STRINGRESOLVER_TARGETS_DESCRIBEDPROGRAM_H
#define STRINGRESOLVER_TARGETS_DESCRIBEDPROGRAM_H

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "targets/LabelSource.h"
#include "targets/MemorySource.h"

namespace targets {

/// A program that a text file describes: pointer size, byte order, labels with addresses and types,
/// structures, enumerations, memory. For targets whose tools leave no debug information that can be
/// read. docs/DESCRIBE.md defines the format.
///
/// Everything is read and checked when it is opened. Not for use by two threads at once.
class DescribedProgram final : public LabelSource {
 public:
  /// Opens a description of up to 16 MiB. No object lies above `highestAddress`, nor above the
  /// labels and the memory of the description. Throws `Error` (`kFileUnusable`): what is wrong in
  /// the file names it, the line and the column.
  static std::unique_ptr<DescribedProgram> Open(const std::string& path,
                                                std::uint64_t highestAddress = 0);

  /// The same from a text; `path` is how messages call it, and its folder where paths begin.
  DescribedProgram(std::string_view text, const std::string& path,
                   std::uint64_t highestAddress = 0);
  ~DescribedProgram() override;

  /// The memory that the description gives, owned by this object.
  [[nodiscard]] MemorySource& Memory();
  /// The word of the second memory space, in bytes, if the description gives it.
  [[nodiscard]] std::optional<std::uint32_t> WordSize() const;
  /// Any name: it only selects the dialect, by its ending.
  void SetCurrentFile(const std::string& name);

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

#endif  // STRINGRESOLVER_TARGETS_DESCRIBEDPROGRAM_H

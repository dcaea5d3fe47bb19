#ifndef STRINGRESOLVER_TARGETS_ELFSYMBOLS_H
#define STRINGRESOLVER_TARGETS_ELFSYMBOLS_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "targets/ElfFile.h"
#include "targets/NameTable.h"

namespace targets {

/// A defined symbol.
struct ElfSymbol {
  std::uint64_t value = 0;
  std::uint64_t size = 0;     ///< in bytes; 0 when the table does not say
  std::uint16_t section = 0;  ///< its number, or one of the numbers that stand for none
  bool isFunction = false;
  bool isThreadLocal = false;
  bool isGlobal = false;
  /// The source file that the table puts it under; empty when it says nothing.
  std::string_view file;
};

/// The labels of a program's symbol table (of the dynamic one if that is all there is). Read when
/// first asked for: with debug information most programs' expressions never need it.
class ElfSymbols {
 public:
  explicit ElfSymbols(const ElfFile& file) : file_(file) {}

  /// True when there is at least one label.
  [[nodiscard]] bool Any();

  [[nodiscard]] bool Has(std::string_view name);

  /// The symbol called `name`: a global one first, then the local one of `currentFile` (a path or
  /// base name), then a lone local one. Throws `Error` (`kAmbiguous`) when that leaves several.
  std::optional<ElfSymbol> Find(std::string_view name, std::string_view currentFile);

  /// All symbols by number; names may repeat.
  [[nodiscard]] std::uint32_t Count();
  [[nodiscard]] std::string_view NameOf(std::uint32_t number) const {
    return names_.NameOf(number);
  }
  [[nodiscard]] const ElfSymbol& At(std::uint32_t number) const { return symbols_[number]; }

 private:
  void ReadOnce();
  void ReadTable(Elf_Scn* section, const GElf_Shdr& header);
  [[nodiscard]] bool IsMappingSymbol(std::string_view name) const;

  const ElfFile& file_;
  bool read_ = false;
  NameTable names_;
  std::vector<ElfSymbol> symbols_;
};

}  // namespace targets

#endif  // STRINGRESOLVER_TARGETS_ELFSYMBOLS_H

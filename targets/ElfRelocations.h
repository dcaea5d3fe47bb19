#ifndef STRINGRESOLVER_TARGETS_ELFRELOCATIONS_H
#define STRINGRESOLVER_TARGETS_ELFRELOCATIONS_H

#include <cstdint>
#include <vector>

#include "targets/ElfFile.h"

namespace targets {

/// A pointer-sized word that the loader fills in.
struct RelocatedWord {
  std::uint64_t address = 0;
  std::uint64_t value = 0;
};

/// The words that relocation gives another value than the file holds, for a program loaded where it
/// was linked, ascending by address, one per address. Words that depend on other modules are left
/// out: only the loader knows them.
std::vector<RelocatedWord> RelocatedWords(const ElfFile& file);

}  // namespace targets

#endif  // STRINGRESOLVER_TARGETS_ELFRELOCATIONS_H

#ifndef STRINGRESOLVER_TARGETS_LINKMAP_H
#define STRINGRESOLVER_TARGETS_LINKMAP_H

#include <cstdint>
#include <vector>

#include "targets/LabelSource.h"
#include "targets/LoadedFiles.h"
#include "targets/MemorySource.h"

namespace targets {

/// Puts `libraries` into the order in which the dynamic linker searches them, as its list in the
/// memory of the target has it: the list that the dynamic section of `program` leads to. Libraries
/// that the list lacks, and all when there is no list to be read, keep their order behind the
/// others. Throws what `memory` throws.
void OrderAsLinked(const LoadedFile& program, std::uint32_t pointerSize, ByteOrder order,
                   MemorySource& memory, std::vector<LoadedFile>* libraries);

}  // namespace targets

#endif  // STRINGRESOLVER_TARGETS_LINKMAP_H

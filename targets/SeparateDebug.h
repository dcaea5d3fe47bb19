#ifndef STRINGRESOLVER_TARGETS_SEPARATEDEBUG_H
#define STRINGRESOLVER_TARGETS_SEPARATEDEBUG_H

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "targets/ElfFile.h"
#include "targets/Error.h"

namespace targets {

/// Where systems keep the debug information of their programs.
inline constexpr const char* kSystemDebugFolder = "/usr/lib/debug";

/// What a search for a file of debug information came to.
struct SeparateDebug {
  std::unique_ptr<ElfFile> file;  ///< null when none was found that belongs to the program
  /// Without a file: what the program refers to, and why it could not be used. Nothing when the
  /// program refers to no file, or only by its build-id, which every program may have.
  std::optional<Error> reason;
};

/// Finds the file that holds the debug information which was taken out of `program`: by the
/// program's build-id under `debugFolder`, then by its `.gnu_debuglink` beside the program, in
/// `.debug` there, and under `debugFolder`. A file whose build-id or checksum is another one is
/// passed over.
SeparateDebug FindSeparateDebug(const ElfFile& program, const std::string& debugFolder);

/// The file that `file` shares parts of its debug information with, by its `.gnu_debugaltlink`;
/// null when it names none. Throws `Error` (`kFileUnusable`) when the file is not there or is
/// another one, or when `file` names it in the way of DWARF 5, `.debug_sup`.
std::unique_ptr<ElfFile> FindSharedDebug(const ElfFile& file, const std::string& debugFolder);

/// The checksum that `.gnu_debuglink` holds: CRC-32 with the polynomial of IEEE 802.3.
std::uint32_t Checksum(std::span<const std::byte> bytes);

}  // namespace targets

#endif  // STRINGRESOLVER_TARGETS_SEPARATEDEBUG_H

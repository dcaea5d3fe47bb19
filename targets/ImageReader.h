#ifndef STRINGRESOLVER_TARGETS_IMAGEREADER_H
#define STRINGRESOLVER_TARGETS_IMAGEREADER_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace targets {

// The formats are read here, not with Debian's libsrecord: that library ends the program when a
// file cannot be opened, takes no notice of data behind the end record, and comes without the
// header for S-records.

/// How a file holds target memory.
enum class ImageFormat {
  kRaw,        ///< its bytes are the memory
  kIntelHex,   ///< records `:LLAAAATT...CC`, types 00 to 05
  kMotorolaS,  ///< records `S1`, `S2` and `S3` with `S0`, `S5` to `S9` around them
};

/// The format that a file's name says, or else its beginning. The endings `.bin`, `.raw`, `.img`
/// and `.rom` mean raw bytes; `.hex`, `.ihex`, `.ihx`, `.ihe` and `.h86` Intel HEX; `.srec`,
/// `.s19`, `.s28`, `.s37`, `.sre`, `.mot` and `.mhx` S-records; in any case of letters. A file of
/// another name is Intel HEX when its first line is a colon and at least ten hexadecimal digits,
/// and S-records when it is an `S`, a digit and at least six hexadecimal ones; it is raw otherwise.
/// `beginning` holds the first bytes of the file, 600 or all of them: no record is longer.
ImageFormat FormatOf(std::string_view path, std::string_view beginning);

/// What people call the format: `Intel HEX`.
std::string_view FormatName(ImageFormat format);

/// Bytes without a gap.
struct ImageBlock {
  std::uint32_t address = 0;  ///< as the records give it
  std::vector<std::byte> bytes;
};

/// The memory that the records in `text` describe, ascending; adjoining records make one block.
/// `format` is not `kRaw`; `name` is how messages call the file. `text` is below 4 GiB. Throws
/// `Error` (`kFileUnusable`) that names the line at fault: a record that is none, is cut short or
/// has a wrong checksum, count or type; bytes that are given twice; addresses above 32 bits; data
/// behind the end record, or no end record; no data at all.
std::vector<ImageBlock> ReadImage(ImageFormat format, std::string_view text,
                                  const std::string& name);

}  // namespace targets

#endif  // STRINGRESOLVER_TARGETS_IMAGEREADER_H

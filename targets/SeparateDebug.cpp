#include "targets/SeparateDebug.h"

#include <array>
#include <cstring>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <vector>

#include "targets/Texts.h"

namespace targets {
namespace {

namespace fs = std::filesystem;

/// Files above this size are not read through for their checksum: that would seem to hang.
constexpr std::size_t kMostChecked = std::size_t{4} << 30U;

constexpr std::size_t kSlices = 8;
using ChecksumTables = std::array<std::array<std::uint32_t, 256>, kSlices>;

/// Table n holds what a byte comes to after n more bytes of zeros, so that eight bytes take one
/// step: debug files are large.
constexpr ChecksumTables MakeChecksumTables() {
  constexpr std::uint32_t kPolynomial = 0xEDB88320;
  ChecksumTables tables{};
  for (std::uint32_t byte = 0; byte < 256; ++byte) {
    std::uint32_t value = byte;
    for (int bit = 0; bit < 8; ++bit) value = (value >> 1) ^ ((value & 1) * kPolynomial);
    tables[0][byte] = value;
  }
  for (std::size_t n = 1; n < kSlices; ++n) {
    for (std::size_t byte = 0; byte < 256; ++byte) {
      const std::uint32_t before = tables[n - 1][byte];
      tables[n][byte] = (before >> 8) ^ tables[0][before & 0xFF];
    }
  }
  return tables;
}

constexpr ChecksumTables kChecksumTables = MakeChecksumTables();

std::string Quoted(const std::string& path) {
  return "'" + path + "'";
}

/// A section that begins with a file name and a zero byte.
struct Link {
  std::string name;
  std::span<const std::byte> rest;
};

std::optional<Link> ReadLink(const ElfFile& file, const char* section) {
  const std::span<const std::byte> bytes = file.SectionBytes(section);
  const char* const text = reinterpret_cast<const char*>(bytes.data());
  const std::size_t length = bytes.empty() ? 0 : strnlen(text, bytes.size());
  if (length == 0 || length == bytes.size()) return std::nullopt;
  return Link{std::string(text, length), bytes.subspan(length + 1)};
}

/// The number behind the name, at the next multiple of four bytes.
std::optional<std::uint32_t> LinkChecksum(const Link& link, ByteOrder order) {
  const std::size_t padding = 3 - link.name.size() % 4;
  if (link.rest.size() < padding + 4) return std::nullopt;
  std::uint32_t value = 0;
  for (std::size_t i = 0; i < 4; ++i) {
    const std::size_t at = padding + (order == ByteOrder::kBig ? i : 3 - i);
    value = value << 8 | std::to_integer<std::uint32_t>(link.rest[at]);
  }
  return value;
}

std::string Digits(std::span<const std::byte> bytes) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string digits;
  for (const std::byte byte : bytes) {
    digits += kDigits[std::to_integer<std::size_t>(byte >> 4)];
    digits += kDigits[std::to_integer<std::size_t>(byte & std::byte{15})];
  }
  return digits;
}

/// Where the debug information with this build-id is kept; empty for a build-id too short.
std::string BuildIdPath(const std::string& digits, const std::string& debugFolder) {
  if (digits.size() < 4) return "";
  return debugFolder + "/.build-id/" + digits.substr(0, 2) + "/" + digits.substr(2) + ".debug";
}

/// The folders of `file`: as it was named, and where links lead to.
std::vector<fs::path> FoldersOf(const ElfFile& file) {
  std::error_code error;
  std::vector<fs::path> folders;
  for (const fs::path& path :
       {fs::absolute(file.Path(), error).lexically_normal(), fs::canonical(file.Path(), error)}) {
    const fs::path folder = path.parent_path();
    if (!path.empty() && (folders.empty() || folders.front() != folder)) folders.push_back(folder);
  }
  return folders;
}

class Search {
 public:
  Search(const ElfFile& program, const std::string& debugFolder)
      : program_(program), debugFolder_(debugFolder), buildId_(Digits(program.BuildId())) {}

  SeparateDebug Run() {
    Try(BuildIdPath(buildId_, debugFolder_), std::nullopt);
    const std::optional<Link> link = ReadLink(program_, ".gnu_debuglink");
    // The name is that of a file, not the way to one.
    if (link && link->name.find('/') == std::string::npos) {
      const std::optional<std::uint32_t> checksum = LinkChecksum(*link, program_.Order());
      if (checksum) TryLink(link->name, *checksum);
      if (!found_.file && !found_.reason) {
        found_.reason = Error(ErrorCode::kFileUnusable,
                              "the debug information of " + Quoted(program_.Path()) + " lies in " +
                                  Quoted(link->name) + ", which was not found");
      }
    }
    if (found_.file) found_.reason.reset();
    return std::move(found_);
  }

 private:
  void TryLink(const std::string& name, std::uint32_t checksum) {
    for (const fs::path& folder : FoldersOf(program_)) {
      Try((folder / name).string(), checksum);
      Try((folder / ".debug" / name).string(), checksum);
      Try(debugFolder_ + (folder / name).string(), checksum);
    }
  }

  void Try(const std::string& path, std::optional<std::uint32_t> checksum) {
    std::error_code error;
    if (found_.file || path.empty() || !fs::exists(path, error)) return;
    // The name may be the program's own, for a file in another folder.
    if (fs::equivalent(path, program_.Path(), error)) return;
    try {
      auto file = std::make_unique<ElfFile>(path, ElfFile::Use::kDebugInformation);
      const std::string why = WhyNot(*file, checksum);
      if (why.empty()) {
        found_.file = std::move(file);
      } else {
        PassOver("the debug file " + Quoted(path) + " does not belong to " +
                 Quoted(program_.Path()) + ": " + why);
      }
    } catch (const Error& unusable) {
      PassOver("the debug file of " + Quoted(program_.Path()) +
               " cannot be used: " + unusable.what());
    }
  }

  void PassOver(const std::string& sentence) {
    if (!found_.reason) found_.reason = Error(ErrorCode::kFileUnusable, sentence);
  }

  /// Why `file` is not the program's; empty when it is.
  std::string WhyNot(const ElfFile& file, std::optional<std::uint32_t> checksum) const {
    const std::string buildId = Digits(file.BuildId());
    // Found by its build-id, it must have the same; found by its name, it may have none.
    if ((!checksum || (!buildId.empty() && !buildId_.empty())) && buildId != buildId_) {
      return buildId.empty() ? "it has no build-id"
                             : "its build-id is " + buildId + ", not " + buildId_;
    }
    if (!checksum) return "";
    if (file.Contents().size() > kMostChecked) return "it is too large for a debug file";
    const std::uint32_t actual = Checksum(file.Contents());
    if (actual == *checksum) return "";
    return "its checksum is " + Hexadecimal(actual) + ", not " + Hexadecimal(*checksum);
  }

  const ElfFile& program_;
  const std::string& debugFolder_;
  std::string buildId_;
  SeparateDebug found_;
};

}  // namespace

SeparateDebug FindSeparateDebug(const ElfFile& program, const std::string& debugFolder) {
  return Search(program, debugFolder).Run();
}

std::unique_ptr<ElfFile> FindSharedDebug(const ElfFile& file, const std::string& debugFolder) {
  const auto apart = [&file](const std::string& rest) {
    return Error(ErrorCode::kFileUnusable,
                 "part of the debug information of " + Quoted(file.Path()) + " lies in " + rest);
  };
  if (file.HasSection(".debug_sup")) {
    // libdw takes the references to it for references within the file, and finds other types.
    throw apart("a supplementary file of DWARF 5 (.debug_sup), which this build cannot read");
  }
  const std::optional<Link> link = ReadLink(file, ".gnu_debugaltlink");
  if (!link) return nullptr;
  const std::string buildId = Digits(link->rest);
  std::vector<std::string> paths;
  for (const fs::path& folder : FoldersOf(file)) paths.push_back((folder / link->name).string());
  paths.push_back((fs::path(debugFolder) / ".dwz" / link->name).string());
  paths.push_back(BuildIdPath(buildId, debugFolder));
  std::string why = "which was not found";
  for (const std::string& path : paths) {
    std::error_code error;
    if (path.empty() || !fs::exists(path, error)) continue;
    try {
      auto shared = std::make_unique<ElfFile>(path, ElfFile::Use::kDebugInformation);
      if (Digits(shared->BuildId()) == buildId) return shared;
      why = "whose build-id is another one";
    } catch (const Error& unusable) {
      why = std::string("but ") + unusable.what();
    }
  }
  throw apart(Quoted(link->name) + ", " + why);
}

std::uint32_t Checksum(std::span<const std::byte> bytes) {
  const auto& tables = kChecksumTables;
  const auto at = [&bytes](std::size_t i) { return std::to_integer<std::uint32_t>(bytes[i]); };
  std::uint32_t sum = 0xFFFFFFFF;
  for (; bytes.size() >= kSlices; bytes = bytes.subspan(kSlices)) {
    sum ^= at(0) | at(1) << 8 | at(2) << 16 | at(3) << 24;
    sum = tables[7][sum & 0xFF] ^ tables[6][sum >> 8 & 0xFF] ^ tables[5][sum >> 16 & 0xFF] ^
          tables[4][sum >> 24] ^ tables[3][at(4)] ^ tables[2][at(5)] ^ tables[1][at(6)] ^
          tables[0][at(7)];
  }
  for (const std::byte byte : bytes) {
    sum = sum >> 8 ^ tables[0][(sum ^ std::to_integer<std::uint32_t>(byte)) & 0xFF];
  }
  return ~sum;
}

}  // namespace targets

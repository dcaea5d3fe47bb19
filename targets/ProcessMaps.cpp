#include "targets/ProcessMaps.h"

#include <elf.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <climits>
#include <tuple>
#include <utility>

#include "targets/Error.h"
#include "targets/LinkMap.h"

namespace targets {
namespace {

constexpr ByteOrder kOwnOrder =
    std::endian::native == std::endian::big ? ByteOrder::kBig : ByteOrder::kLittle;
constexpr std::string_view kLineFeed = "\\012";

/// Takes one line of the text apart, from the left.
class Fields {
 public:
  explicit Fields(std::string_view line) : rest_(line) {}

  std::uint64_t Number(int base, char end) {
    std::uint64_t number = 0;
    const char* const last = rest_.data() + rest_.size();
    const auto [at, error] = std::from_chars(rest_.data(), last, number, base);
    // The name may be missing, with all blanks before it.
    if (error != std::errc() || (at == last ? end != ' ' : *at != end)) Fail();
    rest_.remove_prefix(std::min(static_cast<std::size_t>(at - rest_.data()) + 1, rest_.size()));
    return number;
  }

  std::string_view Word() {
    const std::size_t end = rest_.find(' ');
    if (end == rest_.npos) Fail();
    const std::string_view word = rest_.substr(0, end);
    rest_.remove_prefix(end + 1);
    return word;
  }

  [[nodiscard]] std::string_view Rest() const {
    return rest_.substr(std::min(rest_.find_first_not_of(' '), rest_.size()));
  }

 private:
  [[noreturn]] static void Fail() {
    throw Error(ErrorCode::kBrokenInfo, "the system's list of memory mappings cannot be read");
  }

  std::string_view rest_;
};

ProcessMapping ParseLine(std::string_view line) {
  ProcessMapping mapping;
  Fields fields(line);
  mapping.start = fields.Number(16, '-');
  mapping.end = fields.Number(16, ' ');
  mapping.readable = fields.Word().starts_with('r');
  mapping.fileOffset = fields.Number(16, ' ');
  fields.Word();
  mapping.inode = fields.Number(10, ' ');
  mapping.name = fields.Rest();
  return mapping;
}

std::string WithLineFeeds(std::string name) {
  for (std::size_t at = name.find(kLineFeed); at != name.npos; at = name.find(kLineFeed, at + 1)) {
    name.replace(at, kLineFeed.size(), "\n");
  }
  return name;
}

std::string WithoutLineFeeds(std::string name) {
  for (std::size_t at = name.find('\n'); at != name.npos; at = name.find('\n', at)) {
    name.replace(at, 1, kLineFeed);
  }
  return name;
}

std::string Hexadecimal(std::uint64_t number) {
  std::array<char, 16> digits{};
  return {digits.data(), std::to_chars(digits.data(), digits.data() + 16, number, 16).ptr};
}

/// Of the program whose headers lie at `program.start`; that of this command when they do not.
std::uint32_t PointerSize(const LoadedFile& program, MemorySource& memory) {
  std::array<std::byte, EI_NIDENT> identification{};
  const MemoryRead read = memory.Read(program.start, 0, identification);
  if (read.size < identification.size()) return sizeof(void*);
  return std::to_integer<int>(identification[EI_CLASS]) == ELFCLASS64 ? 8 : 4;
}

/// Where a symbolic link leads; empty when that cannot be told.
std::string LinkTarget(const std::string& link) {
  std::string target(PATH_MAX + 16, '\0');
  const ssize_t length = readlink(link.c_str(), target.data(), target.size());
  target.resize(length < 0 ? 0 : static_cast<std::size_t>(length));
  return target;
}

/// A path by which the file `name` of `process` can be opened here. `link` leads to the very file,
/// but only if this command may follow it; `inode` is that file's.
std::string OpenablePath(const Process& process, const std::string& name, const std::string& link,
                         std::uint64_t inode) {
  struct stat exact {};
  const bool known = stat(link.c_str(), &exact) == 0;
  const std::string below = process.Path("root") + name;
  for (const std::string& candidate : {name, below}) {
    struct stat found {};
    if (stat(candidate.c_str(), &found) != 0) continue;
    const bool same = known ? found.st_dev == exact.st_dev && found.st_ino == exact.st_ino
                            : found.st_ino == inode;
    if (same) return candidate;
  }
  if (known) return link;
  // Some file systems show other inode numbers here than there. The build-id has the last word.
  struct stat found {};
  return stat(below.c_str(), &found) == 0 ? below : name;
}

}  // namespace

bool operator==(const ProcessFiles& a, const ProcessFiles& b) {
  const auto same = [](const LoadedFile& one, const LoadedFile& other) {
    const auto all = [](const LoadedFile& file) {
      return std::tie(file.path, file.loadBias, file.start, file.end, file.buildId);
    };
    return all(one) == all(other);
  };
  return same(a.program, b.program) && std::equal(a.libraries.begin(), a.libraries.end(),
                                                  b.libraries.begin(), b.libraries.end(), same);
}

std::vector<ProcessMapping> ParseMaps(std::string_view text) {
  std::vector<ProcessMapping> mappings;
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    mappings.push_back(ParseLine(text.substr(0, end)));
    text.remove_prefix(end == text.npos ? text.size() : end + 1);
  }
  return mappings;
}

const ProcessMapping* FindMapping(const std::vector<ProcessMapping>& mappings,
                                  std::uint64_t address) {
  const auto found =
      std::find_if(mappings.begin(), mappings.end(), [address](const ProcessMapping& mapping) {
        return address >= mapping.start && address < mapping.end;
      });
  return found == mappings.end() ? nullptr : &*found;
}

MemoryGap WhyUnreadable(const std::vector<ProcessMapping>& mappings, std::uint64_t address) {
  const ProcessMapping* const mapping = FindMapping(mappings, address);
  if (mapping == nullptr) return MemoryGap::kNotThere;
  if (!mapping->readable || mapping->inode == 0) return MemoryGap::kNotAllowed;
  const std::string_view name = mapping->name;
  const bool device = name.starts_with("/dev/") && !name.starts_with("/dev/shm/");
  if (device || name.starts_with("/secretmem")) return MemoryGap::kNotAllowed;
  // The file has become shorter than what is mapped of it.
  return MemoryGap::kNotThere;
}

ProcessFiles FindProcessFiles(Process& process, MemorySource& memory) {
  const std::vector<ProcessMapping> mappings = ParseMaps(process.Contents("maps"));
  std::vector<FileMapping> ofFiles;
  for (const ProcessMapping& mapping : mappings) {
    if (mapping.inode == 0) continue;
    ofFiles.push_back({mapping.start, mapping.end, mapping.fileOffset, mapping.name});
  }
  ProcessFiles files;
  const std::string exe = process.Path("exe");
  const std::string programName = WithoutLineFeeds(LinkTarget(exe));
  for (LoadedFile& file : FindLoadedFiles(ofFiles, memory)) {
    const bool isProgram = file.path == programName && files.program.path.empty();
    const ProcessMapping* const first = FindMapping(mappings, file.start);
    const std::string link = isProgram || first == nullptr
                                 ? exe
                                 : process.Path("map_files/" + Hexadecimal(first->start) + '-' +
                                                Hexadecimal(first->end));
    file.path =
        OpenablePath(process, WithLineFeeds(file.path), link, first == nullptr ? 0 : first->inode);
    if (isProgram) {
      files.program = std::move(file);
    } else {
      files.libraries.push_back(std::move(file));
    }
  }
  OrderAsLinked(files.program, PointerSize(files.program, memory), kOwnOrder, memory,
                &files.libraries);
  // A program whose headers are not part of its memory cannot have been moved either.
  if (files.program.path.empty()) files.program.path = OpenablePath(process, programName, exe, 0);
  return files;
}

}  // namespace targets

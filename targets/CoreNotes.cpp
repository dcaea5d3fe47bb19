#include "targets/CoreNotes.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>

#include "targets/TargetNumber.h"

namespace targets {
namespace {

/// How the kernel marks the path of a file that was removed while it was mapped.
constexpr std::string_view kRemoved = " (deleted)";

/// A note's contents, read word by word. A word is as long as a pointer.
class Words {
 public:
  Words(const ElfFile& core, std::span<const std::byte> bytes)
      : order_(core.Order()), size_(core.PointerSize()), bytes_(bytes) {}

  /// Nothing at the end.
  std::optional<std::uint64_t> Next() {
    if (bytes_.size() < size_) return std::nullopt;
    const std::uint64_t word = TargetNumber(bytes_.first(size_), order_);
    bytes_ = bytes_.subspan(size_);
    return word;
  }

  [[nodiscard]] std::span<const std::byte> Rest() const { return bytes_; }
  [[nodiscard]] std::size_t Size() const { return size_; }

 private:
  ByteOrder order_;
  std::size_t size_;
  std::span<const std::byte> bytes_;
};

/// The number of mappings, the unit of their offsets in bytes, start, end and offset of each, and
/// behind all of them their names, each with a zero byte.
std::vector<FileMapping> ReadMappings(Words words) {
  const auto count = words.Next();
  const auto unit = words.Next();
  const std::uint64_t entry = 3 * words.Size();
  if (!count || !unit || *count > words.Rest().size() / entry) return {};
  std::span<const std::byte> names = words.Rest().subspan(static_cast<std::size_t>(*count * entry));
  std::vector<FileMapping> mappings;
  for (std::uint64_t i = 0; i < *count; ++i) {
    FileMapping mapping;
    mapping.start = words.Next().value_or(0);
    mapping.end = words.Next().value_or(0);
    mapping.fileOffset = words.Next().value_or(0) * *unit;
    const auto* const text = reinterpret_cast<const char*>(names.data());
    const std::size_t length = names.empty() ? 0 : strnlen(text, names.size());
    if (length == names.size()) break;
    mapping.path.assign(text, length);
    // A file that was removed may be back by now; whether it is the same one is asked later.
    if (mapping.path.ends_with(kRemoved))
      mapping.path.resize(mapping.path.size() - kRemoved.size());
    names = names.subspan(length + 1);
    if (mapping.start < mapping.end && !mapping.path.empty()) {
      mappings.push_back(std::move(mapping));
    }
  }
  std::stable_sort(mappings.begin(), mappings.end(),
                   [](const auto& a, const auto& b) { return a.start < b.start; });
  return mappings;
}

void ReadAuxiliaryVector(Words words, CoreNotes* notes) {
  while (const auto type = words.Next()) {
    const auto value = words.Next();
    if (!value || *type == AT_NULL) return;
    if (*type == AT_PHDR) notes->programHeaders = value;
    if (*type == AT_ENTRY) notes->entry = value;
    if (*type == AT_EXECFN) notes->programName = value;
  }
}

void ReadNote(const ElfFile& core, std::string_view owner, std::uint32_t type,
              std::span<const std::byte> contents, CoreNotes* notes) {
  if (owner != "CORE") return;
  const Words words(core, contents);
  switch (type) {
    case NT_FILE:
      notes->mappings = ReadMappings(words);
      break;
    case NT_AUXV:
      ReadAuxiliaryVector(words, notes);
      break;
    case NT_PRSTATUS:
    case NT_PRPSINFO:
      notes->hasProcess = true;
      break;
    default:
      break;
  }
}

void ReadSegment(const ElfFile& core, const GElf_Phdr& header, CoreNotes* notes) {
  const std::uint64_t size = core.Contents().size();
  if (header.p_offset >= size) return;
  const std::uint64_t length = std::min<std::uint64_t>(header.p_filesz, size - header.p_offset);
  Elf_Data* const data = elf_getdata_rawchunk(
      core.Handle(), static_cast<std::int64_t>(header.p_offset), static_cast<std::size_t>(length),
      header.p_align == 8 ? ELF_T_NHDR8 : ELF_T_NHDR);
  if (data == nullptr) return;
  const std::span<const std::byte> bytes(static_cast<const std::byte*>(data->d_buf), data->d_size);
  GElf_Nhdr note{};
  std::size_t nameAt = 0;
  std::size_t contentsAt = 0;
  for (std::size_t at = 0; at < bytes.size();) {
    at = gelf_getnote(data, at, &note, &nameAt, &contentsAt);
    if (at == 0) return;
    std::string_view owner(reinterpret_cast<const char*>(bytes.data()) + nameAt, note.n_namesz);
    owner = owner.substr(0, owner.find('\0'));
    ReadNote(core, owner, note.n_type, bytes.subspan(contentsAt, note.n_descsz), notes);
  }
}

}  // namespace

CoreNotes ReadCoreNotes(const ElfFile& core) {
  CoreNotes notes;
  std::size_t count = 0;
  elf_getphdrnum(core.Handle(), &count);
  for (std::size_t i = 0; i < count; ++i) {
    GElf_Phdr header{};
    if (gelf_getphdr(core.Handle(), static_cast<int>(i), &header) == nullptr) break;
    if (header.p_type == PT_NOTE) ReadSegment(core, header, &notes);
  }
  return notes;
}

}  // namespace targets

#include "targets/RemotePlacement.h"

#include <elf.h>

#include "targets/Texts.h"

namespace targets {
namespace {

/// Every system loads programs in whole pages, and none has smaller ones.
constexpr std::uint64_t kPage = 4096;

bool IsPositionIndependent(const ElfFile& file) {
  return file.Header().e_type == ET_DYN;
}

std::uint64_t Number(std::string_view bytes, ByteOrder order) {
  std::uint64_t value = 0;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const std::size_t at = order == ByteOrder::kBig ? i : bytes.size() - 1 - i;
    value = value << 8 | static_cast<unsigned char>(bytes[at]);
  }
  return value;
}

std::uint64_t Difference(const ElfFile& file, std::uint64_t to, std::uint64_t from) {
  const std::uint64_t difference = to - from;
  return file.PointerSize() == 4 ? difference & 0xffffffffU : difference;
}

std::string Quoted(const std::string& text) {
  return "'" + text + "'";
}

}  // namespace

std::optional<std::uint64_t> VectorEntry(const ElfFile& file, std::string_view vector,
                                         std::uint64_t key) {
  const std::size_t word = file.PointerSize();
  for (; vector.size() >= 2 * word; vector.remove_prefix(2 * word)) {
    const std::uint64_t found = Number(vector.substr(0, word), file.Order());
    if (found == key) return Number(vector.substr(word, word), file.Order());
    if (found == AT_NULL) break;
  }
  return std::nullopt;
}

Placement PlacementOf(const ElfFile& file, const PlacementFacts& facts, const std::string& name) {
  const std::uint64_t entry = file.Header().e_entry;
  const bool moves = IsPositionIndependent(file);
  if (facts.auxiliaryVector) {
    const auto running = VectorEntry(file, *facts.auxiliaryVector, AT_ENTRY);
    const std::uint64_t bias = Difference(file, running.value_or(0), entry);
    const bool fits = running && (moves ? bias % kPage == 0 : bias == 0);
    const auto headers = VectorEntry(file, *facts.auxiliaryVector, AT_PHNUM);
    if (!fits || (headers && *headers != file.Header().e_phnum)) {
      return {0, "what runs behind " + Quoted(name) + " is not " + Quoted(file.Path()) +
                     ": it is entered at " + Hexadecimal(running.value_or(0)) +
                     ", and this program at " + Hexadecimal(entry)};
    }
    return {bias, ""};
  }
  if (facts.offsets && facts.offsets->text == facts.offsets->data) {
    return {Difference(file, facts.offsets->text, 0), ""};
  }
  if (facts.offsets) {
    return {facts.offsets->data, "the stub at " + Quoted(name) +
                                     " has moved the code and the data of " + Quoted(file.Path()) +
                                     " apart: only the addresses of data are right"};
  }
  if (!moves) return {};
  return {0, "the stub at " + Quoted(name) + " does not tell where " + Quoted(file.Path()) +
                 " was loaded: its addresses are used as they stand in the file"};
}

Placement FindPlacement(const ElfFile& file, RemoteStub& stub) {
  PlacementFacts facts;
  facts.auxiliaryVector = stub.AuxiliaryVector();
  if (!facts.auxiliaryVector) facts.offsets = stub.ProgramOffsets();
  return PlacementOf(file, facts, stub.Name());
}

}  // namespace targets

#include "targets/ElfRelocations.h"

#include <algorithm>
#include <array>
#include <optional>

namespace targets {
namespace {

/// The relocation types of a machine that fill one pointer-sized word.
struct MachineTypes {
  GElf_Half machine;
  /// base + addend
  GElf_Word relative;
  /// symbol + addend
  GElf_Word absolute;
  /// symbol, in the global offset table
  GElf_Word globalData;
};

constexpr std::array<MachineTypes, 9> kMachines{{
    {EM_X86_64, R_X86_64_RELATIVE, R_X86_64_64, R_X86_64_GLOB_DAT},
    {EM_386, R_386_RELATIVE, R_386_32, R_386_GLOB_DAT},
    {EM_AARCH64, R_AARCH64_RELATIVE, R_AARCH64_ABS64, R_AARCH64_GLOB_DAT},
    {EM_ARM, R_ARM_RELATIVE, R_ARM_ABS32, R_ARM_GLOB_DAT},
    {EM_PPC, R_PPC_RELATIVE, R_PPC_ADDR32, R_PPC_GLOB_DAT},
    {EM_PPC64, R_PPC64_RELATIVE, R_PPC64_ADDR64, R_PPC64_GLOB_DAT},
    {EM_S390, R_390_RELATIVE, R_390_64, R_390_GLOB_DAT},
    {EM_RISCV, R_RISCV_RELATIVE, R_RISCV_64, R_RISCV_64},
    {EM_SPARCV9, R_SPARC_RELATIVE, R_SPARC_64, R_SPARC_GLOB_DAT},
}};

std::optional<MachineTypes> TypesOf(const ElfFile& file) {
  const bool narrow = file.PointerSize() == 4;
  for (MachineTypes types : kMachines) {
    if (types.machine != file.Header().e_machine) continue;
    if (narrow && types.machine == EM_X86_64) types.absolute = R_X86_64_32;
    if (narrow && types.machine == EM_S390) types.absolute = R_390_32;
    if (narrow && types.machine == EM_RISCV) types.absolute = types.globalData = R_RISCV_32;
    return types;
  }
  return std::nullopt;
}

class Reader {
 public:
  Reader(const ElfFile& file, const MachineTypes& types) : file_(file), types_(types) {}

  std::vector<RelocatedWord> ReadAll() {
    Elf* const elf = file_.Handle();
    for (Elf_Scn* section = elf_nextscn(elf, nullptr); section != nullptr;
         section = elf_nextscn(elf, section)) {
      GElf_Shdr header{};
      if (gelf_getshdr(section, &header) == nullptr || (header.sh_flags & SHF_ALLOC) == 0) continue;
      if (header.sh_type == SHT_RELA || header.sh_type == SHT_REL) ReadSection(section, header);
    }
    std::stable_sort(
        words_.begin(), words_.end(),
        [](const RelocatedWord& a, const RelocatedWord& b) { return a.address < b.address; });
    const auto same = [](const RelocatedWord& a, const RelocatedWord& b) {
      return a.address == b.address;
    };
    words_.erase(std::unique(words_.begin(), words_.end(), same), words_.end());
    return std::move(words_);
  }

 private:
  void ReadSection(Elf_Scn* section, const GElf_Shdr& header) {
    Elf_Data* const data = elf_getdata(section, nullptr);
    if (data == nullptr || header.sh_entsize == 0) return;
    symbols_ = elf_getdata(elf_getscn(file_.Handle(), header.sh_link), nullptr);
    const bool explicitAddend = header.sh_type == SHT_RELA;
    const std::size_t count = data->d_size / header.sh_entsize;
    for (std::size_t i = 0; i < count; ++i) {
      GElf_Rela entry{};
      if (explicitAddend) {
        if (gelf_getrela(data, static_cast<int>(i), &entry) == nullptr) return;
      } else {
        GElf_Rel plain{};
        if (gelf_getrel(data, static_cast<int>(i), &plain) == nullptr) return;
        entry.r_offset = plain.r_offset;
        entry.r_info = plain.r_info;
      }
      Apply(entry, explicitAddend);
    }
  }

  void Apply(const GElf_Rela& entry, bool explicitAddend) {
    const auto type = static_cast<GElf_Word>(GELF_R_TYPE(entry.r_info));
    const auto addend = static_cast<std::uint64_t>(entry.r_addend);
    if (type == types_.relative) {
      // With an implicit addend, the file's word already is the address.
      if (explicitAddend) words_.push_back({entry.r_offset, Cut(addend)});
    } else if (type == types_.absolute || type == types_.globalData) {
      const std::optional<std::uint64_t> symbol = SymbolValue(GELF_R_SYM(entry.r_info));
      if (!symbol) return;
      const bool inPlace = !explicitAddend && type == types_.absolute;
      words_.push_back(
          {entry.r_offset, Cut(*symbol + (inPlace ? ImageWord(entry.r_offset) : addend))});
    }
  }

  /// The address of a symbol that this file defines itself.
  std::optional<std::uint64_t> SymbolValue(std::size_t number) const {
    GElf_Sym symbol{};
    if (number == 0 || symbols_ == nullptr ||
        gelf_getsym(symbols_, static_cast<int>(number), &symbol) == nullptr ||
        symbol.st_shndx == SHN_UNDEF || GELF_ST_TYPE(symbol.st_info) == STT_TLS ||
        GELF_ST_TYPE(symbol.st_info) == STT_GNU_IFUNC) {
      return std::nullopt;
    }
    return symbol.st_value;
  }

  std::uint64_t ImageWord(std::uint64_t address) const {
    std::array<std::byte, 8> bytes{};
    const std::size_t size = file_.PointerSize();
    file_.ReadImage(address, std::span(bytes).first(size));
    std::uint64_t word = 0;
    for (std::size_t i = 0; i < size; ++i) {
      const std::size_t at = file_.Order() == ByteOrder::kBig ? i : size - 1 - i;
      word = word << 8 | std::to_integer<std::uint64_t>(bytes[at]);
    }
    return word;
  }

  std::uint64_t Cut(std::uint64_t word) const {
    return file_.PointerSize() == 4 ? word & 0xFFFFFFFF : word;
  }

  const ElfFile& file_;
  const MachineTypes& types_;
  Elf_Data* symbols_ = nullptr;
  std::vector<RelocatedWord> words_;
};

}  // namespace

std::vector<RelocatedWord> RelocatedWords(const ElfFile& file) {
  const std::optional<MachineTypes> types = TypesOf(file);
  if (!types) return {};
  return Reader(file, *types).ReadAll();
}

}  // namespace targets

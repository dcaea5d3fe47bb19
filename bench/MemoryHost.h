#ifndef STRINGRESOLVER_BENCH_MEMORYHOST_H
#define STRINGRESOLVER_BENCH_MEMORYHOST_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "host/ParrentInterface.h"
#include "targets/LabelSource.h"
#include "targets/MemorySource.h"

namespace bench {

/// A host that has everything at hand, as a debugger has after it has read a program: what is
/// measured over it is the resolver. Copied from a program; owns what it copied.
class MemoryHost final : public TParrentInterface {
 public:
  /// Takes the labels called `names` with their types, the structures that these lead to, and the
  /// objects in memory. Little-endian programs only.
  MemoryHost(targets::LabelSource& labels, targets::MemorySource& memory,
             const std::vector<std::string>& names);

  bool CheckAddress(std::uint64_t address, std::uint8_t memorySpace) override;
  std::string GetFileName() override { return "main.c"; }
  bool IsTypeName(std::string text) override;
  DataLableType GetTypeDescription(std::string typeName, bool* unknown) override;
  std::uint64_t FindLabel(const char* text, bool* undefined, bool* confirmed) override;
  void ReadMemory(std::uint64_t first, std::uint64_t last, std::uint16_t memorySpace, std::uint8_t,
                  std::string* text, std::uint32_t, bool isFloat, bool isDouble) override;

 private:
  /// FNV-1a: names are a few characters, for which the library's takes longer.
  struct Hash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const {
      std::uint64_t hash = 0xcbf29ce484222325;
      for (const char c : text) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3;
      return hash;
    }
  };
  template <typename Value>
  using Map = std::unordered_map<std::string, Value, Hash, std::equal_to<>>;
  struct Label {
    std::uint64_t address = 0;
    DataLableType type;
  };

  void TakeStructures(const DataLableType& type, targets::LabelSource& labels);

  Map<Label> labels_;
  Map<DataLableType> types_;
  /// All bytes of memory from `base_` on.
  std::vector<unsigned char> bytes_;
  std::uint64_t base_ = 0;
};

}  // namespace bench

#endif  // STRINGRESOLVER_BENCH_MEMORYHOST_H

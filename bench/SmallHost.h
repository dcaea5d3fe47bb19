#ifndef STRINGRESOLVER_BENCH_SMALLHOST_H
#define STRINGRESOLVER_BENCH_SMALLHOST_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "host/ParrentInterface.h"

namespace bench {

/// A host with a program of its own, written down here, that needs no library to read it:
///
///   int x = 42;  float f = 1.5;  double d = 2.25;
///   int a[8] = {0, 1, 2, 3, 4, 5, 6, 7};
///   struct outer { int a; struct inner { int x, y; } in; } s = {1, {2, 3}};
///   struct node { int v; struct node *next; } third = {3, 0}, second = {2, &third},
///     *head = &(struct node){1, &second};
///   struct node ring = {7, &ring}, *p = &ring;
///
/// Types: int, double, struct node. Structures are described by name, when the resolver asks. The
/// figures in tests/performance/figures.txt count what this host does too.
class SmallHost final : public TParrentInterface {
 public:
  SmallHost();

  bool CheckAddress(std::uint64_t address, std::uint8_t memorySpace) override;
  std::string GetFileName() override { return "main.c"; }
  bool IsTypeName(std::string text) override;
  DataLableType GetTypeDescription(std::string typeName, bool* unknown) override;
  std::uint64_t FindLabel(const char* text, bool* undefined, bool* confirmed) override;
  void ReadMemory(std::uint64_t first, std::uint64_t last, std::uint16_t memorySpace, std::uint8_t,
                  std::string* text, std::uint32_t, bool isFloat, bool isDouble) override;

 private:
  struct Hash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const {
      return std::hash<std::string_view>()(text);
    }
  };
  template <typename Value>
  using Map = std::unordered_map<std::string, Value, Hash, std::equal_to<>>;
  struct Label {
    std::uint64_t address = 0;
    DataLableType type;
  };

  template <typename Number>
  void Poke(std::uint64_t address, Number value);

  Map<Label> labels_;
  Map<DataLableType> types_;
  std::array<unsigned char, 256> bytes_{};
};

}  // namespace bench

#endif  // STRINGRESOLVER_BENCH_SMALLHOST_H

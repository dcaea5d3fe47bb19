#ifndef STRINGRESOLVER_FUZZ_GENERATEDHOST_H
#define STRINGRESOLVER_FUZZ_GENERATEDHOST_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/ByteSource.h"
#include "host/ParrentInterface.h"

namespace fuzzing {

/// What a call of `GeneratedHost` throws when the input says so.
struct HostThrew {};

/// A host that an input describes: which names there are and what stands behind them, with every
/// combination of what a record can say, sensible or not. What it answers depends on the call's
/// arguments alone. It checks that the resolver keeps its side of the contract.
class GeneratedHost : public TParrentInterface {
 public:
  /// Takes the description from `bytes`:
  ///
  ///   1 byte   bit 0 assembly dialect, bit 1 numerals are typed, bits 2 to 4 pointer size
  ///   1 byte   n: the n-th call throws; 0: none does
  ///   1 byte   bit n: addresses are refused whose remainder by 8 is n
  ///   1 byte   bit n: type n is named, but not described
  ///   1 byte   number of types, then the records, see `TakeRecord`
  ///   1 byte   number of labels, then for each its value and its type
  ///   1 byte   number of texts that memory holds, then the texts
  ///
  /// Types, labels and fields are called as the lists in the source say.
  explicit GeneratedHost(ByteSource bytes);

  /// Where set, every call is written down there: its name and arguments, and `accessSize`.
  std::vector<std::string>* log = nullptr;

  bool CheckAddress(std::uint64_t address, std::uint8_t memorySpace) override;
  std::string GetFileName() override;
  bool IsTypeName(std::string text) override;
  DataLableType GetTypeDescription(std::string typeName, bool* unknown) override;
  std::uint64_t FindLabel(const char* text, bool* undefined, bool* confirmed) override;
  void Reserved() override;
  void ReadMemory(std::uint64_t first, std::uint64_t last, std::uint16_t memorySpace,
                  std::uint8_t one, std::string* text, std::uint32_t count, bool isFloat,
                  bool isDouble) override;

 private:
  struct LabelEntry {
    std::uint64_t value = 0;
    std::size_t type = 0;  ///< counted from 1; 0: untyped
  };

  DataLableType TakeRecord(ByteSource* bytes) const;
  void TakeOwnFields(ByteSource* bytes, DataLableType* record, std::size_t* members) const;
  [[nodiscard]] std::optional<std::size_t> TypeCalled(std::string_view name) const;
  /// Counts the call and writes it down, and throws if it is the one that is to.
  void Enter(const char* operation, std::string_view text = {},
             const std::vector<std::uint64_t>& numbers = {});

  bool assembly_ = false;
  bool typedNumerals_ = false;
  std::uint32_t pointerSize_ = 8;
  unsigned throwAt_ = 0;
  unsigned calls_ = 0;
  unsigned refused_ = 0;
  unsigned vanishing_ = 0;
  std::vector<DataLableType> types_;
  std::vector<LabelEntry> labels_;
  std::vector<std::string> memory_;
};

}  // namespace fuzzing

#endif  // STRINGRESOLVER_FUZZ_GENERATEDHOST_H

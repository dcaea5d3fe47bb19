#ifndef STRINGRESOLVER_TESTS_SUPPORT_FAKEHOST_H
#define STRINGRESOLVER_TESTS_SUPPORT_FAKEHOST_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "host/ParrentInterface.h"
#include "tests/support/TypeKit.h"

namespace testsupport {

enum class ByteOrder { kLittle, kBig };

/// What `FakeHost::ThrowAtCall` throws.
class HostFailure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// A host without a program: labels, types and two spaces of memory are what the test says. Every
/// call is written down, and any call can be made to fail or throw.
///
/// Bytes that were never written are readable and zero. Names are compared without blanks and
/// ":@:", type names also without trailing stars, as real hosts do.
class FakeHost : public TParrentInterface {
 public:
  /// `file` chooses the dialect; `pointerSize` is in bytes.
  explicit FakeHost(std::string file = "main.c", std::uint32_t pointerSize = 8,
                    ByteOrder order = ByteOrder::kLittle)
      : types(pointerSize), fileName(std::move(file)), order_(order) {}

  /// Builds records for this host's pointer size.
  const TypeKit types;
  /// Asked for by every resolver that is built; may be changed between two of them.
  std::string fileName;

  // Names.

  /// An untyped label: a plain number or address.
  void AddLabel(const std::string& name, std::uint64_t value);
  /// A label that is the object of `type` at `address`.
  void AddLabel(const std::string& name, std::uint64_t address, const DataLableType& type);
  /// The label, or the numeral, is not confirmed from now on. Everything else is.
  void Unconfirm(const std::string& name) { unconfirmed_.insert(Canonical(name)); }
  void AddType(const std::string& name, const DataLableType& record);
  /// A name that `IsTypeName` accepts and `GetTypeDescription` then does not know.
  void AddVanishingType(const std::string& name) { vanishing_.insert(Canonical(name)); }

  // Memory. Addresses count bytes; `space` is 0 or 1.

  void Poke(std::uint64_t address, std::uint64_t value, std::uint32_t size, unsigned space = 0);
  void PokeFloat(std::uint64_t address, float value, unsigned space = 0);
  void PokeDouble(std::uint64_t address, double value, unsigned space = 0);
  void PokeString(std::uint64_t address, std::string_view bytes, unsigned space = 0);
  /// Reads at `address` answer with `text` itself, whatever the memory holds.
  void Answer(std::uint64_t address, const std::string& text, unsigned space = 0);
  /// `CheckAddress` refuses the addresses from `first` to `last`, both included.
  void MakeUnreadable(std::uint64_t first, std::uint64_t last, unsigned space = 0);

  // The calls.

  /// Every call so far, as in `CheckAddress(0x1000, 0) accessSize=4`. Control bytes of texts are
  /// shown as `\r`, `\x0e`. The size is the one at the time of the call.
  std::vector<std::string> calls;
  /// Set to spare the log where many resolutions run.
  bool quiet = false;
  /// Number of calls so far, logged or not.
  std::size_t callCount = 0;
  /// What the resolver did that its contract with the host forbids.
  std::vector<std::string> violations;
  /// Runs at the start of every call; may throw, or change the host.
  std::function<void(std::size_t index, const std::string& call)> onCall;

  /// The n-th call from now on, counted from 0, throws `HostFailure`.
  void ThrowAtCall(std::size_t n) { throwAt_ = callCount + n; }
  /// The n-th call from now on has its negative outcome: not readable, no such name, no text.
  void FailAtCall(std::size_t n) { failAt_ = callCount + n; }
  void ClearCalls();

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
    std::optional<DataLableType> type;
  };
  struct Range {
    std::uint64_t first;
    std::uint64_t last;
    unsigned space;
  };
  using Place = std::pair<unsigned, std::uint64_t>;

  static std::string Canonical(std::string_view name);
  /// Writes the call down and runs the hook. True: this call is to fail.
  bool Enter(const std::string& call);
  void Require(bool kept, const char* rule);
  [[nodiscard]] std::uint64_t Peek(std::uint64_t address, std::uint32_t size, unsigned space) const;

  ByteOrder order_;
  std::map<std::string, LabelEntry> labels_;
  std::set<std::string> unconfirmed_;
  std::map<std::string, DataLableType> records_;
  std::set<std::string> vanishing_;
  std::map<Place, std::uint8_t> memory_;
  std::map<Place, std::string> answers_;
  std::vector<Range> unreadable_;
  std::optional<std::size_t> throwAt_;
  std::optional<std::size_t> failAt_;
};

/// `text` with its control bytes as escapes.
std::string Visible(std::string_view text);

}  // namespace testsupport

#endif  // STRINGRESOLVER_TESTS_SUPPORT_FAKEHOST_H

#ifndef STRINGRESOLVER_TESTS_REFERENCE_WORLDHOST_H
#define STRINGRESOLVER_TESTS_REFERENCE_WORLDHOST_H

#include <cstdint>
#include <string>

#include "host/ParrentInterface.h"
#include "tests/reference/World.h"

namespace reference {

/// Answers out of a world, and writes down every call with its arguments, `accessSize` and the
/// state of the label fields. Two of them on one world answer alike.
class WorldHost : public TParrentInterface {
 public:
  explicit WorldHost(const World& world) : world_(world) {}

  bool CheckAddress(std::uint64_t address, std::uint8_t memorySpace) override;
  std::string GetFileName() override;
  bool IsTypeName(std::string text) override;
  DataLableType GetTypeDescription(std::string typeName, bool* unknown) override;
  std::uint64_t FindLabel(const char* text, bool* undefined, bool* confirmed) override;
  void ReadMemory(std::uint64_t first, std::uint64_t last, std::uint16_t memorySpace,
                  std::uint8_t one, std::string* text, std::uint32_t count, bool isFloat,
                  bool isDouble) override;

  /// One line per call.
  std::string log;

 private:
  std::uint64_t Numeral(const std::string& text, bool* undefined) const;

  const World& world_;
};

}  // namespace reference

#endif  // STRINGRESOLVER_TESTS_REFERENCE_WORLDHOST_H

#ifndef STRINGRESOLVER_TOOLS_RESOLVE_EXPLAININGHOST_H
#define STRINGRESOLVER_TOOLS_RESOLVE_EXPLAININGHOST_H

#include <cstdint>
#include <string>

#include "tools/resolve/ResolutionLog.h"
#include "tools/resolve/WatchingHost.h"

namespace tool {

/// A watching host that also keeps a log of what it is asked, in order.
class ExplainingHost final : public WatchingHost {
 public:
  using WatchingHost::WatchingHost;

  /// Begun anew by whoever starts a resolution.
  [[nodiscard]] ResolutionLog& Log() { return log_; }
  [[nodiscard]] const ResolutionLog& Log() const { return log_; }

  bool CheckAddress(std::uint64_t address, std::uint8_t memorySpace) override;
  std::string GetFileName() override;
  bool IsTypeName(std::string text) override;
  DataLableType GetTypeDescription(std::string typeName, bool* unknown) override;
  std::uint64_t FindLabel(const char* text, bool* undefined, bool* confirmed) override;
  void ReadMemory(std::uint64_t first, std::uint64_t last, std::uint16_t memorySpace,
                  std::uint8_t count, std::string* text, std::uint32_t step, bool isFloat,
                  bool isDouble) override;

 private:
  ResolutionLog log_;
};

}  // namespace tool

#endif  // STRINGRESOLVER_TOOLS_RESOLVE_EXPLAININGHOST_H

// The resolver and the plain reference over the same texts and the same host, which the input gives
// as it does for resolver_host. Whatever a host or a user could tell them apart by is a finding.

#include <bit>
#include <cstddef>
#include <cstdint>
#include <iostream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/ByteSource.h"
#include "fuzz/GeneratedHost.h"
#include "fuzz/Require.h"
#include "tests/reference/Resolver.h"
#include "tests/support/OpenResolver.h"

namespace {

using fuzzing::Require;

enum class Outcome { kFailed, kSucceeded, kThrew };

/// One of the two, with the host it asks and what it asked.
template <typename Resolver>
class Side {
 public:
  explicit Side(std::string_view description) : host_(fuzzing::ByteSource(description)) {
    host_.log = &calls_;
  }
  /// False when the host throws.
  bool Build() {
    try {
      resolver_.emplace(&host_);
    } catch (const fuzzing::HostThrew&) {
      return false;
    }
    return true;
  }
  Outcome Solve(const std::string& text) {
    try {
      return resolver_->SolveStringOfElements(text) ? Outcome::kSucceeded : Outcome::kFailed;
    } catch (const fuzzing::HostThrew&) {
      return Outcome::kThrew;
    }
  }
  [[nodiscard]] const Resolver& Object() const { return *resolver_; }
  [[nodiscard]] const std::vector<std::string>& Calls() const { return calls_; }

 private:
  std::vector<std::string> calls_;
  fuzzing::GeneratedHost host_;
  std::optional<Resolver> resolver_;
};

using Product = Side<testsupport::OpenResolver>;
using Reference = Side<reference::Resolver>;

void RequireSameCalls(const Product& product, const Reference& plain) {
  if (product.Calls() == plain.Calls()) return;
  for (const auto& call : product.Calls()) std::cerr << "resolver:  " << call << '\n';
  for (const auto& call : plain.Calls()) std::cerr << "reference: " << call << '\n';
  Require(false, "both ask the host the same, in the same order");
}

void RequireSame(const Product& product, const Reference& plain) {
  const auto& a = product.Object();
  const auto& b = plain.Object();
  if (a.errorMessage != b.errorMessage) {
    std::cerr << "resolver:  " << a.errorMessage << "\nreference: " << b.errorMessage << '\n';
    Require(false, "both say the same");
  }
  Require(a.resultValue == b.resultValue, "both have the same value");
  Require(
      std::bit_cast<std::uint32_t>(a.resultFloat) == std::bit_cast<std::uint32_t>(b.resultFloat),
      "both have the same floating value");
  Require(a.resultSize == b.resultSize && a.resultNegative == b.resultNegative &&
              a.resultFloating == b.resultFloating,
          "both have a value of the same kind");
  Require(a.resultAddress == b.resultAddress && a.resultMemorySpace == b.resultMemorySpace,
          "both have the same place");
  Require(a.allLabelsConfirmed == b.allLabelsConfirmed, "both rely on the same labels");
  Require(a.savedTypes == b.savedTypes, "both save the same types");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string_view input = fuzzing::AsText(data, size);
  std::string_view texts = fuzzing::TakeUntil(&input, '\0');
  Product product(input);
  Reference plain(input);
  const bool built = product.Build();
  Require(plain.Build() == built, "both can be built or none");
  if (!built) return 0;
  while (!texts.empty()) {
    const std::string text(fuzzing::TakeUntil(&texts, '\n'));
    const Outcome outcome = product.Solve(text);
    const Outcome expected = plain.Solve(text);
    RequireSameCalls(product, plain);
    Require(outcome == expected, "both succeed, fail or pass an exception on");
    RequireSame(product, plain);
  }
  return 0;
}

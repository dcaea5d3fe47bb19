// Texts, one a line, resolved one after the other by one object over a fixed program. The first
// byte's low bits choose the dialect, the pointer size and the byte order.

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "fuzz/ByteSource.h"
#include "fuzz/Require.h"
#include "tests/support/FakeHost.h"
#include "tests/support/Program.h"

namespace {

using testsupport::ByteOrder;
using testsupport::FakeHost;

enum Choice : unsigned { kAssembly = 1, kShortPointers = 2, kBigEndian = 4, kChoices = 8 };

/// What the program of the tests does not have: names with points, numbers that are none, sizes
/// that fit no register, records that contradict themselves.
void AddOddities(FakeHost& host) {
  const testsupport::TypeKit& t = host.types;
  host.AddLabel(".loop", 0x4000);
  host.AddLabel("s.in", 0x3008);
  host.AddLabel("top", ~std::uint64_t{0});
  host.AddLabel("dim", 9);
  host.Unconfirm("dim");
  host.AddVanishingType("gone_t");

  std::uint64_t address = 0x5000;
  for (const char* text : {"12\t3", "-5", "", "1e999", "nan", "0x10", "18446744073709551616"}) {
    host.Answer(address, text);
    address += 8;
  }
  host.AddLabel("odd", 0x5000, t.Array(t.Signed(8), 7));
  host.AddLabel("oddf", 0x5000, t.Array(t.Single(), 14));
  host.AddLabel("oddd", 0x5000, t.Array(t.Double(), 7));

  DataLableType sized = t.Signed(8);
  for (const std::uint32_t size : {0U, 3U, 5U, 9U, 16U, 0xffffffffU}) {
    sized.Size = size;
    host.AddType("size" + std::to_string(size), sized);
    host.AddLabel("v" + std::to_string(size), 0x1030, sized);
  }
  DataLableType bare;
  bare.IsPointer = true;
  bare.IsArray = true;
  host.AddLabel("bare", 0x6000, bare);
  host.AddType("bare_t", bare);
  DataLableType addresses = t.Pointer(t.Pointer(t.Signed(4)));
  addresses.Members.front().IsAddress = true;
  host.AddLabel("addresses", 0x1058, addresses);
  DataLableType loop = t.Stub("loop", 8);
  host.AddType("loop", loop);
  host.AddLabel("loop", 0x6100, loop);
  host.AddLabel("lost", 0x6200, t.Stub("nowhere", 8));
}

std::unique_ptr<FakeHost> MakeHost(unsigned choice) {
  auto host = std::make_unique<FakeHost>(
      (choice & kAssembly) != 0 ? "start.s" : "main.c", (choice & kShortPointers) != 0 ? 4U : 8U,
      (choice & kBigEndian) != 0 ? ByteOrder::kBig : ByteOrder::kLittle);
  testsupport::LoadProgram(*host);
  AddOddities(*host);
  host->quiet = true;
  return host;
}

/// The host of a choice. It is kept: a resolution leaves no trace in it.
FakeHost& HostFor(unsigned choice) {
  static std::array<std::unique_ptr<FakeHost>, kChoices> hosts;
  std::unique_ptr<FakeHost>& host = hosts[choice];
  if (!host) host = MakeHost(choice);
  return *host;
}

void Resolve(TStringResolver& resolver, const FakeHost& host, std::string_view text) {
  fuzzing::RequireSaneResult(resolver, resolver.SolveStringOfElements(std::string(text)));
  if (!host.violations.empty()) fuzzing::Require(false, host.violations.front());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string_view input = fuzzing::AsText(data, size);
  if (input.empty()) return 0;
  FakeHost& host = HostFor(static_cast<unsigned char>(input.front()) % kChoices);
  input.remove_prefix(1);

  TStringResolver resolver(&host);
  while (!input.empty()) Resolve(resolver, host, fuzzing::TakeUntil(&input, '\n'));
  Resolve(resolver, host, "1 + 2 * 3");
  fuzzing::Require(resolver.resultValue == 7 && resolver.resultSize == 8,
                   "no text keeps the object from resolving the next");
  return 0;
}

// A text opened as the description of a program: what it describes keeps the contract of a source
// of labels, and expressions are resolved over it.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "contract/LabelContract.h"
#include "fuzz/ByteSource.h"
#include "fuzz/Require.h"
#include "targets/DescribedProgram.h"
#include "targets/Error.h"
#include "targets/ProgramHost.h"

namespace {

using fuzzing::Require;

/// So many labels and types are evaluated.
constexpr std::size_t kMostNames = 6;
/// In a folder that does not exist, so that no input finds a file of memory by a relative name.
constexpr const char* kPath = "/nonexistent/input.toml";

void Resolve(targets::ProgramHost& host, const std::string& expression) {
  host.StartResolution();
  TStringResolver resolver(&host);
  fuzzing::RequireSaneResult(resolver, resolver.SolveStringOfElements(expression));
}

void ResolveOver(targets::DescribedProgram& program) {
  std::vector<std::string> labels;
  std::vector<std::string> types;
  program.VisitLabelNames([&](std::string_view name) {
    if (labels.size() < kMostNames) labels.emplace_back(name);
  });
  program.VisitTypeNames([&](std::string_view name) {
    if (types.size() < kMostNames) types.emplace_back(name);
  });
  targets::ProgramHost host(program, program.Memory());
  for (const std::string& label : labels) {
    for (const char* behind : {"", "+1", "[1]", ".x", "->next"}) Resolve(host, label + behind);
    Resolve(host, "*" + label);
  }
  for (const std::string& type : types) {
    Resolve(host, "sizeof(" + type + ")");
    Resolve(host, "((" + type + "*)16)->x");
  }
  Resolve(host, "#0");
}

void CheckPlaces(targets::DescribedProgram& program) {
  for (const std::uint64_t address : {std::uint64_t{0}, std::uint64_t{16}, ~std::uint64_t{0}}) {
    const auto nearest = program.LabelAt(address);
    if (!nearest) continue;
    const auto label = program.FindLabel(nearest->name);
    Require(label && label->value + nearest->offset == address, "the nearest label is that near");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  try {
    targets::DescribedProgram program(fuzzing::AsText(data, size), kPath);
    const std::vector<std::string> complaints = contract::CheckLabelSource(program, {});
    Require(complaints.empty(), complaints.empty() ? "" : complaints.front());
    CheckPlaces(program);
    ResolveOver(program);
  } catch (const targets::Error& error) {
    Require(std::string_view(error.what()).starts_with(std::string(kPath) + ":"),
            "an error names the line and the column");
  }
  return 0;
}

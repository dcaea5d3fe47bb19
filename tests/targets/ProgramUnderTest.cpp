#include "tests/targets/ProgramUnderTest.h"

#include <filesystem>

#include "resolver/StringParametersResolving.h"
#include "tests/support/Outcome.h"

namespace targettests {

std::string FixturePath(const std::string& name) {
  return std::string(FIXTURE_DIR "/") + name;
}

bool HasFixture(const std::string& name) {
  return std::filesystem::exists(FixturePath(name));
}

std::string Evaluate(targets::ElfProgram& program, const std::string& expression) {
  return Evaluate(program, program.Memory(), expression);
}

std::string Evaluate(targets::LabelSource& labels, targets::MemorySource& memory,
                     const std::string& expression) {
  targets::ProgramHost host(labels, memory);
  TStringResolver resolver(&host);
  std::string outcome = testsupport::Outcome(resolver, resolver.SolveStringOfElements(expression));
  if (host.FirstFailure()) outcome += std::string(" ! ") + host.FirstFailure()->what();
  return outcome;
}

}  // namespace targettests

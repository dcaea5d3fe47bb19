// Evaluates one expression over a core dump: core CORE EXPRESSION. The dump names its program.
#include <exception>
#include <iostream>
#include <stdexcept>

#include "resolver/StringParametersResolving.h"
#include "targets/CoreDump.h"
#include "targets/LoadedProgram.h"
#include "targets/ProgramHost.h"

int main(int argc, char** argv) try {
  if (argc != 3) throw std::invalid_argument("usage: core CORE EXPRESSION");
  targets::CoreDump core(argv[1]);
  targets::LoadedProgram labels(core.Program(), core.Libraries(), "/usr/lib/debug");
  targets::ProgramHost host(labels, core.Memory());
  TStringResolver resolver(&host);
  host.StartResolution();
  const bool solved = resolver.SolveStringOfElements(argv[2]);
  // An operand that cannot be read counts as 0 to the resolver: the host knows better.
  if (host.FirstFailure()) throw targets::Error(*host.FirstFailure());
  if (!solved) throw std::runtime_error(resolver.errorMessage);
  if (resolver.resultFloating) {
    std::cout << resolver.resultFloat << '\n';
  } else {
    std::cout << (resolver.resultNegative ? "-" : "") << resolver.resultValue << '\n';
  }
} catch (const std::exception& error) {
  std::cerr << error.what() << '\n';
  return 1;
}

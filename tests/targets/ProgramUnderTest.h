#ifndef STRINGRESOLVER_TESTS_TARGETS_PROGRAMUNDERTEST_H
#define STRINGRESOLVER_TESTS_TARGETS_PROGRAMUNDERTEST_H

#include <optional>
#include <string>
#include <vector>

#include "targets/ElfProgram.h"
#include "targets/ProgramHost.h"

namespace targettests {

/// The path of a program that the build has compiled for the tests.
std::string FixturePath(const std::string& name);

/// True when the build could compile it: those for other machines need clang and lld.
bool HasFixture(const std::string& name);

/// The outcome of `expression` on a new resolver over `program`, as `testsupport::Outcome` writes
/// it, followed by ` ! ` and the sentence of the first failure that the host remembers.
std::string Evaluate(targets::ElfProgram& program, const std::string& expression);
std::string Evaluate(targets::LabelSource& labels, targets::MemorySource& memory,
                     const std::string& expression);

/// What a call that must fail with an `Error` says; "nothing was thrown" otherwise.
template <typename Call>
std::string ErrorOf(Call call) {
  try {
    call();
  } catch (const targets::Error& error) {
    return error.what();
  }
  return "nothing was thrown";
}

template <typename Call>
std::optional<targets::ErrorCode> ErrorCodeOf(Call call) {
  try {
    call();
  } catch (const targets::Error& error) {
    return error.Code();
  }
  return std::nullopt;
}

}  // namespace targettests

#endif  // STRINGRESOLVER_TESTS_TARGETS_PROGRAMUNDERTEST_H

#ifndef STRINGRESOLVER_TESTS_SUPPORT_OUTCOME_H
#define STRINGRESOLVER_TESTS_SUPPORT_OUTCOME_H

#include <string>
#include <vector>

#include "tests/support/FakeHost.h"
#include "tests/support/OpenResolver.h"

namespace testsupport {

/// One row of a table: the expression is the row's name. See `Outcome` for the expected text.
struct Row {
  std::string expression;
  std::string outcome;
};

/// The same, with the calls that the host must see, in their order.
struct CallRow {
  std::string expression;
  std::string outcome;
  std::vector<std::string> calls;
};

/// What a resolution gave, as one text: value and size in bytes (`7/8`, `-5/4`), a floating value
/// in its shortest form (`1.5f/8`), ` #` behind either when it lies in the second memory space, or
/// `error: ` and the message.
std::string Outcome(const TStringResolver& resolver, bool succeeded);

/// The outcome of `expression` on a resolver built for it.
std::string Resolve(FakeHost& host, const std::string& expression);

/// The same, with the resolver's address of the result: `7/8 at 0x1000`.
std::string ResolveWithAddress(FakeHost& host, const std::string& expression);

/// The outcome on a resolver that is used again.
std::string Resolve(TStringResolver& resolver, const std::string& expression);

}  // namespace testsupport

#endif  // STRINGRESOLVER_TESTS_SUPPORT_OUTCOME_H

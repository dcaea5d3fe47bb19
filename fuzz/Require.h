#ifndef STRINGRESOLVER_FUZZ_REQUIRE_H
#define STRINGRESOLVER_FUZZ_REQUIRE_H

#include <string_view>

#include "resolver/StringParametersResolving.h"

namespace fuzzing {

/// Ends the program when `holds` is false, naming the property that the input has broken.
void Require(bool holds, std::string_view property);

/// What holds for the result fields after every resolution, whatever was resolved.
void RequireSaneResult(const TStringResolver& resolver, bool succeeded);

}  // namespace fuzzing

#endif  // STRINGRESOLVER_FUZZ_REQUIRE_H

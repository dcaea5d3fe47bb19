#ifndef STRINGRESOLVER_BENCH_MEASURED_H
#define STRINGRESOLVER_BENCH_MEASURED_H

#include <cstddef>
#include <string_view>

#include "host/ParrentInterface.h"
#include "resolver/StringParametersResolving.h"

namespace bench {

// The functions that measurements count the instructions of, by their names:
//
//   valgrind --tool=callgrind --toggle-collect='bench::Measured*' PROGRAM
//
// They have a source of their own, so that compilers neither inline nor rename them.

/// Resolves `expression` `times` times, with a resolver built for each. Returns how many succeeded.
std::size_t MeasuredFresh(TParrentInterface* host, std::string_view expression, std::size_t times);

/// The same with one resolver for all.
std::size_t MeasuredKept(TStringResolver* resolver, std::string_view expression, std::size_t times);

}  // namespace bench

#endif  // STRINGRESOLVER_BENCH_MEASURED_H

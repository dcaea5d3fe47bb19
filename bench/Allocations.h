#ifndef STRINGRESOLVER_BENCH_ALLOCATIONS_H
#define STRINGRESOLVER_BENCH_ALLOCATIONS_H

#include <cstdint>

namespace bench {

/// What a program that is linked with Allocations.cpp has asked the heap for since it began.
struct Allocations {
  std::uint64_t count = 0;
  std::uint64_t bytes = 0;
};

Allocations AllocationsSoFar();

inline Allocations operator-(const Allocations& later, const Allocations& earlier) {
  return {later.count - earlier.count, later.bytes - earlier.bytes};
}

}  // namespace bench

#endif  // STRINGRESOLVER_BENCH_ALLOCATIONS_H

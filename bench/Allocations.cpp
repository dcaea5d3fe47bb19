#include "bench/Allocations.h"

#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

bench::Allocations soFar;

}  // namespace

// The operators for arrays call these.
void* operator new(std::size_t size) {
  ++soFar.count;
  soFar.bytes += size;
  if (void* const block = std::malloc(size == 0 ? 1 : size)) return block;
  throw std::bad_alloc();
}
void operator delete(void* block) noexcept {
  std::free(block);
}
void operator delete(void* block, std::size_t /*size*/) noexcept {
  std::free(block);
}

namespace bench {

Allocations AllocationsSoFar() {
  return soFar;
}

}  // namespace bench

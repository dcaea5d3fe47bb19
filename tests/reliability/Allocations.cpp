#include "tests/reliability/Allocations.h"

#include <cstdlib>
#include <limits>
#include <new>

namespace {

constexpr std::size_t kNever = std::numeric_limits<std::size_t>::max();

std::size_t live = 0;
std::size_t untilRefusal = kNever;
bool refused = false;

void* Allocate(std::size_t size) {
  if (untilRefusal != kNever && untilRefusal-- == 0) {
    untilRefusal = kNever;
    refused = true;
    throw std::bad_alloc();
  }
  void* const block = std::malloc(size == 0 ? 1 : size);
  if (block == nullptr) throw std::bad_alloc();
  ++live;
  return block;
}

void Free(void* block) noexcept {
  if (block == nullptr) return;
  --live;
  std::free(block);
}

}  // namespace

void* operator new(std::size_t size) {
  return Allocate(size);
}
void* operator new[](std::size_t size) {
  return Allocate(size);
}
void operator delete(void* block) noexcept {
  Free(block);
}
void operator delete[](void* block) noexcept {
  Free(block);
}
void operator delete(void* block, std::size_t) noexcept {
  Free(block);
}
void operator delete[](void* block, std::size_t) noexcept {
  Free(block);
}

namespace allocations {

std::size_t Live() {
  return live;
}

RefuseOne::RefuseOne(std::size_t n) {
  untilRefusal = n;
  refused = false;
}

RefuseOne::~RefuseOne() {
  untilRefusal = kNever;
}

bool RefuseOne::Refused() const {
  return refused;
}

}  // namespace allocations

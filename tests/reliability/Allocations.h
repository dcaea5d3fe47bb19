#ifndef STRINGRESOLVER_TESTS_RELIABILITY_ALLOCATIONS_H
#define STRINGRESOLVER_TESTS_RELIABILITY_ALLOCATIONS_H

#include <cstddef>

/// Every allocation of the test program goes through the operators of Allocations.cpp, which count
/// and can refuse.
namespace allocations {

/// Blocks allocated and not yet freed.
std::size_t Live();

/// While it lives, the n-th allocation, counted from 0, throws `std::bad_alloc`; later ones
/// succeed.
class RefuseOne {
 public:
  explicit RefuseOne(std::size_t n);
  ~RefuseOne();
  RefuseOne(const RefuseOne&) = delete;
  RefuseOne& operator=(const RefuseOne&) = delete;
  /// The n-th allocation has been asked for.
  [[nodiscard]] bool Refused() const;
};

}  // namespace allocations

#endif  // STRINGRESOLVER_TESTS_RELIABILITY_ALLOCATIONS_H

#ifndef STRINGRESOLVER_TESTS_TARGETS_RECORDTEXT_H
#define STRINGRESOLVER_TESTS_TARGETS_RECORDTEXT_H

#include <string>

#include "host/DataLableType.h"

namespace targettests {

/// Every field of a record but `PointerSize`, as one line:
///
///   int:4s                  name, size, signed; `f` float, `d` double, `x` the extra flag
///   +8 int:4s               offset 8
///   *:8{int:4s}             pointer, its pointee; `[]` array, `[*]` array marked as a pointer too
///   struct node:16<struct node#>   nested types, what follows `#` in their names left out
std::string RecordText(const DataLableType& record);

/// True when `record` and everything below it have that `PointerSize`.
bool HasPointerSize(const DataLableType& record, std::uint32_t size);

}  // namespace targettests

#endif  // STRINGRESOLVER_TESTS_TARGETS_RECORDTEXT_H

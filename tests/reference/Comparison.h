#ifndef STRINGRESOLVER_TESTS_REFERENCE_COMPARISON_H
#define STRINGRESOLVER_TESTS_REFERENCE_COMPARISON_H

#include <list>
#include <string>
#include <vector>

#include "host/DataLableType.h"
#include "tests/reference/Resolver.h"
#include "tests/reference/World.h"
#include "tests/reference/WorldHost.h"
#include "tests/support/OpenResolver.h"

namespace reference {

/// The resolver and the plain reference side by side, each on a host of its own over one world.
class Pair {
 public:
  explicit Pair(const World& world);

  /// Resolves `text` with both. Empty when both did the same; else what differed, one line each.
  std::string Resolve(const std::string& text);

  /// Of the last text, as the resolver has it.
  bool succeeded = false;
  [[nodiscard]] const std::string& Message() const { return product_.errorMessage; }

 private:
  [[nodiscard]] std::string Differences(bool expected, bool got) const;

  WorldHost productHost_;
  WorldHost referenceHost_;
  testsupport::OpenResolver product_;
  Resolver reference_;
};

/// What differs when `texts` are resolved in a row on one object; empty for nothing.
std::string Compare(const World& world, const std::vector<std::string>& texts);

/// The fewest and shortest texts that still differ, found by deleting pieces of `texts`.
std::vector<std::string> Shrink(const World& world, std::vector<std::string> texts);

/// True when all fields agree, at any depth, the pointer sizes included.
bool SameRecord(const DataLableType& left, const DataLableType& right);
bool SameRecords(const std::list<DataLableType>& left, const std::list<DataLableType>& right);

/// What differs between the reference's block and the resolver's, one line per field; of
/// `MemberBlock` only whether there is one.
std::string BlockDifferences(const AreaBlock& plain, const AreaBlock& product);

/// Bit for bit, but one NaN is like another.
bool SameNumber(double left, double right);

/// As a string literal of C++.
std::string Quoted(const std::string& text);

}  // namespace reference

#endif  // STRINGRESOLVER_TESTS_REFERENCE_COMPARISON_H

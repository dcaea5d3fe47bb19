#ifndef STRINGRESOLVER_TESTS_CONTRACT_LABELCONTRACT_H
#define STRINGRESOLVER_TESTS_CONTRACT_LABELCONTRACT_H

#include <cstdint>
#include <string>
#include <vector>

#include "targets/LabelSource.h"

namespace contract {

/// A label that the source must find.
struct KnownLabel {
  std::string name;
  targets::LabelKind kind = targets::LabelKind::kVariable;
  std::uint64_t value = 0;
  /// Has a type, whose `sizeof` in C is `size` bytes.
  bool typed = false;
  std::uint64_t size = 0;
};

/// What is known about a source that is to be checked.
struct KnownLabels {
  std::vector<KnownLabel> labels;
  /// Type names that it must know, in the form that `CanonicalTypeName` gives them.
  std::vector<std::string> types;
};

/// Checks that `source` keeps the promises of `targets::LabelSource`, for the known names and for
/// every name in its listings: what lookups find and what they do not, that lookups can be
/// repeated, that every record has a shape that the resolver reads right, that every record's name
/// leads to a full record, and that shapes agree with records. Returns a sentence for each promise
/// that is broken; none when all are kept. Needs no test framework, so that any can be used.
std::vector<std::string> CheckLabelSource(targets::LabelSource& source, const KnownLabels& known);

}  // namespace contract

#endif  // STRINGRESOLVER_TESTS_CONTRACT_LABELCONTRACT_H

#ifndef STRINGRESOLVER_TESTS_REFERENCE_MESSAGES_H
#define STRINGRESOLVER_TESTS_REFERENCE_MESSAGES_H

#include <map>
#include <string>
#include <vector>

namespace reference {

/// Every message with which an input can make a resolution fail. One that ends in a blank has
/// something appended.
///
/// Not among them, because no input leads there:
/// - "Wrong floating point number": a string stream never turns bad while it is read;
/// - "Undefined relations between arguments": linking the blocks refuses every code but those of
///   operators, and the member row folds or refuses its own two;
/// - "Internal error. The needed structure field isn`t specified": the member row names the field
///   before it asks for it.
inline const std::vector<std::string> kMessages = {
    "Can`t find the end quote.",
    "Error occurred",
    "Reference to unexisting type",
    "Can`t find the ending curly bracket",
    "Unknown type",
    "Unknown type: ",
    "Address before square brackets isn`t defined",
    "Missing an address in the string",
    "Internal error. Wrong relations between arguments",
    "Can`t find ']' symbol",
    "Symbols '[' and ']' are placed in wrong order",
    "Internal error. Unknown command ",
    "Undefined label ",
    "Can`t find ending quote ']'",
    "Quotes are placed in wrong order",
    "Quotes are empty",
    "The specified field isn`t found in structure of type",
    "The pointer doesn`t exist",
    "Internal error is occurred during the type conversion",
    "Can`t do the dereference operation with this type",
    "Invalid type for ~ operation",
    "Invalid type for ! operation",
    "Unknown operation: ",
    "Invalid operation ",
    "Invalid address",
    "Division by zero",
    "Invalid type for << operation",
    "Invalid type for >> operation",
    "Invalid type for & operation",
    "Invalid type for ^ operation",
    "Invalid type for | operation",
    "Invalid type for && operation",
    "Invalid type for || operation",
    "Can`t convert one type to another",
};

/// The entry of `kMessages` that `message` is or begins with; `message` itself when it is none.
inline std::string MessageKind(const std::string& message) {
  for (const std::string& kind : kMessages) {
    if (kind.ends_with(" ") ? message.starts_with(kind) : message == kind) return kind;
  }
  return message;
}

/// Counts how resolutions ended.
struct Tally {
  std::size_t cases = 0;
  std::size_t successes = 0;
  /// Message kind to the number of failures with it. A failure without a message is "".
  std::map<std::string, std::size_t> failures;
};

}  // namespace reference

#endif  // STRINGRESOLVER_TESTS_REFERENCE_MESSAGES_H

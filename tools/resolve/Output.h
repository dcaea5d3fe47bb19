#ifndef STRINGRESOLVER_TOOLS_RESOLVE_OUTPUT_H
#define STRINGRESOLVER_TOOLS_RESOLVE_OUTPUT_H

#include <string>
#include <string_view>
#include <utility>

namespace tool {

/// Text on a file descriptor, gathered until `Flush`. Every write is checked: an answer
/// that did not arrive is never taken for one that did.
class Output {
 public:
  /// `name` is what messages call it: "standard output". The descriptor is borrowed.
  Output(int descriptor, std::string name) : descriptor_(descriptor), name_(std::move(name)) {}

  /// All throw `StreamError` when what was gathered cannot be written; it is then dropped.
  void Write(std::string_view text);
  void WriteLine(std::string_view line);
  void Flush();

 private:
  int descriptor_;
  std::string name_;
  std::string pending_;
};

}  // namespace tool

#endif  // STRINGRESOLVER_TOOLS_RESOLVE_OUTPUT_H

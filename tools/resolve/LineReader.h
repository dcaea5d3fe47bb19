#ifndef STRINGRESOLVER_TOOLS_RESOLVE_LINEREADER_H
#define STRINGRESOLVER_TOOLS_RESOLVE_LINEREADER_H

#include <cstddef>
#include <string>
#include <utility>

namespace tool {

/// Reads a file descriptor line by line. Lines hold bytes of any value, and each is delivered as
/// soon as its end has arrived.
class LineReader {
 public:
  /// `name` is what messages call the descriptor, which is borrowed. What a line has beyond its
  /// first `mostKept` bytes is read and dropped, so that an endless line costs no memory.
  LineReader(int descriptor, std::string name, std::size_t mostKept)
      : descriptor_(descriptor), name_(std::move(name)), mostKept_(mostKept) {}

  /// The next line without its line feed. The last one need not have any. False at the end. Throws
  /// `StreamError` when reading fails.
  bool Read(std::string* line);

 private:
  bool Fill();

  int descriptor_;
  std::string name_;
  std::size_t mostKept_;
  std::string buffer_;
  std::size_t at_ = 0;
};

}  // namespace tool

#endif  // STRINGRESOLVER_TOOLS_RESOLVE_LINEREADER_H

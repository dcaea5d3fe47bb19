#ifndef STRINGRESOLVER_TOOLS_RESOLVE_HISTORYFILE_H
#define STRINGRESOLVER_TOOLS_RESOLVE_HISTORYFILE_H

#include <cstddef>
#include <stdexcept>
#include <string>
#include <vector>

namespace tool {

/// A history that cannot be kept. `what()` is a sentence that names the file and the reason.
class HistoryError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The lines typed at the prompt, in a file of the user's: one a line, the oldest first.
///
/// Any number of sessions may use one file at once: each line is added to what the file holds by
/// then, under a lock. The file is replaced as a whole, so whoever reads it never sees half of it,
/// also when a session dies while it writes.
class HistoryFile {
 public:
  static constexpr std::size_t kMostLines = 1000;
  static constexpr std::size_t kLongestLine = 4096;  ///< in bytes; longer ones are not kept

  explicit HistoryFile(std::string path) : path_(std::move(path)) {}

  /// The user's: `resolve/history` in $XDG_STATE_HOME, or in ~/.local/state when that is not set
  /// or no absolute path. Throws `HistoryError` when there is no home folder either.
  static HistoryFile OfUser();

  /// The lines of the file; none when there is no file. Throws `HistoryError`.
  [[nodiscard]] std::vector<std::string> Read() const;

  /// Adds a line, unless it is the last one already, and drops the oldest above `kMostLines`. Makes
  /// the folder, for the user alone, and the file, readable to the user alone. Throws
  /// `HistoryError`.
  void Add(const std::string& line) const;

  [[nodiscard]] const std::string& Path() const { return path_; }

 private:
  std::string path_;
};

}  // namespace tool

#endif  // STRINGRESOLVER_TOOLS_RESOLVE_HISTORYFILE_H

#ifndef STRINGRESOLVER_TARGETS_ERROR_H
#define STRINGRESOLVER_TARGETS_ERROR_H

#include <stdexcept>
#include <string>

namespace targets {

/// Why something about a target could not be had. A closed set: callers switch over it.
enum class ErrorCode {
  kFileUnusable,    ///< the file is missing, unreadable or not of a known kind
  kNoNames,         ///< the file has neither debug information nor symbols
  kBrokenInfo,      ///< debug information contradicts itself; names the file and the offset
  kAmbiguous,       ///< one name, several things, and no rule picks one
  kNotRepresented,  ///< known, but no type record or address can stand for it
  kNotDefined,      ///< the name is declared, but defined nowhere that is known
  kUnreadable,      ///< target memory that is not there, not saved, or not allowed to be read
  kTargetLost,      ///< the process, stub or connection is gone: nothing can be read any more
};

/// A failure, as opposed to "not found", which every lookup reports by an empty result. `what()` is
/// one complete sentence without a full stop, naming the file, address or name at fault.
class Error : public std::runtime_error {
 public:
  Error(ErrorCode code, const std::string& sentence) : std::runtime_error(sentence), code_(code) {}
  [[nodiscard]] ErrorCode Code() const noexcept { return code_; }

 private:
  ErrorCode code_;
};

}  // namespace targets

#endif  // STRINGRESOLVER_TARGETS_ERROR_H

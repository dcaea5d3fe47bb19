#ifndef STRINGRESOLVER_TOOLS_RESOLVE_STREAMERROR_H
#define STRINGRESOLVER_TOOLS_RESOLVE_STREAMERROR_H

#include <stdexcept>

namespace tool {

/// A stream that cannot be used any more. `what()` is a sentence that names it and the reason.
class StreamError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace tool

#endif  // STRINGRESOLVER_TOOLS_RESOLVE_STREAMERROR_H

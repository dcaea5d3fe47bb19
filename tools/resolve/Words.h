#ifndef STRINGRESOLVER_TOOLS_RESOLVE_WORDS_H
#define STRINGRESOLVER_TOOLS_RESOLVE_WORDS_H

#include <string>
#include <vector>

#include "tools/resolve/Options.h"

namespace tool {

/// Moves the words of the command line that are no options into `options`: the program, where there
/// is one, and the expressions. Throws `UsageError`.
void TakeWords(std::vector<std::string> words, Options* options);

}  // namespace tool

#endif  // STRINGRESOLVER_TOOLS_RESOLVE_WORDS_H

#ifndef STRINGRESOLVER_TOOLS_RESOLVE_COMPLAINT_H
#define STRINGRESOLVER_TOOLS_RESOLVE_COMPLAINT_H

#include <string>

namespace tool {

/// `resolve: SENTENCE` on standard error. Each line there goes out in one piece, so that lines of
/// several commands do not mix. The sentence may hold any bytes.
void Complain(const std::string& sentence);
/// `resolve: EXPRESSION: SENTENCE` likewise, each of them cut short if it is long.
void ComplainOf(const std::string& expression, const std::string& sentence);

/// `note: SENTENCE` likewise.
void Note(const std::string& sentence);
void NoteOn(const std::string& expression, const std::string& sentence);

/// `warning: SENTENCE` likewise.
void Warn(const std::string& sentence);

}  // namespace tool

#endif  // STRINGRESOLVER_TOOLS_RESOLVE_COMPLAINT_H

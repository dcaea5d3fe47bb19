#ifndef STRINGRESOLVER_BENCH_PROGRAMLABELS_H
#define STRINGRESOLVER_BENCH_PROGRAMLABELS_H

#include <string>
#include <vector>

namespace bench {

/// The variables of program.c.
inline std::vector<std::string> ProgramLabels() {
  return {"x", "a", "s",   "head", "first", "second", "third",
          "p", "m", "arr", "ring", "f",     "d",      "wide"};
}

}  // namespace bench

#endif  // STRINGRESOLVER_BENCH_PROGRAMLABELS_H

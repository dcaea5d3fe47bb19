#ifndef STRINGRESOLVER_BENCH_SHAPES_H
#define STRINGRESOLVER_BENCH_SHAPES_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace bench {

/// Expressions of any length that repeat something, over what `SmallHost` knows.
struct Shape {
  std::string name;
  /// `start`, then n pieces, which take turns, then `middle`, then `end` n times.
  std::string start;
  std::vector<std::string> pieces;
  std::string middle;
  std::string end;
  /// The text that the expression is rewritten to grows with the square of n: a cast is written as
  /// one byte for each type saved before it, so n casts take n * n / 2 bytes.
  bool growsWithSquare = false;

  [[nodiscard]] std::string Text(std::size_t n) const;
};

const std::vector<Shape>& Shapes();

/// The shape of that name, or null.
const Shape* FindShape(std::string_view name);

}  // namespace bench

#endif  // STRINGRESOLVER_BENCH_SHAPES_H

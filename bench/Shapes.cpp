#include "bench/Shapes.h"

#include <algorithm>

namespace bench {

std::string Shape::Text(std::size_t n) const {
  std::string text = start;
  for (std::size_t i = 0; i < n; ++i) text += pieces[i % pieces.size()];
  text += middle;
  for (std::size_t i = 0; i < n; ++i) text += end;
  return text;
}

const std::vector<Shape>& Shapes() {
  static const std::vector<Shape> kShapes = {
      {"sum", "1", {"+1"}, "", ""},
      {"products", "1*1", {"+1*1"}, "", ""},
      {"operators",
       "1",
       {"+1", "*1", "<<1", "<1", ">1", "==1", "&1", "^1", "|1", "&&1", "||1", "-1", "/1", "%1",
        ">>1", "<=1", ">=1", "!=1"},
       "",
       ""},
      {"labels", "x", {"+x", "*x"}, "", ""},
      {"nested", "", {"("}, "1", ")"},
      {"negated", "", {"-("}, "1", ")"},
      {"groups", "(1)", {"+(1)"}, "", ""},
      {"floating_groups", "(1.5)", {"+(1.5)"}, "", ""},
      {"prefixes", "", {"-~"}, "1", ""},
      {"references", "", {"*&"}, "x", ""},
      {"subscripts", "a[1]", {"+a[1]"}, "", ""},
      {"chained_subscripts", "a[0]", {"[0]"}, "", ""},
      {"nested_subscripts", "", {"a["}, "0", "+0]"},
      {"members", "s.a", {"+s.in.y"}, "", ""},
      {"pointers", "p", {"->next"}, "->v", ""},
      {"sizes", "sizeof x", {"+sizeof x"}, "", ""},
      {"sizes_of_types", "sizeof(int)", {"+sizeof(int)"}, "", ""},
      {"floating", "1.5", {"+1.5"}, "", ""},
      {"exponents", "1e", {"+1e"}, "+1", ""},
      {"blanks", "1", {" "}, "+1", ""},
      {"space_marks", "", {"#"}, "1", ""},
      {"opening_brackets", "a", {"["}, "", ""},
      {"closing_brackets", "a", {"]"}, "", ""},
      {"opening_parentheses", "", {"("}, "1", ""},
      {"closing_parentheses", "1", {")"}, "", ""},
      {"commas", "1", {","}, "", ""},
      {"keywords", "int", {" int"}, "", ""},
      {"stars", "(int", {"*"}, ")0", ""},
      {"casts", "", {"(int)"}, "1", "", true},
      {"cast_terms", "(int)1", {"+(int)1"}, "", "", true},
  };
  return kShapes;
}

const Shape* FindShape(std::string_view name) {
  const auto found = std::ranges::find(Shapes(), name, &Shape::name);
  return found == Shapes().end() ? nullptr : &*found;
}

}  // namespace bench

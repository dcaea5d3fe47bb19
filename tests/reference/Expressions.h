#ifndef STRINGRESOLVER_TESTS_REFERENCE_EXPRESSIONS_H
#define STRINGRESOLVER_TESTS_REFERENCE_EXPRESSIONS_H

#include <cstddef>
#include <string>

#include "tests/reference/Random.h"
#include "tests/reference/World.h"

namespace reference {

/// Makes texts for a resolver over one world: most of them expressions that follow the grammar and
/// the world's types, some of those damaged afterwards, some out of a list of the peculiar ones,
/// some a mere row of tokens.
class Expressions {
 public:
  Expressions(const World& world, Random* random) : world_(world), random_(*random) {}

  std::string Next();

 private:
  /// An object in target memory: how to write it, and its type.
  struct Object {
    std::string text;
    std::size_t type = 0;
  };

  std::string WellFormed();
  std::string Number(int depth);
  std::string NumberAtom(int depth);
  std::string SizeOf(int depth);
  std::string Floating(int depth);
  std::string FloatingAtom(int depth);
  std::string Pointer(int depth);
  std::string Structure();
  Object Reach(bool (*wanted)(Kind));
  void Step(Object* object);
  std::string Subscript(std::size_t count);
  std::string Numeral();
  std::string TypeName(bool pointer);
  std::string Group(const std::string& text);
  std::string Join(const std::string& left, const std::string& operation, const std::string& right);
  std::string LabelName();

  std::string Peculiar();
  std::string Tokens();
  void Damage(std::string* text);

  const World& world_;
  Random& random_;
};

}  // namespace reference

#endif  // STRINGRESOLVER_TESTS_REFERENCE_EXPRESSIONS_H

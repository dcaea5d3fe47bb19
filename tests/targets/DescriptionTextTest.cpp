// The texts in a description: TOML itself, and the types.

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "targets/TomlText.h"
#include "targets/TypeDeclaration.h"

namespace targettests {
namespace {

TEST(TomlText, CharactersBeyondAsciiStandInComments) {
  constexpr std::size_t kNone = 1000;
  const std::vector<std::pair<std::string, std::size_t>> rows{
      {"", kNone},
      {"a = 1", kNone},
      {"\xEF\xBB\xBF a = 1", kNone},
      {"# \u00e4\na = 1", kNone},
      {"a = 1 # \u00e4", kNone},
      {"a = \"b\" # \u00e4", kNone},
      {"a = \u00e4", 4},
      {"# b\n\u00e4", 4},
      {"a = \"\u00e4\"", 5},
      {"a = '\u00e4'", 5},
      {"a = '\\\u00e4'", 6},
      {"a = \"\\\u00e4\"", 6},
      {"a = \"\"\u00e4", 6},
      {"a = \"\"#\u00e4", kNone},
      {"a = \"#\u00e4\"", 6},
      {"a = '#\u00e4'", 6},
      {"a = \"\\\"#\u00e4", 8},
      {"a = \"\\\\\"#\u00e4", kNone},
      {"a = '\\'#\u00e4", kNone},
      {"a = \"'\"#\u00e4", kNone},
      {"a = \"b\n\u00e4", kNone},
      {"a = \"\"\"\n#\u00e4\"\"\"", 9},
      {"a = \"\"\"\n\"#\u00e4\"\"\"", 10},
      {"a = \"\"\"b\"\"\"\"\"#\u00e4", kNone},
      {"a = '''b''''#\u00e4", kNone},
      {"a = \"\"\"\\ \n \u00e4\"\"\"", 11},
      {"a = \"\\", kNone},
  };
  for (const auto& [text, offset] : rows) {
    EXPECT_EQ(targets::FindStrayCharacter(text).value_or(kNone), offset) << text;
  }
}

TEST(TypeDeclaration, IsTakenApartFromTheTypeInwards) {
  const auto read = [](const char* text) {
    std::string result;
    try {
      const targets::TypeDeclaration declaration = targets::ReadTypeDeclaration(text);
      for (const targets::TypeStep& step : declaration.steps) {
        switch (step.kind) {
          case targets::TypeStep::Kind::kPointer:
            result += "pointer to ";
            break;
          case targets::TypeStep::Kind::kFunction:
            result += "function returning ";
            break;
          case targets::TypeStep::Kind::kArray:
            result += (step.count ? std::to_string(*step.count) : "some") + " of ";
            break;
        }
      }
      result += declaration.base;
      if (declaration.bits) result += ", " + std::to_string(*declaration.bits) + " bits";
    } catch (const std::invalid_argument& error) {
      result = error.what();
    }
    return result;
  };
  const std::string deep = "a type has 64 pointers and dimensions at most";
  const std::vector<std::pair<std::string, std::string>> rows{
      {"int", "int"},
      {"unsigned char", "unsigned char"},
      {"int *", "pointer to int"},
      {"struct node**", "pointer to pointer to struct node"},
      {"int [3]", "3 of int"},
      {"int[2][0x10]", "2 of 16 of int"},
      {"int []", "some of int"},
      {"int *[3]", "3 of pointer to int"},
      {"int (*)[3]", "pointer to 3 of int"},
      {"int (*[2])[3]", "2 of pointer to 3 of int"},
      {"const char * const volatile *", "pointer to pointer to const char"},
      {"int ()", "function returning int"},
      {"int (*)(char, void (*)(int))", "pointer to function returning int"},
      {"char *(*(*)(void))[2]", "pointer to function returning pointer to 2 of pointer to char"},
      {"unsigned int : 3", "unsigned int, 3 bits"},
      {"", "a type begins with its name"},
      {" *", "a type begins with its name"},
      {"int [", "the number of elements must be a decimal number, or a hexadecimal one behind 0x"},
      {"int [x]",
       "the number of elements must be a decimal number, or a hexadecimal one behind 0x"},
      {"int [3", "a bracket is not closed"},
      {"int (*", "a parenthesis is not closed"},
      {"int (char", "a parenthesis is not closed"},
      {"int * x", "`x` does not belong to a type"},
      {"int)", "`)` does not belong to a type"},
      {"int [2]()", "an array cannot hold functions"},
      {"int ()[2]", "a function cannot return an array or a function"},
      {"int ()()", "a function cannot return an array or a function"},
      {"int * : 3", "only integers and enumerations can be bit-fields"},
      {"int : x",
       "the width of a bit-field must be a decimal number, or a hexadecimal one behind "
       "0x"},
      {"int " + std::string(64, '*'),
       [] {
         std::string all;
         for (int i = 0; i < 64; ++i) all += "pointer to ";
         return all + "int";
       }()},
      {"int " + std::string(65, '*'), deep},
      {"int " + std::string(100000, '*'), deep},
      {"int " + std::string(100000, '('), deep},
      {"int (" + std::string(100000, '('), deep},
  };
  for (const auto& [text, meaning] : rows) {
    EXPECT_EQ(read(text.c_str()), meaning) << text.substr(0, 80);
  }
}

}  // namespace
}  // namespace targettests

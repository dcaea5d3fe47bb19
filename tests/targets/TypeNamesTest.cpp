#include "targets/TypeNames.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace targets {
namespace {

struct Row {
  std::string text;
  std::string name;  // base and stars
};

/// The canonical name of `text` where `known` are the types there are.
std::string Read(const std::string& text, const std::set<std::string, std::less<>>& known) {
  const auto name = CanonicalTypeName(
      text, [&](std::string_view base) { return known.find(base) != known.end(); });
  return name ? name->base + std::string(name->stars, '*') : "no type";
}

TEST(TypeNames, GivesEveryBasicTypeOneSpelling) {
  const Row rows[] = {
      {"char", "char"},
      {"signed char", "signed char"},
      {"charsigned", "signed char"},
      {"unsignedchar", "unsigned char"},
      {"char unsigned", "unsigned char"},
      {"short", "short"},
      {"shortint", "short"},
      {"intshort", "short"},
      {"signedshortint", "short"},
      {"short unsigned int", "unsigned short"},
      {"int", "int"},
      {"signed", "int"},
      {"signedint", "int"},
      {"unsigned", "unsigned int"},
      {"intunsigned", "unsigned int"},
      {"long", "long"},
      {"longint", "long"},
      {"longsigned", "long"},
      {"long unsigned int", "unsigned long"},
      {"intlongunsigned", "unsigned long"},
      {"longlong", "long long"},
      {"longintlong", "long long"},
      {"long long unsigned int", "unsigned long long"},
      {"unsignedlonglongint", "unsigned long long"},
      {"longunsignedlong", "unsigned long long"},
      {"float", "float"},
      {"double", "double"},
      {"longdouble", "long double"},
      {"doublelong", "long double"},
      {"complex float", "float _Complex"},
      {"double_Complex", "double _Complex"},
      {"complex long double", "long double _Complex"},
      {"_Bool", "_Bool"},
      {"bool", "_Bool"},
      {"void", "void"},
      {"__int128", "__int128"},
      {"__int128 unsigned", "unsigned __int128"},
      {"unsignedconstint", "unsigned int"},
      {"const", ""},
      {"", ""},
      {"charint", ""},
      {"shortlong", ""},
      {"longlonglong", ""},
      {"shortdouble", ""},
      {"longfloat", ""},
      {"unsignedfloat", ""},
      {"unsignedsigned", ""},
      {"unsignedunsigned", ""},
      {"voidint", ""},
      {"intint", ""},
      {"_Boolint", ""},
      {"complex", ""},
      {"integer", ""},
      {"Int", ""},
  };
  for (const Row& row : rows) EXPECT_EQ(CanonicalBasicType(row.text), row.name) << row.text;
}

TEST(TypeNames, ReadsWhatTheResolverHandsOver) {
  const std::set<std::string, std::less<>> known{
      "char",           "int",        "unsigned int", "unsigned long long", "void",
      "struct node",    "union both", "enum colour",  "class Point",        "node_t",
      "struct const_t", "double",     "0X",           "struct 0X"};
  const Row rows[] = {
      {"unsigned:@:int", "unsigned int"},
      {"longlong:@:unsigned:@:int", "unsigned long long"},
      {":@:int", "int"},
      {"int:@:", "int"},
      {"structnode", "struct node"},
      {"structnode*", "struct node*"},
      {"structnode***", "struct node***"},
      {"struct node *", "struct node*"},
      {" struct\tnode ", "struct node"},
      {"unionboth", "union both"},
      {"enumcolour", "enum colour"},
      {"classPoint", "class Point"},
      {"node_t", "node_t"},
      {"node_t*", "node_t*"},
      {"constchar*", "char*"},
      {"const:@:char*", "char*"},
      {"const char *", "char*"},
      {"charconst*", "char*"},
      {"char*const", "char*"},
      {"char*const*volatile", "char**"},
      {"char * const *", "char**"},
      {"constvolatileint", "int"},
      {"volatilestructnode*", "struct node*"},
      {"structnodeconst*", "struct node*"},
      {"constnode_tconst", "node_t"},
      {"const struct node volatile *", "struct node*"},
      {"structconst_t", "struct const_t"},
      {"void*", "void*"},
      {"_Atomicint", "int"},
      {"node", "no type"},
      {"structnothing", "no type"},
      {"unionnode", "no type"},
      {"nodestruct", "no type"},
      {"float", "no type"},
      {"restrict0X", "no type"},
      {"const0X", "no type"},
      {"const 0X*", "no type"},
      {"struct0X", "no type"},
      {"conststruct 0X", "no type"},
  };
  for (const Row& row : rows) EXPECT_EQ(Read(row.text, known), row.name) << row.text;
}

TEST(TypeNames, TearsNoNameApartThatIsOneWord) {
  // Each of these begins like a keyword, and the rest is a type as well.
  const std::set<std::string, std::less<>> known{
      "constant_t",  "ant_t",    "int",        "int_list",    "structural",
      "struct ural", "longlong", "long long",  "unsignedint", "unsigned int",
      "volatile_t",  "_t",       "enumerated", "enum erated"};
  const Row rows[] = {
      {"constant_t", "constant_t"},      {"int_list*", "int_list*"},
      {"structural", "structural"},      {"struct ural", "struct ural"},
      {"longlong", "longlong"},          {"long:@:long", "long long"},
      {"unsignedint", "unsignedint"},    {"unsigned:@:int", "unsigned int"},
      {"unsigned int", "unsigned int"},  {"volatile_t", "volatile_t"},
      {"constvolatile_t", "volatile_t"}, {"volatile _t", "_t"},
      {"enumerated", "enumerated"},      {"const ant_t", "ant_t"},
      {"constconstant_t", "constant_t"},
  };
  for (const Row& row : rows) EXPECT_EQ(Read(row.text, known), row.name) << row.text;
}

TEST(TypeNames, ExpressionsAreNoTypes) {
  const std::string texts[] = {
      "",
      " ",
      ":@:",
      "*",
      "**",
      "1",
      "1int",
      "a+b",
      "*int",
      "int+1",
      "int*p",
      "int**3",
      "-int",
      "int[3]",
      "&int",
      "int()",
      "a.b",
      "a->b",
      "'int'",
      "int\x01",
      std::string("int\0", 4),
      "int*const_x",
      ":int",
      "int:",
      "int*:",
      "\r@0\x0e",
      "1,5",
  };
  for (const std::string& text : texts) {
    const auto everything = [](std::string_view) { return true; };
    EXPECT_FALSE(CanonicalTypeName(text, everything)) << text;
  }
}

TEST(TypeNames, CopesWithLongTexts) {
  const std::set<std::string, std::less<>> known{"int"};
  EXPECT_EQ(Read("int" + std::string(200000, '*'), known), "int" + std::string(200000, '*'));
  std::string qualifiers;
  std::string stars;
  for (int n = 0; n < 100000; ++n) {
    qualifiers += "const";
    stars += "*const";
  }
  EXPECT_EQ(Read(qualifiers, known), "no type");
  EXPECT_EQ(Read("int" + qualifiers, known), "no type");
  EXPECT_EQ(Read("int" + stars, known), "int" + std::string(100000, '*'));
  EXPECT_EQ(Read(std::string(1000000, 'x'), known), "no type");
  EXPECT_EQ(Read(std::string(1000000, ' ') + "int", known), "int");
  EXPECT_EQ(Read("struct" + std::string(1000000, '\xff'), known), "no type");
}

}  // namespace
}  // namespace targets

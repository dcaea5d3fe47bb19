#include <cstddef>
#include <string>
#include <vector>

#include "tests/reference/Expressions.h"

namespace reference {
namespace {

// Each stands for a rule that ordinary expressions do not meet. L is an object, S a structure, T a
// type, E an expression; all else is meant as it stands.
const std::vector<std::string> kPeculiar = {
    "",
    " ",
    "()",
    "(()",
    "(E",
    "E)",
    "((E))",
    "E+",
    "E ~",
    "+",
    "%L",
    "^5",
    "L=E",
    "L==E=",
    "L~E",
    "&5",
    "&&L",
    "&&&L",
    "&(T)L",
    "-&L",
    "(T)&&L",
    "(T)",
    "(ghost)E",
    "sizeof(ghost)",
    "sizeof(T)",
    "sizeof(T*)",
    "sizeof( T *)",
    "sizeof sizeof(E)",
    "sizeofL+sizeof(T)",
    "sizeof(L",
    "sizeof L",
    "sizeof",
    "E+sizeof",
    "sizeof(T)sizeof(T)",
    "L[]",
    "L[E",
    "L]E[",
    "L[E]]",
    "[E]",
    "E][",
    "(E)[)",
    "(E)[)1(]",
    "(L)[)L(]",
    "(E)[)1(](](][)2(]",
    "L[)2(]",
    "L[)2(][)1(]",
    "L[)L[)1(](]",
    "L[))1(]",
    "L[)L[))1]]",
    "L[)1[))2[)))3]]]",
    "L.x[)1(]",
    "L->x[)1(]",
    "L->p[1][2]",
    "L(][",
    "L(][)",
    "(E)(](]",
    "L[E+1](]",
    "L[E]+(](]",
    "L[E][E]",
    "L[1][2][3]",
    "L.-x",
    "L.x.y.v",
    "(T)L.x.y.v",
    "(T)S.link.link.x",
    "(T)S.link.link.link.x",
    "(T)S.link.link.link.link",
    "-S.link.link.link.x",
    "&S.link.link.link.x",
    "L.x[].y",
    "L.link[nowhere].x",
    "L.link[)nowhere(].x",
    "S.link[1].link[1].x",
    "L->link[1]->x",
    "L->-x",
    "L->nowhere",
    "L.nowhere",
    "L->link->link->link->x",
    "L.link->in.x",
    "(L).x",
    "(*L).x",
    "L.\x08x",
    "*L",
    "**L",
    "***L",
    "*&L",
    "&*L",
    "*(T*)E",
    "*5",
    "-*L",
    "~*L",
    "!*L",
    "(T*)L",
    "(T)*L",
    "(T)-L",
    "(T)(T)L",
    "(T*)(L+1)",
    "((T)L)->x",
    "((T*)L)->x",
    "((T*)L).x",
    "1+L",
    "L+1",
    "L-L",
    "(T*)8-(T*)4",
    "(T*)8+1",
    "1+(T*)8",
    "(T**)8+1",
    "L*L",
    "L==L",
    "L<L",
    "L/0",
    "L%0",
    "5%0.5",
    "5/0.5",
    "L/0.5",
    "1/(T)0",
    "7%-(T)1",
    "7%(T)256",
    "-7%(T)2",
    "(T)-7/(T)2",
    "(int)7%-(int)2",
    "(char)-5<(char)3",
    "(char)5>(char)-3",
    "(int)-5<=(int)-3",
    "(short)65535*(int)1",
    "(unsigned long)(char)200",
    "(unsigned short)(char)200",
    "(int)-1<<1",
    "(float)1065353216",
    "(double)4607182418800017408",
    "(int)1.5",
    "(double)2.5",
    "(float)2.5",
    "-(float)1065353216",
    "(float)E",
    "(double)E",
    "(double)L",
    "(float)L",
    "(double)L+1.5",
    "1.5<<1",
    "1>>1.5",
    "1.5&1",
    "1|1.5",
    "1.5^1",
    "1.5&&1",
    "1||1.5",
    "~1.5",
    "!1.5",
    "~(double)L",
    "!(double)L",
    "1.5<2.5",
    "1.5<2",
    "2.5>=1.5",
    "1.5==1.5",
    "1.5!=1.5",
    "1.5!=2",
    "(double)L<1.5",
    "0.0/0.0",
    "1.0/0.0",
    "1.0e+300*10",
    "(0.0/0.0)+1",
    "0.0/0.0==0.0/0.0",
    "2.5%2",
    "0x1e+5",
    "abe+1",
    ".5",
    "0.5",
    "1.",
    "1.5.5",
    "1,5",
    ":.5",
    "1.5e+",
    "e+1",
    "5e-",
    "unsigned int",
    "L unsigned int",
    "(unsigned int)L",
    "(int unsigned)L",
    "(T )L",
    "print int",
    "L + T",
    "#L",
    "L#",
    "#5",
    "##L",
    "(#L)",
    "(#5)+1",
    "*(#5)",
    "(T)(#5)",
    "#1.5",
    "(&#L)+1",
    "(&#5)",
    "(&&#5)",
    "(&#L)",
    "((&#L))",
    "-(&#L)",
    "(&#L)*1",
    "1*(&#L)",
    "(&#L)[1]",
    "'A'+1",
    "\r@0\x0e"
    "5",
    "\r@0\x0eL",
    "(E)+\r@0\x0eL",
    "(E)+\r@0\x0eL.x",
    "(T)1+\r@0\x0eL",
    "(T)1+\r@1\x0eL",
    "(E)+\r@99\x0eL",
    "(E)+\r@\x0eL",
    "(E)+\r\x0e"
    "5",
    "(E)+\r@0\x0e",
    "(E)+\r@0\x0e+5",
    "(E)+\r@0\x0e*L",
    "\r@0",
    "\r@0\x0e",
    "\x0e\r",
    "\x0e\r@0\x0e"
    "5",
    "L[)\r@0\x0e"
    "1(]",
    "L[)\r@0",
    "(E)+\r@0\x0e#5",
    "\x18L",
    "\x18\x18L",
    "\x18\x19\x18L",
    "\x18\x19\x19\x19\x19\x18L",
    "(T)1+\x18\x18L",
    "(T)1+\x18-\x18L",
    "\x08L",
    "\x08\x08L",
    "\x08(T)L",
    "\x08*L",
    "\x08&L",
    "\x08"
    "1.5",
    "\x19L",
    "(int\x0f)L",
    "(\x0fint)L",
    "sizeof(int\x0f)",
    "^*^*^^L",
    "L^*^*^^+1",
    "L\t+1",
    "L@",
};

const std::string kMarkers = "\r\x0e\x0f\x08\x18\x19#@,^*[]()";
const std::string kBytes = "+-*/%&|^~!<>=.()[]#'\"@:, abpqstxy0123456789\r\x0e\x0f\x08\x18\x19\t";
const std::vector<std::string> kTokens = {
    "(",        ")",    "[",        "]",      "+",      "-",          "*",  "/",      "%",
    "&",        "|",    "^",        "~",      "!",      "<<",         ">>", "<=",     ">=",
    "==",       "!=",   "&&",       "||",     ".",      "->",         " ",  "sizeof", "int",
    "unsigned", "char", "double",   "(int)",  "(int*)", "1.5",        "[)", "(]",     "#",
    "\x08",     "\x18", "\r@0\x0e", "2.5e-3", "5",      "sizeof(int)"};

}  // namespace

std::string Expressions::Peculiar() {
  std::string text;
  for (const char byte : random_.Of(kPeculiar)) {
    if (byte == 'L') {
      text += random_.Chance(80) ? Reach([](Kind) { return true; }).text : LabelName();
    } else if (byte == 'S') {
      text += Reach([](Kind kind) { return kind == Kind::kStructure; }).text;
    } else if (byte == 'T') {
      text += TypeName(random_.Chance(20));
    } else if (byte == 'E') {
      text += Number(static_cast<int>(random_.Below(3)));
    } else {
      text += byte;
    }
  }
  return text;
}

std::string Expressions::Tokens() {
  std::string text;
  const std::size_t count = 1 + random_.Below(9);
  for (std::size_t i = 0; i < count; ++i) {
    text += random_.Chance(40) ? LabelName() : random_.Of(kTokens);
  }
  return text;
}

void Expressions::Damage(std::string* text) {
  const std::size_t edits = 1 + random_.Below(3);
  for (std::size_t edit = 0; edit < edits; ++edit) {
    const std::size_t at = random_.Below(text->size() + 1);
    switch (random_.Below(6)) {
      case 0:
        if (at < text->size()) text->erase(at, 1 + random_.Below(3));
        break;
      case 1:
        text->insert(at, 1, kBytes[random_.Below(kBytes.size())]);
        break;
      case 2:
        text->insert(at, 1, kMarkers[random_.Below(kMarkers.size())]);
        break;
      case 3:
        if (at < text->size()) text->insert(at, text->substr(at, 1 + random_.Below(4)));
        break;
      case 4:
        if (at < text->size()) (*text)[at] = static_cast<char>(random_.Next());
        break;
      default:
        text->insert(at, random_.Of(kTokens));
        break;
    }
  }
}

}  // namespace reference

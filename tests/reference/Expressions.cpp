#include "tests/reference/Expressions.h"

#include <vector>

namespace reference {
namespace {

const std::vector<std::string> kIntegerOperators = {"+",  "-",  "*",  "/",  "%",  "<<", ">>", "<",
                                                    "<=", ">",  ">=", "==", "!=", "&",  "|",  "^",
                                                    "&&", "||", "+",  "-",  "*",  "/"};
const std::vector<std::string> kFloatingOperators = {
    "+", "-", "*", "/", "<", "<=", ">", ">=", "==", "!=", "+", "-", "*", "/", "%"};
const std::vector<std::string> kUnary = {"-", "~", "!", "+", "-", "- -", "!!", "~-"};
const std::vector<std::string> kNumerals = {"0",
                                            "1",
                                            "2",
                                            "3",
                                            "7",
                                            "10",
                                            "12",
                                            "63",
                                            "64",
                                            "65",
                                            "255",
                                            "256",
                                            "1000",
                                            "0x10",
                                            "'A'",
                                            "0x1e",
                                            "0xff",
                                            "500",
                                            "65535",
                                            "4294967295",
                                            "1065353216",
                                            "4294967296",
                                            "9223372036854775808",
                                            "18446744073709551615"};
const std::vector<std::string> kLiterals = {
    "1.5",        "0.5",    "2.25",     "3.14159265",
    "1.0",        "0.0",    "1.5e+3",   "2.5e-3",
    "1.0e+38",    "1e+5.0", "9.5e+300", "0.1",
    "123456.789", "1.e5",   "7.0e-30",  "18446744073709551616.0"};

bool IsInteger(Kind kind) {
  return kind == Kind::kInteger;
}
bool IsFloating(Kind kind) {
  return kind == Kind::kFloat || kind == Kind::kDouble;
}
bool IsPointer(Kind kind) {
  return kind == Kind::kPointer;
}
bool IsStructure(Kind kind) {
  return kind == Kind::kStructure;
}
bool IsAny(Kind) {
  return true;
}

}  // namespace

std::string Expressions::Next() {
  const std::size_t way = random_.Below(100);
  if (way < 76) return WellFormed();
  if (way < 88) {
    std::string text = random_.Chance(80) ? WellFormed() : Peculiar();
    Damage(&text);
    return text;
  }
  if (way < 95) return Peculiar();
  return Tokens();
}

std::string Expressions::WellFormed() {
  const int depth = static_cast<int>(random_.Below(4));
  switch (random_.Below(10)) {
    case 0:
    case 1:
      return Floating(depth);
    case 2:
      return Pointer(depth);
    case 3:
      return Structure();
    case 4:
      return Reach(IsAny).text;
    default:
      return Number(depth);
  }
}

std::string Expressions::Number(int depth) {
  if (depth <= 0) return NumberAtom(depth);
  switch (random_.Below(10)) {
    case 0:
      return random_.Of(kUnary) + NumberAtom(depth - 1);
    case 1:
      return Group(Number(depth - 1));
    case 2:
      return "(" + TypeName(false) + ")" + NumberAtom(depth - 1);
    case 3:
      return random_.Of(kUnary) + Group(Number(depth - 1));
    case 4:
      return Group(Floating(depth - 1)) + (random_.Chance(50) ? " < " : "==") +
             Group(Floating(depth - 1));
    default:
      return Join(Number(depth - 1), random_.Of(kIntegerOperators), Number(depth - 1));
  }
}

std::string Expressions::NumberAtom(int depth) {
  switch (random_.Below(9)) {
    case 0:
    case 1:
      return Reach(IsInteger).text;
    case 2: {
      // The value, not the location: what a careful host writes before an operator.
      const Object object = Reach(IsInteger);
      return "(" + object.text + "+0)";
    }
    case 3: {
      const Object object = Reach(IsPointer);
      if (!IsInteger(world_.types[world_.types[object.type].target].kind)) return Numeral();
      return random_.Chance(50) ? "*" + object.text : "*(" + object.text + "+" + Numeral() + ")";
    }
    case 4:
      return random_.Chance(60) ? SizeOf(depth) : "&" + Reach(IsAny).text;
    case 5:
      return LabelName();
    default:
      return Numeral();
  }
}

std::string Expressions::SizeOf(int depth) {
  switch (random_.Below(4)) {
    case 0:
      return "sizeof(" + TypeName(random_.Chance(40)) + ")";
    case 1:
      return "sizeof " + Reach(IsAny).text;
    case 2:
      return "sizeof(" + Reach(IsAny).text + ")";
    default:
      return "sizeof(" + Number(depth - 1) + ")";
  }
}

std::string Expressions::Floating(int depth) {
  if (depth <= 0) return FloatingAtom(depth);
  switch (random_.Below(8)) {
    case 0:
      return "-" + FloatingAtom(depth - 1);
    case 1:
      return Group(Floating(depth - 1));
    case 2:
      return Join(Floating(depth - 1), random_.Of(kFloatingOperators), Number(depth - 1));
    case 3:
      return Join(Number(depth - 1), random_.Of(kFloatingOperators), Floating(depth - 1));
    case 4:
      return (random_.Chance(50) ? "(float)" : "(double)") + Group(Number(depth - 1));
    default:
      return Join(Floating(depth - 1), random_.Of(kFloatingOperators), Floating(depth - 1));
  }
}

std::string Expressions::FloatingAtom(int depth) {
  switch (random_.Below(6)) {
    case 0:
    case 1:
      return Reach(IsFloating).text;
    case 2: {
      const Object object = Reach(IsPointer);
      return IsFloating(world_.types[world_.types[object.type].target].kind) ? "*" + object.text
                                                                             : "1.5";
    }
    case 3:
      return "(" + Reach(IsFloating).text + "+0.0)";
    case 4:
      return depth > 0 ? "(" + TypeName(false) + ")" + random_.Of(kLiterals)
                       : random_.Of(kLiterals);
    default:
      return random_.Of(kLiterals);
  }
}

std::string Expressions::Pointer(int depth) {
  const Object object = Reach(IsPointer);
  switch (random_.Below(8)) {
    case 0:
      return object.text + (random_.Chance(50) ? "+" : " - ") + Number(depth - 2);
    case 1:
      return "(" + TypeName(true) + ")" +
             (random_.Chance(50) ? Numeral() : "(" + object.text + ")");
    case 2:
      return "*(" + TypeName(true) + ")" + Group(Numeral() + "+" + object.text);
    case 3:
      return object.text + "-" + Reach(IsPointer).text;
    case 4:
      return "**" + object.text;
    case 5:
      return "&" + object.text;
    case 6:
      return "*(" + object.text + "+" + Number(depth - 2) + ")";
    default:
      return object.text;
  }
}

std::string Expressions::Structure() {
  Object object = Reach(IsStructure);
  Step(&object);
  if (random_.Chance(60)) Step(&object);
  if (random_.Chance(30)) return Join(object.text, random_.Of(kIntegerOperators), Number(1));
  return object.text;
}

/// A label, followed into its members and elements until it is of the wanted kind, as far as a few
/// attempts go.
Expressions::Object Expressions::Reach(bool (*wanted)(Kind)) {
  Object object;
  for (int attempt = 0; attempt < 12; ++attempt) {
    const Label& label = random_.Of(world_.labels);
    if (!label.typed) continue;
    object = {label.name, label.model};
    const std::size_t most = random_.Below(3);
    for (std::size_t step = 0; step < most && !wanted(world_.types[object.type].kind); ++step) {
      Step(&object);
    }
    if (wanted(world_.types[object.type].kind)) break;
  }
  return object;
}

void Expressions::Step(Object* object) {
  const TypeModel& type = world_.types[object->type];
  const auto takeField = [&](const char* operation, std::size_t structure) {
    const FieldModel& field = random_.Of(world_.structures[structure].fields);
    object->text += operation + field.name;
    object->type = field.type;
  };
  if (type.kind == Kind::kStructure) {
    if (world_.assembly) {
      object->text = "(&" + object->text + ")";
      object->text = "((" + world_.structures[type.structure].name + "*)" + object->text + ")";
      takeField("->", type.structure);
    } else {
      takeField(".", type.structure);
    }
  } else if (type.kind == Kind::kPointer) {
    const TypeModel& target = world_.types[type.target];
    if (target.kind == Kind::kStructure && random_.Chance(70)) {
      takeField("->", target.structure);
    } else if (random_.Chance(50)) {
      object->text += "[" + Subscript(4) + "]";
      object->type = type.target;
    } else {
      object->text = "(*" + object->text + ")";
      object->type = type.target;
    }
  } else if (type.kind == Kind::kArray) {
    object->text += "[" + Subscript(type.count) + "]";
    object->type = type.target;
  }
}

std::string Expressions::Subscript(std::size_t count) {
  if (random_.Chance(70)) return std::to_string(random_.Below(count + 1));
  if (random_.Chance(40)) return "(" + LabelName() + ")+0";
  return random_.Chance(50) ? LabelName() : Number(1);
}

std::string Expressions::Numeral() {
  return random_.Of(kNumerals);
}

std::string Expressions::TypeName(bool pointer) {
  std::string name;
  while (name.empty()) name = random_.Of(world_.types).name;
  if (random_.Chance(3)) name = "ghost";
  if (random_.Chance(2)) name = "int" + name;
  if (pointer) name += random_.Chance(80) ? "*" : " **";
  return name;
}

std::string Expressions::Group(const std::string& text) {
  return random_.Chance(20) ? "( " + text + " )" : "(" + text + ")";
}

std::string Expressions::Join(const std::string& left, const std::string& operation,
                              const std::string& right) {
  const std::string blank = random_.Chance(30) ? " " : "";
  return left + blank + operation + blank + right;
}

std::string Expressions::LabelName() {
  return random_.Of(world_.labels).name;
}

}  // namespace reference

#include "targets/DescribedProgram.h"

#include <gtest/gtest.h>

#include "resolver/StringParametersResolving.h"
#include "tests/support/Outcome.h"
#include "tests/targets/ProgramUnderTest.h"

namespace targettests {
namespace {

using targets::DescribedProgram;
using targets::TypeShape;

const std::string kTarget = "[target]\npointer-size = 4\nbyte-order = \"little\"\n";

/// What is wrong with a description, without the name of its file.
std::string ErrorIn(const std::string& text) {
  std::string error = ErrorOf([&] { const DescribedProgram program(text, "d.toml"); });
  if (error.starts_with("d.toml:")) error.erase(0, 7);
  return error;
}

std::string Answer(DescribedProgram& program, const std::string& expression) {
  targets::ProgramHost host(program, program.Memory());
  if (const auto size = program.WordSize()) host.SetWordSize(*size);
  TStringResolver resolver(&host);
  std::string outcome = testsupport::Outcome(resolver, resolver.SolveStringOfElements(expression));
  if (host.FirstFailure()) outcome += std::string(" ! ") + host.FirstFailure()->what();
  return outcome;
}

TEST(DescribedProgram, EveryErrorNamesLineAndColumn) {
  const std::vector<std::pair<std::string, std::string>> rows{
      // the file
      {"", "1:1: the description has no `target`"},
      {"x = ", "1:5: Error while parsing key-value pair: encountered end-of-file"},
      {"# \u00e4\nx = \"\" \u00e4",
       "2:8: a character beyond ASCII may stand in comments only; `\\uXXXX` stands for it"},
      {"\u00e4 = 1",
       "1:1: a character beyond ASCII may stand in comments only; `\\uXXXX` stands for it"},
      {"x = \"\u00e4\"",
       "1:6: a character beyond ASCII may stand in comments only; `\\uXXXX` stands for it"},
      {kTarget + "[tarjet]\n",
       "4:2: the description has no key `tarjet`; there are `constants`, "
       "`enum`, `labels`, `memory`, `struct`, `target`, `typedef` and "
       "`union`"},
      {"target = 5\n", "1:10: `target` of the description must be a table"},
      // [target]
      {"[target]\n", "1:1: `target` has no `pointer-size`"},
      {"[target]\npointer-size = 4\n", "1:1: `target` has no `byte-order`"},
      {"[target]\npointer-size = 9\n",
       "2:16: `pointer-size` of `target` must be a number from 1 "
       "to 8"},
      {"[target]\npointer-size = \"x\"\n",
       "2:16: `pointer-size` of `target` must be a number from 1 to 8"},
      {"[target]\npointer-size = 4\nbyte-order = \"middle\"\n",
       "3:14: `byte-order` of `target` must be \"little\" or \"big\""},
      {"[target]\npointer-size = 6\nbyte-order = \"big\"\n",
       "2:16: `pointer-size` of `target` must be 1, 2, 3, 4 or 8"},
      {"[target]\npointer-size = 2\nbyte-order = \"big\"\n",
       "2:16: `pointer-size` of `target` must be 4 or 8 where the byte order is big"},
      {kTarget + "word-size = 0\n", "4:13: `word-size` of `target` must be a number from 1 to 8"},
      {kTarget + "largest-alignment = 3\n",
       "4:21: `largest-alignment` of `target` must be 1, 2, 4, 8 or 16"},
      {kTarget + "char-is-signed = 1\n",
       "4:18: `char-is-signed` of `target` must be true or false"},
      {kTarget + "assembly = \"yes\"\n", "4:12: `assembly` of `target` must be true or false"},
      {kTarget + "file = 1\n", "4:8: `file` of `target` must be a text"},
      {kTarget + "sizes = { int = 9 }\n", "4:17: `int` of `sizes` must be a number from 1 to 8"},
      {kTarget + "sizes = { double = 2 }\n", "4:20: `double` of `sizes` must be 4 or 8"},
      {kTarget + "sizes = { char = 2 }\n",
       "4:11: `sizes` has no key `char`; there are `double`, `int`, `long`, `long long` and "
       "`short`"},
      // types
      {kTarget + "[typedef]\na = \"b\"\n", "5:5: there is no type `b`"},
      {kTarget + "[typedef]\na = 5\n", "5:5: `a` must be a text"},
      {kTarget + "[typedef]\nint = \"char\"\n", "5:1: `int` cannot be the name of a type"},
      {kTarget + "[typedef]\n\"a b\" = \"char\"\n", "5:1: `a b` cannot be the name of a type"},
      {kTarget + "[typedef]\na = \"int : 3\"\n", "5:5: only a field can be a bit-field"},
      {kTarget + "[typedef]\na = \"b *\"\nb = \"a [2]\"\n",
       "5:1: the type is defined in terms of itself, or of more than 256 others"},
      {kTarget + "[typedef]\na = \"a\"\n",
       "5:1: the type is defined in terms of itself, or of more than 256 others"},
      {kTarget + "[typedef]\na = \"void [3]\"\n", "5:5: `void` has no size"},
      {kTarget + "[typedef]\na = \"int [3][]\"\n",
       "5:5: only the outermost dimension may be without a number"},
      {kTarget + "[typedef]\na = \"int [0x40000000]\"\n",
       "5:5: `int [1073741824]` is larger than 4 GiB"},
      // structures
      {kTarget + "[struct]\nx = 1\n", "5:5: `x` must be a table"},
      {kTarget + "[struct.\"1\"]\n", "4:9: `1` cannot be the name of a type"},
      {kTarget + "[struct.s]\nfield = []\n",
       "5:1: `s` has no key `field`; there are `fields`, `packed` and `size`"},
      {kTarget + "[struct.s]\nfields = 1\n", "5:10: `fields` of `s` must be an array"},
      {kTarget + "[struct.s]\nfields = [1]\n", "5:11: a field of `s` must be a table"},
      {kTarget + "[struct.s]\nfields = [{ name = \"x\" }]\n", "5:11: a field of `s` has no `type`"},
      {kTarget + "[struct.s]\nfields = [{ name = \"\", type = \"int\" }]\n",
       "5:20: `` cannot name a field"},
      {kTarget + "[struct.s]\nfields = [{ type = \"int\" }]\n",
       "5:11: a field without a name must be a structure, a union or a bit-field"},
      {kTarget + "[struct.s]\nfields = [{ name = \"x\", type = \"int\" }, { name = \"x\", type = "
                 "\"int\" }]\n",
       "5:41: there are two fields `x`"},
      {kTarget + "[struct.s]\nfields = [{ name = \"x\", type = \"int : 33\" }]\n",
       "5:32: a bit-field of `int` has 1 to 32 bits"},
      {kTarget + "[struct.s]\nfields = [{ name = \"x\", type = \"int : 0\" }]\n",
       "5:32: a bit-field of `int` has 1 to 32 bits"},
      {kTarget + "[struct.s]\nfields = [{ name = \"x\", type = \"float : 3\" }]\n",
       "5:32: only integers and enumerations can be bit-fields"},
      {kTarget + "[struct.s]\nfields = [{ name = \"x\", type = \"int\", bit = 1 }]\n",
       "5:45: `bit` counts from the byte at `offset`, which is not given"},
      {kTarget + "[struct.s]\nfields = [{ name = \"x\", type = \"int\", offset = 0, bit = 1 }]\n",
       "5:11: only a bit-field starts inside a byte"},
      {kTarget + "[struct.s]\nfields = [{ name = \"x\", type = \"int\", offset = -1 }]\n",
       "5:48: `offset` of a field of `s` must be a number from 0 to 2^64-1"},
      {kTarget + "[struct.s]\nfields = [{ name = \"x\", type = \"int\", offset = 0xffffffff }]\n",
       "5:11: the offset is larger than 4 GiB"},
      {kTarget + "[struct.s]\nsize = 3\nfields = [{ name = \"x\", type = \"int\" }]\n",
       "4:9: the fields take 4 bytes, which is more than the size that is given"},
      {kTarget + "[struct.s]\nsize = 0xffffffff\n", "4:9: the structure is larger than 4 GiB"},
      {kTarget + "[struct.s]\nfields = [{ name = \"x\", type = \"struct s\" }]\n",
       "4:9: `struct s` holds itself"},
      {kTarget + "[struct.h]\n[struct.s]\nfields = [{ name = \"x\", type = \"struct h\" }]\n",
       "6:32: `struct h` has no size"},
      {kTarget + "[struct.s]\nfields = [{ name = \"x\", type = \"int ()\" }]\n",
       "5:32: `int ()` has no size"},
      // enumerations
      {kTarget + "[enum.e]\n", "4:1: `e` has no `values`"},
      {kTarget + "[enum.e]\nvalues = { A = 1.5 }\n", "5:16: `A` must be a number from 0 to 2^64-1"},
      {kTarget + "[enum.e]\nsize = 1\nvalues = { A = 256 }\n",
       "6:12: the value does not fit into unsigned 1 bytes; `size` gives the enumeration another "
       "size"},
      {kTarget + "[enum.e]\nsize = 1\nvalues = { A = 128, B = -1 }\n",
       "6:12: the value does not fit into signed 1 bytes; `size` gives the enumeration another "
       "size"},
      // labels
      {kTarget + "[labels]\nx = -1\n", "5:5: `x` must be a number from 0 to 2^64-1"},
      {kTarget + "[labels]\nx = 0x100000000\n",
       "5:1: the address lies behind the end of the address space, 0xffffffff"},
      {kTarget + "[labels]\nx = { address = 0xfffffffe, type = \"int\" }\n",
       "5:1: the object goes past the end of the address space, 0xffffffff"},
      {kTarget + "[labels]\nx = { type = \"int\" }\n", "5:5: label `x` has no `address`"},
      {kTarget + "[labels]\nx = { address = 1, typ = \"int\" }\n",
       "5:20: label `x` has no key `typ`; there are `address` and `type`"},
      {kTarget + "[labels]\nx = { address = 1, type = \"int [\" }\n",
       "5:27: the type `int [`: the number of elements must be a decimal number, or a hexadecimal "
       "one behind 0x"},
      {kTarget + "[labels]\nx = { address = 1, type = \"void\" }\n", "5:27: `void` has no size"},
      {kTarget + "[labels]\n\"a b\" = 1\n", "5:1: a label's name cannot be empty or hold blanks"},
      {kTarget + "[labels]\nx = 1\n[constants]\nx = 2\n", "7:1: there are two things called `x`"},
      {kTarget + "[constants]\nA = 1\n[enum.e]\nvalues = { A = 2 }\n",
       "7:12: there are two things called `A`"},
      {kTarget + "[typedef]\nt = \"int\"\n[labels]\nt = 1\n",
       "7:1: `t` is the name of a type as well"},
      // memory
      {kTarget + "memory = 1\n",
       "4:1: `target` has no key `memory`; there are `assembly`, "
       "`byte-order`, `char-is-signed`, `file`, `largest-alignment`, "
       "`pointer-size`, `sizes` and `word-size`"},
      {kTarget + "[[memory]]\nbytes = \"01\"\n", "4:1: `memory` has no `address`"},
      {kTarget + "[[memory]]\naddress = 1\n", "4:1: `memory` has either `file` or `bytes`"},
      {kTarget + "[[memory]]\naddress = 1\nspace = 2\nbytes = \"01\"\n",
       "6:9: `space` of `memory` must be a number from 0 to 1"},
      {kTarget + "[[memory]]\naddress = 1\nbytes = \"012\"\n",
       "6:9: `bytes` of `memory` must be pairs of hexadecimal digits"},
      {kTarget + "[[memory]]\naddress = 1\nbytes = [1, 256]\n",
       "6:9: `bytes` of `memory` must be an array of numbers from 0 to 255"},
      {kTarget + "[[memory]]\naddress = 1\nbytes = []\n", "6:9: there are no bytes here"},
      {kTarget + "[[memory]]\naddress = 1\nbytes = \"01\"\nlength = 1\n",
       "4:1: `offset` and `length` count the bytes of a `file`"},
      {kTarget + "[[memory]]\naddress = 1\nfile = \"/nowhere/x\"\n",
       "4:1: there is no file '/nowhere/x'"},
      {kTarget + "[[memory]]\naddress = 1\nfile = \"\"\n",
       "6:8: `file` of `memory` must be the path of a file"},
      {kTarget + "[[memory]]\naddress = 1\nbytes = \"0102\"\n[[memory]]\naddress = 2\nbytes = "
                 "\"03\"\n",
       "7:1: two regions of memory overlap: 0x1 to 0x2 from line 4, and 0x2 to 0x2 from line 7"},
      {kTarget + "[[memory]]\naddress = 0xffffffff\nbytes = \"0102\"\n",
       "4:1: 2 bytes at 0xffffffff from line 4 go past the end of the address space, 0xffffffff"},
  };
  for (const auto& [text, error] : rows) EXPECT_EQ(ErrorIn(text), error) << text;
}

std::string Layout(const std::string& header, const std::string& kind, const std::string& fields) {
  std::string text = header + "[" + kind + ".s]\nfields = [\n";
  text += fields +
          "]\n[union.u]\nfields = [{ name = \"c\", type = \"char\" }, { name = \"s\", "
          "type = \"short\" }]\n";
  DescribedProgram program(text, "d.toml");
  const TypeShape* shape = program.Shape(program.FindShape(kind.substr(0, kind.find('.')) + " s"));
  std::string layout;
  for (const targets::FieldShape& field : shape->fields) {
    layout += field.name + "@" + std::to_string(field.offset);
    if (field.bits != 0) {
      layout += "." + std::to_string(field.firstBit) + ":" + std::to_string(field.bits);
    }
    layout += " ";
  }
  return layout + "/ " + std::to_string(shape->size);
}

std::string Field(const std::string& name, const std::string& type, const std::string& more = "") {
  return "{ " + (name.empty() ? "" : "name = \"" + name + "\", ") + "type = \"" + type + "\"" +
         more + " },\n";
}

TEST(DescribedProgram, FieldsLieWhereCCompilersPutThem) {
  const std::string small =
      "[target]\npointer-size = 4\nlargest-alignment = 4\nbyte-order = \"big\"\n";
  const std::vector<std::tuple<std::string, std::string, std::string>> rows{
      {"struct", Field("a", "char") + Field("b", "int"), "a@0 b@4 / 8"},
      {"struct", Field("a", "int") + Field("b", "char"), "a@0 b@4 / 8"},
      {"struct", Field("a", "char [3]") + Field("b", "short"), "a@0 b@4 / 6"},
      {"struct", Field("a", "char") + Field("b", "double"), "a@0 b@8 / 16"},
      {"struct", Field("a", "char") + Field("b", "union u") + Field("c", "char"),
       "a@0 b@2 c@4 / 6"},
      {"struct", Field("a", "char") + Field("", "union u"), "a@0 @2 / 4"},
      {"struct", Field("n", "int") + Field("items", "short []"), "n@0 items@4 / 4"},
      {"struct", "", "/ 0"},
      {"union", Field("a", "char") + Field("b", "int [3]"), "a@0 b@0 / 12"},
      {"union", Field("a", "int : 3") + Field("b", "char"), "a@0.0:3 b@0 / 4"},
      // places that are given
      {"struct", Field("a", "char", ", offset = 7") + Field("b", "int"), "a@7 b@8 / 12"},
      {"struct", Field("a", "int", ", offset = 6") + Field("b", "char", ", offset = 6"),
       "a@6 b@6 / 12"},
      {"struct", Field("a", "int : 3", ", offset = 1, bit = 6"), "a@1.6:3 / 4"},
      // bit-fields
      {"struct",
       Field("a", "unsigned int : 3") + Field("b", "unsigned : 7") + Field("", "int : 4") +
           Field("c", "int : 5") + Field("w", "unsigned long long : 40") + Field("n", "int"),
       "a@0.0:3 b@0.3:7 c@1.6:5 w@2.3:40 n@8 / 16"},
      {"struct", Field("a", "int : 30") + Field("b", "int : 3"), "a@0.0:30 b@4.0:3 / 8"},
      {"struct", Field("a", "char : 3") + Field("b", "char : 6"), "a@0.0:3 b@1.0:6 / 2"},
      {"struct", Field("a", "int : 3") + Field("", "int : 0") + Field("b", "int : 3"),
       "a@0.0:3 b@4.0:3 / 8"},
      {"struct", Field("a", "int : 3") + Field("b", "char"), "a@0.0:3 b@1 / 4"},
      {"struct", Field("a", "char") + Field("", "int : 3"), "a@0 / 2"},
  };
  for (const auto& [kind, fields, layout] : rows) {
    EXPECT_EQ(Layout(kTarget, kind, fields), layout) << fields;
  }
  EXPECT_EQ(Layout(small, "struct", Field("a", "char") + Field("b", "double")), "a@0 b@4 / 12");
  const std::string packed = "[struct.s]\npacked = true\nfields = [" + Field("a", "char") +
                             Field("x", "int : 30") + Field("y", "int : 7") + Field("b", "int") +
                             "]\n";
  DescribedProgram program(kTarget + packed, "d.toml");
  const TypeShape& shape = *program.Shape(program.FindShape("struct s"));
  EXPECT_EQ(shape.size, 10U);
  EXPECT_EQ(shape.fields[1].offset, 1U);
  EXPECT_EQ(shape.fields[2].offset, 4U);
  EXPECT_EQ(shape.fields[2].firstBit, 6U);
  EXPECT_EQ(shape.fields[3].offset, 6U);
}

TEST(DescribedProgram, ShapesAreExact) {
  DescribedProgram program(kTarget + R"toml(
[typedef]
node_t = "struct node"
row = "short [3]"
[struct.node]
size = 12
fields = [{ name = "next", type = "node_t *" }, { name = "rows", type = "row [1]" }]
[struct.hidden]
[enum.colour]
values = { RED = 0, GREEN = 5, BLUE = -2 }
[labels]
n = { address = 0x100, type = "node_t [2]" }
inner = { address = 0x10c, type = "short" }
f = { address = 0x200, type = "int (*)(char)" }
s = 0x300
main = { address = 0x400, type = "int (int)" }
)toml",
                           "d.toml");
  const auto shape = [&](const char* name) -> const TypeShape& {
    return *program.Shape(program.FindShape(name));
  };
  EXPECT_EQ(program.FindShape("nothing"), 0U);
  EXPECT_EQ(program.Shape(0), nullptr);
  EXPECT_EQ(program.Shape(100000), nullptr);
  EXPECT_EQ(shape("node_t").name, "node_t");
  EXPECT_EQ(shape("node_t").kind, TypeShape::Kind::kStructure);
  EXPECT_EQ(shape("node_t").size, 12U);
  EXPECT_EQ(shape("node_t").fields.size(), 2U);
  const TypeShape& rows = *program.Shape(shape("struct node").fields[1].type);
  EXPECT_EQ(rows.name, "row [1]");
  EXPECT_EQ(rows.size, 6U);
  EXPECT_EQ(rows.count, 1U);
  EXPECT_EQ(program.Shape(rows.target)->kind, TypeShape::Kind::kArray);
  EXPECT_EQ(program.Shape(shape("struct node").fields[0].type)->name, "node_t *");
  EXPECT_TRUE(shape("struct hidden").isIncomplete);
  EXPECT_TRUE(program.IsIncomplete("struct hidden"));
  EXPECT_EQ(shape("enum colour").enumerators[0].name, "RED") << "in the order of the file";
  EXPECT_EQ(shape("enum colour").enumerators[2].name, "BLUE");
  EXPECT_TRUE(shape("enum colour").isSigned);
  EXPECT_EQ(program.Shape(program.FindLabel("f")->type.TypeNumber)->name, "int (*)()");
  const auto place = [&](std::uint64_t address) {
    const auto nearest = program.LabelAt(address);
    return nearest ? nearest->name + "+" + std::to_string(nearest->offset) : "nothing";
  };
  EXPECT_EQ(place(0xff), "nothing");
  EXPECT_EQ(place(0x100), "n+0");
  EXPECT_EQ(place(0x10d), "inner+1");
  EXPECT_EQ(place(0x10e), "n+14");
  EXPECT_EQ(place(0x118), "nothing");
  EXPECT_EQ(place(0x301), "s+1");
  EXPECT_EQ(place(0x405), "main+5");
}

TEST(DescribedProgram, RecordsOfBitFieldsCarryThePlaceOfTheirBits) {
  DescribedProgram program(kTarget + "[struct.s]\nfields = [" + Field("a", "int : 3") +
                               Field("b", "unsigned char : 5") + Field("c", "int : 30") + "]\n",
                           "d.toml");
  const auto type = program.FindType("struct s");
  ASSERT_TRUE(type && type->Members.size() == 3);
  const std::vector<std::pair<std::uint32_t, std::uint32_t>> places{{0, 3}, {3, 5}, {0, 30}};
  std::size_t i = 0;
  for (const DataLableType& member : type->Members) {
    const TypeShape* shape = program.Shape(member.TypeNumber);
    ASSERT_NE(shape, nullptr) << member.Name;
    EXPECT_EQ(std::pair(shape->firstBit, shape->bits), places[i++]) << member.Name;
  }
  EXPECT_EQ(program.Shape(program.FindShape("int"))->bits, 0U);
  EXPECT_TRUE(program.Shape(program.FindShape("char"))->isText);
  EXPECT_FALSE(program.Shape(program.FindShape("unsigned char"))->isText);
}

TEST(DescribedProgram, SmallMachinesHaveTheirOwnSizes) {
  for (const bool wide : {false, true}) {
    const std::string size = wide ? "3" : "2";
    const std::string pointer = wide ? "100000" : "1000";
    DescribedProgram program(R"toml(
[target]
byte-order = "little"
word-size = 3
sizes = { double = 4 }
pointer-size = )toml" + size + R"toml(
[labels]
i = { address = 0x10, type = "int" }
l = { address = 0x12, type = "long" }
p = { address = 0x16, type = "int *" }
c = { address = 0x16, type = "char [2]" }
[[memory]]
address = 0x10
bytes = "feff 00000100 )toml" + pointer +
                                 R"toml( ffffffff"
[[memory]]
space = 1
address = 4
bytes = [1, 2, 3, 4]
)toml",
                             "d.toml");
    const std::vector<std::pair<std::string, std::string>> rows{
        {"i", "-2/2"},
        {"l", "65536/4"},
        {"p", "16/" + size},
        {"*p", "-2/2"},
        {"*(p+1)", "0/2"},
        {"c[0]", "16/1"},
        {"sizeof(int)", "2/8"},
        {"sizeof(double)", "4/8"},
        {"sizeof(int*)", size + "/8"},
        {"#4", "197121/3 #"},
        {"#8", "error: Error occurred ! cannot read memory at 0x8 in space 1"},
        {"*(int*)0x30", "error: Error occurred ! cannot read memory at 0x30"},
    };
    for (const auto& [expression, answer] : rows) {
      EXPECT_EQ(Answer(program, expression), answer) << expression << ", pointers of " << size;
    }
  }
}

TEST(DescribedProgram, TheSecondSpaceHasWordsInBothByteOrders) {
  for (const auto& [order, size, value] :
       {std::tuple{"little", 2, "513/2 #"}, std::tuple{"big", 2, "258/2 #"},
        std::tuple{"little", 3, "197121/3 #"}, std::tuple{"big", 3, "66051/3 #"},
        std::tuple{"big", 1, "1/1 #"}, std::tuple{"big", 4, "16909060/4 #"},
        std::tuple{"big", 8, "72623859790382856/8 #"}}) {
    DescribedProgram program("[target]\npointer-size = 4\nbyte-order = \"" + std::string(order) +
                                 "\"\nword-size = " + std::to_string(size) +
                                 "\n[[memory]]\nspace = 1\naddress = 0\nbytes = "
                                 "\"0102030405060708\"\n",
                             "d.toml");
    EXPECT_EQ(Answer(program, "#0"), value) << order << " " << size;
  }
}

TEST(DescribedProgram, TheCurrentFileChoosesTheDialect) {
  const std::string labels = "[labels]\n\"table.first\" = 0x10\n";
  const auto answer = [&](const std::string& more) {
    DescribedProgram program(kTarget + more + labels, "d.toml");
    return Answer(program, "table.first + 1");
  };
  EXPECT_EQ(answer("file = \"boot.s\"\n"), "17/8");
  EXPECT_EQ(answer("assembly = true\n"), "17/8");
  EXPECT_EQ(answer("file = \"main.c\"\n"), "error: Undefined label table");
  EXPECT_EQ(answer("file = \"boot.s\"\nassembly = false\n"), "error: Undefined label table");
  DescribedProgram program(kTarget + "assembly = false\n" + labels, "d.toml");
  program.SetCurrentFile("boot.s");
  EXPECT_EQ(Answer(program, "table.first"), "16/8");
}

}  // namespace
}  // namespace targettests

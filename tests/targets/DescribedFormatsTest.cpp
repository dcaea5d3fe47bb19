// The same C program, once from its ELF file and once from a description of it over an image of its
// memory: every expression must come out the same.

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <span>

#include "resolver/StringParametersResolving.h"
#include "targets/DescribedProgram.h"
#include "targets/ElfFile.h"
#include "targets/Texts.h"
#include "tests/support/Outcome.h"
#include "tests/targets/ProgramUnderTest.h"

namespace targettests {
namespace {

struct Format {
  std::string fixture;
  std::uint32_t pointerSize;
  std::string order;
  bool charIsSigned;
  int largestAlignment;
};

void PrintTo(const Format& format, std::ostream* stream) {
  *stream << format.fixture;
}

constexpr const char* kTypes = R"(
[typedef]
constant_t = "int"
int_list = "int [3]"
structural = "struct node"
unsignedbyte = "unsigned char"
unnamed_t = "struct unnamed"

[struct.inner]
fields = [{ name = "x", type = "int" }, { name = "tag", type = "char [3]" }]

[union.outer_bits]
fields = [{ name = "bits", type = "unsigned int" }, { name = "number", type = "float" }]

[struct.outer_pair]
fields = [{ name = "lo", type = "short" }, { name = "hi", type = "short" }]

[struct.outer_list]
fields = [{ name = "first", type = "signed char" }, { name = "second", type = "signed char" }]

[struct.outer]
fields = [
  { name = "k", type = "int" },
  { name = "in", type = "struct inner" },
  { name = "x", type = "int" },
  { type = "union outer_bits" },
  { name = "pair", type = "struct outer_pair" },
  { name = "list", type = "struct outer_list [3]" },
  { name = "link", type = "struct inner *" },
]

[union.unnamed_deeper]
fields = [{ name = "deeper", type = "int" }, { name = "bytes", type = "char [4]" }]

[struct.unnamed_deep]
fields = [{ name = "deep", type = "int" }, { type = "union unnamed_deeper" }]

[struct.unnamed]
fields = [{ name = "q", type = "int" }, { type = "struct unnamed_deep" }]

[struct.unit]
fields = [{ name = "name", type = "char [3]" }, { name = "number", type = "char" }]

[struct.node]
fields = [{ name = "v", type = "int" }, { name = "next", type = "struct node *" }]

[struct.hidden]
fields = [{ name = "found", type = "int" }]

[enum.colour]
values = { RED = 0, GREEN = 5, BLUE = -2 }

[enum.level]
values = { LOW = 1, HIGH = 200 }
)";

const std::vector<std::pair<const char*, const char*>> kLabels{
    {"sc", "signed char"},
    {"uc", "unsigned char"},
    {"ss", "short"},
    {"us", "unsigned short int"},
    {"si", "int"},
    {"ui", "unsigned"},
    {"sl", "long"},
    {"ul", "unsigned long"},
    {"sll", "long long"},
    {"ull", "unsigned long long"},
    {"yes", "_Bool"},
    {"f", "float"},
    {"d", "double"},
    {"cv", "const volatile int"},
    {"a", "int [4]"},
    {"i", "int"},
    {"p", "int *"},
    {"pp", "int **"},
    {"c", "char[10]"},
    {"tiny", "char [3]"},
    {"m", "int [2][3]"},
    {"square", "int [2][4]"},
    {"anything", "void *"},
    {"pointers", "int *[3]"},
    {"row", "int (*)[3]"},
    {"text", "char *"},
    {"o", "struct outer"},
    {"po", "struct outer *"},
    {"un", "unnamed_t"},
    {"units", "struct unit [3]"},
    {"unit_pointers", "struct unit *[2]"},
    {"n1", "struct node"},
    {"head", "struct node *"},
    {"paint", "enum colour"},
    {"volume", "enum level"},
    {"ct", "constant_t"},
    {"il", "int_list"},
    {"st", "structural"},
    {"ub", "unsignedbyte"},
    {"callback", "int (*)(int)"},
    {"opaque", "struct hidden *"},
    {"twice", "int (int)"},
};

const std::vector<const char*> kExpressions{
    "sc",
    "uc + us",
    "ss",
    "us",
    "si",
    "ui",
    "sl",
    "ul",
    "sll",
    "ull",
    "yes",
    "f + d",
    "cv",
    "a",
    "a[3]",
    "a[(i)+0]",
    "*a",
    "*(p+1)",
    "**pp",
    "c[4]",
    "*c",
    "c",
    "tiny[1]",
    "m[1][2]",
    "m",
    "square[1][2]",
    "**square",
    "*(int*)anything",
    "*pointers[1]",
    "(*row)[1]",
    "*(text+1)",
    "&a[2]-&a[0]",
    "sizeof(a)",
    "sizeof(c)",
    "sizeof(o)",
    "o",
    "o.k",
    "o.in.x",
    "o.x",
    "o.in.tag[1]",
    "o.bits",
    "o.number",
    "o.pair.hi",
    "o.list[2].second",
    "o.link->x",
    "po->in.x",
    "(*po).k",
    "un.q",
    "un.deeper",
    "un.bytes[3]",
    "units[1].name[0]",
    "unit_pointers[1]->name[1]",
    "head->next->next->v",
    "head->next->next->next->v",
    "n1.next->v",
    "st.v",
    "il[1]",
    "ub",
    "ct",
    "BLUE",
    "HIGH + 1",
    "paint",
    "volume",
    "(unsigned char)sc",
    "(constant_t)uc",
    "(enum level)5",
    "((struct unit*)&units + 1) - (struct unit*)&units",
    "sizeof(struct outer)",
    "sizeof(structural)",
    "sizeof(int_list)",
    "sizeof(struct node*)",
    "sizeof(unsigned long int)",
    "opaque",
    "opaque->found",
    "(twice) - twice",
    "callback - twice",
    "o.nothing",
    "nothing",
    "*(int*)0",
};

class DescribedFormats : public testing::TestWithParam<Format> {};

/// The segments of the program as they are once it is loaded, each in a file of `folder`.
std::string DescribeMemory(targets::ElfProgram& program, const std::filesystem::path& folder) {
  std::string text;
  const targets::ElfFile file(FixturePath(DescribedFormats::GetParam().fixture));
  for (const targets::Segment& segment : file.Segments()) {
    std::vector<std::byte> bytes(static_cast<std::size_t>(segment.memorySize));
    EXPECT_EQ(program.Memory().Read(segment.address, 0, bytes).size, bytes.size());
    const std::string name = targets::Hexadecimal(segment.address) + ".bin";
    std::ofstream(folder / name, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
    text += "[[memory]]\naddress = \"" + targets::Hexadecimal(segment.address) + "\"\nfile = \"" +
            name + "\"\n";
  }
  return text;
}

std::string Answer(targets::LabelSource& labels, targets::MemorySource& memory,
                   const std::string& expression) {
  targets::ProgramHost host(labels, memory);
  TStringResolver resolver(&host);
  std::string outcome = testsupport::Outcome(resolver, resolver.SolveStringOfElements(expression));
  if (host.FirstFailure()) outcome += std::string(" ! ") + host.FirstFailure()->what();
  return outcome;
}

TEST_P(DescribedFormats, AnswerAsTheirElfFile) {
  const Format& format = GetParam();
  if (!HasFixture(format.fixture)) GTEST_SKIP() << "compiling this one needs clang and lld";
  targets::ElfProgram program(FixturePath(format.fixture));
  const std::filesystem::path folder =
      std::filesystem::path(testing::TempDir()) / ("described-" + format.fixture);
  std::filesystem::create_directories(folder);
  std::string text =
      "[target]\nfile = \"values.c\"\npointer-size = " + std::to_string(format.pointerSize) +
      "\nbyte-order = \"" + format.order +
      "\"\nchar-is-signed = " + (format.charIsSigned ? "true" : "false") +
      "\nlargest-alignment = " + std::to_string(format.largestAlignment) + "\n" + kTypes +
      "[labels]\n";
  for (const auto& [name, type] : kLabels) {
    const auto label = program.FindLabel(name);
    ASSERT_TRUE(label) << name;
    text += std::string(name) + " = { address = \"" + targets::Hexadecimal(label->value) +
            "\", type = \"" + type + "\" }\n";
  }
  text += DescribeMemory(program, folder);
  targets::DescribedProgram described(text, (folder / "values.toml").string());
  for (const char* expression : kExpressions) {
    EXPECT_EQ(Answer(described, described.Memory(), expression),
              Answer(program, program.Memory(), expression))
        << expression;
  }
  std::filesystem::remove_all(folder);
}

INSTANTIATE_TEST_SUITE_P(Values, DescribedFormats,
                         testing::Values(Format{"values-x64-dwarf5", 8, "little", true, 8},
                                         Format{"values-x64-high", 8, "little", true, 8},
                                         Format{"values-m32-dwarf5", 4, "little", true, 4},
                                         Format{"values-powerpc", 4, "big", false, 8},
                                         Format{"values-powerpc64", 8, "big", false, 8},
                                         Format{"values-aarch64", 8, "little", false, 8},
                                         Format{"values-mips", 4, "big", true, 8}),
                         [](const testing::TestParamInfo<Format>& format) {
                           std::string name = format.param.fixture;
                           for (char& c : name) {
                             if (c == '-') c = '_';
                           }
                           return name;
                         });

}  // namespace
}  // namespace targettests

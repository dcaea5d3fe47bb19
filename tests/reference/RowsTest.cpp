#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <list>
#include <string>
#include <utility>
#include <vector>

#include "tests/reference/Comparison.h"
#include "tests/reference/Random.h"
#include "tests/reference/World.h"

// The steps of a resolution called one by one, on blocks that no text leads to: debugging aids that
// derive from the resolver rely on the steps, and the rows' rules hold for any block.

namespace reference {
namespace {

constexpr std::uint64_t kWorlds = STRINGRESOLVER_REFERENCE_CASES / 500;
constexpr int kCallsPerWorld = 150;

const std::vector<std::string> kBefore = {"",
                                          "",
                                          "",
                                          "",
                                          "-",
                                          "~",
                                          "!",
                                          "*",
                                          "&",
                                          "+",
                                          "-~",
                                          "**",
                                          "*&",
                                          "&*",
                                          "\x18\x18",
                                          "\x18\x19\x18",
                                          "-\x18\x19\x19\x18",
                                          "\x18",
                                          "\x08",
                                          "-\x08",
                                          "%",
                                          "->",
                                          "x",
                                          "\x18\x19\x19\x19\x19\x19\x18",
                                          "&&",
                                          "--"};
const std::vector<std::string> kAreas = {"",
                                         "5",
                                         "0",
                                         "12",
                                         "1.5",
                                         "1,5",
                                         "2,5@,3",
                                         "a",
                                         "b[1]",
                                         "c[]",
                                         "p[1][2]",
                                         "x",
                                         "v",
                                         "y",
                                         "link",
                                         "in",
                                         "#5",
                                         "##a",
                                         "0x10",
                                         "[",
                                         "a[1",
                                         "a]1[",
                                         "-3",
                                         "nan",
                                         "inf",
                                         "1e,30",
                                         "18446744073709551615",
                                         "99999999999999999999",
                                         "4294967295",
                                         "255",
                                         "next",
                                         "f",
                                         "arr",
                                         ":.5",
                                         "3.7",
                                         "zz",
                                         "\t7",
                                         "a[b[1]]",
                                         "x][1]",
                                         "]][1]",
                                         "[1]]x]["};
const std::vector<std::string> kAfter = {"",       "",      "",     "",   "+",    "-",   "->",
                                         ">>",     "<=",    "[1]",  "[]", "[1",   "]1[", "a][b]",
                                         "[1][2]", "[a+1]", "[zz]", "&&", "|",    "^",   "~",
                                         "=",      "==",    "!=",   "%",  "[2]+", ".",   "||",
                                         "<<",     ">",     "<",    "*",  "/",    "&",   "!"};
const std::vector<double> kDoubles = {0.0,  -0.0,  1.0,  1.5,   -2.25, 0.25,  1e10,  -1e10,
                                      1e19, -1e19, 1e30, -1e30, 3e38,  1e300, -1e300};

/// Both sides with a block each; equal at the start.
class Sides {
 public:
  Sides(const World& world, Random* random)
      : productHost(world), referenceHost(world), product(&productHost), plain(&referenceHost) {
    for (std::size_t i = random->Below(4); i > 0; --i) {
      product.savedTypes.push_back(world.SomeRecord(random));
    }
    plain.savedTypes = product.savedTypes;
    product.resultValue = plain.resultValue = random->Next() >> random->Below(64);
  }

  WorldHost productHost;
  WorldHost referenceHost;
  testsupport::OpenResolver product;
  Resolver plain;
};

AreaBlock SomeBlock(const World& world, Random* random) {
  AreaBlock block;
  block.BeforeText = random->Of(kBefore);
  block.AreaText = random->Of(kAreas);
  block.AfterText = random->Of(kAfter);
  block.ReferenceLevel = random->Chance(70) ? -1 : static_cast<std::int32_t>(random->Below(6)) - 4;
  block.MemorySpace = random->Chance(20) ? 1 : 0;
  block.IsMemberName = random->Chance(15);
  block.Value =
      random->Chance(60) ? world.SomeAddress(random) : random->Next() >> random->Below(64);
  block.Relation = static_cast<std::uint32_t>(random->Below(27));
  block.Type = world.SomeRecord(random);
  block.CastType = random->Chance(80) ? DataLableType() : world.SomeRecord(random);
  block.HasCastType = random->Chance(60);
  block.ValueKind = random->Chance(60) ? 0 : static_cast<std::uint32_t>(1 + random->Below(2));
  block.DoubleValue = random->Of(kDoubles);
  if (random->Chance(5)) block.DoubleValue = std::numeric_limits<double>::quiet_NaN();
  if (random->Chance(3)) block.DoubleValue = std::numeric_limits<double>::infinity();
  block.FloatValue = static_cast<float>(block.DoubleValue);
  return block;
}

/// What the call left behind, apart from its blocks.
std::string StateDifferences(const Sides& sides) {
  std::string report;
  if (sides.plain.errorMessage != sides.product.errorMessage) {
    report += "  message: " + Quoted(sides.plain.errorMessage) + ", " +
              Quoted(sides.product.errorMessage) + "\n";
  }
  if (!SameRecords(sides.plain.savedTypes, sides.product.savedTypes)) report += "  savedTypes\n";
  if (sides.plain.allLabelsConfirmed != sides.product.allLabelsConfirmed) {
    report += "  allLabelsConfirmed\n";
  }
  if (sides.referenceHost.accessSize != sides.productHost.accessSize) report += "  accessSize\n";
  if (sides.referenceHost.log != sides.productHost.log) {
    report += "  host calls of the reference:\n" + sides.referenceHost.log +
              "  host calls of the resolver:\n" + sides.productHost.log;
  }
  return report;
}

std::string Described(const AreaBlock& block) {
  return "  block " + Quoted(block.BeforeText) + " " + Quoted(block.AreaText) + " " +
         Quoted(block.AfterText) + " value " + std::to_string(block.Value) + " kind " +
         std::to_string(block.ValueKind) + " level " + std::to_string(block.ReferenceLevel) +
         " size " + std::to_string(block.Type.Size) + (block.Type.IsPointer ? " pointer" : "") +
         (block.Type.IsArray ? " array" : "") + (block.Type.IsAddress ? " address" : "") +
         (block.Type.IsSigned ? " signed" : "") + (block.IsMemberName ? " member" : "") + "\n";
}

/// Calls `step(resolver, &left, &right)` on both sides, with the same two blocks, many times.
/// What a failure leaves in the blocks is not compared, nor what is left of a consumed block:
/// nobody goes on with either.
template <typename Step>
void CompareSteps(Step step) {
  int outcomes[3] = {0, 0, 0};
  for (std::uint64_t seed = 1; seed <= kWorlds; ++seed) {
    const World world(seed);
    Random random(seed * 977);
    for (int call = 0; call < kCallsPerWorld; ++call) {
      Sides sides(world, &random);
      AreaBlock left = SomeBlock(world, &random);
      AreaBlock right = SomeBlock(world, &random);
      if (random.Chance(80)) left.MemberBlock = &right;
      const std::string before = Described(left) + Described(right);
      AreaBlock plainLeft = left;
      AreaBlock plainRight = right;
      if (left.MemberBlock != nullptr) plainLeft.MemberBlock = &plainRight;
      // Both sides draw the step's own arguments from equal generators.
      Random arguments = random;
      Random plainArguments = random;
      random.Next();
      const int got = step(sides.product, &left, &right, &arguments);
      const int expected = step(sides.plain, &plainLeft, &plainRight, &plainArguments);
      std::string report = StateDifferences(sides);
      if (got != expected) {
        report += "  returned " + std::to_string(expected) + ", " + std::to_string(got) + "\n";
      } else {
        report += BlockDifferences(plainLeft, left);
        if (plainRight.IsConsumed != right.IsConsumed) report += "  IsConsumed\n";
        if (!right.IsConsumed) report += BlockDifferences(plainRight, right);
      }
      ASSERT_EQ(report, "") << "seed " << seed << " call " << call
                            << ", reference first, resolver second\n"
                            << before;
      if (got >= 0 && got <= 2) ++outcomes[got];
    }
  }
  // Blocks that only fail, or only succeed, would show little.
  EXPECT_GT(outcomes[0], 0);
  EXPECT_GT(outcomes[1] + outcomes[2], 0);
}

TEST(ReferenceRows, OperandRow) {
  CompareSteps([](auto& resolver, AreaBlock* left, AreaBlock*, Random*) -> int {
    return resolver.ZeroRaw(left);
  });
}

TEST(ReferenceRows, MemberRow) {
  CompareSteps([](auto& resolver, AreaBlock* left, AreaBlock* right, Random* random) -> int {
    const int relations[] = {6, 7, 10, 6, 7, 10, 2};
    const int relation = relations[random->Below(7)];
    return resolver.FirstRaw(left, right, relation, static_cast<int>(1 + random->Below(3)));
  });
}

TEST(ReferenceRows, MemberOfALocation) {
  CompareSteps([](auto& resolver, AreaBlock* left, AreaBlock*, Random*) -> int {
    return resolver.ProcessLocationAreaAsMember(left);
  });
}

TEST(ReferenceRows, MemberSearch) {
  CompareSteps([](auto& resolver, AreaBlock* left, AreaBlock* right, Random*) -> int {
    return resolver.RecusivlyCheckForStructFealds(&left->Type, right->AreaText, &right->CastType);
  });
}

TEST(ReferenceRows, UnaryRow) {
  CompareSteps([](auto& resolver, AreaBlock* left, AreaBlock*, Random*) -> int {
    return resolver.SecondRaw(left);
  });
}

TEST(ReferenceRows, BinaryRows) {
  CompareSteps([](auto& resolver, AreaBlock* left, AreaBlock* right, Random* random) -> int {
    const int rows[] = {0, 0, 2, 2, 1, 1, 0, 0, 0, 0, 0,  1, 3,
                        3, 4, 4, 5, 5, 6, 6, 7, 9, 8, 10, 11};
    const int relation = static_cast<int>(random->Below(27)) - 1;
    const bool own = relation >= 0 && relation < 25 && random->Chance(90);
    return resolver.ThirdRawRaw(left, right, relation,
                                own ? rows[relation] : static_cast<int>(random->Below(13)));
  });
}

TEST(ReferenceRows, Subscripts) {
  CompareSteps([](auto& resolver, AreaBlock* left, AreaBlock*, Random*) -> int {
    return resolver.SolveSquareBracets(left);
  });
}

TEST(ReferenceRows, MemoryReads) {
  CompareSteps([](auto& resolver, AreaBlock* left, AreaBlock*, Random*) -> int {
    bool space = true;
    const bool read = resolver.MoveFromPointerToObject(left, &space);
    return read && space ? 3 : read;
  });
}

TEST(ReferenceRows, SavedTypes) {
  CompareSteps([](auto& resolver, AreaBlock* left, AreaBlock* right, Random* random) -> int {
    const std::vector<std::string> texts = {
        "", "@", "@0", "@1", "@2x", "@-1", "int", "@ 1", "@99999999999999999999", "@3"};
    const std::vector<std::string> names = {"int",     "int\x0f",     "node0\x0f\x0f",
                                            "",        "\x0f",        "ghost",
                                            "i\x0fnt", "ZV_Lorn\x0f", "unsigned:@:char"};
    std::string name = random->Of(names);
    const bool unknown = resolver.RegisterType(&name);
    left->BeforeText = name;
    right->IsConsumed = unknown;
    return resolver.ProcessAreaAsType(left, random->Of(texts));
  });
}

TEST(ReferenceRows, BracketGroups) {
  CompareSteps([](auto& resolver, AreaBlock* left, AreaBlock*, Random* random) -> int {
    left->AreaText.clear();
    for (std::size_t i = random->Below(12); i > 0; --i)
      left->AreaText += "[]ab[]{}"[random->Below(8)];
    const bool curly = random->Chance(20);
    return resolver.FindStringParameter(&left->AreaText, &left->AfterText, curly ? "{(" : "[",
                                        curly ? "}b" : "]");
  });
}

TEST(ReferenceRows, SubscriptTexts) {
  CompareSteps([](auto& resolver, AreaBlock* left, AreaBlock*, Random* random) -> int {
    left->AfterText.clear();
    for (std::size_t i = random->Below(12); i > 0; --i)
      left->AfterText += "[]1a[]()"[random->Below(8)];
    return resolver.SolveSquareBracets(left);
  });
}

TEST(ReferenceRows, RelationsBetweenBlocks) {
  CompareSteps([](auto& resolver, AreaBlock* left, AreaBlock* right, Random* random) -> int {
    resolver.areaBlocks = {*left, *right, *left};
    auto first = resolver.areaBlocks.begin();
    auto second = std::next(first);
    left->Relation = static_cast<std::uint32_t>(resolver.GetAfterRelations(&first));
    const int relation = static_cast<int>(random->Below(27));
    const bool linked = resolver.CheckBeforeRelations(&second, relation, "");
    if (!linked) return 0;
    resolver.ProcessTypeRelations(&first, &second, relation);
    *right = resolver.areaBlocks.front();
    return resolver.areaBlocks.size() == 2 ? 1 : 2;
  });
}

TEST(ReferenceRows, ListOfBlocks) {
  CompareSteps([](auto& resolver, AreaBlock* left, AreaBlock* right, Random* random) -> int {
    for (AreaBlock* block : {left, right}) {
      block->MemberBlock = nullptr;
      block->AfterText.clear();
      if (random->Chance(70)) block->BeforeText.clear();
    }
    const char* operations[] = {"+", "-", "*", "/", "->", ".", "<", "==", "&&", "|", "%", ">>"};
    left->AfterText = operations[random->Below(12)];
    right->BeforeText = left->AfterText + right->BeforeText;
    resolver.areaBlocks = {*left, *right};
    if (!resolver.ProcessBasicBlocksRelations(&resolver.areaBlocks)) return 0;
    *left = resolver.areaBlocks.front();
    left->MemberBlock = nullptr;  // named a block that is gone
    return resolver.areaBlocks.size() == 1 ? 2 : 1;
  });
}

TEST(ReferenceRows, TextPasses) {
  const std::vector<std::string> pieces = {
      "unsigned", "signed", "int", "char", "double", "float", "long", "short",  " ",
      " ",        ".",      ",",   "e+",   "e-",     "e,",    "@,",   "1",      "5",
      "x",        "(",      ")",   "+",    "-",      "*",     "\x18", "^*^*^^", "ed",
      "a",        "..",     ".5",  "[",    "]",      "\r",    ":@:",  "0x1e+"};
  CompareSteps([&](auto& resolver, AreaBlock* left, AreaBlock* right, Random* random) -> int {
    std::string text;
    for (std::size_t i = random->Below(12); i > 0; --i) text += random->Of(pieces);
    left->BeforeText = left->AreaText = left->AfterText = text;
    resolver.ProcessBasickTypes(&left->BeforeText);
    const bool hidden = resolver.CheckFloatingPointStr(&left->AreaText);
    const bool restored = resolver.RestoreFloatingPointStr(&left->AfterText);
    unsigned long position = random->Chance(10) ? std::string::npos : random->Below(4);
    right->BeforeText.clear();
    right->AreaText.clear();
    right->AfterText.clear();
    const bool found = resolver.GetFirstLexicalBlockStartingFromPos(
        text, &position, &right->BeforeText, &right->AreaText, &right->AfterText);
    right->Value = position;
    right->HasCastType = found;
    if (hidden || restored) return 0;
    return found ? 1 : static_cast<int>(random->Below(2));
  });
}

}  // namespace
}  // namespace reference

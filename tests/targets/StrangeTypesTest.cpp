#include <gtest/gtest.h>

#include "tests/targets/ProgramUnderTest.h"
#include "tests/targets/RecordText.h"

namespace targettests {
namespace {

using targets::ElfProgram;
using targets::ErrorCode;

/// Debug information written by hand: see fixtures/strange.s.
class StrangeTypes : public testing::Test {
 protected:
  /// What the label, and then the full type behind its first nested name, fail with.
  std::string Outcome(const std::string& name) {
    try {
      const auto label = program_.FindLabel(name);
      if (!label) return "not found";
      if (label->type.NestedTypes.empty()) return RecordText(label->type);
      return RecordText(*program_.FindType(label->type.NestedTypes.front()));
    } catch (const targets::Error& error) {
      const bool broken = error.Code() == ErrorCode::kBrokenInfo;
      std::string sentence = error.what();
      // The offset differs between assemblers.
      if (broken) sentence = sentence.substr(sentence.find(": ") + 2);
      return (broken ? "broken: " : "not represented: ") + sentence;
    }
  }

  ElfProgram program_{FixturePath("strange")};
};

TEST_F(StrangeTypes, EveryWalkOverTypesEnds) {
  struct Row {
    std::string name;
    std::string outcome;
  };
  const std::string circle = "broken: the type is defined in terms of itself";
  const std::string limit = ", and records hold sizes and offsets below 4 GiB only";
  const Row rows[] = {
      {"plain", "int:4s"},
      {"names_in_a_circle", circle},
      {"pointer_to_itself", circle},
      {"array_of_itself", circle},
      {"holder",
       "struct holds_itself:8{inside:8{struct holds_itself:8<struct holds_itself#>}, +4 value:4s}"},
      {"flattener", "broken: anonymous members are nested too deeply"},
      {"doubler", "broken: anonymous members are nested too deeply"},
      {"heir", "broken: more members than a structure can have"},
      {"large_array",
       "not represented: an array of 1099511627776 elements needs the number "
       "4398046511104" +
           limit},
      {"overflowing_array", "broken: an array larger than any memory"},
      {"widest_array", "[*]:4294967286{int:4s}"},
      {"wider_array",
       "not represented: an array of 1073741822 elements needs the number "
       "4294967288" +
           limit},
      {"far",
       "not represented: the offset of member 'far_away' of struct far_member needs the "
       "number 1099511627776" +
           limit},
      {"huge", "not represented: struct huge_structure needs the number 1099511627776" + limit},
  };
  for (const Row& row : rows) EXPECT_EQ(Outcome(row.name), row.outcome) << row.name;
}

TEST_F(StrangeTypes, AreListedAllTheSame) {
  std::vector<std::string> names;
  program_.ListLabels([&](const targets::Listing& line) { names.push_back(line.name); });
  EXPECT_GE(names.size(), 15U);
  program_.ListTypes([&](const targets::Listing& line) { names.push_back(line.name); });
  EXPECT_GE(names.size(), 24U);
}

TEST_F(StrangeTypes, OneBrokenTypeLeavesTheOthersUsable) {
  EXPECT_EQ(Evaluate(program_, "plain + plain"), "14/4");
  EXPECT_NE(Evaluate(program_, "pointer_to_itself").find("! broken debug information"),
            std::string::npos);
  EXPECT_EQ(Evaluate(program_, "plain"), "7/4");
}

}  // namespace
}  // namespace targettests

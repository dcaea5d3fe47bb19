#include "targets/RemoteStub.h"

#include <gtest/gtest.h>

#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "tests/targets/ProgramUnderTest.h"
#include "tests/targets/ScriptedLink.h"

namespace targettests {
namespace {

using targets::MemoryGap;
using targets::RemoteStub;
using Script = std::vector<Exchange>;

constexpr auto kTimeout = std::chrono::milliseconds(1);

/// A greeting after which nothing is acknowledged any more.
Script Greeting(const std::string& features = "") {
  return {{"+", ""},
          {"<qSupported>", "+<QStartNoAckMode+;" + features + ">"},
          {"+<QStartNoAckMode>", "+<OK>"},
          {"+<?>", "<T05thread:01;>"}};
}

Script Join(Script script, const Script& more) {
  script.insert(script.end(), more.begin(), more.end());
  return script;
}

struct GreetingRow {
  std::string name;
  Script script;
  std::string outcome;  ///< the most bytes of one request, or why there is no session
};

TEST(RemoteStub, Greets) {
  const Script end = {{"<D>", "+<OK>"}, {"+", ""}};
  const Exchange hello = {"+", ""};
  const auto after = [&](const std::string& features, const std::string& stop) {
    return Join(
        {hello, {"<qSupported>", "+<" + features + ">"}, {"+<?>", "+<" + stop + ">"}, {"+", ""}},
        end);
  };
  const std::string unknown =
      "the stub at 'stub' does not say whether its target is stopped: it answers ";
  const std::string none = "the stub at 'stub' has no program that runs";
  const std::vector<GreetingRow> rows = {
      {"knows no features", after("", "S05"), "199"},
      {"refuses the question", after("E01", "S05"), "199"},
      {"size", after("PacketSize=47ff;vContSupported+", "T05"), "9215"},
      {"small", after("PacketSize=20", "S05"), "15"},
      {"large", after("PacketSize=ffffffffff", "S05"), "32767"},
      {"too small", Join({hello, {"<qSupported>", "+<PacketSize=1f>"}, {"+", ""}}, end),
       "the stub at 'stub' announces packets too small to read memory with"},
      {"no size", Join({hello, {"<qSupported>", "+<PacketSize=x>"}, {"+", ""}}, end),
       "the stub at 'stub' announces packets too small to read memory with"},
      {"does not stop acknowledging",
       Join({hello,
             {"<qSupported>", "+<QStartNoAckMode+>"},
             {"+<QStartNoAckMode>", "+<E01>"},
             {"+<?>", "+<S05>"},
             {"+", ""}},
            end),
       "199"},
      {"stops acknowledging", Join(Greeting(), {{"<D>", "<OK>"}}), "199"},
      {"ended", after("", "W00"), none},
      {"killed", after("", "X09"), none},
      {"never began", after("", "N"), none},
      {"nonsense", after("", "hello"), unknown + "'hello'"},
      {"not stopped", after("", "OK"), unknown + "'OK'"},
      {"does not know", after("", ""), unknown + "nothing"},
      {"text of the target first",
       Join({hello,
             {"<qSupported>", "+<>"},
             {"+<?>", "+<O68>"},
             {"+", "<O69>"},
             {"+", "<S05>"},
             {"+", ""}},
            end),
       "199"},
      {"silent", {hello, {"<qSupported>", ""}, {"<D>", ""}}, "took too long"},
      {"silent at the second question",
       {hello, {"<qSupported>", "+<>"}, {"+<?>", "+"}, {"<D>", ""}},
       "took too long"},
      {"hangs up", {hello, {"<qSupported>", "{close}"}, {"<D>", ""}}, "closed"},
  };
  for (const GreetingRow& row : rows) {
    ScriptedLink link(row.script);
    std::string outcome;
    try {
      const RemoteStub stub(link, kTimeout, RemoteStub::Leaving::kGoOn);
      outcome = std::to_string(stub.MostBytes());
    } catch (const targets::Error& error) {
      EXPECT_EQ(error.Code(), targets::ErrorCode::kTargetLost);
      outcome = error.what();
    }
    EXPECT_EQ(outcome, row.outcome) << row.name;
    EXPECT_EQ(link.Departure(), "") << row.name;
  }
}

TEST(RemoteStub, LeavesTheTargetStoppedWhereThatIsWanted) {
  ScriptedLink link(Greeting());
  { const RemoteStub stub(link, kTimeout, RemoteStub::Leaving::kStopped); }
  EXPECT_EQ(link.Departure(), "");
}

struct MemoryRow {
  std::string name;
  std::string features;
  Script script;
  std::string outcome;  ///< of reading 4 bytes: their text, why not, or the error's sentence
};

std::string ReadFour(RemoteStub* stub) {
  std::string bytes = "....";
  try {
    const RemoteStub::Answer answer =
        stub->ReadMemory(0xabc000, std::as_writable_bytes(std::span(bytes)));
    if (answer.gap) {
      EXPECT_EQ(answer.size, 0U);
      EXPECT_EQ(bytes, "....");
      return *answer.gap == MemoryGap::kNotAllowed ? "not allowed" : "not there";
    }
    EXPECT_EQ(bytes.substr(answer.size), std::string(4 - answer.size, '.'));
    return bytes.substr(0, answer.size);
  } catch (const targets::Error& error) {
    EXPECT_EQ(error.Code(), targets::ErrorCode::kTargetLost);
    EXPECT_EQ(bytes, "....");
    return error.what();
  }
}

TEST(RemoteStub, ReadsMemory) {
  const std::string m = "<mabc000,4>";
  const std::string x = "<xabc000,4>";
  const std::string binary = "binary-upload+";
  const std::string asked = "the stub at 'stub' answers a request for ";
  const std::vector<MemoryRow> rows = {
      {"all", "", {{m, "<61626364>"}}, "abcd"},
      {"upper case", "", {{m, "<6A6b6C6d>"}}, "jklm"},
      {"a run of one digit", "", {{m, "<6* 6666>"}}, "ffff"},
      {"a part", "", {{m, "<6162>"}}, "ab"},
      {"refused", "", {{m, "<E01>"}}, "not there"},
      {"refused as a fault", "", {{m, "<E0e>"}}, "not there"},
      {"refused as forbidden", "", {{m, "<E0d>"}}, "not allowed"},
      {"refused in words", "", {{m, "<E.no such memory>"}}, "not there"},
      {"data that begins like a refusal", "", {{m, "<E0E1E2E3>"}}, "\xe0\xe1\xe2\xe3"},
      {"not known",
       "",
       {{m, "<>"}},
       "the stub at 'stub' cannot read memory: it does not know that request"},
      {"too many", "", {{m, "<6162636465>"}}, asked + "4 bytes with '6162636465'"},
      {"half a byte", "", {{m, "<616>"}}, asked + "4 bytes with '616'"},
      {"no digits", "", {{m, "<61zz>"}}, asked + "memory with '61zz'"},
      {"a sign", "", {{m, "<61-1>"}}, asked + "memory with '61-1'"},
      {"words", "", {{m, "<hm, well>"}}, asked + "memory with 'hm, well'"},
      {"silence", "", {{m, ""}}, "took too long"},
      {"the end", "", {{m, "$61{close}"}}, "closed"},
      {"binary", binary, {{x, "<babcd>"}}, "abcd"},
      {"binary with escapes", binary, {{x, "<b}\x03}]}\x04}\x0a>"}}, "#}$*"},
      {"binary with a run", binary, {{x, "<ba* >"}}, "aaaa"},
      {"binary, a part", binary, {{x, "<bab>"}}, "ab"},
      {"binary, nothing", binary, {{x, "<b>"}}, "not there"},
      {"binary, refused", binary, {{x, "<E01>"}}, "not there"},
      {"binary announced but not known", binary, {{x, "<>"}, {m, "<61626364>"}}, "abcd"},
      {"binary in another dialect", binary, {{x, "<abcd>"}, {m, "<61626364>"}}, "abcd"},
      {"binary, too many", binary, {{x, "<babcde>"}, {m, "<61626364>"}}, "abcd"},
  };
  for (const MemoryRow& row : rows) {
    for (const std::size_t pieceSize : {1U, 1000U}) {
      ScriptedLink link(Join(Greeting(row.features), row.script), pieceSize);
      {
        RemoteStub stub(link, kTimeout, RemoteStub::Leaving::kStopped);
        EXPECT_EQ(ReadFour(&stub), row.outcome) << row.name;
      }
      EXPECT_EQ(link.Departure(), "") << row.name;
    }
  }
}

TEST(RemoteStub, IsNotAskedAgainInItsOwnWayWhenItDidNotUnderstand) {
  ScriptedLink link(
      Join(Greeting("binary-upload+"),
           {{"<xabc000,4>", "<>"}, {"<mabc000,4>", "<61626364>"}, {"<mabc000,4>", "<65666768>"}}));
  RemoteStub stub(link, kTimeout, RemoteStub::Leaving::kStopped);
  EXPECT_EQ(ReadFour(&stub), "abcd");
  EXPECT_EQ(ReadFour(&stub), "efgh");
  EXPECT_EQ(link.Departure(), "");
}

TEST(RemoteStub, IsNotAskedAgainWhenItIsLost) {
  // What comes too late would be taken for the answer to the next question.
  ScriptedLink link(Join(Greeting(), {{"<mabc000,4>", ""}}));
  RemoteStub stub(link, kTimeout, RemoteStub::Leaving::kStopped);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(ReadFour(&stub), "took too long");
  EXPECT_EQ(ErrorOf([&] { stub.ProgramOffsets(); }), "took too long");
  EXPECT_EQ(link.Departure(), "");
}

struct VectorRow {
  std::string name;
  std::string features;
  Script script;
  std::string outcome;
};

TEST(RemoteStub, TellsTheAuxiliaryVector) {
  const std::string known = "PacketSize=20;qXfer:auxv:read+";
  const auto ask = [](const std::string& offset) { return "<qXfer:auxv:read::" + offset + ",e>"; };
  const std::vector<VectorRow> rows = {
      {"not offered", "", {}, "none"},
      {"at once", known, {{ask("0"), "<labc>"}}, "abc"},
      {"in parts", known, {{ask("0"), "<mabc>"}, {ask("3"), "<mde>"}, {ask("5"), "<l>"}}, "abcde"},
      {"escaped", known, {{ask("0"), "<m}\x03}\x03>"}, {ask("2"), "<l>"}}, "##"},
      {"refused", known, {{ask("0"), "<E01>"}}, "none"},
      {"not known", known, {{ask("0"), "<>"}}, "none"},
      {"no end",
       known,
       {{ask("0"), "<m>"}},
       "the stub at 'stub' sends an auxiliary vector without end"},
      {"lost", known, {{ask("0"), "{close}"}}, "closed"},
  };
  for (const VectorRow& row : rows) {
    ScriptedLink link(Join(Greeting(row.features), row.script));
    RemoteStub stub(link, kTimeout, RemoteStub::Leaving::kStopped);
    std::string outcome;
    try {
      outcome = stub.AuxiliaryVector().value_or("none");
    } catch (const targets::Error& error) {
      outcome = error.what();
    }
    EXPECT_EQ(outcome, row.outcome) << row.name;
    EXPECT_EQ(link.Departure(), "") << row.name;
  }
}

TEST(RemoteStub, TellsHowFarTheProgramWasMoved) {
  const std::vector<std::pair<std::string, std::string>> rows = {
      {"Text=5555;Data=5555;Bss=5555", "5555 5555"},
      {"Text=0;Data=ff00", "0 ff00"},
      {"TextSeg=8000", "none"},
      {"Text=0", "none"},
      {"Text=x;Data=0", "none"},
      {"E01", "none"},
      {"", "none"},
  };
  for (const auto& [answer, outcome] : rows) {
    ScriptedLink link(Join(Greeting(), {{"<qOffsets>", "<" + answer + ">"}}));
    RemoteStub stub(link, kTimeout, RemoteStub::Leaving::kStopped);
    const auto offsets = stub.ProgramOffsets();
    std::ostringstream text;
    if (offsets) text << std::hex << offsets->text << ' ' << offsets->data;
    EXPECT_EQ(offsets ? text.str() : "none", outcome) << answer;
    EXPECT_EQ(link.Departure(), "") << answer;
  }
}

}  // namespace
}  // namespace targettests

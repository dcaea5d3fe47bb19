#include "targets/RemotePackets.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "targets/Error.h"
#include "tests/targets/ProgramUnderTest.h"
#include "tests/targets/ScriptedLink.h"

namespace targettests {
namespace {

using targets::RemoteClock;
using targets::RemotePackets;

struct Row {
  std::string name;
  std::vector<Exchange> script;
  std::string answer;  ///< to the request `q`, or the sentence that it fails with
};

std::string AnswerOf(RemotePackets* packets) {
  try {
    return packets->Ask("q", 16, RemoteClock::now());
  } catch (const targets::Error& error) {
    EXPECT_EQ(error.Code(), targets::ErrorCode::kTargetLost);
    return error.what();
  }
}

std::string Repeated(const std::string& text, int count) {
  std::string all;
  for (int i = 0; i < count; ++i) all += text;
  return all;
}

TEST(RemotePackets, AreAcknowledgedAndSentOnceMore) {
  const std::vector<Row> rows = {
      {"plain", {{"<q>", "+<yes>"}, {"+", ""}}, "yes"},
      {"empty", {{"<q>", "+<>"}, {"+", ""}}, ""},
      {"rejected once", {{"<q>", "-"}, {"<q>", "+<yes>"}, {"+", ""}}, "yes"},
      {"rejected thrice",
       {{"<q>", "-"}, {"<q>", "-"}, {"<q>", "-"}, {"<q>", "+<yes>"}, {"+", ""}},
       "yes"},
      {"always rejected",
       {{"<q>", "-"}, {"<q>", "-"}, {"<q>", "-"}, {"<q>", "-"}},
       "the stub at 'stub' rejects every packet as damaged"},
      {"damaged once", {{"<q>", "+$yes#00"}, {"-", "<yes>"}, {"+", ""}}, "yes"},
      {"damaged thrice",
       {{"<q>", "+$yes#00"}, {"-", "$yes#00"}, {"-", "$yes#00"}, {"-", "<yes>"}, {"+", ""}},
       "yes"},
      {"always damaged",
       {{"<q>", "+$yes#00"}, {"-", "$yes#00"}, {"-", "$yes#00"}, {"-", "$yes#00"}},
       "the stub at 'stub' sends nothing but damaged packets"},
      {"something else before the request was there",
       {{"<q>", "<T05>"}, {"+", "+<yes>"}, {"+", ""}},
       "yes"},
      {"noise and notifications", {{"<q>", "\r\n+%Stop:T05#00 ~ +<yes>"}, {"+", ""}}, "yes"},
      {"never accepted", {{"<q>", ""}}, "took too long"},
      {"never answered", {{"<q>", "+"}}, "took too long"},
      {"breaks off", {{"<q>", "+$ye"}}, "took too long"},
      {"closed at once", {{"<q>", "{close}"}}, "closed"},
      {"closed in the middle", {{"<q>", "+$ye{close}"}}, "closed"},
      {"longer than asked for",
       {{"<q>", "+<12345678901234567>"}},
       "the stub at 'stub' sent more than was asked for"},
      {"acknowledgements without end",
       {{"<q>", Repeated("-%n#00~~~~~~~~", 1)}, {"<q>", Repeated("~", 100000)}},
       "the stub at 'stub' sends without end"},
      {"a packet without end",
       {{"<q>", "+$" + Repeated("a", 100000)}},
       "the stub at 'stub' sends without end"},
      {"notifications without end",
       {{"<q>", "+" + Repeated("%n#00", 100000)}},
       "the stub at 'stub' sends without end"},
  };
  for (const Row& row : rows) {
    for (const std::size_t pieceSize : {1U, 2U, 3U, 7U, 100000U}) {
      ScriptedLink link(row.script, pieceSize);
      RemotePackets packets(link);
      EXPECT_EQ(AnswerOf(&packets), row.answer) << row.name << " by " << pieceSize;
      EXPECT_EQ(link.Departure(), "") << row.name << " by " << pieceSize;
    }
  }
}

TEST(RemotePackets, AreNotAcknowledgedWhereThatWasAgreed) {
  const std::vector<Row> rows = {
      {"plain", {{"<q>", "<yes>"}}, "yes"},
      {"no checksum", {{"<q>", "$yes#00"}}, "yes"},
      {"stray acknowledgements", {{"<q>", "+-+<yes>"}}, "yes"},
      {"a broken run", {{"<q>", "$yes*#00"}}, "the stub at 'stub' sent a damaged packet"},
  };
  for (const Row& row : rows) {
    ScriptedLink link(row.script);
    RemotePackets packets(link);
    packets.StopAcknowledging();
    EXPECT_EQ(AnswerOf(&packets), row.answer) << row.name;
    EXPECT_EQ(link.Departure(), "") << row.name;
  }
}

TEST(RemotePackets, PartWhateverWasLeftUnanswered) {
  const std::vector<Row> rows = {
      {"agreed", {{"<D>", "+<OK>"}, {"+", ""}}, ""},
      {"a late answer first", {{"<D>", "<late>+<OK>"}, {"++", ""}}, ""},
      {"not known", {{"<D>", "+<>"}, {"+", ""}}, ""},
      {"refused", {{"<D>", "+<E01>"}, {"+", ""}}, ""},
      {"no answer", {{"<D>", ""}}, ""},
      {"closed", {{"<D>", "{close}"}}, ""},
  };
  for (const Row& row : rows) {
    ScriptedLink link(row.script);
    RemotePackets packets(link);
    packets.Part("D", RemoteClock::now());
    EXPECT_EQ(link.Departure(), "") << row.name;
  }
}

}  // namespace
}  // namespace targettests

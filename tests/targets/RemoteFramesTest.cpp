#include "targets/RemoteFrames.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

#include "tests/targets/ScriptedLink.h"

namespace targettests {
namespace {

using targets::RemoteFrames;
using Kind = RemoteFrames::Event::Kind;

/// All events, in a notation of their own: `+`, `-`, `[payload]`, `damaged`, `%`, `long`.
std::string Events(const std::string& bytes, std::size_t longest, bool check) {
  RemoteFrames frames;
  frames.SetLongest(longest);
  frames.SetCheck(check);
  std::string events;
  for (const char byte : bytes) {
    const auto event = frames.Take(byte);
    if (!event) continue;
    events += events.empty() ? "" : " ";
    switch (event->kind) {
      case Kind::kAccepted:
        events += "+";
        break;
      case Kind::kRejected:
        events += "-";
        break;
      case Kind::kPacket:
        events += "[" + event->payload + "]";
        break;
      case Kind::kDamaged:
        events += "damaged";
        break;
      case Kind::kNotification:
        events += "%";
        break;
      case Kind::kTooLong:
        events += "long";
        break;
    }
  }
  return events;
}

struct Row {
  std::string bytes;
  std::string events;
};

TEST(RemoteFrames, AreFoundAmongAnyBytes) {
  const std::vector<Row> rows = {
      {"", ""},
      {"$OK#9a", "[OK]"},
      {"$OK#9A", "[OK]"},
      {"$#00", "[]"},
      {"+$OK#9a", "+ [OK]"},
      {"-+", "- +"},
      {"noise\r\n$OK#9a#00", "[OK]"},
      {"$OK#9a$#00+", "[OK] [] +"},
      {"<a><b><c>", "[a] [b] [c]"},
      // a plus or minus inside of a packet belongs to it
      {"<NoAck+-+>", "[NoAck+-+]"},
      // the checksum
      {"$OK#9b", "damaged"},
      {"$OK#zz", "damaged"},
      {"$OK# 9", "damaged"},
      {"$OK#-1", "damaged"},
      {"$OK#9b$OK#9a", "damaged [OK]"},
      // a frame that breaks off
      {"$half<whole>", "[whole]"},
      {"$half#<whole>", "[whole]"},
      {"$half#1<whole>", "[whole]"},
      {"$never ends", ""},
      // notifications
      {"%Stop:T05#aa", "%"},
      {"%Stop:T05#aa<x>", "% [x]"},
      {"%Stop:a longer one than packets may be#00<x>", "% [x]"},
      // runs: a count of 3 is a blank, 4 a "!", 97 a "~"
      {"<0* >", "[0000]"},
      {"<0*!>", "[00000]"},
      {"<0*'>", "[00000000000]"},
      {"<ab*\"c>", "[abbbbbbc]"},
      {"<0* 1* >", "[00001111]"},
      {"<0* * >", "[0000000]"},
      {"<*!>", "damaged"},
      {"<0*>", "damaged"},
      {"<0*\x1f>", "damaged"},
      {"<0*\x7f>", "damaged"},
      {"<0*\x80>", "damaged"},
      // escapes
      {"<a}\x03z>", "[a#z]"},
      {"<}\x04}\x0a}]>", "[$*}]"},
      {"<a}>", "[a}]"},
      {"<}\x03* >", "[#\x03\x03\x03]"},
      // more than 12 bytes
      {"<123456789012>", "[123456789012]"},
      {"<1234567890123>", "long"},
      {"<12345678*!>", "[123456788888]"},
      {"<12345678*\">", "long"},
      {"<0*~><x>", "long [x]"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(Events(OnTheWire(row.bytes), 12, true), row.events) << row.bytes;
  }
}

TEST(RemoteFrames, NeedNoChecksumWhereNothingIsAcknowledged) {
  const std::vector<Row> rows = {
      {"$OK#00", "[OK]"},
      {"$OK#zz", "[OK]"},
      {"$0*#00", "damaged"},
  };
  for (const Row& row : rows) EXPECT_EQ(Events(row.bytes, 12, false), row.events) << row.bytes;
}

TEST(RemoteFrames, CarryRequests) {
  EXPECT_EQ(targets::FrameRequest("OK"), "$OK#9a");
  EXPECT_EQ(targets::FrameRequest(""), "$#00");
  EXPECT_EQ(targets::FrameRequest("m4000,4"), "$m4000,4#91");
}

TEST(RemoteFrames, MayGetShorterWhileOneIsOnItsWay) {
  RemoteFrames frames;
  frames.SetLongest(100);
  for (const char byte : std::string("$0123456789")) frames.Take(byte);
  frames.SetLongest(4);
  std::string kinds;
  for (const char byte : std::string("a#00")) {
    if (const auto event = frames.Take(byte)) kinds += event->kind == Kind::kDamaged ? "d" : "?";
  }
  EXPECT_EQ(kinds, "d");
}

}  // namespace
}  // namespace targettests

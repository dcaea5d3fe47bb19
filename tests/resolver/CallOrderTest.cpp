// What the host is asked, and when.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/FakeHost.h"
#include "tests/support/Outcome.h"
#include "tests/support/Program.h"

namespace {

using testsupport::CallRow;
using testsupport::FakeHost;
using testsupport::LoadProgram;
using testsupport::Resolve;

const std::string kNew = "GetFileName() accessSize=8";

std::string Label(const std::string& text, int accessSize = 8) {
  return "FindLabel(\"" + text + "\") accessSize=" + std::to_string(accessSize);
}

std::string Type(const std::string& text, int accessSize = 8) {
  return "IsTypeName(\"" + text + "\") accessSize=" + std::to_string(accessSize);
}

std::string Describe(const std::string& text, int accessSize = 8) {
  return "GetTypeDescription(\"" + text + "\") accessSize=" + std::to_string(accessSize);
}

std::string Check(const std::string& address, int accessSize, int space = 0) {
  return "CheckAddress(" + address + ", " + std::to_string(space) +
         ") accessSize=" + std::to_string(accessSize);
}

std::string Read(const std::string& address, int accessSize, int space = 0,
                 const std::string& flags = "float=0, double=0") {
  return "ReadMemory(" + address + ", " + address + ", " + std::to_string(space) + ", 1, 1, " +
         flags + ") accessSize=" + std::to_string(accessSize);
}

TEST(CallOrder, OfTypicalExpressions) {
  const std::vector<CallRow> rows = {
      {"5", "5/8", {kNew, Label("5")}},
      {"1.5", "1.5f/8", {kNew}},
      {"1 + 2*3", "7/8", {kNew, Label("1"), Label("2"), Label("3")}},
      {"(1+2)*3", "9/8", {kNew, Type("1+2"), Label("1"), Label("2"), Label("3"), Label("3")}},
      {"i", "-5/4", {kNew, Label("i"), Check("0x1020", 4), Read("0x1020", 4)}},
      {"(i)",
       "-5/4",
       {kNew, Type("i"), Label("i"), Label("4128"), Check("0x1020", 4), Read("0x1020", 4)}},
      // One read for each operand, left before right, however many rows look at the pair.
      {"i+u",
       "2/4",
       {kNew, Label("i"), Label("u"), Check("0x1020", 4), Read("0x1020", 4), Check("0x1028", 4),
        Read("0x1028", 4)}},
      {"i+u*j",
       "16/4",
       {kNew, Label("i"), Label("u"), Label("j"), Check("0x1020", 4), Read("0x1020", 4),
        Check("0x1028", 4), Read("0x1028", 4), Check("0x10c0", 4), Read("0x10c0", 4)}},
      // Prefix operators read before binary ones do.
      {"i+-u",
       "-12/4",
       {kNew, Label("i"), Label("u"), Check("0x1028", 4), Read("0x1028", 4), Check("0x1020", 4),
        Read("0x1020", 4)}},
      {"f",
       "1.5f/4",
       {kNew, Label("f"), Check("0x1040", 4), Read("0x1040", 4, 0, "float=1, double=0")}},
      {"d",
       "2.25f/8",
       {kNew, Label("d"), Check("0x1048", 8), Read("0x1048", 8, 0, "float=0, double=1")}},
      {"&i", "4128/8", {kNew, Label("i")}},
      {"sizeof i", "4/8", {kNew, Label("i")}},
      {"sizeof(i)", "4/8", {kNew, Type("i"), Type("i"), Label("i"), Label("4128")}},
      {"sizeof(int)", "4/8", {kNew, Type("int"), Describe("int"), Label("4")}},
      {"(int)5", "5/4", {kNew, Type("int"), Describe("int"), Label("5")}},
      {"(unsigned int*)0",
       "0/8",
       {kNew, Type("unsigned:@:int*"), Describe("unsigned:@:int"), Label("0")}},
      {"(char)i",
       "-5/1",
       {kNew, Type("char"), Describe("char"), Label("i"), Check("0x1020", 4), Read("0x1020", 4)}},
      {"*p",
       "10/4",
       {kNew, Label("p"), Check("0x1050", 8), Read("0x1050", 8), Check("0x2000", 4),
        Read("0x2000", 4)}},
      {"**pp",
       "10/4",
       {kNew, Label("pp"), Check("0x1058", 8), Read("0x1058", 8), Check("0x1050", 8),
        Read("0x1050", 8), Check("0x2000", 4), Read("0x2000", 4)}},
      {"arr", "10/4", {kNew, Label("arr"), Check("0x2000", 4), Read("0x2000", 4)}},
      // A subscript is a group, then a nested resolver's expression.
      {"arr[j+0]",
       "40/4",
       {kNew, Type("j+0"), Label("j"), Label("0"), Check("0x10c0", 4), Read("0x10c0", 4),
        Label("arr", 4), "GetFileName() accessSize=4", Label("3", 4), Check("0x200c", 4),
        Read("0x200c", 4)}},
      {"m[1][2]",
       "12/4",
       {kNew, Type("2"), Label("2"), Type("1"), Label("1"), Label("m"), kNew, Label("1"), kNew,
        Label("2"), Check("0x2218", 4), Read("0x2218", 4)}},
      // A pointer is read before its first subscript.
      {"p[1]",
       "171798691870/8",
       {kNew, Type("1"), Label("1"), Label("p"), kNew, Label("1"), Check("0x1050", 8),
        Read("0x1050", 8), Check("0x2008", 8), Read("0x2008", 8)}},
      {"s.b",
       "101/4",
       {kNew, Label("s"), Describe("struct S"), Check("0x3004", 4), Read("0x3004", 4)}},
      {"ps->b",
       "101/4",
       {kNew, Label("ps"), Check("0x1068", 8), Read("0x1068", 8), Describe("struct S"),
        Check("0x3004", 4), Read("0x3004", 4)}},
      {"s.in.y",
       "103/4",
       {kNew, Label("s"), Describe("struct S"), Describe("struct In"), Check("0x300c", 4),
        Read("0x300c", 4)}},
      {"#0x100",
       "777/4 #",
       {kNew, Label("*0x100"), Describe("ZV_Lorn"), Check("0x100", 8, 1), Read("0x100", 8, 1)}},
      // Every operand is looked up before anything is read.
      {"i+nolabel", "error: Undefined label nolabel", {kNew, Label("i"), Label("nolabel")}},
      {"bad+i",
       "-5/4",
       {kNew, Label("bad"), Label("i"), Check("0x9000", 4), Check("0x1020", 4), Read("0x1020", 4)}},
      {"nolabel[1", "error: Can`t find the end quote.", {kNew}},
      {"arr[]", "error: Quotes are empty", {kNew, Label("arr")}},
      {"()", "error: ", {kNew}},
  };
  for (const CallRow& row : rows) {
    FakeHost host;
    LoadProgram(host);
    EXPECT_EQ(Resolve(host, row.expression), row.outcome) << "expression: " << row.expression;
    EXPECT_EQ(host.calls, row.calls) << "expression: " << row.expression;
    EXPECT_TRUE(host.violations.empty()) << "expression: " << row.expression;
  }
}

TEST(CallOrder, TheReservedOperationDoesNothingOfItself) {
  FakeHost host;
  host.TParrentInterface::Reserved();
  EXPECT_TRUE(host.calls.empty());
}

TEST(CallOrder, TheReservedOperationIsNeverCalled) {
  FakeHost host;
  LoadProgram(host);
  bool reserved = false;
  host.onCall = [&](std::size_t, const std::string& call) {
    reserved = reserved || call == "Reserved()";
  };
  for (const char* expression : {"i+u*j", "s.in.y", "**pp", "arr[j+0]", "#0x100", "(int)f"}) {
    Resolve(host, expression);
  }
  EXPECT_FALSE(reserved);
}

TEST(CallOrder, ReadsWithNarrowPointers) {
  FakeHost host("main.c", 2);
  LoadProgram(host);
  EXPECT_EQ(Resolve(host, "*p"), "10/4");
  EXPECT_EQ(host.calls,
            (std::vector<std::string>{kNew, Label("p"), Check("0x1050", 4), Read("0x1050", 4),
                                      Check("0x2000", 4), Read("0x2000", 4)}));
  // What the host sees of a 2-byte pointer's size afterwards is 2.
  host.ClearCalls();
  EXPECT_EQ(Resolve(host, "p+zero"), "8192/2");
  EXPECT_EQ(host.accessSize, 2U);
}

}  // namespace

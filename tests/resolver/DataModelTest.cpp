#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "model/AreaBlock.h"
#include "tests/support/FakeHost.h"
#include "tests/support/Outcome.h"

namespace {

using testsupport::FakeHost;
using testsupport::OpenResolver;
using testsupport::Resolve;

TEST(TypeRecord, Default) {
  const DataLableType type;
  EXPECT_EQ(type.Name, "");
  EXPECT_FALSE(type.IsArray || type.IsPointer || type.IsAddress);
  EXPECT_EQ(type.Size, 8U);
  EXPECT_EQ(type.Offset, 0U);
  EXPECT_TRUE(type.Members.empty());
  EXPECT_TRUE(type.NestedTypes.empty());
  EXPECT_FALSE(type.IsSigned || type.IsFloat || type.IsDouble || type.ExtraFlag);
  EXPECT_EQ(type.PointerSize, 8U);
}

DataLableType Filled() {
  DataLableType inner;
  inner.Name = "inner";
  inner.Members.emplace_back();
  inner.Members.back().Name = "leaf";
  DataLableType type;
  type.Name = "outer";
  type.IsArray = type.IsPointer = type.IsAddress = true;
  type.Size = 12;
  type.Offset = 34;
  type.Members = {inner, DataLableType()};
  type.NestedTypes = {"one", "two"};
  type.IsSigned = type.IsFloat = type.IsDouble = type.ExtraFlag = true;
  type.PointerSize = 4;
  return type;
}

struct Change {
  std::string name;
  std::function<void(DataLableType*)> make;
  bool compared = true;
};

std::vector<Change> Changes() {
  return {
      {"Name", [](DataLableType* t) { t->Name += "x"; }},
      {"IsArray", [](DataLableType* t) { t->IsArray = !t->IsArray; }},
      {"IsPointer", [](DataLableType* t) { t->IsPointer = !t->IsPointer; }},
      {"IsAddress", [](DataLableType* t) { t->IsAddress = !t->IsAddress; }},
      {"Size", [](DataLableType* t) { ++t->Size; }},
      {"Offset", [](DataLableType* t) { ++t->Offset; }},
      {"a member more", [](DataLableType* t) { t->Members.emplace_back(); }},
      {"a member less", [](DataLableType* t) { t->Members.pop_back(); }},
      {"a member's name", [](DataLableType* t) { t->Members.front().Name = "x"; }},
      {"a member's member", [](DataLableType* t) { t->Members.front().Members.front().Size = 3; }},
      {"the members' order",
       [](DataLableType* t) { std::reverse(t->Members.begin(), t->Members.end()); }},
      {"a nested type", [](DataLableType* t) { t->NestedTypes.back() = "x"; }},
      {"a nested type more", [](DataLableType* t) { t->NestedTypes.emplace_back(); }},
      {"IsSigned", [](DataLableType* t) { t->IsSigned = !t->IsSigned; }},
      {"IsFloat", [](DataLableType* t) { t->IsFloat = !t->IsFloat; }},
      {"IsDouble", [](DataLableType* t) { t->IsDouble = !t->IsDouble; }},
      {"ExtraFlag", [](DataLableType* t) { t->ExtraFlag = !t->ExtraFlag; }},
      {"PointerSize", [](DataLableType* t) { t->PointerSize = 2; }, false},
      {"TypeNumber", [](DataLableType* t) { t->TypeNumber = 7; }, false},
  };
}

TEST(TypeRecord, EveryFieldIsCopiedAndAllButTheHostsOwnCompared) {
  for (const Change& change : Changes()) {
    SCOPED_TRACE(change.name);
    DataLableType changed = Filled();
    change.make(&changed);
    EXPECT_EQ(changed != Filled(), change.compared);
    EXPECT_EQ(Filled() != changed, change.compared);
    EXPECT_EQ(changed == Filled(), !change.compared);

    const DataLableType copied(changed);
    EXPECT_FALSE(copied != changed);
    EXPECT_EQ(copied.PointerSize, changed.PointerSize);
    EXPECT_EQ(copied.TypeNumber, changed.TypeNumber);
    DataLableType assigned;
    const DataLableType returned = (assigned = changed);
    EXPECT_FALSE(assigned != changed);
    EXPECT_FALSE(returned != changed);
    EXPECT_EQ(assigned.PointerSize, changed.PointerSize);
    EXPECT_EQ(assigned.TypeNumber, changed.TypeNumber);
    DataLableType source(changed);
    const DataLableType moved(std::move(source));
    EXPECT_FALSE(moved != changed);
    EXPECT_EQ(moved.PointerSize, changed.PointerSize);
    EXPECT_EQ(moved.TypeNumber, changed.TypeNumber);
  }
}

TEST(TypeRecord, CopiesShareNothing) {
  const DataLableType source = Filled();
  DataLableType copy(source);
  DataLableType assigned;
  assigned = source;
  for (DataLableType* type : {&copy, &assigned}) {
    type->Members.front().Members.front().Name = "changed";
    type->Members.front().Members.emplace_back();
    type->NestedTypes.clear();
  }
  EXPECT_FALSE(source != Filled());
}

TEST(TypeRecord, AssignsFromItselfAndFromItsOwnTree) {
  DataLableType type = Filled();
  DataLableType& same = type;
  type = same;
  EXPECT_FALSE(type != Filled());
  type = type.Members.front();
  EXPECT_EQ(type.Name, "inner");
  ASSERT_EQ(type.Members.size(), 1U);
  EXPECT_EQ(type.Members.front().Name, "leaf");
}

TEST(TypeRecord, FormPointer) {
  for (const std::uint32_t pointerSize : {2U, 4U, 8U}) {
    DataLableType type = Filled();
    type.PointerSize = pointerSize;
    const DataLableType pointer = type.FormPointer();
    EXPECT_EQ(pointer.Name, "");
    EXPECT_TRUE(pointer.IsPointer);
    EXPECT_FALSE(pointer.IsArray || pointer.IsAddress);
    EXPECT_EQ(pointer.Size, pointerSize);
    EXPECT_EQ(pointer.PointerSize, pointerSize);
    EXPECT_EQ(pointer.Offset, 0U);
    EXPECT_TRUE(pointer.NestedTypes.empty());
    EXPECT_FALSE(pointer.IsSigned || pointer.IsFloat || pointer.IsDouble || pointer.ExtraFlag);
    ASSERT_EQ(pointer.Members.size(), 1U);
    EXPECT_FALSE(pointer.Members.front() != type);
    EXPECT_FALSE(type != Filled());
    EXPECT_EQ(pointer.FormPointer().Size, pointerSize);

    const DataLableType consumed = std::move(type).FormPointer();
    EXPECT_FALSE(consumed != pointer);
    EXPECT_EQ(consumed.Size, pointerSize);
  }
}

constexpr int kDeep = 1000000;

DataLableType DeepTree() {
  DataLableType type;
  type.Size = 4;
  for (int level = 0; level < kDeep; ++level) {
    // Not an assignment: that returns a copy of what it assigned, a level deeper each time.
    DataLableType pointer = std::move(type).FormPointer();
    type.Swap(pointer);
  }
  return type;
}

int Depth(const DataLableType& type) {
  int depth = 0;
  for (const DataLableType* t = &type; !t->Members.empty(); t = &t->Members.front()) ++depth;
  return depth;
}

TEST(TypeRecord, AMillionLevelsDeep) {
  const DataLableType tree = DeepTree();
  ASSERT_EQ(Depth(tree), kDeep);
  {
    DataLableType copy(tree);
    EXPECT_EQ(Depth(copy), kDeep);
    EXPECT_TRUE(copy == tree);
    DataLableType* leaf = &copy;
    while (!leaf->Members.empty()) leaf = &leaf->Members.front();
    leaf->Size = 5;
    EXPECT_FALSE(copy == tree);
  }
  {
    DataLableType assigned;
    assigned = tree;
    EXPECT_EQ(Depth(assigned), kDeep);
  }
  EXPECT_EQ(Depth(tree.FormPointer()), kDeep + 1);
  EXPECT_FALSE(tree != tree);
}

TEST(TypeRecord, AsWideAsDeep) {
  DataLableType tree;
  for (int level = 0; level < 1000; ++level) {
    DataLableType outer;
    outer.Members.resize(20);
    outer.Members.push_back(std::move(tree));
    tree.Swap(outer);
  }
  const DataLableType copy(tree);
  EXPECT_TRUE(copy == tree);
}

TEST(Block, Default) {
  const AreaBlock block;
  EXPECT_EQ(block.BeforeText + block.AreaText + block.AfterText, "");
  EXPECT_TRUE(block.Type == DataLableType());
  EXPECT_TRUE(block.CastType == DataLableType());
}

AreaBlock FilledBlock(AreaBlock* member) {
  AreaBlock block;
  block.BeforeText = "before";
  block.AreaText = "area";
  block.AfterText = "after";
  block.ReferenceLevel = -3;
  block.MemorySpace = 1;
  block.IsMemberName = true;
  block.Value = 0x123456789abcdef0;
  block.Relation = 24;
  block.MemberBlock = member;
  block.IsConsumed = true;
  block.Type = Filled();
  block.CastType = Filled();
  block.CastType.Name = "cast";
  block.HasCastType = true;
  block.ValueKind = 2;
  block.FloatValue = 1.5F;
  block.DoubleValue = 2.5;
  return block;
}

void ExpectSame(const AreaBlock& a, const AreaBlock& b) {
  EXPECT_EQ(a.BeforeText, b.BeforeText);
  EXPECT_EQ(a.AreaText, b.AreaText);
  EXPECT_EQ(a.AfterText, b.AfterText);
  EXPECT_EQ(a.ReferenceLevel, b.ReferenceLevel);
  EXPECT_EQ(a.MemorySpace, b.MemorySpace);
  EXPECT_EQ(a.IsMemberName, b.IsMemberName);
  EXPECT_EQ(a.Value, b.Value);
  EXPECT_EQ(a.Relation, b.Relation);
  EXPECT_EQ(a.MemberBlock, b.MemberBlock);
  EXPECT_EQ(a.IsConsumed, b.IsConsumed);
  EXPECT_TRUE(a.Type == b.Type);
  EXPECT_TRUE(a.CastType == b.CastType);
  EXPECT_EQ(a.HasCastType, b.HasCastType);
  EXPECT_EQ(a.ValueKind, b.ValueKind);
  EXPECT_EQ(a.FloatValue, b.FloatValue);
  EXPECT_EQ(a.DoubleValue, b.DoubleValue);
}

TEST(Block, CopiesAreDeep) {
  AreaBlock member;
  const AreaBlock source = FilledBlock(&member);
  AreaBlock copy(source);
  ExpectSame(copy, source);
  AreaBlock assigned;
  AreaBlock& returned = (assigned = source);
  EXPECT_EQ(&returned, &assigned);
  ExpectSame(assigned, source);
  AreaBlock& same = assigned;
  assigned = same;
  ExpectSame(assigned, source);

  copy.Type.Members.front().Members.front().Name = "changed";
  assigned.CastType.Members.clear();
  ExpectSame(source, FilledBlock(&member));

  AreaBlock moved(std::move(copy));
  EXPECT_EQ(moved.Type.Members.front().Members.front().Name, "changed");
  AreaBlock target;
  target = std::move(moved);
  EXPECT_EQ(target.AreaText, "area");
  EXPECT_EQ(target.MemberBlock, &member);
}

TEST(ManyStars, ACastOfTwoHundredThousandIsJustLong) {
  FakeHost host;
  host.quiet = true;
  host.AddType("int", host.types.Signed(4));
  const std::string stars(200000, '*');
  EXPECT_EQ(Resolve(host, "(int" + stars + ")0"), "0/8");
  EXPECT_EQ(Resolve(host, "sizeof(int" + stars + ")"), "8/8");
  EXPECT_EQ(Resolve(host, "(int" + stars + ")7+1"), "15/8");
  EXPECT_EQ(Resolve(host, stars + "7"), "error: Can`t do the dereference operation with this type");
}

TEST(ManyStars, ADereferenceForEachStarOfTheCast) {
  FakeHost host;
  host.quiet = true;
  host.AddType("int", host.types.Signed(4));
  const std::string stars(2000, '*');
  // Address 0 holds 0, so every level leads there again.
  EXPECT_EQ(Resolve(host, stars + "(int" + stars + ")0"), "0/4");
}

}  // namespace

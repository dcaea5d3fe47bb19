// What hosts compiled separately rely on: signatures, the order of fields and of virtual
// operations.
#include <gtest/gtest.h>

#include <cstring>
#include <list>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "model/RelationCode.h"
#include "tests/support/FakeHost.h"
#include "tests/support/OpenResolver.h"

namespace {

using testsupport::FakeHost;
using testsupport::OpenResolver;

// Fields.

template <typename Type, typename Field>
constexpr bool kIs = std::is_same_v<Type, Field>;

using Block = AreaBlock;
using Record = DataLableType;

static_assert(kIs<decltype(Block::BeforeText), std::string>);
static_assert(kIs<decltype(Block::AreaText), std::string>);
static_assert(kIs<decltype(Block::AfterText), std::string>);
static_assert(kIs<decltype(Block::ReferenceLevel), std::int32_t>);
static_assert(kIs<decltype(Block::MemorySpace), std::uint8_t>);
static_assert(kIs<decltype(Block::IsMemberName), bool>);
static_assert(kIs<decltype(Block::Value), std::uint64_t>);
static_assert(kIs<decltype(Block::Relation), std::uint32_t>);
static_assert(sizeof(Block::MemberBlock) == sizeof(void*));
static_assert(kIs<decltype(Block::IsConsumed), bool>);
static_assert(kIs<decltype(Block::Type), Record>);
static_assert(kIs<decltype(Block::CastType), Record>);
static_assert(kIs<decltype(Block::HasCastType), bool>);
static_assert(kIs<decltype(Block::ValueKind), std::uint32_t>);
static_assert(kIs<decltype(Block::FloatValue), float>);
static_assert(kIs<decltype(Block::DoubleValue), double>);

static_assert(kIs<decltype(Record::Name), std::string>);
static_assert(kIs<decltype(Record::IsArray), bool>);
static_assert(kIs<decltype(Record::IsPointer), bool>);
static_assert(kIs<decltype(Record::IsAddress), bool>);
static_assert(kIs<decltype(Record::Size), std::uint32_t>);
static_assert(kIs<decltype(Record::Offset), std::uint32_t>);
static_assert(kIs<decltype(Record::Members), SharedList<Record>>);
static_assert(kIs<decltype(Record::NestedTypes), SharedList<std::string>>);
static_assert(kIs<decltype(Record::IsSigned), bool>);
static_assert(kIs<decltype(Record::IsFloat), bool>);
static_assert(kIs<decltype(Record::IsDouble), bool>);
static_assert(kIs<decltype(Record::ExtraFlag), bool>);
static_assert(kIs<decltype(Record::PointerSize), std::uint32_t>);
static_assert(kIs<decltype(&Record::operator=), Record (Record::*)(Record)>);
static_assert(kIs<decltype(&Record::operator!=), bool (Record::*)(Record) const>);
static_assert(kIs<decltype(std::declval<Record&>().FormPointer()), Record>);

using Open = OpenResolver;

static_assert(kIs<decltype(Open::resultAddress), std::uint64_t>);
static_assert(kIs<decltype(Open::resultValue), std::uint64_t>);
static_assert(kIs<decltype(Open::resultFloat), float>);
static_assert(kIs<decltype(Open::errorMessage), std::string>);
static_assert(kIs<decltype(Open::resultMemorySpace), bool>);
static_assert(kIs<decltype(Open::resultSize), std::uint64_t>);
static_assert(kIs<decltype(Open::resultNegative), bool>);
static_assert(kIs<decltype(Open::resultFloating), bool>);
static_assert(kIs<decltype(Open::allLabelsConfirmed), bool>);
static_assert(kIs<decltype(Open::parentInterface), TParrentInterface*>);
static_assert(kIs<decltype(Open::areaBlocks), std::list<Block>>);
static_assert(kIs<decltype(Open::savedTypes), std::list<Record>>);
static_assert(kIs<decltype(Open::defaultType), Record>);
static_assert(kIs<decltype(Open::elementFlag), bool>);
static_assert(kIs<decltype(Open::delimitersWithParentheses), char*>);
static_assert(kIs<decltype(Open::delimiters), char*>);

static_assert(kIs<decltype(TParrentInterface::LabelTyped), bool>);
static_assert(kIs<decltype(TParrentInterface::accessSize), std::uint32_t>);
static_assert(kIs<decltype(TParrentInterface::LabelType), Record>);

// The resolver's operations.

using Resolver = TStringResolver;
using Iterator = std::list<Block>::iterator;

static_assert(!std::is_polymorphic_v<Resolver>);
static_assert(!std::is_copy_constructible_v<Resolver>);
static_assert(!std::is_copy_assignable_v<Resolver>);
static_assert(!std::is_move_constructible_v<Resolver>);
static_assert(!std::is_move_assignable_v<Resolver>);
static_assert(std::is_constructible_v<Resolver, TParrentInterface*>);
static_assert(!std::is_default_constructible_v<Resolver>);

/// Compiles when the operation has exactly this type.
template <typename Expected, typename Actual>
constexpr bool IsOperation(Actual /*unused*/) {
  return std::is_same_v<Expected, Actual>;
}

static_assert(IsOperation<bool (Resolver::*)(std::string_view)>(&Resolver::SolveStringOfElements));
static_assert(IsOperation<bool (Resolver::*)(std::string_view)>(&Open::SolveBasicElement));
static_assert(
    IsOperation<bool (Resolver::*)(std::string_view, unsigned long*, std::string*, std::string*,
                                   std::string*)>(&Open::GetFirstLexicalBlockStartingFromPos));
static_assert(
    IsOperation<bool (Resolver::*)(std::list<Block>*)>(&Open::ProcessBasicBlocksRelations));
static_assert(IsOperation<int (Resolver::*)(Iterator*)>(&Open::GetAfterRelations));
static_assert(IsOperation<bool (Resolver::*)(Iterator*, int, const std::string&)>(
    &Open::CheckBeforeRelations));
static_assert(
    IsOperation<bool (Resolver::*)(Iterator*, Iterator*, int)>(&Open::ProcessTypeRelations));
static_assert(IsOperation<bool (Resolver::*)(Block*)>(&Open::ZeroRaw));
static_assert(IsOperation<int (Resolver::*)(Block*, Block*, int, int)>(&Open::FirstRaw));
static_assert(IsOperation<bool (Resolver::*)(Block*)>(&Open::SecondRaw));
static_assert(IsOperation<int (Resolver::*)(Block*, Block*, int, int)>(&Open::ThirdRawRaw));
static_assert(IsOperation<bool (Resolver::*)(std::string*, std::string*, const char*, const char*)>(
    &Open::FindStringParameter));
static_assert(IsOperation<bool (Resolver::*)(Block*)>(&Open::SolveSquareBracets));
static_assert(IsOperation<bool (Resolver::*)(Block*)>(&Open::ProcessLocationAreaAsMember));
static_assert(IsOperation<bool (Resolver::*)(const Record*, const std::string&, Record*)>(
    &Open::RecusivlyCheckForStructFealds));
static_assert(IsOperation<bool (Resolver::*)(Block*, bool*)>(&Open::MoveFromPointerToObject));
static_assert(IsOperation<bool (Resolver::*)(std::string*)>(&Open::RegisterType));
static_assert(IsOperation<bool (Resolver::*)(Block*, std::string_view)>(&Open::ProcessAreaAsType));
static_assert(IsOperation<void (Resolver::*)(std::string*)>(&Open::ProcessBasickTypes));
static_assert(IsOperation<bool (Resolver::*)(std::string*)>(&Open::CheckFloatingPointStr));
static_assert(IsOperation<bool (Resolver::*)(std::string*)>(&Open::RestoreFloatingPointStr));

// The host's operations.

using Host = TParrentInterface;

static_assert(std::is_abstract_v<Host>);
static_assert(std::has_virtual_destructor_v<Host>);
static_assert(kIs<decltype(&Host::CheckAddress), bool (Host::*)(std::uint64_t, std::uint8_t)>);
static_assert(kIs<decltype(&Host::GetFileName), std::string (Host::*)()>);
static_assert(kIs<decltype(&Host::IsTypeName), bool (Host::*)(std::string)>);
static_assert(kIs<decltype(&Host::GetTypeDescription), Record (Host::*)(std::string, bool*)>);
static_assert(kIs<decltype(&Host::FindLabel), std::uint64_t (Host::*)(const char*, bool*, bool*)>);
static_assert(kIs<decltype(&Host::ReadMemory),
                  void (Host::*)(std::uint64_t, std::uint64_t, std::uint16_t, std::uint8_t,
                                 std::string*, std::uint32_t, bool, bool)>);

// Numbers that are stored and compared as numbers.

static_assert(kNoRelation == 0 && kFirstBlock == 1 && kAdd == 2 && kSubtract == 3);
static_assert(kMultiply == 4 && kDivide == 5 && kMember == 6 && kPointerMember == 7);
static_assert(kNoOperator == 9 && kRemainder == 11 && kShiftLeft == 12 && kShiftRight == 13);
static_assert(kLess == 14 && kLessOrEqual == 15 && kGreater == 16 && kGreaterOrEqual == 17);
static_assert(kEqual == 18 && kNotEqual == 19 && kBitAnd == 20 && kBitOr == 21);
static_assert(kBitXor == 22 && kLogicalAnd == 23 && kLogicalOr == 24);

/// Are the fields at these addresses in this order?
bool InOrder(const std::vector<const void*>& fields) {
  for (std::size_t n = 1; n < fields.size(); ++n) {
    if (reinterpret_cast<std::uintptr_t>(fields[n - 1]) >=
        reinterpret_cast<std::uintptr_t>(fields[n])) {
      return false;
    }
  }
  return true;
}

TEST(InterfaceShape, OrderOfTheBlocksFields) {
  const Block b;
  EXPECT_TRUE(
      InOrder({&b.BeforeText, &b.AreaText, &b.AfterText, &b.ReferenceLevel, &b.MemorySpace,
               &b.IsMemberName, &b.Value, &b.Relation, &b.MemberBlock, &b.IsConsumed, &b.Type,
               &b.CastType, &b.HasCastType, &b.ValueKind, &b.FloatValue, &b.DoubleValue}));
  EXPECT_EQ(static_cast<const void*>(&b), &b.BeforeText);
}

TEST(InterfaceShape, OrderOfTheTypeRecordsFields) {
  const Record t;
  EXPECT_TRUE(InOrder({&t.Name, &t.IsArray, &t.IsPointer, &t.IsAddress, &t.Size, &t.Offset,
                       &t.Members, &t.NestedTypes, &t.IsSigned, &t.IsFloat, &t.IsDouble,
                       &t.ExtraFlag, &t.PointerSize}));
  EXPECT_EQ(static_cast<const void*>(&t), &t.Name);
}

TEST(InterfaceShape, OrderOfTheResolversFields) {
  FakeHost host;
  const OpenResolver r(&host);
  EXPECT_TRUE(
      InOrder({&r.resultAddress, &r.resultValue, &r.resultFloat, &r.errorMessage,
               &r.resultMemorySpace, &r.resultSize, &r.resultNegative, &r.resultFloating,
               &r.allLabelsConfirmed, &r.parentInterface, &r.areaBlocks, &r.savedTypes,
               &r.defaultType, &r.elementFlag, &r.delimitersWithParentheses, &r.delimiters}));
  EXPECT_EQ(static_cast<const void*>(&r), &r.resultAddress);
}

TEST(InterfaceShape, OrderOfTheHostsFields) {
  const FakeHost host;
  const TParrentInterface& base = host;
  EXPECT_TRUE(InOrder({&base, &base.LabelTyped, &base.accessSize, &base.LabelType}));
  // Directly behind the pointer to the table of virtual operations.
  EXPECT_EQ(reinterpret_cast<const char*>(&base.LabelTyped) - reinterpret_cast<const char*>(&base),
            static_cast<std::ptrdiff_t>(sizeof(void*)));
}

#if defined(__GXX_ABI_VERSION) && defined(__x86_64__)

/// The place of a virtual operation: on this ABI a pointer to one is its offset in the table
/// plus 1.
template <typename Operation>
std::ptrdiff_t Place(Operation operation) {
  std::ptrdiff_t words[2];
  static_assert(sizeof operation == sizeof words);
  std::memcpy(words, &operation, sizeof words);
  return (words[0] - 1) / static_cast<std::ptrdiff_t>(sizeof(void*));
}

TEST(InterfaceShape, PlacesOfTheHostsOperations) {
  EXPECT_EQ(Place(&Host::CheckAddress), 0);
  EXPECT_EQ(Place(&Host::GetFileName), 1);
  EXPECT_EQ(Place(&Host::IsTypeName), 2);
  EXPECT_EQ(Place(&Host::GetTypeDescription), 3);
  EXPECT_EQ(Place(&Host::FindLabel), 4);
  EXPECT_EQ(Place(&Host::Reserved), 5);
  EXPECT_EQ(Place(&Host::ReadMemory), 6);
}

TEST(InterfaceShape, TheHostsDestructorsFollowItsOperations) {
  struct Counted : FakeHost {
    explicit Counted(int* counter) : destroyed(counter) {}
    Counted(const Counted&) = delete;
    Counted& operator=(const Counted&) = delete;
    ~Counted() override { ++*destroyed; }
    int* destroyed;
  };
  int destroyed = 0;
  TParrentInterface* host = new Counted(&destroyed);
  void** table = nullptr;
  std::memcpy(&table, static_cast<void*>(host), sizeof table);
  // Places 7 and 8: the destructor that destroys, and the one that frees as well.
  void* const frees = table[8];
  EXPECT_NE(table[7], frees);
  void (*call)(void*) = nullptr;
  std::memcpy(&call, &frees, sizeof call);
  call(host);
  EXPECT_EQ(destroyed, 1);
}

#endif

TEST(InterfaceShape, AFreshResolver) {
  FakeHost host;
  const OpenResolver r(&host);
  EXPECT_EQ(host.calls, (std::vector<std::string>{"GetFileName() accessSize=8"}));
  EXPECT_EQ(r.resultAddress, 0U);
  EXPECT_EQ(r.resultValue, 0U);
  EXPECT_EQ(r.resultFloat, 0.0F);
  EXPECT_EQ(r.errorMessage, "");
  EXPECT_FALSE(r.resultMemorySpace);
  EXPECT_EQ(r.resultSize, 0U);
  EXPECT_FALSE(r.resultNegative);
  EXPECT_FALSE(r.resultFloating);
  EXPECT_TRUE(r.allLabelsConfirmed);
  EXPECT_EQ(r.parentInterface, &host);
  EXPECT_TRUE(r.areaBlocks.empty());
  EXPECT_TRUE(r.savedTypes.empty());
  EXPECT_TRUE(r.defaultType == DataLableType());
  EXPECT_FALSE(r.elementFlag);
}

TEST(InterfaceShape, DialectsAndTheirOperatorCharacters) {
  struct Case {
    std::string file;
    bool assembly;
  };
  const std::vector<Case> rows = {
      {"main.c", false},   {"main.cpp", false},     {"", false},
      {"main.asm", true},  {"main.s", true},        {"a.sh", true},
      {"x.save.c", true},  {"lib.sys/a.c", true},   {".s", true},
      {".asm", true},      {"main.asm.c", true},    {"main.S", false},
      {"main.ASM", false}, {"asm", false},          {"s", false},
      {"main.as", false},  {"/usr/src/x.c", false}, {"a.b.s.c", true},
  };
  for (const Case& row : rows) {
    SCOPED_TRACE("file: " + row.file);
    FakeHost host(row.file);
    const OpenResolver r(&host);
    const std::string marks = "\x08\x18\x19";
    EXPECT_EQ(std::string(r.delimitersWithParentheses),
              row.assembly ? "()%!~&*-><=^|+-/" + marks : "()%!~&*.-><=^|+-/" + marks);
    EXPECT_EQ(std::string(r.delimiters),
              row.assembly ? "%!~&*-><=^|+-/" + marks : "%!~&*.-><=^|+-/" + marks);
  }
}

TEST(InterfaceShape, TheDialectIsFixedAtConstruction) {
  FakeHost host("main.c");
  host.AddLabel("a.b", 5);
  OpenResolver r(&host);
  host.fileName = "main.asm";
  EXPECT_FALSE(r.SolveStringOfElements("a.b"));
  OpenResolver assembly(&host);
  EXPECT_TRUE(assembly.SolveStringOfElements("a.b"));
  EXPECT_EQ(assembly.resultValue, 5U);
}

}  // namespace

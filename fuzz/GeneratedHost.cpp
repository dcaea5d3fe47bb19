#include "fuzz/GeneratedHost.h"

#include <algorithm>

#include "fuzz/Require.h"
#include "tests/support/Numeral.h"

namespace fuzzing {
namespace {

constexpr std::array<std::string_view, 8> kTypeNames = {"T",       "U",       "int",   "float",
                                                        "structS", "structN", "char*", "ZV_Lorn"};
constexpr std::array<std::string_view, 8> kLabelNames = {"a", "b", "c", "s", "p", "x", "1", ".l"};
constexpr std::array<std::string_view, 8> kFieldNames = {"m", "n", "s", "next",
                                                         "a", "",  "1", "m.n"};
/// Behind the types' own names, as many that are none.
constexpr std::size_t kNestedNames = 2 * kTypeNames.size();

constexpr std::array<std::uint32_t, 8> kPointerSizes = {8, 4, 2, 1, 0, 3, 16, 0xffffffff};
constexpr std::array<std::uint32_t, 32> kSizes = {
    4,  8,  1,     2,     0,       3,          5,          6,          7,          9,         10,
    11, 12, 13,    14,    15,      16,         17,         24,         31,         32,        63,
    64, 65, 0x100, 0x101, 0x10000, 0x20000000, 0x7fffffff, 0x80000000, 0xfffffffe, 0xffffffff};
constexpr std::array<std::uint64_t, 8> kEdges = {0,
                                                 ~std::uint64_t{0},
                                                 std::uint64_t{1} << 63U,
                                                 (std::uint64_t{1} << 63U) - 1,
                                                 0xffffffff,
                                                 0x80000000,
                                                 0x7f800000,
                                                 0x7ff8000000000000};
constexpr std::array<std::string_view, 24> kOddTexts = {"",
                                                        "0",
                                                        "1",
                                                        "-5",
                                                        "-1",
                                                        "+7",
                                                        "12\t3",
                                                        "\t",
                                                        "1e999",
                                                        "-1e999",
                                                        "1e-999",
                                                        "nan",
                                                        "inf",
                                                        "1.5",
                                                        "-2.25",
                                                        "1e+10",
                                                        "1e",
                                                        ".5",
                                                        "5.",
                                                        "0x10",
                                                        " 42",
                                                        "18446744073709551615",
                                                        "18446744073709551616",
                                                        "9223372036854775808"};
/// How many pointers stand around a record, which makes its tree that deep.
constexpr std::array<std::size_t, 16> kStars = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 2, 3, 30, 200};

constexpr std::size_t kMostRecords = 24;
constexpr std::size_t kMostTexts = 16;

std::uint64_t TakeValue(ByteSource* bytes) {
  const std::uint8_t kind = bytes->Byte();
  if (kind < 0x80) return kind;
  if (kind < 0xc0) return kEdges[kind % kEdges.size()];
  return bytes->Number();
}

std::string TakeText(ByteSource* bytes) {
  const std::size_t kind = bytes->Index(kOddTexts.size() + 2);
  if (kind < kOddTexts.size()) return std::string(kOddTexts[kind]);
  if (kind == kOddTexts.size()) return std::to_string(bytes->Number());
  return bytes->Text(bytes->Index(32));
}

std::string WithoutBlankMarks(std::string_view text) {
  std::string name(text);
  for (std::size_t at = 0; (at = name.find(":@:", at)) != std::string::npos;) name.erase(at, 3);
  return name;
}

}  // namespace

GeneratedHost::GeneratedHost(ByteSource bytes) {
  const unsigned choice = bytes.Byte();
  assembly_ = (choice & 1U) != 0;
  typedNumerals_ = (choice & 2U) != 0;
  pointerSize_ = kPointerSizes[(choice >> 2U) % kPointerSizes.size()];
  throwAt_ = bytes.Byte();
  refused_ = bytes.Byte();
  vanishing_ = bytes.Byte();
  types_.resize(bytes.Index(kTypeNames.size() + 1));
  for (DataLableType& type : types_) {
    DataLableType record = TakeRecord(&bytes);
    type.Swap(record);
  }
  labels_.resize(bytes.Index(kLabelNames.size() + 1));
  for (LabelEntry& label : labels_) {
    label.value = TakeValue(&bytes);
    label.type = bytes.Index(types_.size() + 1);
  }
  memory_.resize(bytes.Index(kMostTexts + 1));
  for (std::string& text : memory_) text = TakeText(&bytes);
}

/// A record and everything in it, the outer records before the inner ones.
DataLableType GeneratedHost::TakeRecord(ByteSource* bytes) const {
  DataLableType record;
  const std::size_t stars = kStars[bytes->Index(kStars.size())];
  std::vector<DataLableType*> pending{&record};
  std::size_t records = 1;
  for (std::size_t next = 0; next < pending.size(); ++next) {
    std::size_t members = 0;
    TakeOwnFields(bytes, pending[next], &members);
    members = std::min(members, kMostRecords - records);
    records += members;
    // The entries lie still from here on: only their own lists grow.
    pending[next]->Members.resize(members);
    for (DataLableType& member : pending[next]->Members) pending.push_back(&member);
  }
  for (std::size_t i = 0; i < stars; ++i) record.BecomePointer();
  return record;
}

void GeneratedHost::TakeOwnFields(ByteSource* bytes, DataLableType* record,
                                  std::size_t* members) const {
  const unsigned flags = bytes->Byte();
  record->IsArray = (flags & 1U) != 0;
  record->IsPointer = (flags & 2U) != 0;
  record->IsAddress = (flags & 4U) != 0;
  record->IsSigned = (flags & 8U) != 0;
  record->IsFloat = (flags & 16U) != 0;
  record->IsDouble = (flags & 32U) != 0;
  record->ExtraFlag = (flags & 64U) != 0;
  record->PointerSize = pointerSize_;
  const unsigned shape = bytes->Byte();
  record->Size = kSizes[shape % kSizes.size()];
  *members = shape / kSizes.size() % 4;
  if ((flags & 128U) == 0) return;
  record->Name = kFieldNames[bytes->Index(kFieldNames.size())];
  record->Offset = static_cast<std::uint32_t>(TakeValue(bytes));
  for (std::size_t nested = bytes->Index(4); nested > 0; --nested) {
    const std::size_t name = bytes->Index(kNestedNames);
    record->NestedTypes.emplace_back(name < kTypeNames.size() ? kTypeNames[name] : "unknown");
  }
}

std::optional<std::size_t> GeneratedHost::TypeCalled(std::string_view name) const {
  const std::string plain = WithoutBlankMarks(name);
  const auto found = std::find(kTypeNames.begin(), kTypeNames.end(), plain);
  const auto index = static_cast<std::size_t>(found - kTypeNames.begin());
  return index < types_.size() ? std::optional(index) : std::nullopt;
}

void GeneratedHost::Enter(const char* operation, std::string_view text,
                          const std::vector<std::uint64_t>& numbers) {
  if (log != nullptr) {
    std::string& call = log->emplace_back(operation);
    call += '(';
    call += text;
    for (const std::uint64_t number : numbers) call += ' ' + std::to_string(number);
    call += ") accessSize " + std::to_string(accessSize);
  }
  if (++calls_ == throwAt_) throw HostThrew();
}

bool GeneratedHost::CheckAddress(std::uint64_t address, std::uint8_t memorySpace) {
  Enter("CheckAddress", {}, {address, memorySpace});
  Require(accessSize >= 1 && accessSize <= 8, "CheckAddress: accessSize is 1 to 8");
  Require(memorySpace <= 1, "CheckAddress: the memory space is 0 or 1");
  return (refused_ >> (address % 8) & 1U) == 0;
}

std::string GeneratedHost::GetFileName() {
  Enter("GetFileName");
  return assembly_ ? "start.asm" : "main.c";
}

bool GeneratedHost::IsTypeName(std::string text) {
  Enter("IsTypeName", text);
  return TypeCalled(text) || TypeCalled(text.substr(0, text.find_last_not_of('*') + 1));
}

DataLableType GeneratedHost::GetTypeDescription(std::string typeName, bool* unknown) {
  Enter("GetTypeDescription", typeName);
  Require(!*unknown, "GetTypeDescription: *unknown is false before the call");
  const std::optional<std::size_t> index = TypeCalled(typeName);
  *unknown = !index || (vanishing_ >> *index & 1U) != 0;
  return *unknown ? DataLableType() : types_[*index];
}

std::uint64_t GeneratedHost::FindLabel(const char* text, bool* undefined, bool* confirmed) {
  Enter("FindLabel", text);
  Require(!*undefined && !*confirmed, "FindLabel: both flags are false before the call");
  Require(!LabelTyped, "FindLabel: LabelTyped is false before the call");
  const std::string name = WithoutBlankMarks(text);
  const std::size_t start = std::min(name.find_first_not_of('*'), name.size());
  const std::string_view plain = std::string_view(name).substr(start);
  const auto found = std::find(kLabelNames.begin(), kLabelNames.end(), plain);
  const auto index = static_cast<std::size_t>(found - kLabelNames.begin());
  LabelEntry label;
  if (index < labels_.size()) {
    label = labels_[index];
  } else if (const std::optional<std::uint64_t> numeral = testsupport::ReadNumeral(plain)) {
    label = {*numeral, typedNumerals_ && !types_.empty() ? std::size_t{1} : 0};
  } else {
    *undefined = true;
  }
  *confirmed = label.value % 2 == 0;
  if (label.type != 0) {
    LabelTyped = true;
    LabelType = types_[label.type - 1];
  }
  return label.value;
}

void GeneratedHost::Reserved() {
  Require(false, "the reserved operation is never called");
}

void GeneratedHost::ReadMemory(std::uint64_t first, std::uint64_t last, std::uint16_t memorySpace,
                               std::uint8_t one, std::string* text, std::uint32_t count,
                               bool isFloat, bool isDouble) {
  Enter("ReadMemory", {}, {first, memorySpace, isFloat ? 1U : 0U, isDouble ? 1U : 0U});
  Require(accessSize >= 1 && accessSize <= 8, "ReadMemory: accessSize is 1 to 8");
  Require(first == last && one == 1 && count == 1, "ReadMemory: one object is asked for");
  Require(memorySpace <= 1, "ReadMemory: the memory space is 0 or 1");
  Require(text->empty(), "ReadMemory: *text is empty before the call");
  Require((refused_ >> (first % 8) & 1U) == 0, "ReadMemory: the address was approved");
  *text = memory_.empty() ? std::to_string(first) : memory_[(first + memorySpace) % memory_.size()];
}

}  // namespace fuzzing

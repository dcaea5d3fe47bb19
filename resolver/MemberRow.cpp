#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>

#include "resolver/Owed.h"
#include "resolver/StringParametersResolving.h"

namespace {

constexpr int kAccessRow = 1;
constexpr int kMergeRow = 3;

/// A field's name to look for. Names of a structure's fields are alike at their start: the last two
/// characters tell most apart. A name of one character has its terminator for the second.
class Sought {
 public:
  explicit Sought(std::string_view name)
      : name_(name), tailAt_(name.size() < sizeof(Tail) ? 0 : name.size() - sizeof(Tail)) {
    if (!name.empty()) std::memcpy(&tail_, name.data() + tailAt_, sizeof tail_);
  }
  bool operator==(const std::string& other) const {
    if (other.size() != name_.size()) return false;
    if (name_.empty()) return true;
    Tail tail = 0;
    std::memcpy(&tail, other.data() + tailAt_, sizeof tail);
    return tail == tail_ && std::memcmp(other.data(), name_.data(), name_.size()) == 0;
  }

 private:
  using Tail = std::uint16_t;

  std::string_view name_;
  std::size_t tailAt_;
  Tail tail_ = 0;
};

bool HasInside(const DataLableType& member) {
  return !member.Members.empty() || !member.NestedTypes.empty();
}

/// The first of the members that is called so, or has an inside that may be searched; `end` if none
/// is. On its own because the search is most of what a field of a large structure takes: twelve
/// instructions for each field that is passed.
[[gnu::noinline]] const DataLableType* NextCandidate(const DataLableType* member,
                                                     const DataLableType* end,
                                                     const std::string& name) {
  const Sought sought(name);
  while (member != end && !HasInside(*member) && !(sought == member->Name)) ++member;
  return member;
}

}  // namespace

int TStringResolver::FoldMember(AreaBlock* left, AreaBlock* right, int relation, int row) {
  switch (relation) {
    case kMember:
    case kPointerMember:
      if (row != kAccessRow) return kPairNotMine;
      left->MemberBlock = right;
      if (left->OwesPointer) {
        left->OwesPointer = false;
      } else if (left->Type.IsAddress) {
        left->Type.Assign(FirstMember(left->Type));
      }
      if (relation == kPointerMember) {
        // The member of a pointer that cannot be read is sought from the pointer's own address.
        ReadThroughAddress(left);
        left->ReferenceLevel += 1;
      }
      if (!SelectMember(left)) return kPairFailed;
      break;
    case kTypeMerge:
      if (row != kMergeRow) return kPairNotMine;
      MergeTypes(left, right);
      break;
    default:
      return kPairNotMine;
  }
  right->IsConsumed = true;
  return kPairFolded;
}

/// Gives the left block the type of whichever of the two has one, and the value of the last
/// resolution.
void TStringResolver::MergeTypes(AreaBlock* left, AreaBlock* right) {
  resolver::WriteOwedPointer(left);
  resolver::WriteOwedPointer(right);
  if (right->Type != defaultType) {
    left->Type.Assign(left->Type != defaultType ? defaultType : right->Type);
  }
  left->Value = resultValue;
  resolver::OweNumber(resultValue, left);
  left->MemorySpace |= right->MemorySpace;
}

/// Moves the block to the member that its `MemberBlock` names.
bool TStringResolver::SelectMember(AreaBlock* block) {
  if (!IndexBlock(block)) return false;
  if (resolver::IsAddress(*block)) ReadThroughAddress(block);
  if (block->MemberBlock == nullptr) {
    return Fail("Internal error. The needed structure field isn`t specified");
  }
  const AreaBlock& nameBlock = *block->MemberBlock;
  DataLableType* const type = &block->Type;
  bool found = SearchMembers(*type, nameBlock.AreaText, type);
  if (!found) {
    for (const std::string& nested : std::as_const(type->NestedTypes)) {
      bool unknown = false;
      const DataLableType full = parentInterface->GetTypeDescription(nested, &unknown);
      if (unknown) return Fail("Unknown type: ", nested);
      found = SearchMembers(full, nameBlock.AreaText, type);
      // The list that was walked is gone.
      if (found) break;
    }
  }
  if (!found) return Fail("The specified field isn`t found in structure of type");

  block->Value += type->Offset;
  resolver::OweNumber(block->Value, block);
  resolver::OwePointer(block);
  block->AfterText += nameBlock.AfterText;
  return true;
}

/// Walks the members in order, each one's own name before its inside: a name inside an earlier
/// member comes before the same name later in the list.
bool TStringResolver::SearchMembers(const DataLableType& type, const std::string& name,
                                    DataLableType* found) {
  const DataLableType* member = type.Members.begin();
  const DataLableType* const end = type.Members.end();
  for (; (member = NextCandidate(member, end, name)) != end; ++member) {
    if (member->Name == name) {
      found->Assign(*member);
      return true;
    }
    if (RecusivlyCheckForStructFealds(member, name, found)) return true;
  }
  return false;
}

bool TStringResolver::RecusivlyCheckForStructFealds(const DataLableType* type,
                                                    const std::string& name, DataLableType* found) {
  const Sought sought(name);
  const auto findIn = [&](const SharedList<DataLableType>& members) {
    for (const DataLableType& member : members) {
      if (!(sought == member.Name)) continue;
      found->Assign(member);
      return true;
    }
    return false;
  };
  if (findIn(type->Members)) return true;
  for (const std::string& nested : type->NestedTypes) {
    bool unknown = false;
    const DataLableType description = parentInterface->GetTypeDescription(nested, &unknown);
    if (unknown) return Fail("Unknown type: ", nested);
    if (findIn(description.Members)) return true;
  }
  return false;
}

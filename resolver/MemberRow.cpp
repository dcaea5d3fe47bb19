#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>

#include "resolver/Owed.h"
#include "resolver/StringParametersResolving.h"

namespace {

constexpr int kAccessRow = 1;
constexpr int kMergeRow = 3;

/// A field's name to look for. Names of a structure's fields are alike at their start: the last
/// character tells most apart, which halves the time in a structure of 500 fields.
class Sought {
 public:
  explicit Sought(const std::string& name) : name_(name), last_(name.c_str()[Last(name)]) {}
  bool operator==(const std::string& other) const {
    return other.size() == name_.size() && other.c_str()[Last(name_)] == last_ &&
           std::memcmp(other.data(), name_.data(), name_.size()) == 0;
  }

 private:
  /// An empty name ends with its terminator.
  static std::size_t Last(std::string_view name) { return name.size() - (name.empty() ? 0 : 1); }

  std::string_view name_;
  char last_;
};

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
  const Sought sought(name);
  for (const DataLableType& member : type.Members) {
    if (sought == member.Name) {
      found->Assign(member);
      return true;
    }
    const bool hasInside = !member.Members.empty() || !member.NestedTypes.empty();
    if (hasInside && RecusivlyCheckForStructFealds(&member, name, found)) return true;
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

#include <string>
#include <utility>

#include "resolver/StringParametersResolving.h"
#include "resolver/ValueText.h"

namespace {

constexpr int kAccessRow = 1;
constexpr int kMergeRow = 3;

/// Names of a structure's fields are alike at their start: the last character tells most apart,
/// which halves the time in a structure of 500 fields.
bool SameName(const std::string& a, const std::string& b) {
  return a.size() == b.size() && (a.empty() || (a.back() == b.back() && a == b));
}

}  // namespace

int TStringResolver::FirstRaw(AreaBlock* left, AreaBlock* right, int relation, int row) {
  switch (relation) {
    case kMember:
    case kPointerMember:
      if (row != kAccessRow) return kPairNotMine;
      left->MemberBlock = right;
      if (left->Type.IsAddress) ReplaceByFirstMember(&left->Type);
      if (relation == kPointerMember) {
        // The member of a pointer that cannot be read is sought from the pointer's own address.
        ReadThroughAddress(left);
        left->ReferenceLevel += 1;
      }
      if (!ProcessLocationAreaAsMember(left)) return kPairFailed;
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
void TStringResolver::MergeTypes(AreaBlock* left, const AreaBlock* right) {
  if (right->Type != defaultType) {
    left->Type.Assign(left->Type != defaultType ? defaultType : right->Type);
  }
  left->Value = resultValue;
  resolver::WriteUnsigned(resultValue, &left->AreaText);
  left->MemorySpace |= right->MemorySpace;
}

bool TStringResolver::ProcessLocationAreaAsMember(AreaBlock* block) {
  if (!SolveSquareBracets(block)) return false;
  if (block->Type.IsAddress) ReadThroughAddress(block);
  if (block->MemberBlock == nullptr) {
    return Fail("Internal error. The needed structure field isn`t specified");
  }
  const AreaBlock& nameBlock = *block->MemberBlock;
  DataLableType member;
  bool found = SearchMembers(block->Type, nameBlock.AreaText, &member);
  for (const std::string& nested : std::as_const(block->Type).NestedTypes) {
    if (found) break;
    bool unknown = false;
    const DataLableType type = parentInterface->GetTypeDescription(nested, &unknown);
    if (unknown) return Fail("Unknown type: ", nested);
    found = SearchMembers(type, nameBlock.AreaText, &member);
  }
  if (!found) return Fail("The specified field isn`t found in structure of type");

  block->Value += member.Offset;
  resolver::WriteUnsigned(block->Value, &block->AreaText);
  block->Type.PointTo(std::move(member));
  block->Type.IsAddress = true;
  block->AfterText += nameBlock.AfterText;
  return true;
}

/// Walks the members in order, each one's own name before its inside: a name inside an earlier
/// member comes before the same name later in the list.
bool TStringResolver::SearchMembers(const DataLableType& type, const std::string& name,
                                    DataLableType* found) {
  for (const DataLableType& member : type.Members) {
    if (SameName(member.Name, name)) {
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
  const auto findIn = [&](const SharedList<DataLableType>& members) {
    for (const DataLableType& member : members) {
      if (!SameName(member.Name, name)) continue;
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

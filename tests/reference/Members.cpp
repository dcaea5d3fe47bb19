#include <string>

#include "tests/reference/Resolver.h"
#include "tests/reference/Values.h"

namespace reference {

int Resolver::FirstRaw(AreaBlock* left, AreaBlock* right, int relation, int row) {
  if (relation == 7) {
    if (row != 1) return 1;
    left->MemberBlock = right;
    if (left->Type.IsAddress) left->Type = FirstMember(left->Type);
    bool space = false;
    MoveFromPointerToObject(left, &space);
    left->ReferenceLevel += 1;
    if (!ProcessLocationAreaAsMember(left)) return 0;
    right->IsConsumed = true;
    return 2;
  }
  if (relation == 6) {
    if (row != 1) return 1;
    left->MemberBlock = right;
    if (left->Type.IsAddress) left->Type = FirstMember(left->Type);
    if (!ProcessLocationAreaAsMember(left)) return 0;
    right->IsConsumed = true;
    return 2;
  }
  if (relation == 10) {
    if (row != 3) return 1;
    const bool leftDiffers = left->Type != defaultType;
    const bool rightDiffers = right->Type != defaultType;
    if (leftDiffers && rightDiffers) {
      left->Type = defaultType;
    } else if (rightDiffers) {
      left->Type = right->Type;
    }
    left->AreaText = WriteNumber(resultValue);
    left->Value = resultValue;
    left->MemorySpace = right->MemorySpace | left->MemorySpace;
    right->IsConsumed = true;
    return 2;
  }
  return 1;
}

bool Resolver::ProcessLocationAreaAsMember(AreaBlock* block) {
  if (!SolveSquareBracets(block)) return false;
  if (block->Type.IsAddress) {
    bool space = false;
    MoveFromPointerToObject(block, &space);
  }
  if (block->MemberBlock == nullptr) {
    return Fail("Internal error. The needed structure field isn`t specified");
  }

  const std::string name = block->MemberBlock->AreaText;
  DataLableType structure = block->Type;
  DataLableType field;
  bool found = false;
  // Each member's own name first, then its inside, before the next member.
  const auto searchMembers = [&](DataLableType& type) {
    for (DataLableType& member : type.Members) {
      if (found) break;
      if (member.Name == name) {
        field = member;
        found = true;
      } else {
        found = RecusivlyCheckForStructFealds(&member, name, &field);
      }
    }
  };
  searchMembers(structure);
  if (!found) {
    for (const std::string& nestedName : structure.NestedTypes) {
      if (found) break;
      bool unknown = false;
      DataLableType nested = parentInterface->GetTypeDescription(nestedName, &unknown);
      if (unknown) return Fail("Unknown type: " + nestedName);
      searchMembers(nested);
    }
  }
  if (!found) return Fail("The specified field isn`t found in structure of type");

  block->Type = field;
  block->Value += field.Offset;
  block->AreaText = WriteNumber(block->Value);
  block->Type = block->Type.FormPointer();
  block->Type.IsAddress = true;
  block->AfterText += block->MemberBlock->AfterText;
  return true;
}

bool Resolver::RecusivlyCheckForStructFealds(DataLableType* type, std::string name,
                                             DataLableType* found) {
  for (const DataLableType& member : type->Members) {
    if (member.Name == name) {
      *found = member;
      return true;
    }
  }
  if (type->NestedTypes.empty()) return false;
  for (const std::string& nestedName : type->NestedTypes) {
    bool unknown = false;
    const DataLableType nested = parentInterface->GetTypeDescription(nestedName, &unknown);
    if (unknown) return Fail("Unknown type: " + nestedName);
    for (const DataLableType& member : nested.Members) {
      if (member.Name == name) {
        *found = member;
        return true;
      }
    }
  }
  return false;
}

}  // namespace reference

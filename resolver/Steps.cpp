// The steps of a resolution as debugging aids call them: on blocks of theirs, which own all of
// their texts and types before and after.

#include "resolver/Owed.h"
#include "resolver/StringParametersResolving.h"

bool TStringResolver::SolveBasicElement(std::string_view element) {
  const bool solved = SolveElement(element);
  for (AreaBlock& block : areaBlocks) resolver::WriteOwed(&block);
  return solved;
}

bool TStringResolver::ProcessBasicBlocksRelations(std::list<AreaBlock>* blocks) {
  const bool solved = EvaluateBlocks(blocks);
  for (AreaBlock& block : *blocks) resolver::WriteOwed(&block);
  return solved;
}

bool TStringResolver::ZeroRaw(AreaBlock* block) {
  const bool done = EvaluateOperand(block);
  resolver::WriteOwed(block);
  return done;
}

int TStringResolver::FirstRaw(AreaBlock* left, AreaBlock* right, int relation, int row) {
  const int result = FoldMember(left, right, relation, row);
  resolver::WriteOwed(left);
  return result;
}

bool TStringResolver::SecondRaw(AreaBlock* block) {
  const bool done = ApplyPrefixes(block);
  resolver::WriteOwed(block);
  return done;
}

int TStringResolver::ThirdRawRaw(AreaBlock* left, AreaBlock* right, int relation, int row) {
  const int result = FoldBinary(left, right, relation, row);
  resolver::WriteOwed(left);
  resolver::WriteOwed(right);
  return result;
}

bool TStringResolver::SolveSquareBracets(AreaBlock* block) {
  const bool done = IndexBlock(block);
  resolver::WriteOwed(block);
  return done;
}

bool TStringResolver::ProcessLocationAreaAsMember(AreaBlock* block) {
  const bool done = SelectMember(block);
  resolver::WriteOwed(block);
  return done;
}

bool TStringResolver::MoveFromPointerToObject(AreaBlock* block, bool* spaceFlag) {
  const bool done = ReadThroughAddress(block);
  if (done) *spaceFlag = false;
  resolver::WriteOwed(block);
  return done;
}

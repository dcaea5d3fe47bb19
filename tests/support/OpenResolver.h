#ifndef STRINGRESOLVER_TESTS_SUPPORT_OPENRESOLVER_H
#define STRINGRESOLVER_TESTS_SUPPORT_OPENRESOLVER_H

#include "resolver/StringParametersResolving.h"

namespace testsupport {

/// The resolver with its steps and working state in the open, as a debugging aid would derive it.
class OpenResolver : public TStringResolver {
 public:
  using TStringResolver::TStringResolver;

  using TStringResolver::CheckBeforeRelations;
  using TStringResolver::CheckFloatingPointStr;
  using TStringResolver::FindStringParameter;
  using TStringResolver::FirstRaw;
  using TStringResolver::GetAfterRelations;
  using TStringResolver::GetFirstLexicalBlockStartingFromPos;
  using TStringResolver::MoveFromPointerToObject;
  using TStringResolver::ProcessAreaAsType;
  using TStringResolver::ProcessBasicBlocksRelations;
  using TStringResolver::ProcessBasickTypes;
  using TStringResolver::ProcessLocationAreaAsMember;
  using TStringResolver::ProcessTypeRelations;
  using TStringResolver::RecusivlyCheckForStructFealds;
  using TStringResolver::RegisterType;
  using TStringResolver::RestoreFloatingPointStr;
  using TStringResolver::SecondRaw;
  using TStringResolver::SolveBasicElement;
  using TStringResolver::SolveSquareBracets;
  using TStringResolver::ThirdRawRaw;
  using TStringResolver::ZeroRaw;

  using TStringResolver::areaBlocks;
  using TStringResolver::defaultType;
  using TStringResolver::delimiters;
  using TStringResolver::delimitersWithParentheses;
  using TStringResolver::elementFlag;
  using TStringResolver::parentInterface;
  using TStringResolver::savedTypes;
};

}  // namespace testsupport

#endif  // STRINGRESOLVER_TESTS_SUPPORT_OPENRESOLVER_H

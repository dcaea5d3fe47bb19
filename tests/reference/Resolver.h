#ifndef STRINGRESOLVER_TESTS_REFERENCE_RESOLVER_H
#define STRINGRESOLVER_TESTS_REFERENCE_RESOLVER_H

#include <cstddef>
#include <cstdint>
#include <list>
#include <string>
#include <vector>

#include "host/DataLableType.h"
#include "host/ParrentInterface.h"
#include "model/AreaBlock.h"

namespace reference {

/// The plain reference: the rules at their most literal, for comparison; never optimised.
///
/// One operation per rule, one statement per step of it, in the rule's own order. Operations and
/// fields have the names they have in `TStringResolver`, and everything is public: whoever compares
/// reads it. Where the two differ, one of them is wrong, and this one is the easier to check by
/// reading.
class Resolver {
 public:
  explicit Resolver(TParrentInterface* parent);
  Resolver(const Resolver&) = delete;
  Resolver& operator=(const Resolver&) = delete;

  bool SolveStringOfElements(std::string expression);

  std::uint64_t resultAddress = 0;
  std::uint64_t resultValue = 0;
  float resultFloat = 0;
  std::string errorMessage;
  bool resultMemorySpace = false;
  std::uint64_t resultSize = 0;
  bool resultNegative = false;
  bool resultFloating = false;
  bool allLabelsConfirmed = true;

  TParrentInterface* parentInterface;
  std::list<AreaBlock> areaBlocks;
  std::list<DataLableType> savedTypes;
  DataLableType defaultType;
  bool elementFlag = false;
  std::string delimitersWithParentheses;
  std::string delimiters;

  // Driver.cpp: the order of a resolution.
  bool RewriteSizeofs(std::string* text);
  bool MeasureType(std::string name, std::uint64_t* size);
  void RewriteBrackets(std::string* text);
  bool SolveGroups(std::string* text);
  void SpliceResult(std::string* text, std::size_t position);
  bool ConvertResult(AreaBlock result);

  // TextPasses.cpp: keywords and floating literals.
  void ProcessBasickTypes(std::string* text);
  bool CheckFloatingPointStr(std::string* text);
  bool RestoreFloatingPointStr(std::string* text);
  bool TokenStartsWithDigit(const std::string& text, std::size_t end);

  // Types.cpp: casts, and types of sub-results.
  bool RegisterType(std::string* text);
  bool ProcessAreaAsType(AreaBlock* block, std::string text);
  DataLableType FirstMember(const DataLableType& type);

  // Elements.cpp: an element into blocks.
  bool GetFirstLexicalBlockStartingFromPos(std::string text, std::size_t* pos, std::string* before,
                                           std::string* area, std::string* after);
  bool SolveBasicElement(std::string element);
  bool AttachSubResultTypes(AreaBlock* block);
  bool AddBlock(const AreaBlock& block);

  // Relations.cpp: the operators between blocks, and the order of the rows.
  bool ProcessBasicBlocksRelations(std::list<AreaBlock>* blocks);
  int GetAfterRelations(std::list<AreaBlock>::iterator* it);
  bool CheckBeforeRelations(std::list<AreaBlock>::iterator* it, int relation,
                            std::string afterText);
  bool ProcessTypeRelations(std::list<AreaBlock>::iterator* left,
                            std::list<AreaBlock>::iterator* right, int relation);

  // Operands.cpp: labels, literals, subscripts.
  bool ZeroRaw(AreaBlock* block);
  bool ReadLabel(AreaBlock* block);
  bool ReadLiteral(AreaBlock* block);
  bool FindStringParameter(std::string* source, std::string* collected, const char* open,
                           const char* close);
  bool SolveSquareBracets(AreaBlock* block);
  bool CollectSubscripts(AreaBlock* block, std::vector<std::uint64_t>* subscripts);

  // Members.cpp: "." and "->".
  int FirstRaw(AreaBlock* left, AreaBlock* right, int relation, int row);
  bool ProcessLocationAreaAsMember(AreaBlock* block);
  bool RecusivlyCheckForStructFealds(DataLableType* type, std::string name, DataLableType* found);

  // Unary.cpp: prefix operators.
  bool SecondRaw(AreaBlock* block);
  bool Settle(AreaBlock* block);
  bool ReadOwed(AreaBlock* block);
  bool ReadNow(AreaBlock* block);
  bool Cast(AreaBlock* block);
  void ConvertToCastType(AreaBlock* block);
  bool SizeofOperator(AreaBlock* block);
  bool Minus(AreaBlock* block);
  bool Dereference(AreaBlock* block);
  bool BitwiseNot(AreaBlock* block);
  bool LogicalNot(AreaBlock* block);

  // Binary.cpp: the eleven rows.
  int ThirdRawRaw(AreaBlock* left, AreaBlock* right, int relation, int row);

  // Memory.cpp: the only place that reads target memory.
  bool MoveFromPointerToObject(AreaBlock* block, bool* spaceFlag);

  // The value of a block as text, by its kind.
  std::string ValueAsText(const AreaBlock& block);
  bool Fail(const std::string& message);
};

}  // namespace reference

#endif  // STRINGRESOLVER_TESTS_REFERENCE_RESOLVER_H

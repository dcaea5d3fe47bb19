#ifndef STRINGRESOLVER_RESOLVER_STRINGPARAMETERSRESOLVING_H
#define STRINGRESOLVER_RESOLVER_STRINGPARAMETERSRESOLVING_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <list>
#include <optional>
#include <string>
#include <string_view>

#include "host/DataLableType.h"
#include "host/ParrentInterface.h"
#include "model/AreaBlock.h"

namespace resolver {
class GapText;
}

/// Resolves C-like expressions over the labels, types and target memory that a debugging host
/// knows.
///
/// One object serves any number of resolutions, one at a time, on one thread at a time; distinct
/// objects on distinct hosts are independent. Nothing is thrown but what the host's operations or
/// an exhausted memory throw, and the object stays usable after either.
///
/// docs/LANGUAGE.md describes the expressions, docs/EMBEDDING.md the host's side.
///
/// The protected operations are the steps of a resolution. Debugging aids derive from the class to
/// watch them; none of them is virtual.
class TStringResolver {
 public:
  /// Asks `parent` for its current file's name, which fixes the dialect for the object's life: a
  /// name that holds ".asm" or ".s" anywhere selects assembly ("." belongs to names), any other C
  /// ("." selects a member). `parent` is not owned and must outlive the object.
  explicit TStringResolver(TParrentInterface* parent);
  TStringResolver(const TStringResolver&) = delete;
  TStringResolver& operator=(const TStringResolver&) = delete;
  ~TStringResolver();

  /// Resolves one expression. True: the result fields hold what it denotes. False: `errorMessage`
  /// says why (a few failures leave it as it was), and the result fields keep their values, but for
  /// `resultAddress` and `resultMemorySpace` when only the final read failed.
  bool SolveStringOfElements(std::string_view expression);

  /// The result's value before its final read, cut to its low 32 bits: for an object in target
  /// memory, its address.
  std::uint64_t resultAddress = 0;
  /// The integer result, masked to `resultSize` bytes, the magnitude if `resultNegative`; for a
  /// floating result, `resultFloat` truncated toward zero.
  std::uint64_t resultValue = 0;
  /// The result when `resultFloating`.
  float resultFloat = 0.0F;
  /// The message of the last failure; not cleared by a success.
  std::string errorMessage;
  /// The result lies in the memory space that "#" selects.
  bool resultMemorySpace = false;
  /// Size of the result in bytes: its type's when that is known, else 8.
  std::uint64_t resultSize = 0;
  /// The integer result is negative and `resultValue` holds its magnitude.
  bool resultNegative = false;
  /// The result is floating.
  bool resultFloating = false;
  /// Every label looked up in this object's life was confirmed by the host.
  bool allLabelsConfirmed = true;

 protected:
  // The element parser: ElementParser.cpp.

  /// Cuts `element`, a text without parentheses, into `areaBlocks` and evaluates them; the front
  /// block is then the result. `element` must not be a text of `areaBlocks`.
  bool SolveBasicElement(std::string_view element);
  /// Appends the next operand of `text` at `*pos` to `*area`, the operator characters around it to
  /// `*before` and `*after`, and moves `*pos` (to `std::string::npos` after the last operand).
  bool GetFirstLexicalBlockStartingFromPos(std::string_view text, unsigned long* pos,
                                           std::string* before, std::string* area,
                                           std::string* after);
  /// Links the blocks of a non-empty list by relation codes and runs the precedence rows over them.
  bool ProcessBasicBlocksRelations(std::list<AreaBlock>* blocks);
  /// The relation code of the operator in the block's `AfterText`, which is cleared if recognised.
  int GetAfterRelations(std::list<AreaBlock>::iterator* it);
  /// Stores `relation` in the block and removes the operator's characters from its `BeforeText`.
  bool CheckBeforeRelations(std::list<AreaBlock>::iterator* it, int relation,
                            const std::string& afterText);
  /// Folds a block that carries only a type into its right neighbour. Always true.
  bool ProcessTypeRelations(std::list<AreaBlock>::iterator* left,
                            std::list<AreaBlock>::iterator* right, int relation);

  // The evaluation rows. A pair row returns 0 for failure, 1 when the pair is not its own, 2 when
  // `right` was folded into `left`.

  /// Gives an operand its value and type: OperandRow.cpp.
  bool ZeroRaw(AreaBlock* block);
  /// Member access: MemberRow.cpp.
  int FirstRaw(AreaBlock* left, AreaBlock* right, int relation, int row);
  /// Prefix operators: UnaryRow.cpp.
  bool SecondRaw(AreaBlock* block);
  /// Binary operators, rows 1 to 11: BinaryRows.cpp.
  int ThirdRawRaw(AreaBlock* left, AreaBlock* right, int relation, int row);

  /// Moves every top-level group from an `open` to its `close` character out of `*source` to the
  /// front of `*collected`.
  bool FindStringParameter(std::string* source, std::string* collected, const char* open,
                           const char* close);
  /// Applies the subscripts in the block's `AfterText`: SquareBrackets.cpp.
  bool SolveSquareBracets(AreaBlock* block);
  /// Moves the block to the member that its `MemberBlock` names.
  bool ProcessLocationAreaAsMember(AreaBlock* block);
  /// Looks for `name` in `type`'s members and in those of its nested types.
  bool RecusivlyCheckForStructFealds(const DataLableType* type, const std::string& name,
                                     DataLableType* found);

  /// Replaces an address by the object stored there: TargetMemory.cpp. `*spaceFlag` becomes false.
  bool MoveFromPointerToObject(AreaBlock* block, bool* spaceFlag);

  // Types of casts and sub-results: TypeCasts.cpp.

  /// Saves the type that `*text` names and replaces the text by its encoded cast. True means that
  /// the host did NOT know the type.
  bool RegisterType(std::string* text);
  /// Gives `block` the saved type whose position follows the first byte of `text`.
  bool ProcessAreaAsType(AreaBlock* block, std::string_view text);

  // Text passes: TextNormalisation.cpp. The two that return a value return false always.

  /// Keeps the words of multi-word basic type names together.
  void ProcessBasickTypes(std::string* text);
  /// Hides decimal points and exponent signs of floating literals from the lexer.
  bool CheckFloatingPointStr(std::string* text);
  /// Undoes `CheckFloatingPointStr`.
  bool RestoreFloatingPointStr(std::string* text);

  /// The host; not owned.
  TParrentInterface* parentInterface;
  /// The blocks of the element under evaluation.
  std::list<AreaBlock> areaBlocks;
  /// Types of sub-results and casts; the rewritten text refers to them by position, so the list
  /// only grows during the object's life.
  std::list<DataLableType> savedTypes;
  /// The type of operands that the host did not type: 8 bytes, unsigned.
  DataLableType defaultType;
  /// Cleared at the start of every element.
  bool elementFlag = false;
  /// NUL-terminated set of the dialect's operator characters and markers, with "(" and ")"; an
  /// array of 21 bytes in this object. A copy for debugging aids: writing to it changes nothing.
  char* delimitersWithParentheses;
  /// The same without "(" and ")"; 19 bytes.
  char* delimiters;

 private:
  /// What the pair rows return.
  static constexpr int kPairFailed = 0;
  static constexpr int kPairNotMine = 1;
  static constexpr int kPairFolded = 2;
  /// An entry of `savedTypes` and its position.
  struct SavedTypeFinger {
    static constexpr std::uint64_t kNowhere = ~std::uint64_t{0};
    std::uint64_t position = kNowhere;
    std::list<DataLableType>::iterator entry;
  };
  struct DelimiterSets {
    std::array<char, 21> withParentheses{};
    std::array<char, 19> without{};

    static const DelimiterSets& Of(bool assembly);
  };
  /// An address with the object that is read from it.
  struct Location {
    std::uint64_t value;
    std::uint8_t space;
    std::uint32_t kind;
    float single;
    double full;
  };
  class Subscripts;
  class Resolution;

  /// As the public one, when the current file's name is known.
  TStringResolver(TParrentInterface* parent, std::string_view fileName);

  // Each of these is documented where it is defined, and belongs to one source.
  bool RewriteSizeofs(std::string_view text, std::string* rewritten);
  static void ProtectPoints(std::string* text);
  void ProtectSignedExponents(std::string* text);
  bool SolveGroups(std::string_view expression, unsigned classes);
  bool SolveSubscripted(std::string_view expression);
  bool PutCast(std::string* group, std::optional<std::uint64_t> number, resolver::GapText* text);
  bool SolveGroup(const std::string& group, std::optional<std::uint64_t>* number);
  void PutSubResult(std::optional<std::uint64_t> number, bool isSubscript, resolver::GapText* text);
  bool SolvePrefixed(std::string_view operators);
  bool Resolve(std::string_view expression);
  bool SolveElement(std::string_view element);
  bool StoreResult(AreaBlock* element);
  bool StoreObject(const AreaBlock& location);
  bool StoreSize(const AreaBlock& result, const DataLableType& type);
  void StoreInteger(std::uint64_t integer, bool isSigned);
  void StoreFloating(float value);
  bool Fail(std::string_view message);
  bool Fail(std::string_view message, std::string_view detail);
  [[nodiscard]] const DataLableType& FirstMember(const DataLableType& type) const;
  DataLableType DescribeType(std::string* name, bool* unknown);
  const DataLableType* SavedType(std::uint64_t position);
  DataLableType& AddSavedType();

  AreaBlock& PutBlock(std::string_view operand);
  AreaBlock& PutNumber(std::uint64_t number);
  AreaBlock& PrepareBlock(std::list<AreaBlock>::iterator* next);
  AreaBlock& PrepareSpareBlock();
  void SpareBlocks(std::list<AreaBlock>::iterator first);
  void ResetBlock(AreaBlock* block);
  bool TakeSavedTypes(AreaBlock* block);
  bool AddSpareBlock();
  void SpareBlock(std::list<AreaBlock>* blocks, std::list<AreaBlock>::iterator it);
  bool CutElement(std::string_view element);
  bool CutPlainElement(std::string_view element, std::uint32_t* rows);
  bool EvaluateBlocks(std::list<AreaBlock>* blocks);
  bool RunRows(std::list<AreaBlock>* blocks, std::uint32_t rows);
  bool LinkBlocks(std::list<AreaBlock>* blocks, std::uint32_t* rows);
  bool FoldMembers(std::list<AreaBlock>* blocks);
  bool FoldOperators(std::list<AreaBlock>* blocks, std::uint32_t rows);

  // The rows, between which blocks may owe what `Owed.h` says; the steps above write it.
  bool EvaluateOperand(AreaBlock* block);
  int FoldMember(AreaBlock* left, AreaBlock* right, int relation, int row);
  bool ApplyPrefixes(AreaBlock* block);
  int FoldBinary(AreaBlock* left, AreaBlock* right, int relation, int row);
  bool IndexBlock(AreaBlock* block);
  bool SelectMember(AreaBlock* block);

  void MoveToSecondSpace(AreaBlock* block);
  void ForgetLabelType();
  std::uint64_t AskForLabel(const char* text, bool* undefined);
  bool LookUpLabel(AreaBlock* block);
  bool SolvePlainOperand(const std::string& operand, std::optional<std::uint64_t>* number);
  void ReadFloatingLiteral(AreaBlock* block);
  void TypeOperand(AreaBlock* block);
  bool SplitSubscripts(AreaBlock* block);
  bool ApplySubscripts(AreaBlock* block);
  bool SolvePlainSubscript(const char* subscript, Subscripts* subscripts);
  bool SolveSubscript(std::string_view subscript, Subscripts* subscripts);
  bool SolveSubscripts(std::string* text, Subscripts* subscripts);
  bool SearchMembers(const DataLableType& type, const std::string& name, DataLableType* found);
  void MergeTypes(AreaBlock* left, AreaBlock* right);

  bool Settle(AreaBlock* block);
  bool ReadPending(AreaBlock* block);
  bool ReadOperand(AreaBlock* block);
  bool ApplyCast(AreaBlock* block);
  void ApplySizeof(AreaBlock* block);
  bool ApplyMinus(AreaBlock* block);
  bool ApplyNot(AreaBlock* block, const char* floatingMessage);
  bool ApplyDereference(AreaBlock* block);
  void FetchOperands(AreaBlock* left, AreaBlock* right);
  bool ScalePointerOffset(AreaBlock* left, AreaBlock* right, std::uint64_t* leftValue,
                          std::uint64_t* rightValue);

  [[nodiscard]] const DataLableType& ObjectType(const DataLableType& location) const;
  bool ReadLocation(const DataLableType& object, Location* at, std::string* text);
  bool ReadThroughAddress(AreaBlock* block);

  DelimiterSets delimiterSets_;
  /// The dialect's bit among the character classes.
  unsigned delimiterClass_;
  /// The text under resolution.
  std::string text_;
  /// Blocks out of use; the first ones are the next to be used.
  std::list<AreaBlock> spareBlocks_;
  /// The saved type last looked up; null outside of a resolution.
  SavedTypeFinger* finger_ = nullptr;
  /// How many resolvers this one is nested in.
  int nesting_ = 0;
};

#endif  // STRINGRESOLVER_RESOLVER_STRINGPARAMETERSRESOLVING_H

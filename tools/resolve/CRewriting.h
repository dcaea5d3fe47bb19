#ifndef STRINGRESOLVER_TOOLS_RESOLVE_CREWRITING_H
#define STRINGRESOLVER_TOOLS_RESOLVE_CREWRITING_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/resolve/CMeaning.h"
#include "tools/resolve/CTree.h"
#include "tools/resolve/NoteTable.h"
#include "tools/resolve/ResolutionLog.h"

namespace tool {

/// Walks an expression as C reads it, finds where the resolver does otherwise, and writes a text
/// that should mean here what the expression means in C.
class CRewriting {
 public:
  /// All are borrowed. `failed`: the resolver could not resolve the expression. `numbersOnly`: a
  /// bit-field as the result is the resolver's number, too.
  CRewriting(std::string_view text, CReading& reading, targets::LabelSource& labels,
             const ResolutionLog& log, bool failed, bool numbersOnly)
      : text_(text),
        reading_(reading),
        labels_(labels),
        log_(log),
        failed_(failed),
        numbersOnly_(numbersOnly) {}

  /// The new text: the expression itself where nothing had to change.
  std::string Rewrite(const CNode& root);

  /// What `Rewrite` met, each once, outer ones first.
  [[nodiscard]] const std::vector<Difference>& Met() const { return met_; }

 private:
  /// A text and how tightly its outermost operator binds.
  struct Piece {
    std::string text;
    int level = 0;
  };
  /// Where a node stands: the operator that takes it as an operand, parentheses left out.
  struct Place {
    const CNode* parent = nullptr;
    bool isRight = false;
  };
  /// A number's type as the resolver has it.
  struct Held {
    bool floating = false;
    std::uint64_t size = 8;
    bool isSigned = false;
  };
  using Fix = std::optional<Piece>;

  Held HeldBy(const CNode& node);
  [[nodiscard]] std::string Source(const CNode& node) const;
  Piece Write(const CNode& node, const Place& place);
  std::string Operand(const CNode& node, const Place& place, int level);
  Piece Unchanged(const CNode& node, const Place& place);
  Fix Replace(const CNode& node, const Place& place);
  void Meet(Difference difference);

  Fix FixUnary(const CNode& node, const Place& place);
  Fix FixUnaryBeforeSubscript(const CNode& node, const CNode& index);
  Fix FixIndex(const CNode& node);
  Fix FixCutRow(const CNode& node);
  Fix FixArrow(const CNode& node);
  Fix FixBitField(const CNode& node, const Place& place);
  Fix FixCast(const CNode& node, const Place& place);
  Fix FixSizeof(const CNode& node);
  Fix FixBinary(const CNode& node, const Place& place);
  Fix FixPointers(const CNode& node);
  Fix FixComparison(const CNode& node);
  Fix FixLogic(const CNode& node);
  Fix FixArithmetic(const CNode& node, const Place& place);
  Fix FixSign(const CNode& node, const Place& place);
  Fix FixGroup(const CNode& node, const Place& place);
  Fix FixUnknownToTheResolver(const CNode& node);

  std::string PointerOperand(const CNode& node, const CNode& parent);
  std::string SizeText(const CType& type);

  std::string_view text_;
  CReading& reading_;
  targets::LabelSource& labels_;
  const ResolutionLog& log_;
  bool failed_;
  bool numbersOnly_;
  std::vector<Difference> met_;
};

}  // namespace tool

#endif  // STRINGRESOLVER_TOOLS_RESOLVE_CREWRITING_H

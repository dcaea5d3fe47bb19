#include "tools/resolve/Completion.h"

#include <algorithm>
#include <utility>

#include "targets/Error.h"
#include "tools/resolve/ExpressionText.h"
#include "tools/resolve/MemberType.h"

namespace tool {
namespace {

constexpr std::string_view kBlanks = " \t";

std::size_t FirstNonBlank(std::string_view text, std::size_t from) {
  return std::min(text.find_first_not_of(kBlanks, from), text.size());
}

std::string_view WithoutBlanksBehind(std::string_view text) {
  return text.substr(0, text.find_last_not_of(kBlanks) + 1);
}

std::string CommonStart(const std::string& a, const std::string& b) {
  const auto end = std::mismatch(a.begin(), a.end(), b.begin(), b.end()).first;
  return {a.begin(), end};
}

/// The candidates among `names` that begin with `word`, which starts at `start`.
Completions Choose(const NameIndex& names, std::string_view word, std::size_t start) {
  const NameIndex::Range range = names.BeginningWith(word);
  Completions found{
      .start = start, .candidates = {}, .count = range.last - range.first, .common = {}};
  if (found.count == 0) return found;
  for (std::size_t n = range.first; n < range.last && n - range.first < kMostCandidates; ++n) {
    found.candidates.push_back(names[n]);
  }
  // What the first and the last of sorted names share, those between share as well.
  found.common = CommonStart(names[range.first], names[range.last - 1]);
  return found;
}

/// Both sets of candidates, which begin at the same place.
Completions Join(Completions first, Completions second) {
  if (first.count == 0) return second;
  if (second.count == 0) return first;
  first.candidates.insert(first.candidates.end(),
                          std::make_move_iterator(second.candidates.begin()),
                          std::make_move_iterator(second.candidates.end()));
  std::sort(first.candidates.begin(), first.candidates.end());
  if (first.candidates.size() > kMostCandidates) first.candidates.resize(kMostCandidates);
  first.count += second.count;
  first.common = CommonStart(first.common, second.common);
  return first;
}

/// Can `name` stand in an expression? Some of C++ and of compilers cannot.
bool CanBeTyped(std::string_view name, bool withPoints) {
  return !name.empty() && std::all_of(name.begin(), name.end(), [&](char c) {
    return IsNameCharacter(c) || (withPoints && c == '.');
  });
}

/// The words behind the last parenthesis of `text` if it holds nothing else: what may become a
/// cast, or the type in a `sizeof`. From where it starts in `text`.
std::optional<std::size_t> StartOfGroup(std::string_view text) {
  std::size_t at = text.size();
  while (at > 0 && (IsNameCharacter(text[at - 1]) || kBlanks.find(text[at - 1]) != kBlanks.npos)) {
    --at;
  }
  if (at == 0 || text[at - 1] != '(') return std::nullopt;
  return FirstNonBlank(text, at);
}

}  // namespace

Completions Completer::Complete(std::string_view text) {
  const std::size_t start = FirstNonBlank(text, 0);
  if (start < text.size() && text[start] == kCommandMark) return CompleteCommand(text);
  return CompleteExpression(text, start);
}

void Completer::Forget() {
  labels_.reset();
  types_.reset();
}

Completions Completer::CompleteCommand(std::string_view text) {
  const std::size_t start = text.find(kCommandMark) + 1;
  const std::size_t end = text.find_first_of(kBlanks, start);
  if (end == text.npos) {
    NameIndex names;
    for (const CommandDescription& command : PromptCommands()) names.Add(command.name);
    names.Sort();
    return Choose(names, text.substr(start), start);
  }
  const CommandDescription* command = FindCommand(text.substr(start, end - start));
  if (command == nullptr) return {};
  return CompleteArgument(command->argument, text, FirstNonBlank(text, end));
}

Completions Completer::CompleteArgument(ArgumentKind kind, std::string_view text,
                                        std::size_t start) {
  const std::string_view word = text.substr(start);
  switch (kind) {
    case ArgumentKind::kNothing:
      return {};
    case ArgumentKind::kExpression:
      return CompleteExpression(text, start);
    case ArgumentKind::kLabelPattern:
      return Choose(Labels(), word, start);
    case ArgumentKind::kTypePattern:
    case ArgumentKind::kType:
      return Choose(Types(), word, start);
    case ArgumentKind::kCommand:
    case ArgumentKind::kFile:
    case ArgumentKind::kFormat:
      break;
  }
  NameIndex names;
  if (kind == ArgumentKind::kFile) {
    for (const std::string& file : target_.SourceFiles()) {
      // A trailing part of the path is enough to name a file, and what people type.
      names.Add(file.substr(file.rfind('/') + 1));
      if (!word.empty() && file.starts_with(word)) names.Add(file);
    }
  } else if (kind == ArgumentKind::kCommand) {
    for (const CommandDescription& command : PromptCommands()) names.Add(command.name);
  } else {
    for (const std::string& name : LongFormatNames()) names.Add(name);
  }
  names.Sort();
  return Choose(names, word, start);
}

Completions Completer::CompleteExpression(std::string_view text, std::size_t start) {
  const bool points = target_.Labels().CurrentFileIsAssembly();
  std::size_t word = text.size();
  while (word > start && (IsNameCharacter(text[word - 1]) || (points && text[word - 1] == '.'))) {
    --word;
  }
  const std::string_view name = text.substr(word);
  const std::string_view before = WithoutBlanksBehind(text.substr(start, word - start));
  if (auto members = CompleteMember(before, name)) {
    members->start = word;
    return *std::move(members);
  }
  const bool numeral = !name.empty() && name.front() >= '0' && name.front() <= '9';
  if (numeral) return {};
  const std::optional<std::size_t> group = StartOfGroup(text);
  if (!group) return Choose(Labels(), name, word);
  Completions types = Choose(Types(), text.substr(*group), *group);
  return *group == word ? Join(Choose(Labels(), name, word), std::move(types)) : types;
}

/// Nothing when `before` does not end in the operator of a member.
std::optional<Completions> Completer::CompleteMember(std::string_view before,
                                                     std::string_view name) {
  MemberAccess access = MemberAccess::kPoint;
  if (before.ends_with("->")) {
    access = MemberAccess::kArrow;
    before.remove_suffix(2);
  } else if (before.ends_with('.')) {
    before.remove_suffix(1);
  } else {
    return std::nullopt;
  }
  NameIndex names;
  const std::string operand = last_.InsertForCompletion(before);
  for (const std::string& member : MembersBehind(target_.Labels(), operand, access)) {
    names.Add(member);
  }
  names.Sort();
  return Choose(names, name, 0);
}

const NameIndex& Completer::Labels() {
  if (!labels_) {
    labels_.emplace();
    const bool points = target_.Labels().CurrentFileIsAssembly();
    try {
      target_.Labels().VisitLabelNames([&](std::string_view name) {
        if (CanBeTyped(name, points)) labels_->Add(name);
      });
    } catch (const targets::Error&) {
      // What could be read is there; an expression that misses the rest is told why.
    }
    labels_->Sort();
  }
  return *labels_;
}

const NameIndex& Completer::Types() {
  if (!types_) {
    types_.emplace();
    try {
      target_.Labels().VisitTypeNames([&](std::string_view name) { types_->Add(name); });
    } catch (const targets::Error&) {
      // As for labels.
    }
    types_->Sort();
  }
  return *types_;
}

}  // namespace tool

#include "tools/resolve/Completion.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tools/resolve/Evaluator.h"
#include "tools/resolve/FileTarget.h"

namespace tool {
namespace {

std::string Joined(const Completions& found, const std::string& text) {
  if (found.count == 0) return "";
  std::string line = text.substr(found.start) + " -> " + found.common + ":";
  for (const std::string& candidate : found.candidates) line += " [" + candidate + "]";
  return line;
}

struct CompletionRow {
  std::string text;
  /// What is completed, what it becomes, and the candidates; empty when there are none.
  std::string found;
};

class CompletionTest : public testing::Test {
 protected:
  std::string Complete(const std::string& text) { return Joined(completer_.Complete(text), text); }

  void KeepValueOf(const std::string& expression) {
    Evaluator evaluator(target_.Labels(), target_.Memory(), Evaluator::Text::kC);
    last_.Keep(expression, std::get<Answer>(evaluator.Evaluate(expression)), target_.Labels());
  }

  FileTarget target_{EXAMPLE_PROGRAM, "/usr/lib/debug"};
  LastValue last_;
  Completer completer_{target_, last_};
};

TEST_F(CompletionTest, KnowsWhatMayStandThere) {
  const std::vector<CompletionRow> rows = {
      // labels
      {"inter", "inter -> interval: [interval]"},
      {"x + inter", "inter -> interval: [interval]"},
      {"a[inter", "inter -> interval: [interval]"},
      {"spo", "spo -> spot: [spot]"},
      {"sp", "sp -> sp: [span] [spot]"},
      {"nowhere", ""},
      {"12", ""},
      {"0x1", ""},
      {"NIGH", "NIGH -> NIGHT: [NIGHT]"},
      // members
      {"s.", " -> : [in] [mark] [x]"},
      {"s.in.", " -> : [x] [y]"},
      {"s . m", "m -> mark: [mark]"},
      {"head->", " -> : [next] [v]"},
      {"head -> next->n", "n -> next: [next]"},
      {"arr[1].", " -> : [x] [y]"},
      {"arr[a[i] + 1].", " -> : [x] [y]"},
      {"ptrs[i]->", " -> : [x] [y]"},
      {"(*head).", " -> : [next] [v]"},
      {"(*ptrs[1]).", " -> : [x] [y]"},
      {"(&s)->i", "i -> in: [in]"},
      {"((struct node*)any)->", " -> : [next] [v]"},
      {"(*(struct pair*)any).", " -> : [x] [y]"},
      {"1 + (head + 1)->v", "v -> v: [v]"},
      {"((head))->", " -> : [next] [v]"},
      {"packet.", " -> : [both] [high] [kind] [low] [tail]"},
      {"nameless.l", "l -> left: [left]"},
      {"launch.", " -> : [day] [month] [year]"},
      {"spot.", " -> : [x] [y]"},
      {"pin->l", "l -> letters: [letters]"},
      // no members
      {"head.", ""},
      {"s->", ""},
      {"x.", ""},
      {"nowhere.", ""},
      {"turn.", ""},
      {"vault->", ""},
      {"a[1].", ""},
      {"twice(1).", ""},
      {"1.", ""},
      {".", ""},
      {"->", ""},
      {").", ""},
      {"].", ""},
      {"(].", ""},
      {"*.", ""},
      {"(*).", ""},
      {"(1 + 2).", ""},
      {"((struct node*)).", ""},
      // types
      {"sizeof(struct nod", "struct nod -> struct node: [struct node]"},
      {"sizeof( struct  nod", ""},
      {"(pair", "pair -> pair_t: [pair_t]"},
      {"(struct pa", "struct pa -> struct pa: [struct packet] [struct pair]"},
      {"x + (unsigned c", "unsigned c -> unsigned char: [unsigned char]"},
      {"(oct", "oct -> octet: [octet]"},
      {"oct", ""},
      // commands
      {":", " -> : [explain] [file] [format] [help] [labels] [layout] [quit] [reload] [types]"},
      {":la", "la -> la: [labels] [layout]"},
      {"  :re", "re -> reload: [reload]"},
      {":reload x", ""},
      {":lost x", ""},
      {":help fo", "fo -> format: [format]"},
      {":labels inter", "inter -> interval: [interval]"},
      {":types struct nod", "struct nod -> struct node: [struct node]"},
      {":layout struct nod", "struct nod -> struct node: [struct node]"},
      {":file li", "li -> list.c: [list.c]"},
      {":format hex", "hex -> hexadecimal: [hexadecimal]"},
      {":explain head->", " -> : [next] [v]"},
      {":explain inter", "inter -> interval: [interval]"},
  };
  for (const CompletionRow& row : rows) EXPECT_EQ(Complete(row.text), row.found) << row.text;
}

TEST_F(CompletionTest, KnowsTheLastValue) {
  EXPECT_EQ(Complete("$->"), "");
  KeepValueOf("head");
  EXPECT_EQ(Complete("$->"), " -> : [next] [v]");
  EXPECT_EQ(Complete("(*$).n"), "n -> next: [next]");
  KeepValueOf("arr[1]");
  EXPECT_EQ(Complete("$."), " -> : [x] [y]");
  KeepValueOf("x + 1");
  EXPECT_EQ(Complete("$."), "");
}

TEST_F(CompletionTest, KnowsThePointsOfAssembly) {
  target_.SetCurrentFile("table.s");
  completer_.Forget();
  EXPECT_EQ(Complete("table.la"), "table.la -> table.last: [table.last]");
}

TEST_F(CompletionTest, NamesTheFirstOfMany) {
  const Completions all = completer_.Complete("");
  EXPECT_GT(all.count, kMostCandidates);
  EXPECT_EQ(all.candidates.size(), kMostCandidates);
  EXPECT_EQ(all.common, "");
}

TEST_F(CompletionTest, EndsForAnyText) {
  const std::string bytes = "a(*[)]&.->-> s:$'(\x01\xff\" \t";
  // Every text of up to four of these.
  for (std::size_t number = 0; number < bytes.size() * bytes.size() * bytes.size(); ++number) {
    std::string text;
    for (std::size_t rest = number; rest > 0; rest /= bytes.size()) {
      text += bytes[rest % bytes.size()];
    }
    const Completions found = completer_.Complete(text + "->");
    EXPECT_LE(found.start, text.size() + 2) << text;
  }
  EXPECT_EQ(Complete(std::string(100'000, '(') + "s."), "");
  EXPECT_EQ(Complete(std::string(4000, '(') + "."), "");
}

}  // namespace
}  // namespace tool

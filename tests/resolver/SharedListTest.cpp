// The lists of type records: values that share what they hold.

#include <gtest/gtest.h>

#include <cstddef>
#include <functional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "host/SharedList.h"

namespace {

using List = SharedList<std::string>;

std::string Text(const List& list) {
  std::string text;
  for (const std::string& entry : list) text += entry + " ";
  return text;
}

struct Change {
  std::string name;
  std::function<void(List*)> make;
  std::string text;
};

std::vector<Change> Changes() {
  return {
      {"push_back", [](List* l) { l->push_back("d"); }, "a b c d "},
      {"push_back of an entry", [](List* l) { l->push_back(std::as_const(*l).front()); },
       "a b c a "},
      {"emplace_back", [](List* l) { l->emplace_back(std::size_t{2}, 'x') += "y"; }, "a b c xxy "},
      {"pop_back", [](List* l) { l->pop_back(); }, "a b "},
      {"resize down", [](List* l) { l->resize(1); }, "a "},
      {"resize up", [](List* l) { l->resize(5); }, "a b c   "},
      {"resize to the same", [](List* l) { l->resize(3); }, "a b c "},
      {"resize to nothing", [](List* l) { l->resize(0); }, ""},
      {"clear", [](List* l) { l->clear(); }, ""},
      {"assign",
       [](List* l) {
         const std::vector<std::string> entries = {"x", "y"};
         l->assign(entries.begin(), entries.end());
       },
       "x y "},
      {"front", [](List* l) { l->front() = "x"; }, "x b c "},
      {"back", [](List* l) { l->back() = "x"; }, "a b x "},
      {"begin and end",
       [](List* l) {
         for (std::string& entry : *l) entry += entry;
       },
       "aa bb cc "},
      {"assignment", [](List* l) { *l = List{"x"}; }, "x "},
      {"swap",
       [](List* l) {
         List other{"x"};
         l->swap(other);
       },
       "x "},
      {"all entries gone one by one",
       [](List* l) {
         while (!l->empty()) l->pop_back();
       },
       ""},
  };
}

TEST(SharedList, AChangeShowsInTheChangedListOnly) {
  for (const Change& change : Changes()) {
    SCOPED_TRACE(change.name);
    List alone{"a", "b", "c"};
    change.make(&alone);
    EXPECT_EQ(Text(alone), change.text);

    const List source{"a", "b", "c"};
    List copy = source;
    EXPECT_TRUE(copy.SharesWith(source));
    change.make(&copy);
    EXPECT_EQ(Text(copy), change.text);
    EXPECT_EQ(Text(source), "a b c ");
  }
}

TEST(SharedList, AnEmptyListHoldsNothing) {
  List list;
  EXPECT_TRUE(list.empty());
  EXPECT_EQ(list.size(), 0U);
  EXPECT_EQ(list.begin(), list.end());
  EXPECT_EQ(std::as_const(list).cbegin(), std::as_const(list).cend());
  list.clear();
  list.resize(0);
  EXPECT_TRUE(list == List());
  list.push_back("a");
  EXPECT_EQ(list.size(), 1U);
  EXPECT_FALSE(list == List());
}

TEST(SharedList, EqualityIsThatOfTheEntries) {
  const List list{"a", "b"};
  const List same{"a", "b"};
  EXPECT_FALSE(list.SharesWith(same));
  EXPECT_TRUE(list == same);
  EXPECT_TRUE(list == List(list));
  EXPECT_FALSE(list == (List{"a", "c"}));
  EXPECT_FALSE(list == (List{"a"}));
}

TEST(SharedList, AMovedFromListIsEmpty) {
  List source{"a"};
  const List target = std::move(source);
  EXPECT_EQ(Text(target), "a ");
  EXPECT_TRUE(source.empty());  // NOLINT(bugprone-use-after-move): this is what is tested.
}

/// An entry that counts itself, and whose copies can be made to throw.
struct Counted {
  Counted() { ++living; }
  Counted(const Counted& other) : number(other.number) {
    if (copiesLeft-- == 0) throw std::runtime_error("no more copies");
    ++living;
  }
  Counted(Counted&& other) noexcept : number(other.number) { ++living; }
  Counted& operator=(const Counted&) = default;
  ~Counted() { --living; }
  int number = 0;
  static inline int living = 0;
  static inline int copiesLeft = -1;
};

TEST(SharedList, AThrowingCopyLeavesTheListAsItWas) {
  {
    SharedList<Counted> source;
    source.resize(3);
    const int before = Counted::living;
    for (int left = 0; left < 3; ++left) {
      SharedList<Counted> copy = source;
      Counted::copiesLeft = left;
      EXPECT_THROW(static_cast<void>(copy.front()), std::runtime_error);
      Counted::copiesLeft = -1;
      EXPECT_EQ(copy.size(), 3U);
      EXPECT_TRUE(copy.SharesWith(source));
      EXPECT_EQ(Counted::living, before);
    }
  }
  EXPECT_EQ(Counted::living, 0);
}

}  // namespace

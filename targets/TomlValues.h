#ifndef STRINGRESOLVER_TARGETS_TOMLVALUES_H
#define STRINGRESOLVER_TARGETS_TOMLVALUES_H

// For Description.cpp alone: toml++ is large, and compiled once.

#define TOML_HEADER_ONLY 1
#define TOML_EXCEPTIONS 1
#include <toml++/toml.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "targets/Description.h"
#include "targets/RegionRequest.h"
#include "targets/Texts.h"

namespace targets {

inline Spot SpotOf(const toml::source_region& region) {
  return {std::max<std::uint32_t>(region.begin.line, 1),
          std::max<std::uint32_t>(region.begin.column, 1)};
}

inline bool IsBefore(const Spot& a, const Spot& b) {
  return a.line != b.line ? a.line < b.line : a.column < b.column;
}

inline std::string Quoted(std::string_view text) {
  return "`" + std::string(text) + "`";
}

inline bool IsIdentifier(std::string_view text) {
  const auto isWord = [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
           c == '$' || static_cast<unsigned char>(c) >= 0x80;
  };
  return !text.empty() && !(text[0] >= '0' && text[0] <= '9') &&
         std::all_of(text.begin(), text.end(), isWord);
}

/// One value of the file, with what is needed to complain of it.
class Value {
 public:
  Value(const Description& description, const toml::node& node, std::string name)
      : description_(description), node_(node), name_(std::move(name)) {}

  [[nodiscard]] Spot Place() const { return SpotOf(node_.source()); }
  [[nodiscard]] const toml::node& Node() const { return node_; }
  [[noreturn]] void Fail(const std::string& sentence) const {
    description_.Fail(Place(), sentence);
  }
  [[noreturn]] void MustBe(const std::string& what) const { Fail(name_ + " must be " + what); }

  [[nodiscard]] std::string Text() const {
    const auto* const text = node_.as_string();
    if (text == nullptr) MustBe("a text");
    return text->get();
  }
  [[nodiscard]] bool Flag() const {
    const auto* const flag = node_.as_boolean();
    if (flag == nullptr) MustBe("true or false");
    return flag->get();
  }
  /// Integers of the format end at 2^63-1; what is larger stands in quotes.
  [[nodiscard]] std::uint64_t Number(std::uint64_t least, std::uint64_t most) const {
    std::optional<std::uint64_t> number;
    if (const auto* const integer = node_.as_integer(); integer != nullptr && integer->get() >= 0) {
      number = static_cast<std::uint64_t>(integer->get());
    } else if (const auto* const text = node_.as_string()) {
      number = ReadPlainNumber(text->get());
    }
    if (!number || *number < least || *number > most) {
      MustBe("a number from " + std::to_string(least) + " to " + Largest(most));
    }
    return *number;
  }
  [[nodiscard]] std::uint64_t Number() const {
    return Number(0, std::numeric_limits<std::uint64_t>::max());
  }
  /// A number that may be negative, in two's complement.
  [[nodiscard]] std::uint64_t SignedNumber() const {
    const auto* const integer = node_.as_integer();
    if (integer != nullptr) return static_cast<std::uint64_t>(integer->get());
    return Number();
  }
  [[nodiscard]] DescribedType Type() const { return {Text(), Place()}; }
  [[nodiscard]] const toml::table& Table() const {
    const auto* const table = node_.as_table();
    if (table == nullptr) MustBe("a table");
    return *table;
  }
  [[nodiscard]] const toml::array& Array() const {
    const auto* const array = node_.as_array();
    if (array == nullptr) MustBe("an array");
    return *array;
  }

 private:
  static std::string Largest(std::uint64_t most) {
    return most == std::numeric_limits<std::uint64_t>::max() ? "2^64-1" : std::to_string(most);
  }

  const Description& description_;
  const toml::node& node_;
  std::string name_;
};

/// A table whose keys are all known: `Finish` complains of the others.
class Keys {
 public:
  Keys(const Description& description, const toml::table& table, std::string what)
      : description_(description), table_(table), what_(std::move(what)) {}

  std::optional<Value> Find(std::string_view key) {
    known_.insert(key);
    const toml::node* const node = table_.get(key);
    if (node == nullptr) return std::nullopt;
    return Value(description_, *node, Quoted(key) + " of " + what_);
  }
  Value Need(std::string_view key) {
    if (auto value = Find(key)) return *value;
    description_.Fail(SpotOf(table_.source()), what_ + " has no " + Quoted(key));
  }
  std::optional<std::uint64_t> Number(std::string_view key) {
    const auto value = Find(key);
    return value ? std::optional(value->Number()) : std::nullopt;
  }
  bool Flag(std::string_view key, bool otherwise) {
    const auto value = Find(key);
    return value ? value->Flag() : otherwise;
  }

  void Finish() const {
    const toml::key* first = nullptr;
    for (const auto& [key, node] : table_) {
      if (known_.count(key.str()) != 0) continue;
      const bool earlier =
          first == nullptr || IsBefore(SpotOf(key.source()), SpotOf(first->source()));
      if (earlier) first = &key;
    }
    if (first == nullptr) return;
    std::vector<std::string> names;
    for (const std::string_view name : known_) names.push_back(Quoted(name));
    description_.Fail(SpotOf(first->source()), what_ + " has no key " + Quoted(first->str()) +
                                                   "; there are " + Enumerated(names));
  }

 private:
  const Description& description_;
  const toml::table& table_;
  std::string what_;
  std::set<std::string_view> known_;
};

}  // namespace targets

#endif  // STRINGRESOLVER_TARGETS_TOMLVALUES_H

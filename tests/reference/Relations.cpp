#include <iterator>
#include <string>

#include "tests/reference/Resolver.h"

namespace reference {

bool Resolver::ProcessBasicBlocksRelations(std::list<AreaBlock>* blocks) {
  blocks->front().Relation = 1;

  if (blocks->size() > 1) {
    auto current = blocks->begin();
    while (true) {
      const int relation = GetAfterRelations(&current);
      auto left = current;
      ++current;
      if (current == blocks->end()) break;
      if (!CheckBeforeRelations(&current, relation, left->AfterText)) return false;
      if (!ProcessTypeRelations(&left, &current, relation)) return false;
    }
  }

  for (AreaBlock& block : *blocks) {
    if (!ZeroRaw(&block)) return false;
  }

  for (int row = 1; row <= 3; ++row) {
    auto left = blocks->begin();
    auto right = std::next(left);
    while (right != blocks->end()) {
      const int outcome = FirstRaw(&*left, &*right, static_cast<int>(right->Relation), row);
      if (outcome == 2) {
        blocks->erase(right);
        left = blocks->begin();
        right = std::next(left);
      } else {
        ++left;
        ++right;
      }
      if (outcome == 0) return false;
    }
  }

  for (AreaBlock& block : *blocks) {
    if (!SecondRaw(&block)) return false;
  }

  for (int row = 1; row <= 11; ++row) {
    auto left = blocks->begin();
    auto right = std::next(left);
    while (right != blocks->end()) {
      const int outcome = ThirdRawRaw(&*left, &*right, static_cast<int>(right->Relation), row);
      if (outcome == 2) {
        blocks->erase(right);
        left = blocks->begin();
        right = std::next(left);
      } else {
        ++left;
        ++right;
      }
      if (outcome == 0) return false;
    }
  }
  return true;
}

int Resolver::GetAfterRelations(std::list<AreaBlock>::iterator* it) {
  std::string& after = (*it)->AfterText;
  if (after.empty()) return 9;
  const char c0 = after[0];
  const char c1 = after.size() > 1 ? after[1] : '\0';
  int code = 9;
  if (c0 == '-' && c1 == '>') {
    code = 7;
  } else if (c0 == '>' && c1 == '>') {
    code = 13;
  } else if (c0 == '<' && c1 == '<') {
    code = 12;
  } else if (c0 == '>' && c1 == '=') {
    code = 17;
  } else if (c0 == '<' && c1 == '=') {
    code = 15;
  } else if (c0 == '=' && c1 == '=') {
    code = 18;
  } else if (c0 == '!' && c1 == '=') {
    code = 19;
  } else if (c0 == '&' && c1 == '&') {
    code = 23;
  } else if (c0 == '|' && c1 == '|') {
    code = 24;
  } else if (c0 == '.') {
    code = 6;
  } else if (c0 == '+') {
    code = 2;
  } else if (c0 == '-') {
    code = 3;
  } else if (c0 == '*') {
    code = 4;
  } else if (c0 == '/') {
    code = 5;
  } else if (c0 == '%') {
    code = 11;
  } else if (c0 == '>') {
    code = 16;
  } else if (c0 == '<') {
    code = 14;
  } else if (c0 == '&') {
    code = 20;
  } else if (c0 == '|') {
    code = 21;
  } else if (c0 == '^') {
    code = 22;
  }
  if (code != 9) after.clear();
  return code;
}

bool Resolver::CheckBeforeRelations(std::list<AreaBlock>::iterator* it, int relation,
                                    std::string /*afterText*/) {
  AreaBlock& block = **it;
  block.Relation = static_cast<std::uint32_t>(relation);
  switch (relation) {
    case 0:
    case 1:
    case 9:
      return Fail("Internal error. Wrong relations between arguments");
    case 6:
      block.IsMemberName = true;
      block.BeforeText.erase(0, 1);
      return true;
    case 7:
      block.IsMemberName = true;
      block.BeforeText.erase(0, 2);
      return true;
    case 12:
    case 13:
    case 15:
    case 17:
    case 18:
    case 19:
    case 23:
    case 24:
      block.IsMemberName = false;
      block.BeforeText.erase(0, 2);
      return true;
    default:
      block.IsMemberName = false;
      block.BeforeText.erase(0, 1);
      return true;
  }
}

bool Resolver::ProcessTypeRelations(std::list<AreaBlock>::iterator* left,
                                    std::list<AreaBlock>::iterator* right, int /*relation*/) {
  if (!(*left)->AreaText.empty()) return true;
  (*right)->Type = (*left)->Type;
  (*right)->HasCastType = (*left)->HasCastType;
  (*right)->BeforeText.insert(0, (*left)->BeforeText);
  areaBlocks.erase(*left);
  return true;
}

}  // namespace reference

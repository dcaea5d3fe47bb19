#include "tests/reference/Comparison.h"

#include <cmath>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <utility>

namespace reference {
namespace {

template <typename Value>
std::string Line(const char* what, const Value& expected, const Value& got) {
  return std::string("  ") + what + ": reference " + std::to_string(expected) + ", resolver " +
         std::to_string(got) + "\n";
}

}  // namespace

Pair::Pair(const World& world)
    : productHost_(world),
      referenceHost_(world),
      product_(&productHost_),
      reference_(&referenceHost_) {}

std::string Pair::Resolve(const std::string& text) {
  productHost_.log.clear();
  referenceHost_.log.clear();
  succeeded = product_.SolveStringOfElements(text);
  return Differences(reference_.SolveStringOfElements(text), succeeded);
}

std::string Pair::Differences(bool expected, bool got) const {
  std::string report;
  if (expected != got) report += Line("success", expected, got);
  if (reference_.errorMessage != product_.errorMessage) {
    report += "  message: reference " + Quoted(reference_.errorMessage) + ", resolver " +
              Quoted(product_.errorMessage) + "\n";
  }
  const auto compare = [&](const char* what, const auto& wanted, const auto& had) {
    if (wanted != had) report += Line(what, wanted, had);
  };
  compare("resultAddress", reference_.resultAddress, product_.resultAddress);
  compare("resultValue", reference_.resultValue, product_.resultValue);
  compare("resultSize", reference_.resultSize, product_.resultSize);
  compare("resultMemorySpace", reference_.resultMemorySpace, product_.resultMemorySpace);
  compare("resultNegative", reference_.resultNegative, product_.resultNegative);
  compare("resultFloating", reference_.resultFloating, product_.resultFloating);
  compare("allLabelsConfirmed", reference_.allLabelsConfirmed, product_.allLabelsConfirmed);
  compare("accessSize left behind", referenceHost_.accessSize, productHost_.accessSize);
  if (!SameNumber(static_cast<double>(reference_.resultFloat),
                  static_cast<double>(product_.resultFloat))) {
    report += Line("resultFloat", reference_.resultFloat, product_.resultFloat);
  }
  if (!SameRecords(reference_.savedTypes, product_.savedTypes)) {
    report += Line("savedTypes differ; their number", reference_.savedTypes.size(),
                   product_.savedTypes.size());
  }
  // After a success: the result block. What a failed element leaves is cleared unread.
  if (expected && got) {
    compare("blocks left", reference_.areaBlocks.size(), product_.areaBlocks.size());
    report += BlockDifferences(reference_.areaBlocks.front(), product_.areaBlocks.front());
  }
  if (referenceHost_.log != productHost_.log) {
    report += "  host calls of the reference:\n" + referenceHost_.log +
              "  host calls of the resolver:\n" + productHost_.log;
  }
  return report;
}

std::string Compare(const World& world, const std::vector<std::string>& texts) {
  Pair pair(world);
  for (const std::string& text : texts) {
    std::string report = pair.Resolve(text);
    if (!report.empty()) return report;
  }
  return "";
}

std::vector<std::string> Shrink(const World& world, std::vector<std::string> texts) {
  bool shorter = true;
  while (shorter) {
    shorter = false;
    for (std::size_t i = 0; i < texts.size() && texts.size() > 1; ++i) {
      std::vector<std::string> fewer = texts;
      fewer.erase(fewer.begin() + static_cast<std::ptrdiff_t>(i));
      if (Compare(world, fewer).empty()) continue;
      texts = std::move(fewer);
      shorter = true;
      break;
    }
    for (std::size_t i = 0; i < texts.size() && !shorter; ++i) {
      for (std::size_t piece = texts[i].size(); piece > 0 && !shorter; piece /= 2) {
        for (std::size_t at = 0; at + piece <= texts[i].size(); ++at) {
          std::vector<std::string> less = texts;
          less[i].erase(at, piece);
          if (Compare(world, less).empty()) continue;
          texts = std::move(less);
          shorter = true;
          break;
        }
      }
    }
  }
  return texts;
}

bool SameRecord(const DataLableType& left, const DataLableType& right) {
  std::vector<std::pair<const DataLableType*, const DataLableType*>> pending{{&left, &right}};
  while (!pending.empty()) {
    const auto [a, b] = pending.back();
    pending.pop_back();
    const bool same =
        a->Name == b->Name && a->IsArray == b->IsArray && a->IsPointer == b->IsPointer &&
        a->IsAddress == b->IsAddress && a->Size == b->Size && a->Offset == b->Offset &&
        a->Members.size() == b->Members.size() && a->NestedTypes == b->NestedTypes &&
        a->IsSigned == b->IsSigned && a->IsFloat == b->IsFloat && a->IsDouble == b->IsDouble &&
        a->ExtraFlag == b->ExtraFlag && a->PointerSize == b->PointerSize;
    if (!same) return false;
    auto other = b->Members.begin();
    for (const DataLableType& member : a->Members) pending.emplace_back(&member, &*other++);
  }
  return true;
}

bool SameRecords(const std::list<DataLableType>& left, const std::list<DataLableType>& right) {
  if (left.size() != right.size()) return false;
  auto other = right.begin();
  for (const DataLableType& record : left) {
    if (!SameRecord(record, *other++)) return false;
  }
  return true;
}

bool SameNumber(double left, double right) {
  if (std::isnan(left) && std::isnan(right)) return true;
  return std::memcmp(&left, &right, sizeof left) == 0;
}

std::string BlockDifferences(const AreaBlock& plain, const AreaBlock& product) {
  std::string report;
  const auto texts = [&](const char* what, const std::string& a, const std::string& b) {
    if (a != b) report += std::string("  ") + what + ": " + Quoted(a) + ", " + Quoted(b) + "\n";
  };
  const auto numbers = [&](const char* what, auto a, auto b) {
    if (a == b) return;
    report += std::string("  ") + what + ": " + std::to_string(a) + ", " + std::to_string(b) + "\n";
  };
  texts("BeforeText", plain.BeforeText, product.BeforeText);
  texts("AreaText", plain.AreaText, product.AreaText);
  texts("AfterText", plain.AfterText, product.AfterText);
  numbers("ReferenceLevel", plain.ReferenceLevel, product.ReferenceLevel);
  numbers("MemorySpace", plain.MemorySpace, product.MemorySpace);
  numbers("IsMemberName", plain.IsMemberName, product.IsMemberName);
  numbers("Value", plain.Value, product.Value);
  numbers("Relation", plain.Relation, product.Relation);
  numbers("has MemberBlock", plain.MemberBlock != nullptr, product.MemberBlock != nullptr);
  numbers("IsConsumed", plain.IsConsumed, product.IsConsumed);
  numbers("HasCastType", plain.HasCastType, product.HasCastType);
  numbers("ValueKind", plain.ValueKind, product.ValueKind);
  if (!SameRecord(plain.Type, product.Type)) report += "  Type\n";
  if (!SameRecord(plain.CastType, product.CastType)) report += "  CastType\n";
  if (!SameNumber(static_cast<double>(plain.FloatValue), static_cast<double>(product.FloatValue))) {
    numbers("FloatValue", plain.FloatValue, product.FloatValue);
  }
  if (!SameNumber(plain.DoubleValue, product.DoubleValue)) {
    numbers("DoubleValue", plain.DoubleValue, product.DoubleValue);
  }
  return report;
}

std::string Quoted(const std::string& text) {
  std::string quoted = "\"";
  for (const char byte : text) {
    if (byte == '"' || byte == '\\') {
      quoted += std::string("\\") + byte;
    } else if (byte >= ' ' && byte < '\x7f') {
      quoted += byte;
    } else {
      // Octal, because a hexadecimal escape would swallow the digits that follow.
      char escape[8];
      std::snprintf(escape, sizeof escape, "\\%03o", static_cast<unsigned char>(byte));
      quoted += escape;
    }
  }
  return quoted + "\"";
}

}  // namespace reference

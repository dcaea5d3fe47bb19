#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>
#include <string_view>

#include "resolver/Markers.h"
#include "resolver/SparePool.h"
#include "resolver/StringParametersResolving.h"
#include "resolver/ValueText.h"

namespace {

std::string WithoutBlanks(std::string_view text) {
  std::string kept(text);
  std::erase(kept, ' ');
  return kept;
}

}  // namespace

/// The type that `*name` stands for. The star marks at its end are removed, and each makes a
/// pointer of the type; stars elsewhere stay in the name that the host is asked about.
DataLableType TStringResolver::DescribeType(std::string* name, bool* unknown) {
  std::size_t stars = 0;
  while (!name->empty() && name->back() == resolver::kTypeStarMark) {
    name->pop_back();
    ++stars;
  }
  *unknown = false;
  DataLableType type = parentInterface->GetTypeDescription(*name, unknown);
  for (; stars > 0; --stars) type.BecomePointer();
  return type;
}

bool TStringResolver::RegisterType(std::string* text) {
  bool unknown = false;
  DataLableType type = DescribeType(text, &unknown);
  AddSavedType().Swap(type);
  *text = resolver::kCastMark;
  text->append(savedTypes.size() - 1, resolver::kCastIndexMark);
  *text += resolver::kCastMark;
  return unknown;
}

/// One more entry of the saved types, to be overwritten.
DataLableType& TStringResolver::AddSavedType() {
  if (!resolver::TakeSpareType(&savedTypes)) savedTypes.emplace_back();
  return savedTypes.back();
}

bool TStringResolver::ProcessAreaAsType(AreaBlock* block, std::string_view text) {
  const std::uint64_t position = text.empty() ? 0 : resolver::ReadUnsigned(text.substr(1));
  const DataLableType* saved = SavedType(position);
  if (saved == nullptr) return Fail("Reference to unexisting type");
  block->Type.Assign(*saved);
  block->HasCastType = true;
  return true;
}

/// The saved type at `position`, or null. Walks from the nearest known place: the list is long when
/// a text has many groups, and they are asked for in order.
const DataLableType* TStringResolver::SavedType(std::uint64_t position) {
  const std::uint64_t count = savedTypes.size();
  if (position >= count) return nullptr;
  SavedTypeFinger from{0, savedTypes.begin()};
  if (position > count / 2) from = {count, savedTypes.end()};
  const auto distance = [position](const SavedTypeFinger& place) {
    return place.position > position ? place.position - position : position - place.position;
  };
  const bool held = finger_ != nullptr && finger_->position != SavedTypeFinger::kNowhere;
  if (held && distance(*finger_) < distance(from)) from = *finger_;
  std::advance(from.entry, static_cast<std::ptrdiff_t>(position - from.position));
  from.position = position;
  if (finger_ != nullptr) *finger_ = from;
  return &*from.entry;
}

/// Writes `text` with each `sizeof` of a type replaced by the type's size, and any other by the
/// unary mark. False, without a message, when the host does not know a type that it had accepted.
bool TStringResolver::RewriteSizeofs(std::string_view text, std::string* rewritten) {
  constexpr std::string_view kKeyword = "sizeof";
  rewritten->clear();
  std::size_t copied = 0;
  std::size_t close = 0;
  std::size_t at = 0;
  while ((at = text.find(kKeyword, at)) != std::string_view::npos) {
    const std::size_t behind = at + kKeyword.size();
    if (behind == text.size() || (text[behind] != ' ' && text[behind] != '(')) {
      ++at;
      continue;
    }
    rewritten->append(text.substr(copied, at - copied));
    copied = at = behind;
    if (close < behind) close = text.find(')', behind);
    if (text[behind] == '(' && close != std::string_view::npos) {
      const std::string_view operand = text.substr(behind + 1, close - behind - 1);
      if (parentInterface->IsTypeName(WithoutBlanks(operand))) {
        std::string name = WithoutBlanks(operand);
        resolver::MarkStars(&name);
        bool unknown = false;
        const DataLableType type = DescribeType(&name, &unknown);
        if (unknown) return false;
        resolver::Digits digits;
        rewritten->append(resolver::WriteUnsigned(type.Size, &digits));
        copied = at = close + 1;
        continue;
      }
    }
    rewritten->push_back(resolver::kSizeofMark);
  }
  rewritten->append(text.substr(copied));
  return true;
}

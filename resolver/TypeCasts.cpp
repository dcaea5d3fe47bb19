#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>
#include <string_view>

#include "resolver/Markers.h"
#include "resolver/StringParametersResolving.h"
#include "resolver/ValueText.h"

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
  for (; stars > 0; --stars) type.PointTo(type);
  return type;
}

bool TStringResolver::RegisterType(std::string* text) {
  bool unknown = false;
  savedTypes.push_back(DescribeType(text, &unknown));
  *text = resolver::kCastMark;
  text->append(savedTypes.size() - 1, resolver::kCastIndexMark);
  *text += resolver::kCastMark;
  return unknown;
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

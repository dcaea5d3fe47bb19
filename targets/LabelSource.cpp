#include "targets/LabelSource.h"

namespace targets {

bool LabelSource::CurrentFileIsAssembly() const {
  const std::string file = CurrentFile();
  for (const std::string_view ending : {".s", ".S", ".sx", ".asm", ".ASM"}) {
    if (std::string_view(file).ends_with(ending)) return true;
  }
  return false;
}

bool LabelSource::IsIncomplete(std::string_view /*name*/) {
  return false;
}

std::optional<NamedObject> LabelSource::FindObject(std::string_view name) {
  const std::optional<Label> label = FindLabel(name);
  if (!label || !label->typed) return std::nullopt;
  return NamedObject{label->value, label->type.TypeNumber};
}

const TypeShape* LabelSource::Shape(TypeNumber /*type*/) {
  return nullptr;
}

TypeNumber LabelSource::FindShape(std::string_view /*name*/) {
  return 0;
}

std::optional<NearestLabel> LabelSource::LabelAt(std::uint64_t /*address*/) {
  return std::nullopt;
}

void LabelSource::VisitLabelNames(const std::function<void(std::string_view)>& visit) {
  ListLabels([&](const Listing& listing) { visit(listing.name); });
}

void LabelSource::VisitTypeNames(const std::function<void(std::string_view)>& visit) {
  ListTypes([&](const Listing& listing) { visit(listing.name); });
}

}  // namespace targets

#include "targets/DescribedProgram.h"

#include <algorithm>
#include <limits>
#include <map>
#include <utility>

#include "targets/DescribedTypes.h"
#include "targets/Description.h"
#include "targets/Error.h"
#include "targets/MemoryFile.h"
#include "targets/MemoryRegions.h"
#include "targets/Texts.h"

namespace targets {
namespace {

constexpr std::uint64_t kLargestDescription = std::uint64_t{16} << 20U;

std::string TextOf(const std::string& path) {
  const MemoryFile file(path);
  if (file.Size() > kLargestDescription) {
    throw Error(ErrorCode::kFileUnusable, "'" + path + "' has more than " +
                                              std::to_string(kLargestDescription >> 20U) +
                                              " MiB, too much for a description");
  }
  return file.Text();
}

}  // namespace

struct DescribedProgram::Parts {
  struct Known {
    Label label;
    TypeNumber type = 0;
    bool isConstant = false;
  };

  Parts(std::string_view text, const std::string& path, std::uint64_t highestAddress)
      : description(ReadDescription(text, path)),
        types(description),
        memory(description.pointerSize),
        currentFile(description.currentFile),
        isAssembly(description.isAssembly) {
    for (const DescribedMemory& region : description.memory) AddMemory(region);
    for (const DescribedLabel& label : description.labels) AddLabel(label);
    for (const DescribedEnumeration& enumeration : description.enumerations) {
      for (std::size_t i = 0; i < enumeration.values.size(); ++i) {
        const EnumeratorShape& value = enumeration.values[i];
        AddConstant(value.name, value.value, enumeration.spots[i]);
      }
    }
    highestAddress = std::max(highestAddress, memory.HighestAddress().value_or(0));
    for (const auto& [address, name] : places) {
      const TypeNumber type = labels.find(name)->second.type;
      const std::uint64_t size = std::max<std::uint64_t>(type == 0 ? 1 : SizeOf(type), 1);
      highestAddress = std::max(highestAddress, address + (size - 1));
    }
    types.SetHighestAddress(highestAddress);
  }

  [[nodiscard]] std::uint64_t LastAddress() const {
    return description.pointerSize >= 8 ? std::numeric_limits<std::uint64_t>::max()
                                        : (std::uint64_t{1} << description.pointerSize * 8) - 1;
  }

  [[nodiscard]] std::uint64_t SizeOf(TypeNumber type) const { return types.Shape(type)->size; }

  void AddMemory(const DescribedMemory& region) {
    try {
      if (!region.request.path.empty()) {
        AddRegions(region.request, &memory);
        return;
      }
      MemoryRegion own;
      own.space = region.request.space;
      own.address = region.request.address;
      own.size = region.bytes.size();
      own.origin = "line " + std::to_string(region.spot.line);
      own.bytes = region.bytes;
      memory.Add(std::move(own));
    } catch (const Error& error) {
      description.Fail(region.spot, error.what());
    }
  }

  Known& AddName(const std::string& name, const Spot& spot) {
    const auto [place, isNew] = labels.try_emplace(name);
    if (!isNew) description.Fail(spot, "there are two things called `" + name + "`");
    if (types.Find(name) != 0) {
      description.Fail(spot, "`" + name + "` is the name of a type as well");
    }
    return place->second;
  }

  void AddConstant(const std::string& name, std::uint64_t value, const Spot& spot) {
    Known& known = AddName(name, spot);
    known.label.kind = LabelKind::kEnumerator;
    known.label.value = value;
    known.isConstant = true;
  }

  void AddLabel(const DescribedLabel& label) {
    if (label.isConstant) {
      AddConstant(label.name, label.value, label.spot);
      return;
    }
    Known& known = AddName(label.name, label.spot);
    known.label.value = label.value;
    if (label.value > LastAddress()) {
      description.Fail(label.spot, "the address lies behind the end of the address space, " +
                                       Hexadecimal(LastAddress()));
    }
    if (label.type) {
      known.type = types.OfText(*label.type);
      const bool isFunction =
          types.Shape(types.Behind(known.type))->kind == TypeShape::Kind::kFunction;
      known.label.kind = isFunction ? LabelKind::kFunction : LabelKind::kVariable;
      known.label.typed = !isFunction;
      const std::uint64_t size = SizeOf(known.type);
      if (size != 0 && size - 1 > LastAddress() - label.value) {
        description.Fail(label.spot, "the object goes past the end of the address space, " +
                                         Hexadecimal(LastAddress()));
      }
    }
    places.emplace(label.value, label.name);
  }

  [[nodiscard]] std::string Describe(const Known& known) const {
    if (known.isConstant) {
      return "enumerator " + std::to_string(static_cast<std::int64_t>(known.label.value));
    }
    const std::string address = Hexadecimal(known.label.value);
    if (known.type == 0) return "symbol " + address;
    if (known.label.kind == LabelKind::kFunction) return "function " + address;
    return types.Shape(known.type)->name + ", " + address;
  }

  Description description;
  DescribedTypes types;
  MemoryRegions memory;
  std::string currentFile;
  std::optional<bool> isAssembly;
  std::map<std::string, Known, std::less<>> labels;
  std::multimap<std::uint64_t, std::string> places;  ///< of labels with addresses
};

DescribedProgram::DescribedProgram(std::string_view text, const std::string& path,
                                   std::uint64_t highestAddress)
    : parts_(std::make_unique<Parts>(text, path, highestAddress)) {}

DescribedProgram::~DescribedProgram() = default;

std::unique_ptr<DescribedProgram> DescribedProgram::Open(const std::string& path,
                                                         std::uint64_t highestAddress) {
  return std::make_unique<DescribedProgram>(TextOf(path), path, highestAddress);
}

MemorySource& DescribedProgram::Memory() {
  return parts_->memory;
}

std::optional<std::uint32_t> DescribedProgram::WordSize() const {
  return parts_->description.wordSize;
}

void DescribedProgram::SetCurrentFile(const std::string& name) {
  parts_->currentFile = name;
  parts_->isAssembly.reset();
}

std::uint32_t DescribedProgram::PointerSize() const {
  return parts_->description.pointerSize;
}

ByteOrder DescribedProgram::Order() const {
  return parts_->description.order;
}

std::string DescribedProgram::CurrentFile() const {
  return parts_->currentFile;
}

bool DescribedProgram::CurrentFileIsAssembly() const {
  return parts_->isAssembly.value_or(LabelSource::CurrentFileIsAssembly());
}

std::optional<Label> DescribedProgram::FindLabel(std::string_view name) {
  const auto found = parts_->labels.find(name);
  if (found == parts_->labels.end()) return std::nullopt;
  Label label = found->second.label;
  if (label.typed) label.type.Assign(parts_->types.Record(found->second.type).record);
  return label;
}

bool DescribedProgram::HasType(std::string_view name) {
  return parts_->types.Find(name) != 0;
}

std::optional<DataLableType> DescribedProgram::FindType(std::string_view name) {
  const TypeNumber type = parts_->types.Find(name);
  if (type == 0) return std::nullopt;
  return parts_->types.Full(type);
}

bool DescribedProgram::IsIncomplete(std::string_view name) {
  const TypeNumber type = parts_->types.Find(name);
  return type != 0 && parts_->types.Shape(type)->isIncomplete;
}

const std::vector<MemberRemark>& DescribedProgram::Remarks() const {
  return parts_->types.Remarks();
}

void DescribedProgram::ListLabels(const std::function<void(const Listing&)>& visit) {
  for (const auto& [name, known] : parts_->labels) visit({name, parts_->Describe(known)});
}

void DescribedProgram::ListTypes(const std::function<void(const Listing&)>& visit) {
  parts_->types.VisitNamed([&](std::string_view name, TypeNumber type) {
    const TypeNumber behind = parts_->types.Behind(type);
    const TypeShape& shape = *parts_->types.Shape(behind);
    std::string detail = std::to_string(shape.size) + " bytes";
    if (shape.isIncomplete) detail = "declared only";
    if (behind != type) detail = shape.name;
    visit({std::string(name), std::move(detail)});
  });
}

const TypeShape* DescribedProgram::Shape(TypeNumber type) {
  return parts_->types.Shape(type);
}

TypeNumber DescribedProgram::FindShape(std::string_view name) {
  return parts_->types.Find(name);
}

std::optional<NearestLabel> DescribedProgram::LabelAt(std::uint64_t address) {
  // Labels may lie inside of each other, so the one before need not be the one that is meant.
  auto place = parts_->places.upper_bound(address);
  while (place != parts_->places.begin()) {
    --place;
    const TypeNumber type = parts_->labels.find(place->second)->second.type;
    const std::uint64_t size = type == 0 ? 0 : parts_->SizeOf(type);
    const std::uint64_t offset = address - place->first;
    if (size == 0 || offset < size) return NearestLabel{place->second, offset};
  }
  return std::nullopt;
}

void DescribedProgram::VisitLabelNames(const std::function<void(std::string_view)>& visit) {
  for (const auto& [name, known] : parts_->labels) visit(name);
}

void DescribedProgram::VisitTypeNames(const std::function<void(std::string_view)>& visit) {
  parts_->types.VisitNamed([&](std::string_view name, TypeNumber) { visit(name); });
}

}  // namespace targets

#include "tests/reference/World.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace reference {
namespace {

constexpr std::size_t kMemorySize = 4096;

const std::vector<std::string> kFileNames = {
    "main.c", "main.c", "main.c", "list.cpp", "boot.asm", "cpu.s", "lib.sys/a", "x.asm.c", ""};
const std::vector<std::uint64_t> kBases = {0x1000, 0x20000000, 0xFFFF0000, 0x7FFF12340000};
const std::vector<std::uint64_t> kIntegers = {
    0, 1, 2, 3, 5, 7, 100, 127, 128, 255, 256, 0x7FFF, 0x8000, 0xFFFF, 0x7FFFFFFF, 0x80000000,
    0xFFFFFFFF, 0x7FFFFFFFFFFFFFFF, 0x8000000000000000, 0xFFFFFFFFFFFFFFFF,
    // -2, -3, -100
    0xFFFFFFFFFFFFFFFE, 0xFFFFFFFFFFFFFFFD, 0xFFFFFFFFFFFFFF9C};
const std::vector<double> kFloats = {0.0,        1.0,  1.5,   -2.25,      0.5,
                                     3.14159265, 1e10, -1e-3, 123456789.0};
const std::vector<std::uint32_t> kOddSizes = {0, 1, 2, 3, 4, 5, 7, 8, 9, 12, 16, 1000, 0xFFFFFFFF};
const std::vector<std::string> kFieldNames = {"x", "y", "v", "next", "in", "f", "d", "arr", "p"};

DataLableType Scalar(const TypeModel& model) {
  DataLableType record;
  record.Size = model.size;
  record.IsSigned = model.isSigned;
  record.IsFloat = model.kind == Kind::kFloat;
  record.IsDouble = model.kind == Kind::kDouble;
  return record;
}

}  // namespace

World::World(std::uint64_t worldSeed) : seed(worldSeed) {
  Random random(seed * 2 + 1);
  fileName = random.Of(kFileNames);
  assembly = fileName.find(".s") != std::string::npos || fileName.find(".asm") != std::string::npos;
  odd = random.Chance(25);
  addressMembers = odd && random.Chance(40);
  typedNumerals = random.Chance(5);
  dirt = random.Chance(20) ? 30 : 0;
  refusals = random.Chance(40) ? 8 : 0;
  pointerSize = random.Chance(60) ? 8 : 4;
  if (odd && random.Chance(10)) pointerSize = random.Chance(50) ? 2 : 0;
  base_ = pointerSize == 8 ? random.Of(kBases) : kBases[random.Below(2)];
  next_ = base_;
  for (std::vector<std::uint8_t>& space : memory_) {
    space.resize(kMemorySize);
    for (std::uint8_t& byte : space) byte = static_cast<std::uint8_t>(random.Next());
  }
  // Words that are addresses, so that following what is found leads somewhere.
  for (std::uint64_t offset = 0; offset + 8 <= kMemorySize; offset += 8) {
    if (random.Chance(60)) Store(base_ + offset, SomeAddress(&random), 8);
  }
  MakeTypes(&random);
  MakeStructures(&random);
  MakeNames(&random);
  MakeLabels(&random);
}

void World::MakeTypes(Random* random) {
  const auto integer = [&](const char* name, std::uint32_t size, bool isSigned) {
    TypeModel model;
    model.size = size;
    model.isSigned = isSigned;
    model.name = name;
    types.push_back(model);
  };
  integer("char", 1, true);
  integer("unsigned char", 1, false);
  integer("short", 2, true);
  integer("unsigned short", 2, false);
  integer("int", 4, true);
  integer("unsigned int", 4, false);
  integer("long long", 8, true);
  integer("unsigned long", 8, false);
  TypeModel floating;
  floating.kind = Kind::kFloat;
  floating.name = "float";
  types.push_back(floating);
  floating.kind = Kind::kDouble;
  floating.size = 8;
  floating.name = "double";
  types.push_back(floating);

  for (std::size_t i = 0; i < 3; ++i) {
    TypeModel model;
    model.kind = Kind::kStructure;
    model.structure = i;
    structures.emplace_back();
    structures[i].name = "node" + std::to_string(i);
    model.name = structures[i].name;
    types.push_back(model);
  }
  for (int i = 0; i < 14; ++i) {
    TypeModel model;
    model.target = random->Below(types.size());
    const Kind target = types[model.target].kind;
    if (random->Chance(55)) {
      model.kind = Kind::kPointer;
      model.size = pointerSize;
      if (target != Kind::kArray && !types[model.target].name.empty()) {
        model.name = types[model.target].name + "*";
      }
    } else {
      model.kind = Kind::kArray;
      model.count = 1 + random->Below(5);
    }
    types.push_back(model);
  }
}

void World::MakeStructures(Random* random) {
  for (StructureModel& structure : structures) {
    const std::size_t fields = 2 + random->Below(5);
    for (std::size_t i = 0; i < fields; ++i) {
      FieldModel field;
      field.name = random->Of(kFieldNames);
      field.type = random->Below(types.size());
      field.offset = structure.size;
      structure.fields.push_back(field);
      structure.size += 1 + static_cast<std::uint32_t>(random->Below(8));
    }
    // A structure that can be followed through a pointer to itself.
    FieldModel link;
    link.name = "link";
    link.offset = structure.size;
    TypeModel pointer;
    pointer.kind = Kind::kPointer;
    pointer.size = pointerSize;
    pointer.target = 10 + static_cast<std::size_t>(&structure - structures.data());
    pointer.name = structure.name + "*";
    link.type = types.size();
    types.push_back(pointer);
    structure.fields.push_back(link);
    structure.size += pointerSize;
  }
  for (TypeModel& type : types) {
    if (type.kind == Kind::kStructure) type.size = structures[type.structure].size;
    if (type.kind == Kind::kArray) {
      type.size = types[type.target].size * static_cast<std::uint32_t>(type.count);
    }
  }
}

/// A structure is a stub that names the full record; a field of structure type is a shell around
/// the stub. A target always has a lower index, but through a structure, so this ends.
DataLableType World::RecordOf(std::size_t index, bool inField) const {
  const TypeModel& model = types[index];
  DataLableType record = Scalar(model);
  if (model.kind == Kind::kStructure) {
    record.Name = "struct " + structures[model.structure].name;
    record.NestedTypes.push_back(structures[model.structure].name);
    if (inField) {
      DataLableType shell;
      shell.Size = model.size;
      shell.Members.push_back(record);
      record = shell;
    }
  } else if (model.kind == Kind::kPointer || model.kind == Kind::kArray) {
    record.Members.push_back(RecordOf(model.target, false));
    record.IsArray = model.kind == Kind::kArray;
    record.IsPointer = model.kind == Kind::kPointer || types[model.target].kind != Kind::kPointer;
  }
  record.PointerSize = pointerSize;
  return record;
}

void World::Bend(DataLableType* record, Random* random) const {
  switch (random->Below(12)) {
    case 0:
      record->IsArray = !record->IsArray;
      break;
    case 1:
      record->IsPointer = !record->IsPointer;
      break;
    case 2:
      record->IsAddress = !record->IsAddress;
      break;
    case 3:
      record->Size = random->Of(kOddSizes);
      break;
    case 4:
      record->Members.clear();
      break;
    case 5:
      record->NestedTypes.push_back(random->Chance(50) ? "nowhere" : random->Of(structures).name);
      break;
    case 6:
      record->IsSigned = !record->IsSigned;
      break;
    case 7:
      record->IsFloat = !record->IsFloat;
      break;
    case 8:
      record->IsDouble = !record->IsDouble;
      break;
    case 9:
      if (!record->Members.empty()) {
        record->Members.push_back(std::as_const(record->Members).back());
        std::rotate(record->Members.begin(), record->Members.end() - 1, record->Members.end());
      }
      record->ExtraFlag = true;
      break;
    case 10:
      record->Offset = static_cast<std::uint32_t>(random->Below(3)) * 0x7FFFFFFF;
      break;
    default:
      record->PointerSize = random->Of(kOddSizes);
      break;
  }
  if (!record->Members.empty() && random->Chance(60)) Bend(&record->Members.front(), random);
}

void World::MakeNames(Random* random) {
  for (std::size_t i = 0; i < types.size(); ++i) {
    std::string name = types[i].name;
    if (name.empty() || name.back() == '*') continue;
    std::erase(name, ' ');
    DataLableType record = RecordOf(i, false);
    if (types[i].kind == Kind::kStructure) {
      record.NestedTypes.clear();
      for (const FieldModel& field : structures[types[i].structure].fields) {
        DataLableType member = RecordOf(field.type, true);
        member.Name = field.name;
        member.Offset = field.offset;
        if (odd && random->Chance(20)) Bend(&member, random);
        if (addressMembers && random->Chance(85)) member.IsAddress = true;
        record.Members.push_back(member);
      }
    }
    if (odd && random->Chance(20)) Bend(&record, random);
    // Now and then a structure that is only known by name.
    if (types[i].kind == Kind::kStructure && random->Chance(6)) continue;
    namedTypes[name] = record;
  }
  if (random->Chance(85)) {
    DataLableType word;
    word.Size = random->Chance(70) ? pointerSize : random->Of(kOddSizes);
    word.PointerSize = pointerSize;
    namedTypes["ZV_Lorn"] = word;
  }
  ghostTypes.insert("ghost");
}

void World::MakeLabels(Random* random) {
  const std::vector<std::string> names = {
      "a",   "b",   "c",     "i",     "j",  "k", "n", "p",   "q", "s",   "t",   "u",    "w",  "arr",
      "tab", "out", "print", "total", "e1", "m", "g", "sum", "x", ".L1", "a.b", "main", "_v", "z2"};
  for (std::size_t i = 0; i < names.size(); ++i) {
    // One label of each type first, then more of any.
    const std::size_t model = i < 13 ? i : random->Below(types.size());
    AddLabel(names[(i * 5 + seed) % names.size()], model, random);
  }
  for (const char* name : {"ONE", "TWO", "BIG", "fn"}) {
    Label label;
    label.name = name;
    label.value = name[0] == 'f' ? SomeAddress(random) : random->Of(kIntegers);
    label.confirmed = random->Chance(98);
    labelByName[label.name] = labels.size();
    labels.push_back(label);
  }
}

void World::AddLabel(const std::string& name, std::size_t model, Random* random) {
  Label label;
  label.name = name;
  label.value = next_;
  label.typed = true;
  label.confirmed = random->Chance(98);
  label.model = model;
  label.type = RecordOf(model, false);
  if (odd && random->Chance(30)) Bend(&label.type, random);
  const std::uint64_t size = types[model].size + 8 - types[model].size % 8;
  if (next_ + size < base_ + kMemorySize) {
    Fill(next_, model, random);
    next_ += size;
  }
  if (refusals > 0 && random->Chance(5)) label.value = 0x40;
  labelByName[name] = labels.size();
  labels.push_back(label);
}

void World::Fill(std::uint64_t address, std::size_t index, Random* random) {
  const TypeModel& model = types[index];
  if (model.kind == Kind::kInteger) {
    Store(address, random->Of(kIntegers), model.size);
  } else if (model.kind == Kind::kFloat) {
    const float number = static_cast<float>(random->Of(kFloats));
    std::uint32_t bits = 0;
    std::memcpy(&bits, &number, sizeof bits);
    Store(address, bits, 4);
  } else if (model.kind == Kind::kDouble) {
    const double number = random->Of(kFloats);
    std::uint64_t bits = 0;
    std::memcpy(&bits, &number, sizeof bits);
    Store(address, bits, 8);
  } else if (model.kind == Kind::kPointer) {
    Store(address, SomeAddress(random), model.size);
  } else if (model.kind == Kind::kArray) {
    for (std::size_t i = 0; i < model.count; ++i) {
      Fill(address + i * types[model.target].size, model.target, random);
    }
  } else {
    for (const FieldModel& field : structures[model.structure].fields) {
      if (types[field.type].kind != Kind::kStructure && types[field.type].kind != Kind::kArray) {
        Fill(address + field.offset, field.type, random);
      }
    }
  }
}

void World::Store(std::uint64_t address, std::uint64_t value, std::uint32_t size) {
  for (std::uint32_t i = 0; i < size && i < 8; ++i) {
    const std::uint64_t offset = address - base_ + i;
    if (offset < kMemorySize) memory_[0][offset] = static_cast<std::uint8_t>(value >> (8 * i));
  }
}

std::uint64_t World::SomeAddress(Random* random) const {
  return base_ + random->Below(kMemorySize / 8 - 8) * 8;
}

DataLableType World::SomeRecord(Random* random) const {
  DataLableType record = RecordOf(random->Below(types.size()), random->Chance(20));
  if (random->Chance(20)) {
    const auto named = namedTypes.find(structures[random->Below(structures.size())].name);
    if (named != namedTypes.end()) record = named->second;
  }
  if (random->Chance(15)) record = DataLableType();
  if (random->Chance(40)) {
    record = record.FormPointer();
    record.IsAddress = true;
  }
  if (random->Chance(25)) Bend(&record, random);
  return record;
}

std::uint8_t World::ByteAt(std::uint64_t address, std::uint16_t space) const {
  const std::uint64_t offset = address - base_;
  if (offset < kMemorySize) return memory_[space == 0 ? 0 : 1][offset];
  return Random(address * 2 + space + seed).Chance(60)
             ? std::uint8_t{0}
             : static_cast<std::uint8_t>(Random(address).Next());
}

bool World::Readable(std::uint64_t address, std::uint8_t space) const {
  if (refusals == 0) return true;
  if (address < 0x80) return false;
  return !Random(address * 4 + space + seed).Chance(refusals);
}

bool World::IsType(const std::string& name) const {
  return namedTypes.count(name) != 0 || ghostTypes.count(name) != 0;
}

}  // namespace reference

// What goes through all files of a loaded program: listings, addresses, shapes.

#include <algorithm>
#include <set>
#include <utility>

#include "targets/LoadedProgram.h"
#include "targets/Texts.h"

namespace targets {

const std::vector<MemberRemark>& LoadedProgram::Remarks() const {
  std::size_t count = 0;
  for (const Module& module : modules_) {
    if (module.program) count += module.program->Remarks().size();
  }
  // Remarks are only ever added.
  if (count == remarks_.size()) return remarks_;
  remarks_.clear();
  for (const Module& module : modules_) {
    if (!module.program) continue;
    const std::vector<MemberRemark>& own = module.program->Remarks();
    remarks_.insert(remarks_.end(), own.begin(), own.end());
  }
  return remarks_;
}

void LoadedProgram::List(Lister lister, const std::function<void(const Listing&)>& visit) {
  std::vector<Listing> all;
  std::set<std::string> taken;
  std::optional<Error> failure;
  const auto add = [&](ElfProgram& program, const std::string& where) {
    const std::size_t before = all.size();
    try {
      (program.*lister)([&](const Listing& listing) {
        if (taken.count(listing.name) != 0) return;
        all.push_back({listing.name, listing.detail + where});
      });
    } catch (const Error& error) {
      if (!failure && where.empty()) failure = error;
    }
    for (std::size_t i = before; i < all.size(); ++i) taken.insert(all[i].name);
  };
  add(Current(), "");
  for (std::size_t index = 0; index < modules_.size(); ++index) {
    if (index == current_) continue;
    if (ElfProgram* const program = Open(index)) {
      add(*program, ", in " + std::string(BaseName(modules_[index].file.path)));
    }
  }
  std::stable_sort(all.begin(), all.end(),
                   [](const Listing& a, const Listing& b) { return a.name < b.name; });
  for (const Listing& listing : all) visit(listing);
  if (failure) throw Error(*failure);
}

void LoadedProgram::ListLabels(const std::function<void(const Listing&)>& visit) {
  List(&ElfProgram::ListLabels, visit);
}

void LoadedProgram::ListTypes(const std::function<void(const Listing&)>& visit) {
  List(&ElfProgram::ListTypes, visit);
}

void LoadedProgram::VisitLabelNames(const std::function<void(std::string_view)>& visit) {
  Search([&](ElfProgram& program) {
    program.VisitLabelNames(visit);
    return false;
  });
}

void LoadedProgram::VisitTypeNames(const std::function<void(std::string_view)>& visit) {
  Search([&](ElfProgram& program) {
    program.VisitTypeNames(visit);
    return false;
  });
}

std::optional<NamedObject> LoadedProgram::FindObject(std::string_view name) {
  if (auto object = Current().FindObject(name)) return object;
  return LabelSource::FindObject(name);
}

const TypeShape* LoadedProgram::Shape(TypeNumber type) {
  const std::size_t index = type == 0 ? modules_.size() : ModuleOfType(type);
  ElfProgram* const program = index < modules_.size() ? Open(index) : nullptr;
  const TypeShape* const shape = program == nullptr ? nullptr : program->Shape(type);
  if (shape == nullptr || !shape->isIncomplete) return shape;
  const TypeShape* complete = shape;
  Search([&](ElfProgram& other) {
    const TypeShape* const found = other.Shape(other.FindShape(shape->name));
    if (found == nullptr || found->isIncomplete) return false;
    complete = found;
    return true;
  });
  return complete;
}

TypeNumber LoadedProgram::FindShape(std::string_view name) {
  if (const auto index = ModuleOfRecord(name)) {
    ElfProgram* const program = Open(*index);
    return program == nullptr ? 0 : program->FindShape(name);
  }
  TypeNumber found = 0;
  Search([&](ElfProgram& program) {
    const TypeNumber number = program.FindShape(name);
    if (number == 0) return false;
    const TypeShape* const shape = program.Shape(number);
    if (found == 0) found = number;
    if (shape != nullptr && shape->isIncomplete) return false;
    found = number;
    return true;
  });
  return found;
}

std::optional<NearestLabel> LoadedProgram::LabelAt(std::uint64_t address) {
  for (std::size_t i = 0; i < modules_.size(); ++i) {
    const LoadedFile& file = modules_[i].file;
    if (address < file.start || address >= file.end) continue;
    ElfProgram* const program = Open(i);
    return program == nullptr ? std::nullopt : program->LabelAt(address);
  }
  return std::nullopt;
}

}  // namespace targets

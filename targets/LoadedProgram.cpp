#include "targets/LoadedProgram.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <set>
#include <span>
#include <utility>

#include "targets/ElfFile.h"
#include "targets/Error.h"
#include "targets/Texts.h"
#include "targets/TypeNames.h"

namespace targets {
namespace {

/// Each file's types have numbers of their own: the program's come first.
constexpr std::uint32_t kTypesOfOneFile = std::uint32_t{1} << 23U;
/// More files would have no numbers left for their types.
constexpr std::size_t kMostFiles = std::numeric_limits<TypeNumber>::max() / kTypesOfOneFile;
/// Stands between a record's name and the number of the library that it is from.
constexpr char kRecordMark = '~';

std::string RecordMark(std::size_t index) {
  return index == 0 ? "" : kRecordMark + std::to_string(index);
}

bool Finds(ElfProgram& program, std::string_view name) {
  try {
    return program.FindLabel(name).has_value();
  } catch (const Error& error) {
    // There is something of that name, which is what was asked.
    return error.Code() == ErrorCode::kAmbiguous || error.Code() == ErrorCode::kNotRepresented;
  }
}

/// Is there a complete type of that name?
bool Completes(ElfProgram& program, std::string_view name) {
  return program.HasType(name) && !program.IsIncomplete(name);
}

std::vector<std::byte> BuildIdOfFile(const std::string& path) {
  const ElfFile file(path);
  const std::span<const std::byte> buildId = file.BuildId();
  return {buildId.begin(), buildId.end()};
}

/// What stands for a structure that is declared, but not defined.
bool IsHollow(const DataLableType& record) {
  return record.Members.empty() && record.Size == 0;
}

}  // namespace

LoadedProgram::LoadedProgram(LoadedFile program, std::vector<LoadedFile> libraries,
                             std::string debugFolder)
    : debugFolder_(std::move(debugFolder)) {
  modules_.push_back({std::move(program), nullptr, true, {}});
  modules_.front().program = std::make_unique<ElfProgram>(modules_.front().file.path, OptionsOf(0));
  for (LoadedFile& library : libraries) {
    if (modules_.size() == kMostFiles) break;
    modules_.push_back({std::move(library), nullptr, false, {}});
  }
}

LoadedProgram::~LoadedProgram() = default;

ElfOptions LoadedProgram::OptionsOf(std::size_t index) const {
  return {.debugFolder = debugFolder_,
          .loadBias = modules_[index].file.loadBias,
          .highestAddress = kHighestUserAddress,
          .recordMark = RecordMark(index),
          .firstTypeNumber = static_cast<TypeNumber>(index * kTypesOfOneFile + 1)};
}

ElfProgram* LoadedProgram::Open(std::size_t index) {
  Module& module = modules_[index];
  if (module.tried) return module.program.get();
  module.tried = true;
  const LoadedFile& file = module.file;
  try {
    if (!file.buildId.empty()) {
      const std::vector<std::byte> buildId = BuildIdOfFile(file.path);
      if (buildId != file.buildId) {
        throw Error(ErrorCode::kFileUnusable,
                    "it is not the file that was loaded: " +
                        (buildId.empty() ? "it has no build-id"
                                         : "its build-id is " + BuildIdText(buildId) + ", not " +
                                               BuildIdText(file.buildId)));
      }
    }
    auto program = std::make_unique<ElfProgram>(file.path, OptionsOf(index));
    const ElfProgram& first = *modules_.front().program;
    if (program->PointerSize() != first.PointerSize() || program->Order() != first.Order()) {
      throw Error(ErrorCode::kFileUnusable, "it is for another machine than the program");
    }
    module.program = std::move(program);
  } catch (const Error& error) {
    // A library without a single name is no loss.
    if (error.Code() != ErrorCode::kNoNames) {
      module.reason = "the library '" + file.path + "' cannot be used: " + error.what();
    }
  }
  return module.program.get();
}

bool LoadedProgram::Search(const std::function<bool(ElfProgram&)>& visit) {
  if (visit(Current())) return true;
  for (std::size_t i = 0; i < modules_.size(); ++i) {
    if (i == current_) continue;
    ElfProgram* const program = Open(i);
    if (program != nullptr && visit(*program)) return true;
  }
  return false;
}

std::optional<std::size_t> LoadedProgram::ModuleOfRecord(std::string_view name) const {
  const std::size_t offset = name.rfind('#');
  if (offset == name.npos) return std::nullopt;
  const std::size_t mark = name.find(kRecordMark, offset);
  if (mark == name.npos) return 0;
  std::size_t index = 0;
  std::from_chars(name.data() + mark + 1, name.data() + name.size(), index);
  if (index == 0 || index >= modules_.size()) return std::nullopt;
  return index;
}

std::size_t LoadedProgram::ModuleOfType(TypeNumber type) {
  return (type - 1) / kTypesOfOneFile;
}

void LoadedProgram::SetCurrentFile(const std::string& name) {
  std::optional<Error> failure;
  for (std::size_t i = 0; i < modules_.size(); ++i) {
    ElfProgram* const program = Open(i);
    // Without source files of its own it would take any name.
    if (program == nullptr || (i != 0 && program->SourceFiles().empty())) continue;
    try {
      program->SetCurrentFile(name);
      current_ = i;
      return;
    } catch (const Error& error) {
      if (error.Code() == ErrorCode::kAmbiguous) throw;
      if (!failure) failure = error;
    }
  }
  throw Error(*failure);
}

std::vector<std::string> LoadedProgram::SourceFiles() {
  std::set<std::string> files;
  Search([&](ElfProgram& program) {
    for (std::string& file : program.SourceFiles()) files.insert(std::move(file));
    return false;
  });
  return {files.begin(), files.end()};
}

std::optional<std::string> LoadedProgram::WhyIncomplete() const {
  if (auto reason = modules_.front().program->WhyIncomplete()) return reason;
  for (const Module& module : modules_) {
    if (!module.reason.empty()) return module.reason;
  }
  return std::nullopt;
}

std::uint32_t LoadedProgram::PointerSize() const {
  return Current().PointerSize();
}

ByteOrder LoadedProgram::Order() const {
  return Current().Order();
}

std::string LoadedProgram::CurrentFile() const {
  return Current().CurrentFile();
}

bool LoadedProgram::CurrentFileIsAssembly() const {
  return Current().CurrentFileIsAssembly();
}

std::optional<Label> LoadedProgram::FindLabel(std::string_view name) {
  std::optional<Error> failure;
  try {
    if (auto label = Current().FindLabel(name)) return label;
  } catch (const Error& error) {
    // These are about something of that name; the others say why there may be nothing.
    if (error.Code() == ErrorCode::kAmbiguous || error.Code() == ErrorCode::kNotRepresented) throw;
    failure = error;
  }
  return FindElsewhere(name, std::move(failure));
}

std::optional<Label> LoadedProgram::FindElsewhere(std::string_view name,
                                                  std::optional<Error> failure) {
  for (std::size_t i = 0; i < modules_.size(); ++i) {
    ElfProgram* const program = i == current_ ? nullptr : Open(i);
    if (program == nullptr) continue;
    try {
      std::optional<Label> label = program->FindLabel(name);
      if (!label) continue;
      if (!label->typed && label->kind == LabelKind::kSymbol) {
        if (auto declared = Current().FindDeclared(name, label->value)) return declared;
      }
      return label;
    } catch (const Error& error) {
      // Another library may have the one that is meant. Most systems keep the debug information of
      // their libraries in packages of its own: that it is not there does not make a name doubtful.
      const bool worthIt = i == 0 || error.Code() != ErrorCode::kFileUnusable;
      if (!failure && worthIt) failure = error;
    }
  }
  if (failure) throw Error(*failure);
  return std::nullopt;
}

bool LoadedProgram::HasType(std::string_view name) {
  if (const auto index = ModuleOfRecord(name)) {
    ElfProgram* const program = Open(*index);
    return program != nullptr && program->HasType(name);
  }
  if (Current().HasType(name)) return true;
  if (!CanonicalBasicType(name).empty()) return false;
  // No library is worth opening for `structnode`, which another reading explains, or for a name
  // that stands for something else.
  const auto known = [&](std::string_view reading) {
    return reading != name && Current().HasType(reading);
  };
  if (CanonicalTypeName(name, known) || Finds(Current(), name)) return false;
  return Search([&](ElfProgram& program) { return program.HasType(name); });
}

std::optional<DataLableType> LoadedProgram::FindType(std::string_view name) {
  if (const auto index = ModuleOfRecord(name)) {
    ElfProgram* const program = Open(*index);
    if (program == nullptr) return std::nullopt;
    std::optional<DataLableType> record = program->FindType(name);
    return record && IsHollow(*record) ? Complete(*std::move(record)) : record;
  }
  std::optional<Error> failure;
  std::optional<DataLableType> record;
  try {
    record = Current().FindType(name);
  } catch (const Error& error) {
    failure = error;
  }
  if (record) return IsHollow(*record) ? Complete(*std::move(record)) : record;
  Search([&](ElfProgram& program) {
    if (!program.HasType(name)) return false;
    record = program.FindType(name);
    return record.has_value();
  });
  if (!record && failure) throw Error(*failure);
  return record;
}

/// The definition of a structure that is only declared where it was found, if any file has it.
DataLableType LoadedProgram::Complete(DataLableType record) {
  const std::string name = record.Name;
  Search([&](ElfProgram& program) {
    if (!Completes(program, name)) return false;
    auto complete = program.FindType(name);
    if (!complete) return false;
    record.Swap(*complete);
    return true;
  });
  return record;
}

bool LoadedProgram::IsIncomplete(std::string_view name) {
  bool declared = false;
  const bool defined = Search([&](ElfProgram& program) {
    if (!program.IsIncomplete(name)) return program.HasType(name);
    declared = true;
    return false;
  });
  return declared && !defined;
}

}  // namespace targets

// A file opened as a program: everything that can be named is listed, looked up and built, and
// expressions are resolved over it.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/ByteSource.h"
#include "fuzz/MemoryFile.h"
#include "fuzz/Require.h"
#include "targets/ElfProgram.h"
#include "targets/Error.h"
#include "targets/ProgramHost.h"
#include "targets/TypeNames.h"

namespace {

using fuzzing::Require;

/// So much of a file with many names is looked at.
constexpr std::size_t kMostNames = 24;
/// No small file has a reason for more records in one type.
constexpr std::size_t kMostRecords = 1U << 20U;

/// Runs a step that may fail, with words.
void Attempt(const std::function<void()>& step) {
  try {
    step();
  } catch (const targets::Error& error) {
    Require(!std::string_view(error.what()).empty(), "an error says what is wrong");
  }
}

using List = void (targets::LabelSource::*)(const std::function<void(const targets::Listing&)>&);

/// The first names of a listing, which may break off.
std::vector<std::string> Names(targets::LabelSource& source, List list) {
  std::vector<std::string> names;
  Attempt([&] {
    (source.*list)([&](const targets::Listing& line) {
      if (names.size() < kMostNames) names.push_back(line.name);
    });
  });
  return names;
}

void CheckRecord(targets::LabelSource& source, const DataLableType& type) {
  std::vector<const DataLableType*> pending{&type};
  std::size_t records = 0;
  while (!pending.empty()) {
    const DataLableType& record = *pending.back();
    pending.pop_back();
    Require(++records <= kMostRecords, "a type's record is bounded");
    for (const std::string& nested : record.NestedTypes) {
      Require(source.HasType(nested), "a nested type is known");
    }
    for (const DataLableType& member : record.Members) pending.push_back(&member);
  }
}

/// What the type is made of, as far as a walk of some steps goes.
void CheckShapes(targets::LabelSource& source, targets::TypeNumber first) {
  constexpr std::size_t kMostShapes = 64;
  std::vector<targets::TypeNumber> known{first};
  const auto add = [&](targets::TypeNumber type) {
    const bool isNew = std::find(known.begin(), known.end(), type) == known.end();
    if (type != 0 && isNew && known.size() < kMostShapes) known.push_back(type);
  };
  for (std::size_t i = 0; i < known.size(); ++i) {
    const targets::TypeShape* const shape = source.Shape(known[i]);
    Require(shape != nullptr, "a number that was handed out has a shape");
    add(shape->target);
    for (const targets::FieldShape& field : shape->fields) {
      Require(field.firstBit < 8, "a bit-field begins in its first byte");
      add(field.type);
    }
  }
}

void LookUp(targets::LabelSource& source, const std::vector<std::string>& labels,
            const std::vector<std::string>& types) {
  for (const std::string& name : labels) {
    Attempt([&] {
      const auto label = source.FindLabel(name);
      Require(label.has_value(), "a listed label is found");
      if (label->typed) CheckRecord(source, label->type);
    });
    Attempt([&] {
      if (const auto object = source.FindObject(name)) CheckShapes(source, object->type);
    });
  }
  for (const std::string& name : types) {
    Attempt([&] {
      // A listing is for people: a type stands there as its program spells it, and the names of
      // some C++ types are none that an expression could hold.
      const auto spelled = targets::CanonicalTypeName(
          name, [&](std::string_view base) { return source.HasType(base); });
      if (!spelled) return;
      const auto type = source.FindType(spelled->base);
      Require(type.has_value(), "a listed type is found");
      CheckRecord(source, *type);
    });
  }
}

void ReadMemory(targets::MemorySource& memory, std::uint64_t address) {
  std::array<std::byte, 16> bytes{};
  const std::size_t count = memory.Read(address, 0, bytes).size;
  Require(count <= bytes.size(), "no more is read than asked for");
  Require(address + count >= address, "a read does not wrap");
}

void Resolve(targets::ProgramHost& host, const std::string& expression) {
  host.StartResolution();
  TStringResolver resolver(&host);
  fuzzing::RequireSaneResult(resolver, resolver.SolveStringOfElements(expression));
}

void ResolveOver(targets::ProgramHost& host, const std::vector<std::string>& labels,
                 const std::vector<std::string>& types) {
  constexpr std::size_t kMostExpressions = 12;
  for (std::size_t i = 0; i < labels.size() && i < kMostExpressions; ++i) {
    for (const char* behind : {"", "+1", "[1]", ".x", "->next", "[(1)+0].a"}) {
      Resolve(host, labels[i] + behind);
    }
    Resolve(host, "*" + labels[i]);
  }
  for (std::size_t i = 0; i < types.size() && i < kMostExpressions; ++i) {
    Resolve(host, "sizeof(" + types[i] + ")");
    Resolve(host, "*(" + types[i] + "*)0x401000");
    Resolve(host, "((" + types[i] + "*)0x402000)->a");
  }
}

void Use(targets::ElfProgram& program) {
  const std::vector<std::string> labels = Names(program, &targets::LabelSource::ListLabels);
  const std::vector<std::string> types = Names(program, &targets::LabelSource::ListTypes);
  LookUp(program, labels, types);
  for (const char* name : {"main", "x", "nothing", ""}) {
    Attempt([&] { program.FindLabel(name); });
    Attempt([&] { program.FindType(name); });
  }
  for (const std::uint64_t address : {std::uint64_t{0}, std::uint64_t{0x401000},
                                      std::uint64_t{0x402000}, ~std::uint64_t{0} - 3}) {
    Attempt([&] { ReadMemory(program.Memory(), address); });
    Attempt([&] { program.LabelAt(address); });
  }
  targets::ProgramHost host(program, program.Memory());
  ResolveOver(host, labels, types);
  for (const std::string& file : program.SourceFiles()) {
    Attempt([&] { program.SetCurrentFile(file); });
  }
  for (const std::string& name : labels) {
    Attempt([&] { program.FindLabel(name); });
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const fuzzing::MemoryFile kFile;
  kFile.Hold(fuzzing::AsText(data, size));
  Attempt([] {
    targets::ElfProgram program(kFile.Path());
    Use(program);
  });
  return 0;
}

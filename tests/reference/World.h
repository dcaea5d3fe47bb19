#ifndef STRINGRESOLVER_TESTS_REFERENCE_WORLD_H
#define STRINGRESOLVER_TESTS_REFERENCE_WORLD_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "host/DataLableType.h"
#include "tests/reference/Random.h"

namespace reference {

enum class Kind { kInteger, kFloat, kDouble, kPointer, kArray, kStructure };

/// A C type as the generator of expressions understands it. Types refer to each other by their
/// index in `World::types`.
struct TypeModel {
  Kind kind = Kind::kInteger;
  std::uint32_t size = 4;
  bool isSigned = false;
  std::size_t target = 0;     // pointee or element
  std::size_t count = 0;      // elements of an array
  std::size_t structure = 0;  // index in World::structures
  std::string name;           // what a cast calls it; empty when it has no name
};

struct FieldModel {
  std::string name;
  std::size_t type = 0;
  std::uint32_t offset = 0;
};

struct StructureModel {
  std::string name;
  std::uint32_t size = 0;
  std::vector<FieldModel> fields;
};

struct Label {
  std::string name;
  std::uint64_t value = 0;
  bool typed = false;
  bool confirmed = true;
  std::size_t model = 0;
  DataLableType type;
};

/// A program and its memory, made from a seed: what both hosts of a comparison answer from. Does
/// not change once made.
///
/// Most worlds hand out records as a careful host does; the odd ones bend them (flags, sizes,
/// members) beyond what any C type gives.
class World {
 public:
  explicit World(std::uint64_t seed);

  /// One byte of target memory; what lies outside is a function of the address.
  [[nodiscard]] std::uint8_t ByteAt(std::uint64_t address, std::uint16_t space) const;
  [[nodiscard]] bool Readable(std::uint64_t address, std::uint8_t space) const;
  [[nodiscard]] bool IsType(const std::string& name) const;
  /// A record of this world as a row may meet it: plain, as a location, or bent.
  DataLableType SomeRecord(Random* random) const;
  std::uint64_t SomeAddress(Random* random) const;

  std::uint64_t seed;
  std::string fileName;
  bool assembly = false;
  bool odd = false;             // bent records
  bool addressMembers = false;  // members that claim to be addresses already
  bool typedNumerals = false;   // numerals come with a type, as no host should have it
  unsigned dirt = 0;            // percent of reads that answer with an odd text
  unsigned refusals = 0;        // percent of addresses that cannot be read
  std::uint32_t pointerSize = 8;

  std::vector<TypeModel> types;
  std::vector<StructureModel> structures;
  std::vector<Label> labels;
  std::map<std::string, std::size_t> labelByName;
  std::map<std::string, DataLableType> namedTypes;  // blanks and ":@:" dropped
  std::set<std::string> ghostTypes;                 // named, but without a description

 private:
  void MakeTypes(Random* random);
  void MakeStructures(Random* random);
  void MakeNames(Random* random);
  void MakeLabels(Random* random);
  void AddLabel(const std::string& name, std::size_t model, Random* random);
  void Fill(std::uint64_t address, std::size_t model, Random* random);
  void Store(std::uint64_t address, std::uint64_t value, std::uint32_t size);
  [[nodiscard]] DataLableType RecordOf(std::size_t model, bool inField) const;
  void Bend(DataLableType* record, Random* random) const;

  std::uint64_t base_ = 0;
  std::uint64_t next_ = 0;
  std::vector<std::uint8_t> memory_[2];
};

}  // namespace reference

#endif  // STRINGRESOLVER_TESTS_REFERENCE_WORLD_H

#ifndef STRINGRESOLVER_TARGETS_DWARFFIELDS_H
#define STRINGRESOLVER_TARGETS_DWARFFIELDS_H

#include <vector>

#include "host/DataLableType.h"
#include "targets/DwarfTypes.h"

namespace targets {

/// The fields of a structure, as the `Members` of its full record.
struct StructureFields {
  SharedList<DataLableType> fields;
  std::vector<MemberRemark> remarks;
};

/// Reads the fields of `type`, a structure, union or class. Those of anonymous members take their
/// place among the others; those of base classes follow, so that a field of the class itself is
/// found before an inherited one of the same name. Throws `Error` (`kBrokenInfo`,
/// `kNotRepresented`).
StructureFields ReadFields(DwarfTypes& types, const Dwarf_Die& type);

}  // namespace targets

#endif  // STRINGRESOLVER_TARGETS_DWARFFIELDS_H

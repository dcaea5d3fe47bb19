#ifndef STRINGRESOLVER_TARGETS_PROGRAMLABELS_H
#define STRINGRESOLVER_TARGETS_PROGRAMLABELS_H

#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <utility>

#include "targets/AddressTable.h"
#include "targets/DwarfIndex.h"
#include "targets/DwarfTypes.h"
#include "targets/ElfFile.h"
#include "targets/ElfSymbols.h"
#include "targets/LabelChoice.h"

namespace targets {

/// Adds the symbols of `symbols`, which are those of the table of `file`, at run-time addresses. A
/// symbol whose size is not known reaches to the next symbol, but not past its section.
void AddSymbols(ElfSymbols& symbols, const ElfFile& file, const TargetLayout& layout,
                AddressTable* table);

/// Adds the variables and functions outside functions that the symbol table does not have by that
/// name. What cannot be read is left out.
void AddDescribedLabels(IndexTable& index, ElfSymbols& symbols, const ElfFile& program,
                        DwarfTypes& types, AddressTable* table);

/// Visits the names of the labels that `index` defines.
void VisitDefinedLabels(const IndexTable& index,
                        const std::function<void(std::string_view)>& visit);

/// Visits the names of the types that `index` holds, as expressions write them.
void VisitDefinedTypes(const IndexTable& index, const std::function<void(std::string_view)>& visit);

/// Names with what is said about them, in order and each pair once.
using Listings = std::set<std::pair<std::string, std::string>>;

/// Each adds what it lists; what cannot be read is said in its place. Symbols that `described`
/// defines as labels are left out; null: there is no debug information.
void AddLabelListings(IndexTable& index, LabelChoice& choice, Listings* listings);
void AddTypeListings(const IndexTable& index, const DwarfFile& file, Listings* listings);
void AddSymbolListings(ElfSymbols& symbols, IndexTable* described, const TargetLayout& layout,
                       Listings* listings);

}  // namespace targets

#endif  // STRINGRESOLVER_TARGETS_PROGRAMLABELS_H

#ifndef STRINGRESOLVER_RESOLVER_SPAREPOOL_H
#define STRINGRESOLVER_RESOLVER_SPAREPOOL_H

#include <list>

#include "host/DataLableType.h"
#include "model/AreaBlock.h"

namespace resolver {

// List entries that resolvers of this thread have left for the next ones. Hosts make a resolver for
// each text, and making blocks and saved types and destroying them again was a tenth of the time
// that such a one takes. A few are kept, which hold nothing of a host's: no types, and no texts
// that took memory.

/// Moves a block to the end of `*blocks`, if one is left; whatever its fields say is to be
/// overwritten. False for none.
bool TakeSpareBlock(std::list<AreaBlock>* blocks) noexcept;

/// Moves an entry to the end of `*types`, if one is left, to be overwritten as well. False for
/// none.
bool TakeSpareType(std::list<DataLableType>* types) noexcept;

/// Empties the list, and keeps entries of it for resolvers to come.
void LeaveSpares(std::list<AreaBlock>* blocks) noexcept;
void LeaveSpares(std::list<DataLableType>* types) noexcept;

}  // namespace resolver

#endif  // STRINGRESOLVER_RESOLVER_SPAREPOOL_H

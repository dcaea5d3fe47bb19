#include "resolver/SparePool.h"

#include <cstddef>
#include <string>

namespace resolver {
namespace {

/// Most texts have no more operands, groups and casts.
constexpr std::size_t kKept = 16;

struct Pool;

/// The thread's pool while there is one. A resolver that is destroyed later than its thread's own
/// variables, as static ones are, meets none any more.
constinit thread_local Pool* poolOfThread = nullptr;
constinit thread_local bool poolIsGone = false;

struct Pool {
  std::list<AreaBlock> blocks;
  std::list<DataLableType> types;

  Pool() { poolOfThread = this; }
  Pool(const Pool&) = delete;
  Pool& operator=(const Pool&) = delete;
  ~Pool() {
    poolOfThread = nullptr;
    poolIsGone = true;
  }
};

Pool* PoolToFill() noexcept {
  if (poolOfThread == nullptr && !poolIsGone) thread_local Pool pool;
  return poolOfThread;
}

/// Every text has this much room in itself.
constexpr std::size_t kOwnRoom = 15;

void Clean(std::string* text) noexcept {
  if (text->capacity() > kOwnRoom) std::string().swap(*text);
}

void Clean(DataLableType* type) noexcept {
  Clean(&type->Name);
  type->Members.clear();
  type->NestedTypes.clear();
}

bool HoldsMemory(const DataLableType& type) noexcept {
  return !type.Members.empty() || !type.NestedTypes.empty() || type.Name.capacity() > kOwnRoom;
}

void Clean(AreaBlock* block) noexcept {
  for (std::string* text : {&block->BeforeText, &block->AreaText, &block->AfterText}) Clean(text);
  for (DataLableType* type : {&block->Type, &block->CastType}) {
    if (HoldsMemory(*type)) Clean(type);
  }
}

template <typename Entry>
void Leave(std::list<Entry>* entries, std::list<Entry> Pool::*kept) noexcept {
  if (entries->empty()) return;
  Pool* const pool = PoolToFill();
  if (pool == nullptr) return;
  std::list<Entry>& spares = pool->*kept;
  while (spares.size() + entries->size() > kKept) entries->pop_back();
  for (Entry& entry : *entries) Clean(&entry);
  spares.splice(spares.begin(), *entries);
}

template <typename Entry>
bool Take(std::list<Entry>* entries, typename std::list<Entry>::iterator before,
          std::list<Entry> Pool::*kept) noexcept {
  if (poolOfThread == nullptr) return false;
  std::list<Entry>& spares = poolOfThread->*kept;
  if (spares.empty()) return false;
  entries->splice(before, spares, spares.begin());
  return true;
}

}  // namespace

bool TakeSpareBlock(std::list<AreaBlock>* blocks) noexcept {
  return Take(blocks, blocks->end(), &Pool::blocks);
}

bool TakeSpareType(std::list<DataLableType>* types) noexcept {
  return Take(types, types->end(), &Pool::types);
}

void LeaveSpares(std::list<AreaBlock>* blocks) noexcept {
  Leave(blocks, &Pool::blocks);
}

void LeaveSpares(std::list<DataLableType>* types) noexcept {
  Leave(types, &Pool::types);
}

}  // namespace resolver

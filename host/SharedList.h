#ifndef STRINGRESOLVER_HOST_SHAREDLIST_H
#define STRINGRESOLVER_HOST_SHAREDLIST_H

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <new>
#include <stdexcept>
#include <type_traits>
#include <utility>

/// A list of values whose copies share their entries until one of them is changed.
///
/// Records are copied at every step of a resolution, and a structure's has as many entries as the
/// structure has fields; sharing makes a copy cost the same for any number of them. Each list still
/// behaves as a value of its own: what is done to one never shows in another, and lists that share
/// may be used, copied and destroyed by different threads at the same time.
///
/// Entries lie side by side in memory. A reference or iterator lasts until its list is next changed
/// or destroyed; one for writing also ends when the list is next copied.
template <typename T>
class SharedList {
 public:
  using value_type = T;
  using size_type = std::size_t;
  using difference_type = std::ptrdiff_t;
  using reference = T&;
  using const_reference = const T&;
  using iterator = T*;
  using const_iterator = const T*;

  SharedList() noexcept = default;
  SharedList(std::initializer_list<T> entries) { assign(entries.begin(), entries.end()); }
  /// One entry.
  explicit SharedList(T&& entry) : block_(Allocate(1)) {
    static_assert(std::is_nothrow_move_constructible_v<T>);
    ::new (static_cast<void*>(block_->Entries())) T(std::move(entry));
    block_->count = 1;
  }
  SharedList(const SharedList& other) noexcept : block_(other.block_) {
    if (block_ == nullptr) return;
    std::atomic<std::uint32_t>& owners = block_->owners;
    if (IsSingleThreaded()) {
      owners.store(owners.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
    } else {
      owners.fetch_add(1, std::memory_order_relaxed);
    }
  }
  SharedList(SharedList&& other) noexcept : block_(std::exchange(other.block_, nullptr)) {}
  ~SharedList() { clear(); }

  SharedList& operator=(SharedList other) noexcept {
    swap(other);
    return *this;
  }

  void swap(SharedList& other) noexcept { std::swap(block_, other.block_); }

  [[nodiscard]] bool empty() const noexcept { return block_ == nullptr; }
  [[nodiscard]] std::size_t size() const noexcept { return empty() ? 0 : block_->count; }

  [[nodiscard]] const T* begin() const noexcept { return empty() ? nullptr : block_->Entries(); }
  [[nodiscard]] const T* end() const noexcept { return begin() + size(); }
  [[nodiscard]] const T* cbegin() const noexcept { return begin(); }
  [[nodiscard]] const T* cend() const noexcept { return end(); }
  /// Of a list that is not empty, as `back`.
  [[nodiscard]] const T& front() const noexcept { return *begin(); }
  [[nodiscard]] const T& back() const noexcept { return *(end() - 1); }

  // For writing: entries that other lists share are copied first.

  [[nodiscard]] T* begin() { return empty() ? nullptr : Own(block_->count)->Entries(); }
  [[nodiscard]] T* end() { return begin() + size(); }
  [[nodiscard]] T& front() { return *begin(); }
  [[nodiscard]] T& back() { return *(end() - 1); }

  template <typename... Arguments>
  T& emplace_back(Arguments&&... arguments) {
    // Made before the entries move, which it may come from.
    T entry(std::forward<Arguments>(arguments)...);
    const std::size_t count = size();
    Block* const block = Own(count + 1);
    T* const made = ::new (static_cast<void*>(block->Entries() + count)) T(std::move(entry));
    ++block->count;
    return *made;
  }
  void push_back(const T& entry) { emplace_back(entry); }
  void push_back(T&& entry) { emplace_back(std::move(entry)); }
  /// Of a list that is not empty.
  void pop_back() {
    const std::size_t left = size() - 1;
    if (left == 0) return clear();
    Block* const block = Own(left);
    if (block->count == left) return;
    std::destroy_at(block->Entries() + left);
    block->count = static_cast<std::uint32_t>(left);
  }

  /// Drops entries from the end, or adds default ones.
  void resize(std::size_t count) {
    while (size() > count) pop_back();
    while (size() < count) emplace_back();
  }

  template <typename Iterator>
  void assign(Iterator first, Iterator last) {
    SharedList entries;
    for (; first != last; ++first) entries.emplace_back(*first);
    swap(entries);
  }

  void clear() noexcept {
    if (Block* const block = TakeIfLast()) Destroy(block);
  }

  /// Empties the list, and the list that `inner` names in each entry and below, in a loop: entries
  /// that hold such lists themselves may be nested to any depth.
  template <typename Inner>
  void ClearNested(Inner inner) noexcept {
    if (Block* const block = TakeIfLast()) DestroyNested(block, inner);
  }

  /// The two lists share their entries, so they are equal without a look at any.
  [[nodiscard]] bool SharesWith(const SharedList& other) const noexcept {
    return block_ == other.block_;
  }

  bool operator==(const SharedList& other) const {
    if (SharesWith(other)) return true;
    if (size() != other.size()) return false;
    const T* entry = other.begin();
    for (const T& own : *this) {
      if (!(own == *entry++)) return false;
    }
    return true;
  }

 private:
  /// What lists share; the entries follow it in the same allocation. A list without entries has
  /// none.
  struct Block {
    std::atomic<std::uint32_t> owners{1};
    std::uint32_t count = 0;
    std::uint32_t capacity = 0;
    /// Used while blocks wait to be destroyed.
    Block* next = nullptr;

    T* Entries() noexcept { return reinterpret_cast<T*>(this + 1); }
  };

  static Block* Allocate(std::size_t capacity) {
    static_assert(alignof(T) <= alignof(Block));
    if (capacity > UINT32_MAX) throw std::length_error("a list has at most 2^32 - 1 entries");
    Block* const block = ::new (::operator new(sizeof(Block) + capacity * sizeof(T))) Block;
    block->capacity = static_cast<std::uint32_t>(capacity);
    return block;
  }

  static void Free(Block* block) noexcept {
    std::destroy_at(block);
    ::operator delete(block);
  }

  // Lists that share are let go of far more often than the last of them. What is done for that one
  // stays out of the functions around it, which would save registers for it each time: one in
  // twenty instructions of a resolution.

  [[gnu::noinline]] static void Destroy(Block* block) noexcept {
    std::destroy_n(block->Entries(), block->count);
    Free(block);
  }

  template <typename Inner>
  [[gnu::noinline]] static void DestroyNested(Block* doomed, Inner inner) noexcept {
    while (doomed != nullptr) {
      Block* rest = std::exchange(doomed->next, nullptr);
      for (std::size_t i = 0; i < doomed->count; ++i) {
        Block* const below = inner(doomed->Entries()[i]).TakeIfLast();
        if (below == nullptr) continue;
        below->next = rest;
        rest = below;
      }
      std::destroy_n(doomed->Entries(), doomed->count);
      Free(doomed);
      doomed = rest;
    }
  }

  /// Gives up the block; returns it when nobody else has it.
  Block* TakeIfLast() noexcept {
    Block* const block = std::exchange(block_, nullptr);
    if (block == nullptr) return nullptr;
    // Nobody can join a block that only this list has.
    std::atomic<std::uint32_t>& owners = block->owners;
    const std::uint32_t count = owners.load(std::memory_order_acquire);
    if (count == 1) return block;
    if (IsSingleThreaded()) {
      owners.store(count - 1, std::memory_order_relaxed);
      return nullptr;
    }
    return owners.fetch_sub(1, std::memory_order_acq_rel) == 1 ? block : nullptr;
  }

  /// No other thread has been started yet, so counting needs no locked instruction: such a one
  /// takes the time of twenty others, and each record that is copied costs two.
  static bool IsSingleThreaded() noexcept {
#if defined(_GLIBCXX_RELEASE) && _GLIBCXX_RELEASE >= 11
    return __gnu_cxx::__is_single_threaded();
#else
    return false;
#endif
  }

  /// Makes sure of a block that is this list's alone and has room for `count` entries.
  Block* Own(std::size_t count) {
    const bool alone = block_ != nullptr && block_->owners.load(std::memory_order_acquire) == 1;
    if (alone && block_->capacity >= count) return block_;
    // Most lists have one entry, a pointer's pointee; longer ones double.
    const std::size_t room = alone ? 2 * std::size_t{block_->capacity} : 0;
    SharedList copy;
    copy.block_ = Allocate(count > room ? count : room);
    for (std::size_t i = 0; i < size() && i < count; ++i) {
      T& from = block_->Entries()[i];
      void* const to = copy.block_->Entries() + i;
      if (alone) {
        ::new (to) T(std::move(from));
      } else {
        ::new (to) T(static_cast<const T&>(from));
      }
      ++copy.block_->count;
    }
    swap(copy);
    return block_;
  }

  Block* block_ = nullptr;
};

#endif  // STRINGRESOLVER_HOST_SHAREDLIST_H

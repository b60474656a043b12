// Where the nodes, records and texts of one procedure lie. They are freed together, so they share blocks: a
// load of 65,535 lines takes a few allocations. With ORVANE_NODES_ONE_BY_ONE each is an allocation of its
// own, so that a sanitizer catches a pointer that outlived its procedure.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <vector>

#include "procedure/file/procedure.h"

namespace orvane {

/// Takes bytes off large blocks, aligned for pointers and doubles, never initialised.
class Arena {
 public:
  static constexpr std::size_t alignment = 8;
  static constexpr std::size_t first_block = 4096, largest_block = 1U << 18;

  std::byte* take(std::size_t size) {
    size = (size + alignment - 1) / alignment * alignment;
    if (size > left_) grow(size);
    std::byte* taken = next_;
    next_ += size;
    left_ -= size;
    return taken;
  }
  /// One block for what is asked for next.
  void reserve(std::size_t size) {
    if (size > left_) grow(size);
  }

 private:
  void grow(std::size_t size) {
    const std::size_t block = size > block_size_ ? size : block_size_;
    blocks_.push_back(std::unique_ptr<std::byte[]>(new std::byte[block]));
    next_ = blocks_.back().get();
    left_ = block;
    if (block_size_ < largest_block) block_size_ *= 2;
  }

  std::vector<std::unique_ptr<std::byte[]>> blocks_;
  std::byte* next_ = nullptr;
  std::size_t left_ = 0;
  std::size_t block_size_ = first_block;
};

#ifdef ORVANE_NODES_ONE_BY_ONE

class NodeStore {
 public:
  void reserve_nodes(std::size_t) {}
  ProcNode* node() { return nodes_.emplace_back(std::make_unique<ProcNode>()).get(); }
  FscRecord* record() { return records_.emplace_back(std::make_unique<FscRecord>(fsc_record_new())).get(); }
  FscRecord* record_at(const std::byte* bytes) {
    FscRecord* made = record();
    std::memcpy(made->bytes.data(), bytes, FscRecord::size);
    return made;
  }
  char* text(std::size_t size) { return texts_.emplace_back(std::make_unique<char[]>(size)).get(); }
  void keep(std::unique_ptr<std::byte[]>) {}

 private:
  std::vector<std::unique_ptr<ProcNode>> nodes_;
  std::vector<std::unique_ptr<FscRecord>> records_;
  std::vector<std::unique_ptr<char[]>> texts_;
};

#else

class NodeStore {
 public:
  /// Room for this many nodes in one block.
  void reserve_nodes(std::size_t count) { arena_.reserve(count * sizeof(ProcNode)); }
  ProcNode* node() { return new (arena_.take(sizeof(ProcNode))) ProcNode; }
  FscRecord* record() { return new (arena_.take(sizeof(FscRecord))) FscRecord(fsc_record_new()); }
  /// The record whose bytes lie here, in a block that is handed to keep().
  FscRecord* record_at(std::byte* bytes) { return reinterpret_cast<FscRecord*>(bytes); }
  /// Room for a text of size - 1 characters, all NUL.
  char* text(std::size_t size) {
    std::byte* bytes = arena_.take(size);
    std::memset(bytes, 0, size);
    return reinterpret_cast<char*>(bytes);
  }
  /// Takes over a block of file bytes in which records lie.
  void keep(std::unique_ptr<std::byte[]> block) { kept_.push_back(std::move(block)); }

 private:
  static_assert(alignof(ProcNode) <= Arena::alignment && alignof(FscRecord) == 1);
  static_assert(std::is_trivially_destructible_v<ProcNode>, "nodes are freed with their block");
  Arena arena_;
  std::vector<std::unique_ptr<std::byte[]>> kept_;
};

#endif

}  // namespace orvane

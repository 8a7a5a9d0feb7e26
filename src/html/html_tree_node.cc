#include "zestra/html/html_tree_node.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

#include "zestra/charset/charset_conversion.h"

namespace OrvelParser {
namespace {

constexpr uint32_t kMaxCount = std::numeric_limits<uint32_t>::max();

// The capacity after growing one of `capacity` to hold at least `needed`:
// twice as much, so appends cost amortised constant time.
uint32_t Grown(uint32_t capacity, uint64_t needed) {
  if (needed > kMaxCount) throw std::bad_alloc();
  const uint64_t doubled = 2 * static_cast<uint64_t>(capacity);
  return static_cast<uint32_t>(std::min<uint64_t>(std::max<uint64_t>(doubled, needed), kMaxCount));
}

}  // namespace

// NodeList

void NodeList::Reserve(NodeArena& arena, uint32_t capacity) {
  if (capacity <= capacity_) return;
  if (data_ != nullptr && arena.Extend(data_, sizeof(Entry) * capacity_, sizeof(Entry) * capacity)) {
    capacity_ = capacity;
    return;
  }
  auto* data = static_cast<Entry*>(arena.Allocate(sizeof(Entry) * static_cast<std::size_t>(capacity)));
  if (data == nullptr) throw std::bad_alloc();
  for (uint32_t i = 0; i < size_; ++i) {
    new (data + i) Entry(std::move(data_[i]));
    data_[i].~Entry();
  }
  NodeArena::Release(data_);
  data_ = data;
  capacity_ = capacity;
}

NodeList::iterator NodeList::Insert(NodeArena& arena, const_iterator at, Entry entry) {
  const uint32_t index = static_cast<uint32_t>(at - data_);
  if (size_ == capacity_) Reserve(arena, Grown(capacity_, static_cast<uint64_t>(size_) + 1));
  new (data_ + size_) Entry();
  for (uint32_t i = size_; i > index; --i) data_[i].Swap(data_[i - 1]);
  data_[index] = std::move(entry);
  ++size_;
  return data_ + index;
}

NodeList::Entry NodeList::Erase(const_iterator at) noexcept {
  const uint32_t index = static_cast<uint32_t>(at - data_);
  Entry out = std::move(data_[index]);
  for (uint32_t i = index; i + 1 < size_; ++i) data_[i].Swap(data_[i + 1]);
  data_[--size_].~Entry();
  return out;
}

void NodeList::Append(NodeArena& arena, NodeList& other) {
  if (other.size_ == 0) return;
  const uint64_t needed = static_cast<uint64_t>(size_) + other.size_;
  if (needed > capacity_) Reserve(arena, Grown(capacity_, needed));
  for (uint32_t i = 0; i < other.size_; ++i) new (data_ + size_ + i) Entry(std::move(other.data_[i]));
  size_ += other.size_;
  other.Clear();
}

void NodeList::Clear() noexcept {
  // Each holder's release frees its subtree without recursion.
  while (size_ > 0) data_[--size_].~Entry();
  NodeArena::Release(data_);
  data_ = nullptr;
  capacity_ = 0;
}

// HtmlTreeNode

HtmlTreeNode::Entry HtmlTreeNode::Make(NodeArena& arena, uint32_t keyword, uint32_t source_position,
                                       uint32_t source_length, ElementNumber element) noexcept {
  void* memory = arena.Allocate(sizeof(HtmlTreeNode));
  if (memory == nullptr) return Entry();
  return Entry(new (memory) HtmlTreeNode(keyword, source_position, source_length, element));
}

void HtmlTreeNode::Free(HtmlTreeNode* node) noexcept {
  // Nodes whose last holder went wait in a chain through their payload
  // pointer, which a dying node no longer needs: freeing takes neither
  // stack nor memory in proportion to the tree's depth or width.
  // Their blocks go back in a batch, most of a chunk's at once.
  HtmlTreeNode* pending = nullptr;
  NodeArena::ReleaseBatch released;
  auto wait = [&pending, &released](HtmlTreeNode* dying) {
    released.Add(dying->payload_);
    dying->payload_ = reinterpret_cast<char*>(pending);
    pending = dying;
  };
  wait(node);
  while (pending != nullptr) {
    HtmlTreeNode* current = pending;
    pending = reinterpret_cast<HtmlTreeNode*>(current->payload_);
    current->payload_ = nullptr;
    NodeList& children = current->children_;
    for (uint32_t i = 0; i < children.size_; ++i) {
      HtmlTreeNode* child = std::exchange(children.data_[i].node_, nullptr);
      if (child != nullptr && child->DropHolder()) wait(child);
    }
    released.Add(children.data_);  // every holder is empty now
    children.data_ = nullptr;
    children.size_ = children.capacity_ = 0;
    current->~HtmlTreeNode();
    released.Add(current);
  }
}

void HtmlTreeNode::ReservePayload(NodeArena& arena, std::size_t bytes) {
  const uint64_t needed = static_cast<uint64_t>(payload_size_) + bytes;
  if (needed <= payload_capacity_) return;
  if (needed > kMaxCount) throw std::bad_alloc();
  const uint32_t capacity = static_cast<uint32_t>(needed);
  if (payload_ != nullptr && arena.Extend(payload_, payload_capacity_, capacity)) {
    payload_capacity_ = capacity;
    return;
  }
  char* payload = static_cast<char*>(arena.Allocate(capacity));
  if (payload == nullptr) throw std::bad_alloc();
  if (payload_size_ != 0) std::memcpy(payload, payload_, payload_size_);
  NodeArena::Release(payload_);
  payload_ = payload;
  payload_capacity_ = capacity;
}

void HtmlTreeNode::AppendPayload(NodeArena& arena, std::string_view bytes) {
  const uint64_t needed = static_cast<uint64_t>(payload_size_) + bytes.size();
  if (needed > payload_capacity_) ReservePayload(arena, Grown(payload_capacity_, needed) - payload_size_);
  if (!bytes.empty()) std::memcpy(payload_ + payload_size_, bytes.data(), bytes.size());
  payload_size_ += static_cast<uint32_t>(bytes.size());
}

void HtmlTreeNode::SetText(NodeArena& arena, std::string_view utf8) {
  if (utf8.size() > payload_capacity_) {
    // Nothing of the old text is kept: a block of the exact size will do.
    const uint32_t old_size = std::exchange(payload_size_, 0);
    try {
      ReservePayload(arena, utf8.size());
    } catch (const std::bad_alloc&) {
      payload_size_ = old_size;
      throw;
    }
  }
  payload_size_ = 0;
  AppendPayload(arena, utf8);
}

void HtmlTreeNode::AppendText(NodeArena& arena, std::string_view utf8) { AppendPayload(arena, utf8); }

void HtmlTreeNode::AddParam(NodeArena& arena, std::string_view name, std::string_view value) {
  if (name.find('\0') != std::string_view::npos || value.find('\0') != std::string_view::npos) return;
  // Room for the whole attribute first, so that a failure adds nothing.
  ReservePayload(arena, name.size() + value.size() + 2);
  const char nul = '\0';
  AppendPayload(arena, name);
  AppendPayload(arena, std::string_view(&nul, 1));
  AppendPayload(arena, value);
  AppendPayload(arena, std::string_view(&nul, 1));
}

void HtmlTreeNode::GetText(std::u16string& text) const {
  text.clear();
  if (IsText()) {
    OrvelCharset::AppendUtf16(payload_, payload_size_, text);
    return;
  }
  WalkNodes(children_, [&text](const HtmlTreeNode& node) {
    if (node.IsText()) OrvelCharset::AppendUtf16(node.payload_, node.payload_size_, text);
    return true;
  });
}

void HtmlTreeNode::GetParam(const std::string& name, std::string& value) const {
  std::string_view found;
  if (FindParam(name, found)) {
    value.assign(found);
  } else {
    value.clear();
  }
}

bool HtmlTreeNode::FindParam(std::string_view name, std::string_view& value) const {
  bool found = false;
  ForEachParam([&](std::string_view attribute, std::string_view attribute_value) {
    if (attribute != name) return true;
    value = attribute_value;
    found = true;
    return false;
  });
  return found;
}

}  // namespace OrvelParser

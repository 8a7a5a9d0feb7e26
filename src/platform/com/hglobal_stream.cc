#include "zestra/platform/com/hglobal_stream.h"

#include <algorithm>
#include <atomic>
#include <cstring>

#include "zestra/base/memory_pool.h"

namespace {

constexpr uint64_t kMaxPosition = 0xFFFFFFFFu;

// The IStream over an HGLOBAL block. The block's first size_ bytes are the
// data; the block may be longer.
class MemoryStream final : public IStream, public OrvelMem::PoolObject {
 public:
  MemoryStream(HGLOBAL block, bool delete_on_release)
      : block_(block), delete_on_release_(delete_on_release), size_(static_cast<ULONG>(GlobalSize(block))) {}
  MemoryStream(const MemoryStream&) = delete;
  MemoryStream& operator=(const MemoryStream&) = delete;

  HRESULT QueryInterface(REFIID riid, void** object) override {
    if (object == nullptr) return E_POINTER;
    if (riid == IID_IUnknown || riid == IID_IStream || riid == IID_ISequentialStream) {
      *object = static_cast<IStream*>(this);
      AddRef();
      return S_OK;
    }
    *object = nullptr;
    return E_NOINTERFACE;
  }

  ULONG AddRef() override { return refs_.fetch_add(1, std::memory_order_relaxed) + 1; }

  ULONG Release() override {
    const ULONG left = refs_.fetch_sub(1, std::memory_order_acq_rel) - 1;
    if (left == 0) delete this;
    return left;
  }

  HRESULT Read(void* buffer, ULONG count, ULONG* read) override {
    if (buffer == nullptr && count > 0) return STG_E_INVALIDPOINTER;
    const ULONG n = position_ < size_ ? std::min(count, size_ - position_) : 0;
    if (n > 0) {
      const auto* bytes = static_cast<const unsigned char*>(GlobalLock(block_));
      std::memcpy(buffer, bytes + position_, n);
      GlobalUnlock(block_);
    }
    position_ += n;
    if (read != nullptr) *read = n;
    return S_OK;
  }

  HRESULT Write(const void* data, ULONG count, ULONG* written) override {
    if (written != nullptr) *written = 0;
    if (count == 0) return S_OK;
    if (data == nullptr) return STG_E_INVALIDPOINTER;
    const uint64_t end = static_cast<uint64_t>(position_) + count;
    if (end > kMaxPosition || !Reserve(end)) return STG_E_MEDIUMFULL;
    auto* bytes = static_cast<unsigned char*>(GlobalLock(block_));
    // Bytes between the old end and a position sought past it read as zero.
    if (position_ > size_) std::memset(bytes + size_, 0, position_ - size_);
    std::memcpy(bytes + position_, data, count);
    GlobalUnlock(block_);
    position_ = static_cast<ULONG>(end);
    size_ = std::max(size_, position_);
    if (written != nullptr) *written = count;
    return S_OK;
  }

  HRESULT Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER* position) override {
    int64_t from;
    switch (origin) {
      case STREAM_SEEK_SET: from = 0; break;
      case STREAM_SEEK_CUR: from = position_; break;
      case STREAM_SEEK_END: from = size_; break;
      default: return STG_E_INVALIDFUNCTION;
    }
    // `from` lies in [0, 2^32), so a move of larger magnitude always lands
    // outside the stream, and any other move sums without overflow.
    constexpr int64_t kLimit = static_cast<int64_t>(kMaxPosition);
    if (move.QuadPart > kLimit || move.QuadPart < -kLimit) return STG_E_INVALIDFUNCTION;
    const int64_t target = from + move.QuadPart;
    if (target < 0 || target > kLimit) return STG_E_INVALIDFUNCTION;
    position_ = static_cast<ULONG>(target);
    if (position != nullptr) position->QuadPart = position_;
    return S_OK;
  }

  HRESULT Stat(STATSTG* stat, DWORD flags) override {
    if (stat == nullptr) return STG_E_INVALIDPOINTER;
    if (flags != STATFLAG_DEFAULT && flags != STATFLAG_NONAME) return STG_E_INVALIDFLAG;
    *stat = STATSTG{};
    stat->type = STGTY_STREAM;
    stat->cbSize.QuadPart = size_;
    stat->grfMode = STGM_READWRITE;
    return S_OK;
  }

  HGLOBAL Block() const { return block_; }

 private:
  ~MemoryStream() {
    if (delete_on_release_) GlobalFree(block_);
  }

  // Makes the block hold at least `needed` bytes, doubling it so that a run
  // of small writes moves the memory only a logarithmic number of times.
  bool Reserve(uint64_t needed) {
    const SIZE_T have = GlobalSize(block_);
    if (needed <= have) return true;
    const uint64_t grown = std::min<uint64_t>(std::max<uint64_t>({needed, 2 * static_cast<uint64_t>(have), 256}), kMaxPosition);
    return GlobalReAlloc(block_, static_cast<SIZE_T>(grown), GMEM_MOVEABLE) != nullptr;
  }

  std::atomic<ULONG> refs_{1};
  HGLOBAL block_;           // owned when delete_on_release_
  bool delete_on_release_;
  ULONG size_;              // bytes of data in the stream
  ULONG position_ = 0;
};

}  // namespace

HRESULT CreateStreamOnHGlobal(HGLOBAL block, BOOL delete_on_release, IStream** stream) {
  if (stream == nullptr) return E_INVALIDARG;
  *stream = nullptr;
  HGLOBAL own = block != nullptr ? block : GlobalAlloc(GMEM_MOVEABLE, 0);
  if (own == nullptr) return E_OUTOFMEMORY;
  if (GlobalSize(own) > kMaxPosition) return E_INVALIDARG;
  MemoryStream* created = new MemoryStream(own, delete_on_release != 0);
  if (created == nullptr) {
    if (block == nullptr) GlobalFree(own);
    return E_OUTOFMEMORY;
  }
  *stream = created;
  return S_OK;
}

HRESULT GetHGlobalFromStream(IStream* stream, HGLOBAL* block) {
  if (stream == nullptr || block == nullptr) return E_INVALIDARG;
  auto* memory = dynamic_cast<MemoryStream*>(stream);
  if (memory == nullptr) return E_INVALIDARG;
  *block = memory->Block();
  return S_OK;
}

#include "charset/iconv_conversion.h"

#include <errno.h>
#include <iconv.h>

#include <new>

#include "zestra/base/memory_pool.h"

namespace OrvelCharset {
namespace {

constexpr uint8_t kWideReplacement[2] = {0xFD, 0xFF};  // U+FFFD in 16-bit little-endian text
constexpr uint8_t kWideQuestionMark[2] = {0x3F, 0x00};

// Owns one iconv descriptor and runs it over the caller's buffers. iconv
// stops at every byte sequence it cannot convert; the subclass writes the
// replacement and says how much input it stands for.
class IconvConversion : public ConversionFunction {
 public:
  explicit IconvConversion(iconv_t cd) : cd_(cd) {}
  ~IconvConversion() override { iconv_close(cd_); }

  void Convert(const uint8_t* in, uint32_t in_count, uint32_t& used, uint8_t* out,
               uint32_t out_capacity, uint32_t& produced, bool end_of_input,
               bool write_signature) final {
    used = 0;
    produced = 0;
    if (write_signature && !WriteSignature(out, out_capacity, produced)) return;
    while (used < in_count) {
      const int error = Step(in, in_count, used, out, out_capacity, produced);
      if (error != EILSEQ && error != EINVAL) break;  // done, output full, or no way on
      if (error == EINVAL && !end_of_input) break;     // wait for the rest of the sequence
      if (!WriteReplacement(out, out_capacity, produced)) break;
      // EINVAL: the input ends inside a sequence, which the replacement
      // stands for. EILSEQ: a sequence iconv cannot convert.
      used += error == EINVAL ? in_count - used : InvalidSize(in + used, in_count - used);
    }
    if (end_of_input && used == in_count) Flush(out, out_capacity, produced);
  }

 protected:
  // Converts in[used, in_count) into out[produced, capacity), advancing both
  // counts; returns 0 when all input was converted, else iconv's errno.
  int Step(const uint8_t* in, uint32_t in_count, uint32_t& used, uint8_t* out, uint32_t capacity,
           uint32_t& produced) {
    char* in_pointer = const_cast<char*>(reinterpret_cast<const char*>(in + used));
    size_t in_left = in_count - used;
    char* out_pointer = reinterpret_cast<char*>(out + produced);
    size_t out_left = capacity - produced;
    const size_t result = iconv(cd_, &in_pointer, &in_left, &out_pointer, &out_left);
    const int error = result == static_cast<size_t>(-1) ? errno : 0;
    used = in_count - static_cast<uint32_t>(in_left);
    produced = capacity - static_cast<uint32_t>(out_left);
    return error;
  }

 private:
  // Writes the byte-order mark once, where the target has one; false when
  // it does not fit.
  virtual bool WriteSignature(uint8_t* out, uint32_t capacity, uint32_t& produced) = 0;
  // Writes the replacement of an unconvertible sequence; false when it does
  // not fit.
  virtual bool WriteReplacement(uint8_t* out, uint32_t capacity, uint32_t& produced) = 0;
  // Input bytes of the unconvertible sequence at p, of `size` remaining.
  virtual uint32_t InvalidSize(const uint8_t* p, uint32_t size) const = 0;

  // Returns the descriptor to its initial shift state, writing the bytes
  // that do so (the final escape of ISO-2022 text) if they fit.
  void Flush(uint8_t* out, uint32_t capacity, uint32_t& produced) {
    char* out_pointer = reinterpret_cast<char*>(out + produced);
    size_t out_left = capacity - produced;
    iconv(cd_, nullptr, nullptr, &out_pointer, &out_left);
    produced = capacity - static_cast<uint32_t>(out_left);
  }

  iconv_t cd_;
};

class IconvToWide final : public IconvConversion {
 public:
  using IconvConversion::IconvConversion;

 private:
  bool WriteSignature(uint8_t* out, uint32_t capacity, uint32_t& produced) override {
    if (signature_written_) return true;
    if (capacity - produced < 2) return false;
    out[produced++] = 0xFF;
    out[produced++] = 0xFE;
    signature_written_ = true;
    return true;
  }
  bool WriteReplacement(uint8_t* out, uint32_t capacity, uint32_t& produced) override {
    if (capacity - produced < 2) return false;
    out[produced++] = kWideReplacement[0];
    out[produced++] = kWideReplacement[1];
    return true;
  }
  // One byte: the next byte may start a valid sequence.
  uint32_t InvalidSize(const uint8_t*, uint32_t) const override { return 1; }

  bool signature_written_ = false;
};

class IconvFromWide final : public IconvConversion {
 public:
  using IconvConversion::IconvConversion;

 private:
  // The charsets iconv converts to here have no byte-order mark.
  bool WriteSignature(uint8_t*, uint32_t, uint32_t&) override { return true; }

  // U+FFFD, or '?' when the charset lacks it.
  bool WriteReplacement(uint8_t* out, uint32_t capacity, uint32_t& produced) override {
    for (const uint8_t* replacement : {kWideReplacement, kWideQuestionMark}) {
      uint32_t replacement_used = 0;
      const int error = Step(replacement, 2, replacement_used, out, capacity, produced);
      if (error == 0) return true;
      if (error == E2BIG) return false;
    }
    return false;
  }

  // A surrogate pair or one 16-bit unit (an unpaired surrogate among them).
  uint32_t InvalidSize(const uint8_t* p, uint32_t size) const override {
    if (size < 2) return size;
    const bool high = p[1] >= 0xD8 && p[1] <= 0xDB;
    const bool low_follows = size >= 4 && p[3] >= 0xDC && p[3] <= 0xDF;
    return high && low_follows ? 4 : 2;
  }
};

std::unique_ptr<ConversionFunction> Open(const char* to, const char* from, bool to_wide) {
  const iconv_t cd = iconv_open(to, from);
  if (cd == reinterpret_cast<iconv_t>(-1)) {
    // Callers fall back to another charset: for lack of memory that is a
    // failure the pool's count must tell.
    if (errno == ENOMEM) OrvelMem::MemoryPool::NoteFailure();
    return nullptr;
  }
  IconvConversion* conversion = nullptr;
  if (to_wide) {
    conversion = new (std::nothrow) IconvToWide(cd);
  } else {
    conversion = new (std::nothrow) IconvFromWide(cd);
  }
  if (conversion == nullptr) {
    iconv_close(cd);
    OrvelMem::MemoryPool::NoteFailure();
  }
  return std::unique_ptr<ConversionFunction>(conversion);
}

}  // namespace

std::unique_ptr<ConversionFunction> MakeIconvToWide(const char* iconv_name) {
  return Open("UTF-16LE", iconv_name, true);
}

std::unique_ptr<ConversionFunction> MakeIconvFromWide(const char* iconv_name) {
  return Open(iconv_name, "UTF-16LE", false);
}

}  // namespace OrvelCharset

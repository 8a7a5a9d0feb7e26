// Scanning a run of bytes for the first of a few bytes that end it (the
// tokenizer's '<', '&', quotes, CR, NUL...): 16 bytes at a time with SSE2
// where the target has it, a byte at a time elsewhere. And comparing short
// names.
//
// Thread-safety: pure functions.
#ifndef ZESTRA_HTML_TEXT_SCAN_H_
#define ZESTRA_HTML_TEXT_SCAN_H_

#include <cstdint>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace OrvelParser {

// The offset of the first byte in [pos, size) of `text` equal to one of
// `Stops`; `size` when there is none. A byte at a time: the portable path,
// and the tail of ScanUntil.
template <char... Stops>
inline uint32_t ScanUntilBytewise(const char* text, uint32_t pos, uint32_t size) noexcept {
  for (; pos < size; ++pos) {
    const char c = text[pos];
    if (((c == Stops) || ...)) return pos;
  }
  return size;
}

// The same, 16 bytes at a time where SSE2 is there.
template <char... Stops>
inline uint32_t ScanUntil(const char* text, uint32_t pos, uint32_t size) noexcept {
#if defined(__SSE2__)
  while (size - pos >= 16) {
    const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text + pos));
    __m128i hits = _mm_setzero_si128();
    ((hits = _mm_or_si128(hits, _mm_cmpeq_epi8(block, _mm_set1_epi8(Stops)))), ...);
    const int mask = _mm_movemask_epi8(hits);
    if (mask != 0) return pos + static_cast<uint32_t>(__builtin_ctz(static_cast<unsigned>(mask)));
    pos += 16;
  }
#endif
  return ScanUntilBytewise<Stops...>(text, pos, size);
}

// Whether `a` and `b` hold the same bytes: for the short names of tags and
// attributes, where an inline loop beats a call to memcmp.
inline bool SameShortText(const char* a, uint32_t a_size, const char* b, uint32_t b_size) noexcept {
  if (a_size != b_size) return false;
  for (uint32_t i = 0; i < a_size; ++i)
    if (a[i] != b[i]) return false;
  return true;
}

}  // namespace OrvelParser

#endif  // ZESTRA_HTML_TEXT_SCAN_H_

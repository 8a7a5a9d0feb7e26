#include "zestra/charset/charset_conversion.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "charset/charset_table.h"
#include "charset/iconv_conversion.h"
#include "charset/own_codecs.h"

namespace OrvelCharset {
namespace {

using Orvel::CHARSET;

// Converts with a decoder and an encoder of our own, one character at a time;
// runs of ASCII are copied as they stand when both sides keep ASCII as it is.
template <class Decoder, class Encoder>
class CodecConversion final : public ConversionFunction {
 public:
  void Convert(const uint8_t* in, uint32_t in_count, uint32_t& used, uint8_t* out,
               uint32_t out_capacity, uint32_t& produced, bool end_of_input,
               bool write_signature) override {
    used = 0;
    produced = 0;
    if constexpr (Encoder::kHasSignature) {
      if (write_signature && !signature_written_) {
        produced = Encoder::Encode(0xFEFF, out, out_capacity);
        if (produced == 0) return;
        signature_written_ = true;
      }
    }
    while (used < in_count) {
      if constexpr (Decoder::kAsciiCompatible && Encoder::kAsciiCompatible) {
        const uint32_t run = std::min(in_count - used, out_capacity - produced);
        uint32_t i = 0;
        // Eight bytes at a time while none has its high bit set.
        for (uint64_t word; i + 8 <= run; i += 8) {
          std::memcpy(&word, in + used + i, 8);
          if ((word & 0x8080808080808080u) != 0) break;
          std::memcpy(out + produced + i, &word, 8);
        }
        while (i < run && in[used + i] < 0x80) {
          out[produced + i] = in[used + i];
          ++i;
        }
        used += i;
        produced += i;
        if (used == in_count) break;
      }
      const Decoded decoded = Decoder::Decode(in + used, in_count - used, end_of_input);
      if (decoded.length == 0) break;
      const uint32_t written = Encoder::Encode(decoded.code_point, out + produced, out_capacity - produced);
      if (written == 0) break;
      used += decoded.length;
      produced += written;
    }
  }

 private:
  bool signature_written_ = false;
};

template <class Decoder>
std::unique_ptr<ConversionFunction> WithEncoder(Codec to) {
  switch (to) {
    case Codec::kUtf8:
      return std::make_unique<CodecConversion<Decoder, Utf8Codec>>();
    case Codec::kUtf16LE:
      return std::make_unique<CodecConversion<Decoder, Utf16LECodec>>();
    case Codec::kUtf16BE:
      return std::make_unique<CodecConversion<Decoder, Utf16BECodec>>();
    case Codec::kWindows1252:
      return std::make_unique<CodecConversion<Decoder, Windows1252Codec>>();
    case Codec::kIconv:
      break;
  }
  return nullptr;
}

// A 16-bit unit never takes more than this many bytes in any target charset
// (four in GB18030; an ISO-2022 escape sequence and a two-byte character).
constexpr uint32_t kMaxBytesPerWideUnit = 8;
// The middle buffer of a ConversionClass, in bytes of 16-bit text.
constexpr uint32_t kWideBufferBytes = 8192;

}  // namespace

ConversionFunction::~ConversionFunction() = default;

ConversionClass::ConversionClass(std::unique_ptr<ConversionFunction> to_wide,
                                 std::unique_ptr<ConversionFunction> from_wide)
    : to_wide_(std::move(to_wide)), from_wide_(std::move(from_wide)) {}

ConversionClass::~ConversionClass() = default;

bool ConversionClass::DrainPending(uint8_t* out, uint32_t out_capacity, uint32_t& produced,
                                   bool end_of_input, bool write_signature) {
  uint32_t used = 0;
  uint32_t written = 0;
  from_wide_->Convert(pending_.data(), static_cast<uint32_t>(pending_.size()), used, out + produced,
                      out_capacity - produced, written, end_of_input, write_signature);
  produced += written;
  pending_.erase(pending_.begin(), pending_.begin() + used);
  return pending_.empty();
}

void ConversionClass::Convert(const uint8_t* in, uint32_t in_count, uint32_t& used, uint8_t* out,
                              uint32_t out_capacity, uint32_t& produced, bool end_of_input,
                              bool write_signature) {
  used = 0;
  produced = 0;
  if (!pending_.empty() &&
      !DrainPending(out, out_capacity, produced, end_of_input && in_count == 0, write_signature)) {
    return;
  }
  if (wide_.size() < kWideBufferBytes) wide_.resize(kWideBufferBytes);
  while (used < in_count && produced < out_capacity) {
    // The middle step converts no more than the output can take, so that
    // every input byte reported as used is also written; only an output of
    // fewer than 4 * kMaxBytesPerWideUnit bytes can leave text pending.
    const uint32_t room = out_capacity - produced;
    const uint32_t wide_capacity = std::clamp(room / kMaxBytesPerWideUnit & ~1u, 4u, kWideBufferBytes);
    uint32_t step_used = 0;
    uint32_t wide_count = 0;
    to_wide_->Convert(in + used, in_count - used, step_used, wide_.data(), wide_capacity, wide_count,
                      end_of_input, false);
    if (step_used == 0 && wide_count == 0) break;
    used += step_used;
    uint32_t wide_used = 0;
    uint32_t written = 0;
    from_wide_->Convert(wide_.data(), wide_count, wide_used, out + produced, room, written,
                        end_of_input && used == in_count, write_signature);
    produced += written;
    if (wide_used < wide_count) {
      pending_.assign(wide_.begin() + wide_used, wide_.begin() + wide_count);
      break;
    }
  }
}

std::unique_ptr<ConversionFunction> Conv::FastConversionFunction(CHARSET from, CHARSET to) {
  const CharsetEntry* source = FindCharset(from);
  const CharsetEntry* target = FindCharset(to);
  if (source == nullptr || target == nullptr) return nullptr;
  switch (source->codec) {
    case Codec::kUtf8:
      return WithEncoder<Utf8Codec>(target->codec);
    case Codec::kUtf16LE:
      return WithEncoder<Utf16LECodec>(target->codec);
    case Codec::kUtf16BE:
      return WithEncoder<Utf16BECodec>(target->codec);
    case Codec::kWindows1252:
      return WithEncoder<Windows1252Codec>(target->codec);
    case Codec::kIconv:
      break;
  }
  return nullptr;
}

std::unique_ptr<ConversionFunction> Conv::MbToWcConversionFunction(CHARSET from) {
  const CharsetEntry* source = FindCharset(from);
  if (source == nullptr) return nullptr;
  if (source->codec != Codec::kIconv) return FastConversionFunction(from, Orvel::Utf16LECharset);
  return MakeIconvToWide(source->iconv_name);
}

std::unique_ptr<ConversionFunction> Conv::WcToMbConversionFunction(CHARSET to) {
  const CharsetEntry* target = FindCharset(to);
  if (target == nullptr) return nullptr;
  if (target->codec != Codec::kIconv) return FastConversionFunction(Orvel::Utf16LECharset, to);
  return MakeIconvFromWide(target->iconv_name);
}

std::unique_ptr<ConversionFunction> MakeConversionFunction(CHARSET from, CHARSET to) {
  if (auto fast = Conv::FastConversionFunction(from, to)) return fast;
  auto to_wide = Conv::MbToWcConversionFunction(from);
  auto from_wide = Conv::WcToMbConversionFunction(to);
  if (to_wide == nullptr || from_wide == nullptr) return nullptr;
  return std::make_unique<ConversionClass>(std::move(to_wide), std::move(from_wide));
}

void AppendUtf8(const char16_t* text, size_t count, std::string& out) {
  static_assert(std::endian::native == std::endian::little, "wide strings are read as 1201 text");
  const auto* p = reinterpret_cast<const uint8_t*>(text);
  const size_t size = count * 2;
  out.reserve(out.size() + count);
  uint8_t bytes[4];
  size_t i = 0;
  while (i < size) {
    if (p[i] < 0x80 && p[i + 1] == 0) {
      out.push_back(static_cast<char>(p[i]));
      i += 2;
      continue;
    }
    const Decoded decoded = Utf16LECodec::Decode(p + i, size - i, true);
    i += decoded.length;
    out.append(reinterpret_cast<const char*>(bytes), Utf8Codec::Encode(decoded.code_point, bytes, 4));
  }
}

void AppendUtf16(const char* text, size_t size, std::u16string& out) {
  // Each byte gives at most one unit (a four-byte sequence gives two), so
  // the units are written into room for `size` of them, cut to length after.
  const size_t old_size = out.size();
  out.resize(old_size + size);
  char16_t* const begin = out.data() + old_size;
  char16_t* end = begin;
  const auto* p = reinterpret_cast<const uint8_t*>(text);
  size_t i = 0;
  while (i < size) {
    if (p[i] < 0x80) {
      *end++ = p[i++];
      continue;
    }
    const Decoded decoded = Utf8Codec::Decode(p + i, size - i, true);
    i += decoded.length;
    if (decoded.code_point < 0x10000) {
      *end++ = static_cast<char16_t>(decoded.code_point);
    } else {
      const char32_t v = decoded.code_point - 0x10000;
      *end++ = static_cast<char16_t>(0xD800 + (v >> 10));
      *end++ = static_cast<char16_t>(0xDC00 + (v & 0x3FF));
    }
  }
  out.resize(old_size + static_cast<size_t>(end - begin));
}

}  // namespace OrvelCharset

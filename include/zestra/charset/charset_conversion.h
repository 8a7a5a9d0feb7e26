// Conversion of text between character sets, one buffer at a time.
//
// A ConversionFunction turns the bytes of one charset into the bytes of
// another. It is called repeatedly with the next input bytes and an output
// buffer; each call converts as much as fits and says how much it used and
// produced, so a caller can convert input of any size with fixed buffers.
// Conversion never stops at bad input: a byte sequence that is not valid in
// the source charset becomes U+FFFD (or '?' in a target charset that lacks
// it), and so does a character the target charset cannot represent.
//
// Conv makes the functions: FastConversionFunction gives a direct converter
// for pairs of the charsets this library decodes itself (UTF-8, UTF-16LE,
// UTF-16BE, Windows-1252); MbToWcConversionFunction and
// WcToMbConversionFunction convert any supported charset to and from 16-bit
// little-endian text (1201), through glibc's iconv for the others; and
// ConversionClass chains one of each into a converter between any two.
//
// Thread-safety: a ConversionFunction carries state between calls (an
// incomplete sequence, an iconv shift state) and is used by one thread at a
// time; distinct objects are independent.
#ifndef ZESTRA_CHARSET_CHARSET_CONVERSION_H_
#define ZESTRA_CHARSET_CHARSET_CONVERSION_H_

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "zestra/base/charset.h"
#include "zestra/export.h"

namespace OrvelCharset {

class ZESTRA_EXPORT ConversionFunction {
 public:
  ConversionFunction() = default;
  ConversionFunction(const ConversionFunction&) = delete;
  ConversionFunction& operator=(const ConversionFunction&) = delete;
  virtual ~ConversionFunction();

  // Converts bytes from in[0, in_count) into out[0, out_capacity): sets
  // `used` to the number of input bytes consumed and `produced` to the number
  // of output bytes written. The call stops early when the output has no room
  // for the next character, or when the input ends inside a character.
  //
  // end_of_input: false leaves an incomplete sequence at the end of the input
  // unused, for the caller to pass again with the bytes that follow; true
  // says no bytes follow, and the incomplete sequence becomes U+FFFD.
  // write_signature: true writes the target's byte-order mark before the
  // first output of this object (UTF-8 and UTF-16 targets; other targets have
  // none and ignore it). Both false make a plain conversion.
  //
  // Postcondition: used == 0 only when the input is empty, is one incomplete
  // sequence (end_of_input false), or the output has no room for one
  // character.
  virtual void Convert(const uint8_t* in, uint32_t in_count, uint32_t& used, uint8_t* out,
                       uint32_t out_capacity, uint32_t& produced, bool end_of_input,
                       bool write_signature) = 0;
};

// A two-step converter: `to_wide` turns the source charset into 16-bit
// little-endian text, `from_wide` turns that into the target charset. It
// takes ownership of both.
class ZESTRA_EXPORT ConversionClass final : public ConversionFunction {
 public:
  // REQUIRES: both non-null.
  ConversionClass(std::unique_ptr<ConversionFunction> to_wide,
                  std::unique_ptr<ConversionFunction> from_wide);
  ~ConversionClass() override;

  void Convert(const uint8_t* in, uint32_t in_count, uint32_t& used, uint8_t* out,
               uint32_t out_capacity, uint32_t& produced, bool end_of_input,
               bool write_signature) override;

 private:
  // Moves pending 16-bit text through `from_wide_` into out; returns false
  // when some stays pending because the output is full.
  bool DrainPending(uint8_t* out, uint32_t out_capacity, uint32_t& produced, bool end_of_input,
                    bool write_signature);

  std::unique_ptr<ConversionFunction> to_wide_;
  std::unique_ptr<ConversionFunction> from_wide_;
  // 16-bit text converted from the input but not yet written: the middle
  // buffer of the current call, and what a full output left over.
  std::vector<uint8_t> wide_;
  std::vector<uint8_t> pending_;
};

class ZESTRA_EXPORT Conv {
 public:
  Conv() = delete;

  // A direct converter when both charsets are among UTF-8, UTF-16LE,
  // UTF-16BE and Windows-1252 (or their synonyms); null otherwise.
  static std::unique_ptr<ConversionFunction> FastConversionFunction(Orvel::CHARSET from,
                                                                    Orvel::CHARSET to);
  // A converter from `from` to 16-bit little-endian text (1201); null when
  // the charset is not supported.
  static std::unique_ptr<ConversionFunction> MbToWcConversionFunction(Orvel::CHARSET from);
  // A converter from 16-bit little-endian text (1201) to `to`; null when the
  // charset is not supported.
  static std::unique_ptr<ConversionFunction> WcToMbConversionFunction(Orvel::CHARSET to);
};

// The fast converter when there is one, else a ConversionClass of the two
// steps; null when either charset is not supported.
ZESTRA_EXPORT std::unique_ptr<ConversionFunction> MakeConversionFunction(Orvel::CHARSET from,
                                                                         Orvel::CHARSET to);

// Appends to `out` the UTF-8 form of the 16-bit units in [text, text + count):
// unpaired surrogates become U+FFFD.
ZESTRA_EXPORT void AppendUtf8(const char16_t* text, size_t count, std::string& out);

// Appends to `out` the 16-bit units of the UTF-8 bytes in [text, text +
// size): invalid sequences become U+FFFD as the UTF-8 decoder replaces them.
ZESTRA_EXPORT void AppendUtf16(const char* text, size_t size, std::u16string& out);

}  // namespace OrvelCharset

#endif  // ZESTRA_CHARSET_CHARSET_CONVERSION_H_

#include <gtest/gtest.h>

#include <string>
#include <typeinfo>

#include "zestra/stream/binary_stream.h"
#include "zestra/stream/memory_buffer.h"
#include "zestra/stream/stream_exceptions.h"

namespace {

using Orvel::kSeekAbsolute;
using Orvel::kSeekBegin;
using Orvel::kSeekForward;
using OrvelFile::MemoryBuffer;

constexpr unsigned int kAll = 0xFFFFFFFFu;

// A memory buffer whose look-ahead the test fills: the store holds `stored`,
// the look-ahead `ahead`, so reads see `ahead` then `stored`.
class LookAheadBuffer : public MemoryBuffer {
 public:
  LookAheadBuffer(const std::string& ahead, const std::string& stored) : MemoryBuffer(16) {
    Put(stored.data(), static_cast<unsigned int>(stored.size()));
    FillLookAhead(ahead.data(), static_cast<unsigned int>(ahead.size()));
  }
};

TEST(LookAheadTest, GetServesTheLookAheadFirst) {
  LookAheadBuffer buffer("abc", "DEF");
  char out[8] = {};
  EXPECT_EQ(buffer.Get(out, 2), 2u);  // inside the look-ahead: the store is untouched
  EXPECT_EQ(std::string(out, 2), "ab");
  EXPECT_EQ(buffer.LookAheadSize(), 1u);
  EXPECT_EQ(buffer.vTellG(), 0u);
  EXPECT_EQ(buffer.Get(out, 1), 1u);  // exactly the rest: the area is freed
  EXPECT_EQ(buffer.LookAheadSize(), 0u);
  EXPECT_EQ(buffer.vTellG(), 0u);

  LookAheadBuffer spanning("abc", "DEF");
  EXPECT_EQ(spanning.Get(out, 5), 5u);  // past the look-ahead: the rest from the store
  EXPECT_EQ(std::string(out, 5), "abcDE");
  EXPECT_EQ(spanning.vTellG(), 2u);
  EXPECT_EQ(spanning.Get(out, 8), 1u);

  LookAheadBuffer at_end("ab", "");
  EXPECT_EQ(at_end.Get(out, 8), 2u);
  EXPECT_THROW(LookAheadBuffer("ab", "c").GetExact(out, 4), Orvel::BinaryStreamGetEOFException);
}

TEST(LookAheadTest, WideCopyJoinsAnOddLookAheadByteWithTheNextByte) {
  // Units 'A' (41 00), then 'B' split: 42 in the look-ahead, 00 in the store.
  LookAheadBuffer buffer(std::string("\x41\x00\x42", 3), std::string("\x00\x43\x00", 3));
  std::u16string text;
  EXPECT_EQ(buffer.Copy(text, kAll), 6u);
  EXPECT_EQ(text, u"ABC");
  EXPECT_EQ(buffer.LookAheadSize(), 0u);

  // A request that ends inside the look-ahead on an odd byte takes only the
  // whole units; the lone byte waits for the next read.
  LookAheadBuffer partial(std::string("\x41\x00\x42", 3), std::string("\x00", 1));
  text.clear();
  EXPECT_EQ(partial.Copy(text, 3), 2u);
  EXPECT_EQ(text, u"A");
  EXPECT_EQ(partial.LookAheadSize(), 1u);
  EXPECT_EQ(partial.Copy(text, 2), 2u);
  EXPECT_EQ(text, u"AB");

  // An odd look-ahead byte with nothing after it stays unread.
  LookAheadBuffer alone(std::string("\x41", 1), "");
  text.clear();
  EXPECT_EQ(alone.Copy(text, kAll), 0u);
  EXPECT_TRUE(text.empty());
  EXPECT_EQ(alone.LookAheadSize(), 1u);
}

TEST(LookAheadTest, NarrowAndBufferCopiesDrainTheLookAheadFirst) {
  LookAheadBuffer narrow("ab", "cd");
  std::string out;
  EXPECT_EQ(narrow.Copy(out, 1), 1u);
  EXPECT_EQ(narrow.Copy(out, kAll), 3u);
  EXPECT_EQ(out, "abcd");

  LookAheadBuffer source("ab", "cd");
  auto* target = new MemoryBuffer(4);
  Orvel::BinaryStreamT<unsigned int> handle(target, true);
  EXPECT_EQ(source.Copy(handle, kAll), 4u);
  out.clear();
  target->Copy(out, kAll);
  EXPECT_EQ(out, "abcd");
}

TEST(LookAheadTest, SeekingAndClearingDiscardTheLookAhead) {
  LookAheadBuffer rewound("xyz", "abc");
  EXPECT_EQ(rewound.vSeekG(0, kSeekBegin, kSeekAbsolute), 0u);
  EXPECT_EQ(rewound.LookAheadSize(), 0u);
  std::string out;
  rewound.Copy(out, kAll);
  EXPECT_EQ(out, "abc");

  LookAheadBuffer moved("xyz", "abc");
  moved.vSeekG(1, kSeekBegin, kSeekForward);
  EXPECT_EQ(moved.LookAheadSize(), 0u);

  LookAheadBuffer cleared("xyz", "abc");
  cleared.Clear();
  EXPECT_EQ(cleared.LookAheadSize(), 0u);
  char c;
  EXPECT_EQ(cleared.Get(&c, 1), 0u);

  LookAheadBuffer discarded("xyz", "abc");
  discarded.DiscardLookAhead();
  EXPECT_EQ(discarded.Get(&c, 1), 1u);
  EXPECT_EQ(c, 'a');
}

// A buffer that is not a BinaryStreamBufT cannot receive a copy.
class ForeignBuffer : public Orvel::BaseBinaryStreamBuf {};

TEST(LookAheadTest, CopyToAForeignBufferIsRefused) {
  MemoryBuffer source(4);
  source.Put("ab", 2);
  ForeignBuffer foreign;
  EXPECT_THROW(source.Copy(foreign, kAll), std::bad_cast);
  EXPECT_EQ(source.vTellG(), 0u);
}

}  // namespace

#include "zestra/stream/memory_buffer.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "zestra/stream/stream_exceptions.h"

namespace {

using Orvel::kSeekAbsolute;
using Orvel::kSeekBackward;
using Orvel::kSeekBegin;
using Orvel::kSeekCurrent;
using Orvel::kSeekEnd;
using Orvel::kSeekForward;
using OrvelFile::MemoryBuffer;

constexpr unsigned int kAll = 0xFFFFFFFFu;

std::string ReadAll(MemoryBuffer& buffer) {
  std::string out;
  buffer.Copy(out, kAll);
  return out;
}

TEST(MemoryBufferTest, PutThenGetFromTheFirstByte) {
  MemoryBuffer buffer(4096);
  const uint8_t data[10] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9};
  EXPECT_EQ(buffer.Capacity(), 0u);  // nothing allocated before the first write
  EXPECT_EQ(buffer.Put(data, 10), 10u);
  EXPECT_EQ(buffer.vSize(), 10u);
  EXPECT_EQ(buffer.vTellG(), 0u);
  EXPECT_EQ(buffer.vTellP(), 10u);
  EXPECT_EQ(buffer.Capacity(), 4096u);
  uint8_t out[10] = {};
  EXPECT_EQ(buffer.Get(out, 10), 10u);
  EXPECT_EQ(std::vector<uint8_t>(out, out + 10), std::vector<uint8_t>(data, data + 10));
  EXPECT_TRUE(buffer.vEndOfFile());
  EXPECT_EQ(buffer.Get(out, 10), 0u);
  EXPECT_EQ(buffer.Get(out, 0), 0u);
  EXPECT_EQ(buffer.Put(nullptr, 0), 0u);
}

TEST(MemoryBufferTest, CopiesLittleEndianUnitsAndLeavesALoneByte) {
  MemoryBuffer buffer(16);
  buffer.Put("\x41\x00\x42\x00\x3A\x26\x7F", 7);
  std::u16string text = u"<";
  EXPECT_EQ(buffer.Copy(text, 4), 4u);
  EXPECT_EQ(text, u"<AB");
  EXPECT_EQ(buffer.Copy(text, kAll), 2u);  // the seventh byte has no partner
  EXPECT_EQ(text, u"<AB\u263A");
  EXPECT_EQ(buffer.vTellG(), 6u);
  EXPECT_EQ(buffer.Copy(text, 3), 0u);
  EXPECT_EQ(ReadAll(buffer), "\x7F");

  MemoryBuffer empty(16);
  std::u16string none;
  EXPECT_EQ(empty.Copy(none, kAll), 0u);
  EXPECT_TRUE(none.empty());
  std::string narrow;
  EXPECT_EQ(empty.Copy(narrow, kAll), 0u);
}

TEST(MemoryBufferTest, RewindAfterPartialReadRereadsFromTheStart) {
  MemoryBuffer buffer(8);
  buffer.Put("abcdef", 6);
  char out[4] = {};
  ASSERT_EQ(buffer.Get(out, 4), 4u);
  EXPECT_EQ(buffer.vSeekG(0, kSeekBegin, kSeekAbsolute), 0u);
  EXPECT_EQ(ReadAll(buffer), "abcdef");
}

// The text extractor reads back the last unit written: seek the get
// position to the absolute offset p, then Get 2 bytes.
TEST(MemoryBufferTest, AbsoluteSeekThenReadTwoBytes) {
  MemoryBuffer buffer(4);
  const std::u16string text = u"ab\n";
  buffer.Put(text.data(), 6);
  const unsigned int s = buffer.vSize();
  const unsigned int p = (s / 2 - 1) * 2;
  char16_t last = 0;
  EXPECT_EQ(buffer.vSeekG(p, kSeekBegin, kSeekAbsolute), 4u);
  EXPECT_EQ(buffer.Get(&last, 2), 2u);
  EXPECT_EQ(last, u'\n');
  // Writing continues at the put position, untouched by the read.
  buffer.Put(u"c", 2);
  EXPECT_EQ(buffer.vSize(), 8u);
  EXPECT_EQ(buffer.Get(&last, 2), 2u);
  EXPECT_EQ(last, u'c');
}

TEST(MemoryBufferTest, SeekOriginsDirectionsAndClamping) {
  MemoryBuffer buffer(16);
  buffer.Put("0123456789", 10);
  EXPECT_EQ(buffer.vSeekG(3, kSeekBegin, kSeekForward), 3u);
  EXPECT_EQ(buffer.vSeekG(2, kSeekCurrent, kSeekForward), 5u);
  EXPECT_EQ(buffer.vSeekG(1, kSeekCurrent, kSeekBackward), 4u);
  EXPECT_EQ(buffer.vSeekG(2, kSeekEnd, kSeekBackward), 8u);
  EXPECT_EQ(buffer.vSeekG(0, kSeekEnd, kSeekForward), 10u);
  EXPECT_EQ(buffer.vSeekG(99, kSeekBegin, kSeekAbsolute), 10u);  // past the end: the end
  EXPECT_EQ(buffer.vSeekG(kAll, kSeekCurrent, kSeekForward), 10u);
  EXPECT_EQ(buffer.vSeekG(11, kSeekEnd, kSeekBackward), 0u);  // before the start: 0
  buffer.vSeekG(6, kSeekBegin, kSeekAbsolute);
  // Unsupported values leave the position where it was.
  EXPECT_EQ(buffer.vSeekG(1, kSeekEnd, kSeekAbsolute), 6u);
  EXPECT_EQ(buffer.vSeekG(1, 7, kSeekForward), 6u);
  EXPECT_EQ(buffer.vSeekG(1, kSeekBegin, 0), 6u);
  EXPECT_EQ(buffer.vTellG(), 6u);
}

TEST(MemoryBufferTest, PutOverwritesAtThePutPositionAndExtends) {
  MemoryBuffer buffer(4);
  buffer.Put("abcdef", 6);
  EXPECT_EQ(buffer.vSeekP(4, kSeekBegin, kSeekAbsolute), 4u);
  buffer.Put("XYZ", 3);
  EXPECT_EQ(buffer.vSize(), 7u);
  EXPECT_EQ(buffer.vSeekP(1, kSeekBegin, kSeekAbsolute), 1u);
  buffer.Put("-", 1);
  EXPECT_EQ(buffer.vSize(), 7u);
  EXPECT_EQ(ReadAll(buffer), "a-cdXYZ");
  EXPECT_EQ(buffer.vSeekP(20, kSeekBegin, kSeekForward), 7u);
}

TEST(MemoryBufferTest, GrowsFromTheInitialCapacityWithoutLimit) {
  MemoryBuffer buffer(16);
  std::string expected;
  for (int i = 0; i < 100000; ++i) {
    const char chunk[3] = {static_cast<char>(i), static_cast<char>(i >> 8), static_cast<char>(i >> 16)};
    ASSERT_EQ(buffer.Put(chunk, 3), 3u);
    expected.append(chunk, 3);
  }
  EXPECT_EQ(buffer.vSize(), 300000u);
  EXPECT_GE(buffer.Capacity(), 300000u);
  EXPECT_EQ(ReadAll(buffer), expected);

  MemoryBuffer small(2);
  small.Put("abc", 3);  // a first write larger than the initial capacity
  EXPECT_GE(small.Capacity(), 3u);
  EXPECT_EQ(ReadAll(small), "abc");
}

TEST(MemoryBufferTest, ReadsCallerMemoryInPlaceUntilWritten) {
  char source[] = "hello";
  MemoryBuffer buffer(source, 5, MemoryBuffer::kReadInPlace);
  EXPECT_TRUE(buffer.ReadsInPlace());
  EXPECT_EQ(buffer.Capacity(), 0u);
  EXPECT_EQ(buffer.vSize(), 5u);
  EXPECT_EQ(buffer.vTellP(), 5u);
  char first = 0;
  buffer.Get(&first, 1);
  EXPECT_EQ(first, 'h');
  source[1] = 'E';  // read in place: the change shows
  buffer.Put("!", 1);
  EXPECT_FALSE(buffer.ReadsInPlace());
  source[2] = 'X';  // copied on the write: the change no longer shows
  EXPECT_EQ(ReadAll(buffer), "Ello!");
  EXPECT_EQ(std::string(source, 5), "hEXlo");

  MemoryBuffer copied(source, 5, MemoryBuffer::kCopyBytes);
  EXPECT_FALSE(copied.ReadsInPlace());
  source[0] = '?';
  EXPECT_EQ(ReadAll(copied), "hEXlo");

  MemoryBuffer empty(nullptr, 0, MemoryBuffer::kReadInPlace);
  EXPECT_EQ(empty.vSize(), 0u);
  EXPECT_TRUE(empty.vEndOfFile());
}

TEST(MemoryBufferTest, ClearOperations) {
  MemoryBuffer buffer(8);
  buffer.Put("abcdef", 6);
  char out[2];
  buffer.Get(out, 2);
  buffer.vClearEnd();
  EXPECT_EQ(buffer.vSize(), 2u);
  EXPECT_EQ(buffer.vTellP(), 2u);
  buffer.Clear();
  EXPECT_EQ(buffer.vSize(), 0u);
  EXPECT_EQ(buffer.vTellG(), 0u);
  EXPECT_EQ(buffer.vTellP(), 0u);
  EXPECT_EQ(buffer.Capacity(), 8u);  // kept for reuse
  buffer.Put("xy", 2);
  buffer.ClearMemory();
  EXPECT_EQ(buffer.Capacity(), 0u);
  buffer.Put("z", 1);
  EXPECT_EQ(ReadAll(buffer), "z");

  const char source[] = "borrowed";
  MemoryBuffer borrowed(source, 8, MemoryBuffer::kReadInPlace);
  borrowed.Clear();
  EXPECT_FALSE(borrowed.ReadsInPlace());
  EXPECT_EQ(borrowed.vSize(), 0u);
}

TEST(MemoryBufferTest, ExactOperationsThrowOnShortfall) {
  MemoryBuffer buffer(8);
  buffer.Put("abc", 3);
  char out[5] = {};
  EXPECT_THROW(buffer.GetExact(out, 5), Orvel::BinaryStreamGetEOFException);
  EXPECT_EQ(std::string(out, 3), "abc");  // what was there was delivered
  buffer.vSeekG(0, kSeekBegin, kSeekAbsolute);
  EXPECT_EQ(buffer.Get(out, 5), 3u);
  buffer.vSeekG(0, kSeekBegin, kSeekAbsolute);
  EXPECT_EQ(buffer.GetExact(out, 3), 3u);
  EXPECT_EQ(buffer.PutExact("de", 2), 2u);
  try {
    buffer.GetExact(out, 3);
    FAIL() << "no exception";
  } catch (const Orvel::BinaryStreamException& e) {
    EXPECT_TRUE(e.What().empty());
    EXPECT_NE(dynamic_cast<const Orvel::BinaryStreamGetEOFException*>(&e), nullptr);
  }
}

TEST(MemoryBufferTest, CopyIntoAnotherBufferAndIntoItself) {
  MemoryBuffer source(8);
  source.Put("abcdef", 6);
  char skip[2];
  source.Get(skip, 2);
  MemoryBuffer destination(2);
  destination.Put("<", 1);
  EXPECT_EQ(source.Copy(static_cast<Orvel::BaseBinaryStreamBuf&>(destination), kAll), 4u);
  EXPECT_EQ(ReadAll(destination), "<cdef");

  // Copying a buffer onto its own end forces the store to move while the
  // bytes are read from it.
  MemoryBuffer self(4);
  self.Put("wxyz", 4);
  EXPECT_EQ(self.Capacity(), 4u);
  EXPECT_EQ(self.Copy(static_cast<Orvel::BaseBinaryStreamBuf&>(self), kAll), 4u);
  EXPECT_EQ(self.vSize(), 8u);
  self.vSeekG(0, kSeekBegin, kSeekAbsolute);
  EXPECT_EQ(ReadAll(self), "wxyzwxyz");
}

}  // namespace

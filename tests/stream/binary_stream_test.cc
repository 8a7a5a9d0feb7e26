#include "zestra/stream/binary_stream.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "zestra/base/ref_count.h"
#include "zestra/stream/memory_buffer.h"
#include "zestra/stream/stream_exceptions.h"

namespace {

using Orvel::BinaryStreamT;
using Orvel::RefCount;
using OrvelFile::MemoryBuffer;

// Counts its destructions so that a test can see a buffer die exactly once.
class CountedBuffer : public MemoryBuffer {
 public:
  explicit CountedBuffer(int* destroyed) : MemoryBuffer(16), destroyed_(destroyed) {}
  ~CountedBuffer() override { ++*destroyed_; }

 private:
  int* destroyed_;
};

TEST(BinaryStreamTest, OwnedBufferDiesOnceWithTheLastSharedHolder) {
  int destroyed = 0;
  {
    RefCount<BinaryStreamT<unsigned int>> first(new BinaryStreamT<unsigned int>(new CountedBuffer(&destroyed), true));
    ASSERT_TRUE(first);
    {
      RefCount<BinaryStreamT<unsigned int>> second = first;
      EXPECT_EQ(first.Count(), 2);
      second->Put("ab", 2);
    }
    EXPECT_EQ(destroyed, 0);
    EXPECT_EQ(first->Buffer()->vSize(), 2u);
  }
  EXPECT_EQ(destroyed, 1);
}

TEST(BinaryStreamTest, BorrowedBufferSurvivesTheHandle) {
  int destroyed = 0;
  CountedBuffer buffer(&destroyed);
  {
    BinaryStreamT<unsigned int> handle(&buffer, false);
    EXPECT_FALSE(handle.OwnsBuffer());
    EXPECT_EQ(handle.Buffer(), &buffer);
  }
  EXPECT_EQ(destroyed, 0);
  EXPECT_EQ(buffer.vSize(), 0u);
}

TEST(BinaryStreamTest, ForwardsToTheBufferThroughTheBaseInterface) {
  BinaryStreamT<unsigned int> handle(new MemoryBuffer(8), true);
  Orvel::BaseBinaryStream& stream = handle;
  EXPECT_EQ(stream.Put("abc", 3), 3u);
  EXPECT_EQ(stream.PutExact("d", 1), 1u);
  char out[4] = {};
  EXPECT_EQ(stream.Get(out, 2), 2u);
  EXPECT_EQ(stream.GetExact(out + 2, 2), 2u);
  EXPECT_EQ(std::string(out, 4), "abcd");
  EXPECT_THROW(stream.GetExact(out, 1), Orvel::BinaryStreamGetEOFException);
  EXPECT_EQ(stream.Buffer(), handle.Buffer());
}

TEST(StreamExceptionsTest, CloneAndRaiseKeepTheDynamicType) {
  const Orvel::BinaryStreamPutEOFException put_eof;
  EXPECT_TRUE(put_eof.What().empty());
  std::unique_ptr<Orvel::BaseException> copy(put_eof.Clone());
  EXPECT_NE(dynamic_cast<Orvel::BinaryStreamPutEOFException*>(copy.get()), nullptr);
  EXPECT_THROW(copy->Raise(), Orvel::BinaryStreamPutEOFException);
  const Orvel::BinaryStreamGetEOFException get_eof;
  EXPECT_THROW(static_cast<const Orvel::BaseException&>(get_eof).Raise(), Orvel::BinaryStreamException);
}

}  // namespace

// The memory blocks and the in-memory stream over them.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "platform/com_test_objects.h"
#include "zestra/platform/com/dispatch.h"
#include "zestra/platform/com/hglobal.h"
#include "zestra/platform/com/hglobal_stream.h"

namespace {

LARGE_INTEGER Offset(LONGLONG value) {
  LARGE_INTEGER offset;
  offset.QuadPart = value;
  return offset;
}

ULONGLONG Seek(IStream* stream, LONGLONG move, DWORD origin) {
  ULARGE_INTEGER position;
  position.QuadPart = 0xDEAD;
  EXPECT_EQ(stream->Seek(Offset(move), origin, &position), S_OK);
  return position.QuadPart;
}

std::string ReadString(IStream* stream, ULONG count) {
  std::string out(count, '\0');
  ULONG read = 0xDEAD;
  EXPECT_EQ(stream->Read(out.data(), count, &read), S_OK);
  out.resize(read);
  return out;
}

ULONGLONG StatSize(IStream* stream) {
  STATSTG stat;
  EXPECT_EQ(stream->Stat(&stat, STATFLAG_NONAME), S_OK);
  return stat.cbSize.QuadPart;
}

TEST(GlobalMemoryTest, LockUnlockResizeAndEmptyBlocks) {
  HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, 4);
  ASSERT_NE(block, nullptr);
  EXPECT_EQ(GlobalSize(block), 4u);
  auto* bytes = static_cast<unsigned char*>(GlobalLock(block));
  ASSERT_NE(bytes, nullptr);
  EXPECT_EQ(std::string(reinterpret_cast<char*>(bytes), 4), std::string(4, '\0'));
  std::memcpy(bytes, "abcd", 4);
  EXPECT_EQ(GlobalLock(block), bytes);  // a second lock, same address
  EXPECT_EQ(GlobalReAlloc(block, 8, GMEM_MOVEABLE), nullptr);  // locked: cannot move
  EXPECT_EQ(GlobalUnlock(block), 1);  // one lock left
  EXPECT_EQ(GlobalUnlock(block), 0);
  EXPECT_EQ(GlobalUnlock(block), 0);  // none to take back
  ASSERT_EQ(GlobalReAlloc(block, 8, GMEM_MOVEABLE), block);
  bytes = static_cast<unsigned char*>(GlobalLock(block));
  EXPECT_EQ(std::string(reinterpret_cast<char*>(bytes), 8), std::string("abcd\0\0\0\0", 8));
  GlobalUnlock(block);
  ASSERT_EQ(GlobalReAlloc(block, 0, GMEM_MOVEABLE), block);
  EXPECT_EQ(GlobalLock(block), nullptr);  // no memory behind an empty block
  EXPECT_EQ(GlobalFree(block), nullptr);

  EXPECT_EQ(GlobalLock(nullptr), nullptr);
  EXPECT_EQ(GlobalSize(nullptr), 0u);
  EXPECT_EQ(GlobalReAlloc(nullptr, 4, 0), nullptr);
  EXPECT_EQ(GlobalFree(nullptr), nullptr);
}

TEST(MemoryStreamTest, WriteSeekStatReadAndTheBlockBehind) {
  IStream* stream = nullptr;
  ASSERT_EQ(CreateStreamOnHGlobal(nullptr, 1, &stream), S_OK);
  ASSERT_NE(stream, nullptr);
  EXPECT_EQ(StatSize(stream), 0u);
  ULONG written = 0;
  ASSERT_EQ(stream->Write("<html>", 6, &written), S_OK);
  EXPECT_EQ(written, 6u);
  EXPECT_EQ(stream->Write("</html>", 7, nullptr), S_OK);

  STATSTG stat;
  std::memset(&stat, 0xFF, sizeof(stat));
  ASSERT_EQ(stream->Stat(&stat, STATFLAG_DEFAULT), S_OK);
  EXPECT_EQ(stat.pwcsName, nullptr);
  EXPECT_EQ(stat.type, STGTY_STREAM);
  EXPECT_EQ(stat.cbSize.QuadPart, 13u);
  EXPECT_EQ(stat.cbSize.u.LowPart, 13u);
  EXPECT_EQ(stream->Stat(&stat, 2), STG_E_INVALIDFLAG);
  EXPECT_EQ(stream->Stat(nullptr, STATFLAG_NONAME), STG_E_INVALIDPOINTER);

  EXPECT_EQ(Seek(stream, 0, STREAM_SEEK_SET), 0u);
  EXPECT_EQ(ReadString(stream, 6), "<html>");
  EXPECT_EQ(ReadString(stream, 100), "</html>");
  EXPECT_EQ(ReadString(stream, 100), "");  // at the end: nothing, no error

  HGLOBAL block = nullptr;
  ASSERT_EQ(GetHGlobalFromStream(stream, &block), S_OK);
  // The block may be longer than the data; Stat gives the data's size.
  EXPECT_GE(GlobalSize(block), 13u);
  const char* bytes = static_cast<const char*>(GlobalLock(block));
  EXPECT_EQ(std::string(bytes, 13), "<html></html>");
  GlobalUnlock(block);
  EXPECT_EQ(stream->Release(), 0u);  // frees the block too (the leak checker would see it)
}

TEST(MemoryStreamTest, SeekOriginsAndLimits) {
  IStream* stream = nullptr;
  ASSERT_EQ(CreateStreamOnHGlobal(nullptr, 1, &stream), S_OK);
  stream->Write("0123456789", 10, nullptr);
  EXPECT_EQ(Seek(stream, -2, STREAM_SEEK_END), 8u);
  EXPECT_EQ(ReadString(stream, 5), "89");
  EXPECT_EQ(Seek(stream, -4, STREAM_SEEK_CUR), 6u);
  EXPECT_EQ(ReadString(stream, 1), "6");
  ULARGE_INTEGER position;
  position.QuadPart = 1234;
  EXPECT_EQ(stream->Seek(Offset(-1), STREAM_SEEK_SET, &position), STG_E_INVALIDFUNCTION);
  EXPECT_EQ(position.QuadPart, 1234u);
  EXPECT_EQ(stream->Seek(Offset(0x100000000LL), STREAM_SEEK_SET, nullptr), STG_E_INVALIDFUNCTION);
  EXPECT_EQ(stream->Seek(Offset(INT64_MIN), STREAM_SEEK_END, nullptr), STG_E_INVALIDFUNCTION);
  EXPECT_EQ(stream->Seek(Offset(0), 3, nullptr), STG_E_INVALIDFUNCTION);
  EXPECT_EQ(Seek(stream, 0, STREAM_SEEK_CUR), 7u);  // unchanged by the refusals
  EXPECT_EQ(Seek(stream, 0xFFFFFFFFLL, STREAM_SEEK_SET), 0xFFFFFFFFu);
  EXPECT_EQ(stream->Write("x", 1, nullptr), STG_E_MEDIUMFULL);  // past the 32-bit size

  // Past the end, then a write: the gap reads as zeros.
  EXPECT_EQ(Seek(stream, 12, STREAM_SEEK_SET), 12u);
  EXPECT_EQ(StatSize(stream), 10u);
  ASSERT_EQ(stream->Write("!", 1, nullptr), S_OK);
  EXPECT_EQ(StatSize(stream), 13u);
  Seek(stream, 9, STREAM_SEEK_SET);
  EXPECT_EQ(ReadString(stream, 10), std::string("9\0\0!", 4));
  EXPECT_EQ(stream->Read(nullptr, 1, nullptr), STG_E_INVALIDPOINTER);
  EXPECT_EQ(stream->Write(nullptr, 1, nullptr), STG_E_INVALIDPOINTER);
  stream->Release();
}

TEST(MemoryStreamTest, GrowsAcrossManyWritesAndKeepsALockedBlockInPlace) {
  IStream* stream = nullptr;
  ASSERT_EQ(CreateStreamOnHGlobal(nullptr, 1, &stream), S_OK);
  std::string expected;
  for (int i = 0; i < 50000; ++i) {
    const std::string piece = std::to_string(i) + ",";
    ASSERT_EQ(stream->Write(piece.data(), static_cast<ULONG>(piece.size()), nullptr), S_OK);
    expected += piece;
  }
  EXPECT_EQ(StatSize(stream), expected.size());
  Seek(stream, 0, STREAM_SEEK_SET);
  EXPECT_EQ(ReadString(stream, static_cast<ULONG>(expected.size())), expected);

  HGLOBAL block = nullptr;
  GetHGlobalFromStream(stream, &block);
  const SIZE_T capacity = GlobalSize(block);
  void* pinned = GlobalLock(block);
  // A write that fits the block succeeds; one that must move it does not.
  Seek(stream, static_cast<LONGLONG>(capacity) - 1, STREAM_SEEK_SET);
  EXPECT_EQ(stream->Write("a", 1, nullptr), S_OK);
  ULONG written = 99;
  EXPECT_EQ(stream->Write("b", 1, &written), STG_E_MEDIUMFULL);
  EXPECT_EQ(written, 0u);
  EXPECT_EQ(GlobalLock(block), pinned);
  GlobalUnlock(block);
  GlobalUnlock(block);
  EXPECT_EQ(stream->Write("b", 1, nullptr), S_OK);
  stream->Release();
}

TEST(MemoryStreamTest, OverACallerBlockThatOutlivesTheStream) {
  HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, 3);
  std::memcpy(GlobalLock(block), "abc", 3);
  GlobalUnlock(block);
  IStream* stream = nullptr;
  ASSERT_EQ(CreateStreamOnHGlobal(block, 0, &stream), S_OK);
  EXPECT_EQ(StatSize(stream), 3u);  // the block's bytes are the data
  EXPECT_EQ(ReadString(stream, 10), "abc");
  stream->Write("d", 1, nullptr);
  HGLOBAL behind = nullptr;
  ASSERT_EQ(GetHGlobalFromStream(stream, &behind), S_OK);
  EXPECT_EQ(behind, block);  // same handle, though the memory moved
  EXPECT_EQ(stream->Release(), 0u);
  EXPECT_EQ(std::string(static_cast<const char*>(GlobalLock(block)), 4), "abcd");
  GlobalUnlock(block);
  GlobalFree(block);
}

TEST(MemoryStreamTest, ReferenceCountingAndInterfaces) {
  IStream* stream = nullptr;
  ASSERT_EQ(CreateStreamOnHGlobal(nullptr, 1, &stream), S_OK);
  void* object = nullptr;
  ASSERT_EQ(stream->QueryInterface(IID_IStream, &object), S_OK);
  EXPECT_EQ(object, stream);
  ASSERT_EQ(stream->QueryInterface(IID_IUnknown, &object), S_OK);
  ASSERT_EQ(stream->QueryInterface(IID_ISequentialStream, &object), S_OK);
  EXPECT_EQ(stream->AddRef(), 5u);
  object = &object;
  EXPECT_EQ(stream->QueryInterface(IID_IDispatch, &object), E_NOINTERFACE);
  EXPECT_EQ(object, nullptr);
  EXPECT_EQ(stream->QueryInterface(IID_IStream, nullptr), E_POINTER);
  for (ULONG left = 4; left > 0; --left) EXPECT_EQ(stream->Release(), left);
  EXPECT_EQ(stream->Release(), 0u);

  EXPECT_EQ(CreateStreamOnHGlobal(nullptr, 1, nullptr), E_INVALIDARG);
  com_test::OtherStream other;
  HGLOBAL block = nullptr;
  EXPECT_EQ(GetHGlobalFromStream(&other, &block), E_INVALIDARG);
  EXPECT_EQ(GetHGlobalFromStream(nullptr, &block), E_INVALIDARG);
  EXPECT_EQ(block, nullptr);
}

}  // namespace

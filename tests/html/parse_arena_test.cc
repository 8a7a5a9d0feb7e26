#include "html/parse_arena.h"

#include <gtest/gtest.h>
#include <gumbo.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace OrvelParser {
namespace {

constexpr size_t kChunk = ParseArena::kChunkBytes;

uintptr_t Address(const void* p) { return reinterpret_cast<uintptr_t>(p); }

TEST(ParseArenaTest, SmallRequestsShareChunksBySizeClass) {
  ParseArena arena(size_t{4} << 20);
  // 1 and 8 bytes are one class, handed out 8 bytes apart; 9 bytes another.
  void* a = arena.Allocate(1);
  void* b = arena.Allocate(8);
  void* c = arena.Allocate(9);
  ASSERT_NE(a, nullptr);
  ASSERT_NE(b, nullptr);
  ASSERT_NE(c, nullptr);
  EXPECT_EQ(Address(b) - Address(a), 8u);
  EXPECT_NE(Address(a) / kChunk, Address(c) / kChunk);
  EXPECT_EQ(Address(a) % 8, 0u);
  EXPECT_EQ(Address(c) % 8, 0u);
  EXPECT_EQ(arena.ChunksInUse(), 2u);
  EXPECT_EQ(arena.LargeAllocations(), 0u);
  // A zero-byte request still yields a distinct object.
  void* zero = arena.Allocate(0);
  ASSERT_NE(zero, nullptr);
  EXPECT_NE(zero, b);
  // The last object freed is the next one handed out.
  arena.Free(b);
  EXPECT_EQ(arena.Allocate(5), b);
  arena.Free(nullptr);  // does nothing
}

TEST(ParseArenaTest, EmptyChunksGiveTheirPagesBackButOnePerClass) {
  ParseArena arena(size_t{4} << 20);
  constexpr size_t kSize = 128;
  constexpr size_t kPerChunk = kChunk / kSize;
  std::vector<void*> objects;
  for (size_t i = 0; i < 3 * kPerChunk; ++i) objects.push_back(arena.Allocate(kSize));
  EXPECT_EQ(arena.ChunksInUse(), 3u);
  const uintptr_t first_chunk = Address(objects[0]) / kChunk * kChunk;
  // Chunk by chunk, in the order they were filled, as a tree taken apart
  // in document order frees them.
  for (size_t i = 0; i < kPerChunk; ++i) arena.Free(objects[i]);
  EXPECT_EQ(arena.ChunksInUse(), 3u);  // the first empty chunk of the class is kept
  for (size_t i = kPerChunk; i < 3 * kPerChunk; ++i) arena.Free(objects[i]);
  EXPECT_EQ(arena.ChunksInUse(), 1u);
  // Chunks given back are used again, for any class: nothing lies past the
  // three chunks carved so far.
  objects.clear();
  for (size_t i = 0; i < kPerChunk; ++i) objects.push_back(arena.Allocate(kSize));
  for (size_t i = 0; i < kChunk / 64; ++i) objects.push_back(arena.Allocate(64));
  EXPECT_EQ(arena.ChunksInUse(), 2u);
  for (void* p : objects) {
    ASSERT_GE(Address(p), first_chunk);
    ASSERT_LT(Address(p) - first_chunk, 3 * kChunk);
  }
}

TEST(ParseArenaTest, LargeRequestsAndAnExhaustedReservationUseTheCLibrary) {
  ParseArena arena(kChunk);  // room for one chunk
  void* large = arena.Allocate(ParseArena::kMaxSmallBytes + 1);
  ASSERT_NE(large, nullptr);
  EXPECT_EQ(Address(large) % 16, 0u);
  EXPECT_EQ(arena.LargeAllocations(), 1u);
  std::memset(large, 0x5A, ParseArena::kMaxSmallBytes + 1);

  std::vector<void*> small;
  for (size_t i = 0; i < kChunk / 8 + 3; ++i) small.push_back(arena.Allocate(8));
  EXPECT_EQ(arena.ChunksInUse(), 1u);
  EXPECT_EQ(arena.LargeAllocations(), 4u);  // three small ones past the one chunk
  for (void* p : small) arena.Free(p);
  arena.Free(large);
  EXPECT_EQ(arena.LargeAllocations(), 0u);

  ParseArena none(0);  // no reservation at all: everything from the C library
  void* p = none.Allocate(3);
  ASSERT_NE(p, nullptr);
  EXPECT_EQ(none.LargeAllocations(), 1u);
  EXPECT_EQ(none.ChunksInUse(), 0u);
  none.Free(p);
}

// Random requests and frees, each object filled with its own byte: any
// overlap between live objects, or a free that loses one, shows as a
// changed byte.
TEST(ParseArenaTest, LiveObjectsNeverOverlap) {
  ParseArena arena(size_t{2} << 20);  // small enough to overflow into the C library
  std::mt19937 random(7);
  struct Live {
    unsigned char* p;
    size_t size;
    unsigned char fill;
  };
  std::vector<Live> live;
  const auto check = [](const Live& object) {
    for (size_t i = 0; i < object.size; ++i) {
      if (object.p[i] != object.fill) return false;
    }
    return true;
  };
  for (int step = 0; step < 200000; ++step) {
    if (live.empty() || random() % 5 < 3) {
      const size_t size = 1 + random() % (random() % 16 == 0 ? 1000 : 200);
      auto* p = static_cast<unsigned char*>(arena.Allocate(size));
      ASSERT_NE(p, nullptr);
      const auto fill = static_cast<unsigned char>(random());
      std::memset(p, fill, size);
      live.push_back({p, size, fill});
    } else {
      const size_t at = random() % live.size();
      ASSERT_TRUE(check(live[at])) << "step " << step;
      arena.Free(live[at].p);
      live[at] = live.back();
      live.pop_back();
    }
  }
  for (const Live& object : live) ASSERT_TRUE(check(object));
  EXPECT_GT(arena.LargeAllocations(), 0u);
  // The rest goes with the arena (the leak checker of the sanitizer build
  // would report what it missed).
}

#if defined(__SANITIZE_ADDRESS__)
// Under the address sanitizer, freed objects and unused chunk space are
// poisoned: a use after free inside the arena is reported as with malloc.
TEST(ParseArenaDeathTest, UseAfterFreeIsReportedUnderTheAddressSanitizer) {
  ParseArena arena(size_t{1} << 20);
  auto* p = static_cast<volatile char*>(arena.Allocate(24));
  p[23] = 1;
  arena.Free(const_cast<char*>(p));
  EXPECT_DEATH(p[8] = 2, "use-after-poison");
  auto* q = static_cast<volatile char*>(arena.Allocate(40));
  EXPECT_DEATH(q[40] = 3, "use-after-poison");  // past the object, in the chunk's unused space
}
#endif

// Gumbo parses with the arena's hooks, and its tree can be dropped with the
// arena instead of being walked.
TEST(ParseArenaTest, HoldsAWholeGumboParse) {
  std::string html = "<!doctype html><title>T</title>";
  for (int i = 0; i < 2000; ++i) html += "<p class=x>para <a href=/" + std::to_string(i) + ">link</a>";
  ParseArena arena(size_t{8} << 20);
  GumboOptions options = kGumboDefaultOptions;
  options.allocator = &ParseArena::AllocateHook;
  options.deallocator = &ParseArena::FreeHook;
  options.userdata = &arena;
  GumboOutput* output = gumbo_parse_with_options(&options, html.data(), html.size());
  ASSERT_NE(output, nullptr);
  const GumboNode* body = static_cast<const GumboNode*>(
      static_cast<const GumboNode*>(output->root)->v.element.children.data[1]);
  EXPECT_EQ(body->v.element.tag, GUMBO_TAG_BODY);
  EXPECT_EQ(body->v.element.children.length, 2000u);
  EXPECT_GT(arena.ChunksInUse(), 1u);
}

}  // namespace
}  // namespace OrvelParser

#include "tvutil2/frame/buffer.h"

#include "tvutil2/frame/ansi_string.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>

namespace {

// Shows what the growth rules are about.
class Seen : public CBuffer {
  public:
    using CBuffer::CBuffer;
    [[nodiscard]] unsigned int room() const { return capacity; }
    [[nodiscard]] unsigned int start() const { return offset; }
    [[nodiscard]] const unsigned char* block() const { return storage; }
};

std::string text_of(const CBuffer& buffer) {
    return {reinterpret_cast<const char*>(buffer.Ptr()), buffer.Len()};
}

// A buffer of `room` bytes with `len` live ones, "0123..." from `start` on.
void shape(Seen& buffer, unsigned int room, unsigned int start, unsigned int len) {
    buffer.Clear(1);
    buffer.InsertSpace(room);
    buffer.ConsumeEnd(room - start - len);
    buffer.Consume(start);
    auto* const bytes = const_cast<unsigned char*>(buffer.Ptr());
    for (unsigned int i = 0; i < len; ++i) bytes[i] = static_cast<unsigned char>('0' + i % 10);
    ASSERT_EQ(buffer.room(), room);
    ASSERT_EQ(buffer.start(), start);
    ASSERT_EQ(buffer.Len(), len);
}

// Watches one block that is about to be given back.
const void* g_watched = nullptr;
std::size_t g_watched_size = 0;
std::string g_last_content;

}  // namespace

// A pair of its own, so that a checker of allocations finds what belongs together.
void* operator new[](std::size_t size) {
    if (void* const block = std::malloc(size != 0 ? size : 1)) return block;
    throw std::bad_alloc();
}
void operator delete[](void* block) noexcept {
    if (block != nullptr && block == g_watched) {
        g_last_content.assign(static_cast<const char*>(block), g_watched_size);
    }
    std::free(block);
}
void operator delete[](void* block, std::size_t /*size*/) noexcept {
    ::operator delete[](block);
}

namespace {

void watch(const Seen& buffer) {
    g_watched = buffer.block();
    g_watched_size = buffer.room();
    g_last_content.clear();
    g_last_content.reserve(g_watched_size);
}

TEST(Buffer, AppendSpaceCompactsBeforeItGrows) {
    Seen buffer;
    shape(buffer, 1100, 1000, 50);
    const auto* const block = buffer.block();
    buffer.AppendSpace(100);
    EXPECT_EQ(buffer.block(), block);
    EXPECT_EQ(buffer.start(), 0U);
    EXPECT_EQ(buffer.Len(), 150U);
    EXPECT_EQ(text_of(buffer).substr(0, 12), "012345678901");
    buffer.AppendSpace(1000);
    EXPECT_EQ(buffer.room(), 2174U);
    EXPECT_EQ(text_of(buffer).substr(0, 12), "012345678901");
}

TEST(Buffer, AppendSpaceUsesTheRoomBehindWithoutMoving) {
    Seen buffer;
    shape(buffer, 200, 100, 50);
    const auto* const before = buffer.Ptr();
    EXPECT_EQ(buffer.AppendSpace(50), before + 50);
    EXPECT_EQ(buffer.Ptr(), before);
    EXPECT_EQ(buffer.start(), 100U);
}

TEST(Buffer, InsertSpaceGrowsExactly) {
    Seen buffer;
    shape(buffer, 104, 4, 100);
    const auto before = text_of(buffer);
    std::memcpy(buffer.InsertSpace(10), "abcdefghij", 10);
    EXPECT_EQ(buffer.room(), 110U);
    EXPECT_EQ(buffer.start(), 0U);
    EXPECT_EQ(text_of(buffer), "abcdefghij" + before);

    shape(buffer, 104, 20, 50);  // the gap in front is big enough
    buffer.InsertSpace(15);
    EXPECT_EQ(buffer.start(), 5U);
    shape(buffer, 104, 4, 50);  // the block is, with what lies behind
    const auto* const block = buffer.block();
    std::memcpy(buffer.InsertSpace(6), "abcdef", 6);
    EXPECT_EQ(buffer.block(), block);
    EXPECT_EQ(text_of(buffer), "abcdef" + before.substr(0, 50));
}

TEST(Buffer, TakingAway) {
    Seen buffer(reinterpret_cast<const unsigned char*>("abcdef"), 6);
    EXPECT_EQ(buffer.GetByte(), 'a');
    EXPECT_EQ(buffer.Consume(2), 2U);
    EXPECT_EQ(buffer.start(), 3U);
    EXPECT_EQ(buffer.ConsumeEnd(1), 1U);
    unsigned char out[8] = {};
    EXPECT_EQ(buffer.Get(out, 8), 2U);
    EXPECT_STREQ(reinterpret_cast<char*>(out), "de");
    EXPECT_EQ(buffer.start(), 0U);  // empty: the whole block is free again
    EXPECT_EQ(buffer.GetByte(), 0);
    EXPECT_EQ(buffer.Consume(1), 0U);
    EXPECT_EQ(buffer.ConsumeEnd(UINT_MAX), 0U);
}

TEST(Buffer, EmptyOnesHaveNoBlockAndAreEqual) {
    const Seen empty;
    EXPECT_EQ(empty.Ptr(), nullptr);
    Seen copy(empty);
    copy.Append(static_cast<const char*>(nullptr), 5);
    copy.Append("x", 0);
    copy.Append(empty);
    copy.Append(CAnsiString());
    copy.Clear(1);
    EXPECT_EQ(copy.block(), nullptr);
    EXPECT_TRUE(copy == empty);
}

TEST(Buffer, ComparesAndCopiesLiveBytesOnly) {
    Seen left;
    shape(left, 100, 30, 8);
    Seen right(reinterpret_cast<const unsigned char*>("01234567"), 8);
    EXPECT_TRUE(left == right);
    EXPECT_FALSE(left != right);
    Seen copy(left);
    EXPECT_EQ(copy.start(), 0U);
    copy.PutByte('!');
    EXPECT_TRUE(left != copy);
    copy = right;
    EXPECT_TRUE(left == copy);
    EXPECT_NE(copy.block(), right.block());
    auto& self = copy;
    copy = self;
    EXPECT_EQ(text_of(copy), "01234567");
    copy.Append(CAnsiString("89"));
    copy.Append(&right);
    EXPECT_EQ(text_of(copy), "012345678901234567");
}

TEST(Buffer, ClearWithoutWipeKeepsBlockAndBytes) {
    Seen buffer(reinterpret_cast<const unsigned char*>("secret"), 6);
    const auto* const block = buffer.block();
    const auto room = buffer.room();
    buffer.Clear(0);
    EXPECT_EQ(buffer.block(), block);
    EXPECT_EQ(buffer.room(), room);
    EXPECT_EQ(std::memcmp(block, "secret", 6), 0);
}

TEST(Buffer, WipesTheWholeBlockBeforeItGoesBack) {
    const std::string secret(200, 's');
    const auto* const bytes = reinterpret_cast<const unsigned char*>(secret.data());
    {
        Seen cleared(bytes, 200);
        cleared.Consume(150);  // stale bytes in front
        watch(cleared);
        cleared.Clear(1);
        EXPECT_EQ(g_last_content, std::string(1224, '*'));
        EXPECT_EQ(cleared.room(), 0U);
        cleared.Append(bytes, 200);
        cleared.ConsumeEnd(200);
        watch(cleared);
    }
    EXPECT_EQ(g_last_content, std::string(1224, '*'));
    // A block that growth replaces goes back as it is.
    Seen grown(bytes, 200);
    watch(grown);
    grown.AppendSpace(5000);
    EXPECT_EQ(g_last_content.substr(0, 200), secret);
}

TEST(Buffer, RenewTakesTheWipedBlockOnlyWhenItFits) {
    Seen buffer;
    buffer.Renew(6);
    buffer.Consume(2);
    const auto* const block = buffer.block();
    EXPECT_EQ(buffer.Renew(6), block);
    EXPECT_EQ(text_of(buffer), "******");
    buffer.Renew(7);
    EXPECT_EQ(buffer.room(), 7U);
    EXPECT_EQ(buffer.Len(), 7U);
}

TEST(Buffer, SizesBeyond32BitsAreRefusedAndNothingChanges) {
    Seen buffer(reinterpret_cast<const unsigned char*>("abc"), 3);
    EXPECT_THROW(buffer.AppendSpace(UINT_MAX), std::bad_alloc);
    EXPECT_THROW(buffer.AppendSpace(UINT_MAX - 2), std::bad_alloc);
    EXPECT_THROW(buffer.InsertSpace(UINT_MAX), std::bad_alloc);
    EXPECT_EQ(text_of(buffer), "abc");
}

}  // namespace

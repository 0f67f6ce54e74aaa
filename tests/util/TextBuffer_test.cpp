#include "util/TextBuffer.h"

#include <gtest/gtest.h>

#include <climits>

namespace {

std::size_t largestBlock = SIZE_MAX;

}  // namespace

// The linker sends the buffer's calls here.
extern "C" void* __real_realloc(void* block, std::size_t size);
extern "C" void* __wrap_realloc(void* block, std::size_t size) {
    return size > largestBlock ? nullptr : __real_realloc(block, size);
}

TEST(TextBuffer, GrowsByTheChunkAndAHundred) {
    TextBuffer buffer;
    ASSERT_TRUE(buffer.Append("abc", 3));
    EXPECT_EQ(buffer.capacity(), 103);
    ASSERT_TRUE(buffer.Append(std::string(98, 'x').c_str(), 98));  // 3 + 98 + 2 still fits
    EXPECT_EQ(buffer.capacity(), 103);
    ASSERT_TRUE(buffer.Append("y", 1));
    EXPECT_EQ(buffer.capacity(), 101 + 1 + 100);
    EXPECT_EQ(buffer.length(), 102);
    EXPECT_STREQ(buffer.data(), ("abc" + std::string(98, 'x') + "y").c_str());
}

TEST(TextBuffer, ZeroByteEndsTheCopyButNotTheCount) {
    TextBuffer buffer;
    ASSERT_TRUE(buffer.Append("ab\0cd", 5));
    EXPECT_EQ(buffer.length(), 5);
    EXPECT_EQ(buffer.Text(), "ab");
    ASSERT_TRUE(buffer.Append("ef", 2));
    EXPECT_EQ(buffer.Text(), "abef") << "the next text lands at the first zero byte";
    EXPECT_EQ(buffer.length(), 7);
}

TEST(TextBuffer, DropsAChunkBeyondItsLimitAndStaysUsable) {
    TextBuffer buffer;
    buffer.LimitTo(200);
    ASSERT_TRUE(buffer.Append("abc"));
    EXPECT_FALSE(buffer.Append(std::string(300, 'x').c_str(), 300));
    EXPECT_TRUE(buffer.Append("d"));
    EXPECT_EQ(buffer.Text(), "abcd");
}

TEST(TextBuffer, CanBeUsedAgainWhenMovedFrom) {
    TextBuffer first("first");
    TextBuffer second = std::move(first);
    first.Append("new");  // NOLINT(bugprone-use-after-move): that is what is tested
    EXPECT_EQ(first.Text(), "new");
    first = std::move(second);
    EXPECT_EQ(first.Text(), "first");
}

TEST(TextBuffer, InitialisesZeroedRoom) {
    TextBuffer buffer;
    EXPECT_TRUE(buffer.Initialise(0));
    EXPECT_EQ(buffer.data(), nullptr);
    EXPECT_TRUE(buffer.Initialise(100));
    EXPECT_EQ(buffer.capacity(), 100);
    EXPECT_EQ(buffer.length(), 0);
    EXPECT_STREQ(buffer.data(), "");
    ASSERT_TRUE(buffer.Append("kept"));
    buffer.Clear();
    ASSERT_TRUE(buffer.Append("new"));
    EXPECT_EQ(buffer.Text(), "new");
}

TEST(TextBuffer, TakesWhatItNeedsWhereThereIsNoMemoryForTwiceAsMuch) {
    TextBuffer buffer;
    const std::string chunk(6000, 'x');
    ASSERT_TRUE(buffer.Append(chunk.c_str()));
    largestBlock = 12150;
    EXPECT_TRUE(buffer.Append(chunk.c_str()));
    EXPECT_FALSE(buffer.Append(chunk.c_str()));
    largestBlock = SIZE_MAX;
    EXPECT_EQ(buffer.Text(), chunk + chunk);
}

// Allocation and the string copies: contents, ownership, and the end of memory.

#include "front/memory.h"
#include "tests/front/saved_globals.h"
#include "tests/harness/console.h"

#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <malloc.h>
#include <string>

// The system log of this program: records go to standard error, where a death test looks. A
// hardened build of the library calls the second form. NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" [[gnu::format(printf, 2, 3)]] void syslog(int priority, const char *format, ...);
extern "C" [[gnu::format(printf, 3, 4)]] void __syslog_chk(int priority, int flag,
                                                           const char *format, ...);

[[gnu::format(printf, 2, 0)]] static void record(int priority, const char *format,
                                                 va_list arguments) {
    fprintf(stderr, "record of priority %d: [", priority);
    vfprintf(stderr, format, arguments);
    fputs("]", stderr);
}

extern "C" void syslog(int priority, const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    record(priority, format, arguments);
    va_end(arguments);
}

extern "C" void __syslog_chk(int priority, int /*flag*/, const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    record(priority, format, arguments);
    va_end(arguments);
}
// NOLINTEND(bugprone-reserved-identifier)

namespace {

using namespace front_tests;

using Memory = FreshGlobals;

bool is_zero(const void *block, std::size_t size) {
    const char *bytes = static_cast<const char *>(block);
    return std::string(bytes, size) == std::string(size, '\0');
}

char *owned(const char *text) {
    return strdup(text);
}

// --- Blocks

TEST_F(Memory, XmallocZeroes) {
    for (const std::size_t size : {std::size_t{1}, std::size_t{100}, std::size_t{1000000}}) {
        // What was used before must not shine through.
        void *used = malloc(size);
        memset(used, 'x', size);
        free(used);
        void *block = xmalloc(size);
        ASSERT_NE(block, nullptr);
        EXPECT_TRUE(is_zero(block, size)) << size;
        xfree(block);
    }
}

TEST_F(Memory, XmallocOfNothingIsABlock) {
    void *first = xmalloc(0);
    void *second = xmalloc(0);
    EXPECT_NE(first, nullptr);
    EXPECT_NE(second, nullptr);
    EXPECT_NE(first, second);
    xfree(first);
    xfree(second);
}

TEST_F(Memory, XreallocKeepsTheContents) {
    char *block = static_cast<char *>(xrealloc(nullptr, 4));
    ASSERT_NE(block, nullptr);
    memcpy(block, "abc", 4);
    block = static_cast<char *>(xrealloc(block, 1000000));
    EXPECT_STREQ(block, "abc");
    memset(block + 4, 'x', 1000000 - 4);
    block = static_cast<char *>(xrealloc(block, 2));
    EXPECT_EQ(std::string(block, 2), "ab");
    xfree(block);
}

TEST_F(Memory, XreallocToNothingIsABlock) {
    void *block = xrealloc(xmalloc(10), 0);
    EXPECT_NE(block, nullptr);
    xfree(block);
    block = xrealloc(nullptr, 0);
    EXPECT_NE(block, nullptr);
    xfree(block);
}

TEST_F(Memory, XfreeOfNullIsHarmless) {
    const std::string output = harness::captured_output([] { xfree(nullptr); });
    EXPECT_EQ(output, "");
}

// --- The end of memory

// More than any allocator gives, whatever the width. Volatile: the compiler would refuse so absurd
// a size.
constexpr std::size_t TOO_MUCH = SIZE_MAX / 4 * 3;
volatile std::size_t too_much = TOO_MUCH;

std::string record_of(const char *function) {
    return std::string("record of priority 0: \\[") + function +
           " failed for size=" + std::to_string(static_cast<int>(TOO_MUCH)) + "\n\\]";
}

using MemoryDeathTest = FreshGlobals;

TEST_F(MemoryDeathTest, XmallocLeavesARecordAndEndsWithOne) {
    g_config.verbose = 1;
    const std::string output = harness::captured_output(
        [] { EXPECT_EXIT(xmalloc(too_much), testing::ExitedWithCode(1), record_of("xmalloc")); });
    EXPECT_EQ(output, "");
}

TEST_F(MemoryDeathTest, XreallocLeavesARecordAndEndsWithOne) {
    g_config.verbose = 1;
    const std::string output = harness::captured_output([] {
        EXPECT_EXIT(xrealloc(nullptr, too_much), testing::ExitedWithCode(1), record_of("xrealloc"));
        EXPECT_EXIT(xrealloc(xmalloc(8), too_much), testing::ExitedWithCode(1),
                    record_of("xrealloc"));
    });
    EXPECT_EQ(output, "");
}

TEST_F(MemoryDeathTest, XstrndupOfTheLargestCountRunsOutOfMemory) {
    if (under_valgrind()) {
        GTEST_SKIP() << "valgrind reports the size itself";
    }
    volatile std::size_t largest = SIZE_MAX;
    EXPECT_EXIT(xstrndup(nullptr, "abc", largest), testing::ExitedWithCode(1),
                "record of priority 0: \\[xmalloc failed for size=-1\n\\]");
}

// --- Copies

TEST_F(Memory, XstrdupCopies) {
    for (const char *text : {"", "a", "Response Status: EIBG-101\n"}) {
        char *copy = xstrdup(nullptr, text);
        EXPECT_STREQ(copy, text);
        EXPECT_NE(copy, text);
        xfree(copy);
    }
}

TEST_F(Memory, FirstArgumentsAreNeitherReadNorFreed) {
    // No page is there: reading or freeing it would end the test.
    const char *nowhere = reinterpret_cast<const char *>(std::uintptr_t{16});
    char *copy = xstrdup(nowhere, "abc");
    EXPECT_STREQ(copy, "abc");
    xfree(copy);
    copy = xstrndup(nowhere, "abc", 2);
    EXPECT_STREQ(copy, "ab");
    xfree(copy);

    char *previous = owned("previous");
    char *next = xstrdup(previous, previous);
    EXPECT_STREQ(previous, "previous");
    EXPECT_STREQ(next, "previous");
    EXPECT_NE(next, previous);
    free(previous);
    xfree(next);
}

TEST_F(Memory, XstrndupTakesTheFirstCharacters) {
    struct {
        std::size_t count;
        const char *copy;
    } const rows[] = {{0, ""}, {1, "a"}, {2, "ab"}, {3, "abc"}, {4, "abc"}, {100, "abc"}};
    for (const auto &row : rows) {
        char *copy = xstrndup(nullptr, "abc", row.count);
        EXPECT_STREQ(copy, row.copy);
        // The block has room for count characters and the terminator.
        const std::size_t length = strlen(row.copy);
        EXPECT_TRUE(is_zero(copy + length, row.count + 1 - length)) << row.count;
        xfree(copy);
    }
}

TEST_F(Memory, XstrndupDoesNotReadBehindTheCount) {
    const char unterminated[3] = {'a', 'b', 'c'};
    char *copy = xstrndup(nullptr, unterminated, 3);
    EXPECT_STREQ(copy, "abc");
    xfree(copy);
}

TEST_F(Memory, XstrdupFreeOfNothingIsEmpty) {
    for (const int flag : {0, 1}) {
        char *copy = xstrdup_free(nullptr, flag);
        EXPECT_STREQ(copy, "");
        xfree(copy);
        copy = xstrndup_free(nullptr, 5, flag);
        EXPECT_STREQ(copy, "");
        xfree(copy);
    }
    char *empty = owned("");
    char *copy = xstrdup_free(empty, 0);
    EXPECT_STREQ(copy, "");
    EXPECT_NE(copy, empty);
    xfree(copy);
    copy = xstrndup_free(empty, 5, 1);
    EXPECT_STREQ(copy, "");
    xfree(copy);
}

TEST_F(Memory, XstrndupFreeCopiesAtMostTheSource) {
    struct {
        std::size_t count;
        const char *copy;
    } const rows[] = {{0, ""},    {1, "a"},        {3, "abc"},
                      {4, "abc"}, {100000, "abc"}, {SIZE_MAX, "abc"}};
    for (const auto &row : rows) {
        char *source = owned("abc");
        char *copy = xstrndup_free(source, row.count, 0);
        EXPECT_STREQ(copy, row.copy);
        EXPECT_STREQ(source, "abc");
        // The block has room for the whole source, whatever was copied.
        const std::size_t length = strlen(row.copy);
        EXPECT_TRUE(is_zero(copy + length, sizeof "abc" - length)) << row.count;
        xfree(copy);
        free(source);
    }
}

TEST_F(Memory, BlocksOfPartialCopiesHaveTheirFullSize) {
    std::string source(4000, 'x');
    char *copy = xstrndup_free(source.data(), 1, 0);
    EXPECT_STREQ(copy, "x");
    EXPECT_GE(malloc_usable_size(copy), std::size_t{4001});
    xfree(copy);
    copy = xstrndup(nullptr, "x", 4000);
    EXPECT_STREQ(copy, "x");
    EXPECT_GE(malloc_usable_size(copy), std::size_t{4001});
    xfree(copy);
}

TEST_F(Memory, XstrconcatJoins) {
    struct {
        const char *first;
        const char *second;
        const char *joined;
    } const rows[] = {{"ab", "cd", "abcd"},  {"ab", "", "ab"},      {"", "cd", "cd"},
                      {"ab", nullptr, "ab"}, {nullptr, "cd", "cd"}, {"", "", ""},
                      {nullptr, nullptr, ""}};
    for (const auto &row : rows) {
        char *joined = xstrconcat(row.first, row.second);
        EXPECT_STREQ(joined, row.joined);
        EXPECT_NE(joined, row.first);
        EXPECT_NE(joined, row.second);
        xfree(joined);
    }
}

TEST_F(Memory, XstrconcatHasRoomForItsEnd) {
    for (std::size_t length = 0; length <= 64; length++) {
        const std::string half(length, 'a');
        char *joined = xstrconcat(half.c_str(), half.c_str());
        EXPECT_EQ(joined, half + half);
        EXPECT_GE(malloc_usable_size(joined), 2 * length + 1);
        xfree(joined);
    }
}

TEST_F(Memory, XstrconcatJoinsATextWithItself) {
    char *text = owned("ab");
    char *joined = xstrconcat(text, text);
    EXPECT_STREQ(joined, "abab");
    EXPECT_STREQ(text, "ab");
    xfree(joined);
    joined = xstrconcat_free(text, text, 1, 0);
    EXPECT_STREQ(joined, "abab");
    xfree(joined);
}

TEST_F(Memory, XstrconcatFreeOfNothingIsEmpty) {
    char *joined = xstrconcat_free(nullptr, nullptr, 1, 1);
    EXPECT_STREQ(joined, "");
    xfree(joined);
    joined = xstrconcat_free(nullptr, owned("cd"), 1, 1);
    EXPECT_STREQ(joined, "cd");
    xfree(joined);
    joined = xstrconcat_free(owned("ab"), nullptr, 1, 1);
    EXPECT_STREQ(joined, "ab");
    xfree(joined);
}

} // namespace

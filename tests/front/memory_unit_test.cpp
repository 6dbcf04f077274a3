// Allocation, the string copies and the cutters: contents, the room behind them, what is released,
// and the end of memory.

#include "front/memory.h"
#include "front/utility.h"
#include "tests/front/fresh_globals.h"
#include "tests/harness/console.h"

#include <cstdarg>
#include <cstdint>
#include <malloc.h>

// The system log of this program: records go to standard error, where a death test looks. A
// hardened build of the library calls the second form. NOLINTBEGIN(bugprone-reserved-identifier)
#define WRITE_RECORD(PRIORITY, FORMAT)                                                             \
    va_list arguments;                                                                             \
    va_start(arguments, FORMAT);                                                                   \
    fprintf(stderr, "record of priority %d: ", PRIORITY);                                          \
    vfprintf(stderr, FORMAT, arguments);                                                           \
    va_end(arguments)

extern "C" [[gnu::format(printf, 2, 3)]] void syslog(int priority, const char *format, ...) {
    WRITE_RECORD(priority, format);
}

extern "C" [[gnu::format(printf, 3, 4)]] void __syslog_chk(int priority, int /*flag*/,
                                                           const char *format, ...) {
    WRITE_RECORD(priority, format);
}
// NOLINTEND(bugprone-reserved-identifier)

namespace {

using Memory = front_tests::FreshGlobals;

/// valgrind brings its own allocator, and takes the largest sizes for mistakes.
bool is_under_valgrind() {
    const char *preloaded = getenv("LD_PRELOAD");
    return preloaded != nullptr && strstr(preloaded, "vgpreload") != nullptr;
}

bool is_zero(const void *block, std::size_t size) {
    return std::string(static_cast<const char *>(block), size) == std::string(size, '\0');
}

TEST_F(Memory, BlocksAreZeroedAndKeepTheirContents) {
    for (const std::size_t size : {100U, 1000000U}) {
        // What was used before must not shine through.
        void *used = malloc(size);
        memset(used, 'x', size);
        free(used);
        void *block = xmalloc(size);
        EXPECT_TRUE(is_zero(block, size)) << size;
        xfree(block);
    }
    char *block = static_cast<char *>(xrealloc(nullptr, 4));
    memcpy(block, "abc", 4);
    block = static_cast<char *>(xrealloc(block, 1000000));
    EXPECT_STREQ(block, "abc");
    memset(block + 4, 'x', 1000000 - 4);
    block = static_cast<char *>(xrealloc(block, 2));
    EXPECT_EQ(std::string(block, 2), "ab");
    for (void *nothing : {xmalloc(0), xrealloc(block, 0), xrealloc(nullptr, 0)}) {
        EXPECT_NE(nothing, nullptr);
        xfree(nothing);
    }
    xfree(nullptr);
}

// More than any allocator gives, whatever the width. Volatile: the compiler would refuse so absurd
// a size.
volatile std::size_t too_much = SIZE_MAX / 4 * 3;
volatile std::size_t largest = SIZE_MAX;

std::string record_of(const std::string &function, std::size_t size) {
    // A sanitizer may have said something before it.
    return "(^|\n)record of priority 0: " + function +
           " failed for size=" + std::to_string(static_cast<int>(size)) + "\n$";
}

TEST(MemoryDeathTest, OneRecordAndStatusOneEndTheProcess) {
    if (is_under_valgrind()) {
        GTEST_SKIP() << "valgrind reports the sizes itself";
    }
    const auto one = testing::ExitedWithCode(1);
    const std::string output = harness::captured_output([&one] {
        EXPECT_EXIT(xmalloc(too_much), one, record_of("xmalloc", too_much));
        EXPECT_EXIT(xrealloc(nullptr, too_much), one, record_of("xrealloc", too_much));
        EXPECT_EXIT(xrealloc(xmalloc(8), too_much), one, record_of("xrealloc", too_much));
        EXPECT_EXIT(xstrndup(nullptr, "abc", largest), one, record_of("xmalloc", largest));
    });
    EXPECT_EQ(output, "");
}

TEST_F(Memory, CopiesAreWholeAndHaveTheirRoom) {
    const char *const full = "abcdefghijklmnopqrstuvwx"; // what an allocator hands out
    // No page is there: reading or freeing it would end the test.
    const char *nowhere = reinterpret_cast<const char *>(std::uintptr_t{16});
    const char unterminated[3] = {'a', 'b', 'c'};
    char *pair = strdup("ab");
    const struct {
        char *copy;
        const char *text;
        std::size_t room; ///< at least, zeroed behind the text
    } rows[] = {
        {xstrdup(nowhere, ""), "", 1},
        {xstrdup(nowhere, full), full, 25},
        {xstrndup(nowhere, "abc", 0), "", 1},
        {xstrndup(nowhere, "abc", 4000), "abc", 4001},
        {xstrndup(nowhere, unterminated, 3), "abc", 4},
        {xstrndup(nowhere, full, 24), full, 25},
        {xstrdup_free(nullptr, 1), "", 1},
        {xstrdup_free(strdup(full), 1), full, 25},
        {xstrndup_free(nullptr, 5, 1), "", 1},
        {xstrndup_free(strdup(full), 24, 1), full, 25},
        {xstrndup_free(strdup("abc"), SIZE_MAX, 1), "abc", 4},
        {xstrndup_free(strdup(std::string(4000, 'x').c_str()), 1, 1), "x", 4001},
        {xstrconcat("ab", full + 2), full, 25},
        {xstrconcat(full, nullptr), full, 25},
        {xstrconcat(nullptr, full), full, 25},
        {xstrconcat(nullptr, nullptr), "", 1},
        {xstrconcat_free(nullptr, strdup("cd"), 1, 1), "cd", 3},
        {xstrconcat_free(strdup("ab"), nullptr, 1, 1), "ab", 3},
        {xstrconcat_free(pair, pair, 1, 0), "abab", 5},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(&row - rows);
        EXPECT_STREQ(row.copy, row.text);
        EXPECT_GE(malloc_usable_size(row.copy), row.room);
        const std::size_t length = strlen(row.text);
        EXPECT_TRUE(is_zero(row.copy + length, row.room - length));
        xfree(row.copy);
    }
}

TEST_F(Memory, SourcesAreReleasedWhenTheirFlagsSaySoAndTheRecordAtTheEnd) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizer's allocator counts nothing";
#endif
    if (is_under_valgrind()) {
        GTEST_SKIP() << "valgrind finds leaked and lost blocks by itself";
    }
    // So large that nothing else weighs against them.
    const auto large = [] { return strdup(std::string(65535, 'x').c_str()); };
    const auto in_use = [] { return mallinfo2().uordblks + mallinfo2().hblkhd; };
    const std::size_t start = in_use();
    const auto texts_in_use = [&] { return (in_use() - start + 32768) / 65536; };
    const struct {
        char *(*copy)(char *first, char *second);
        std::size_t left; ///< texts as long as one source
        bool releases_first = false;
        bool releases_second = false;
    } rows[] = {
        {[](char *first, char *) { return xstrdup_free(first, 0); }, 3},
        {[](char *first, char *) { return xstrdup_free(first, 1); }, 2, true},
        {[](char *first, char *) { return xstrdup_free(first, -1); }, 2, true},
        {[](char *first, char *) { return xstrndup_free(first, 3, 0); }, 3},
        {[](char *first, char *) { return xstrndup_free(first, 3, 1); }, 2, true},
        {[](char *first, char *) { return xstrndup_free(first, 3, -1); }, 2, true},
        {[](char *first, char *second) { return xstrconcat_free(first, second, 0, 0); }, 4},
        {[](char *first, char *second) { return xstrconcat_free(first, second, -1, 0); }, 3, true},
        {[](char *first, char *second) { return xstrconcat_free(first, second, 0, -1); }, 3, false,
         true},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(&row - rows);
        char *first = large();
        char *second = large();
        char *copy = row.copy(first, second);
        EXPECT_EQ(texts_in_use(), row.left);
        xfree(copy);
        xfree(row.releases_first ? nullptr : first);
        xfree(row.releases_second ? nullptr : second);
    }
    g_config = {large(), large(), large(), large(), large(), 0, 0, 0};
    release_config();
    EXPECT_EQ(texts_in_use(), 0U);
}

// --- The cutters

struct cut_case {
    const char *text; ///< null: a null text
    std::size_t length;
    const char *left;
    std::string complaint = ""; ///< behind the function's name; empty: none
};

const char NOTHING[] = " recevied a null pointer";
const std::string TOO_LONG = " len is greater than string length; returning a null string";

const struct {
    const char *name;
    void (*cut)(char *text, std::size_t length);
    std::vector<cut_case> rows;
} CUTTERS[] = {
    {"cut_message_to_preserve_newline",
     cut_message_to_preserve_newline,
     {{"Response Status: EIBG-101\n", 17, "EIBG-101\n"},
      {"abc", 3, ""},
      {"abc", 4, "", TOO_LONG + ". str = abc, len = 3"},
      {"%n%s", SIZE_MAX, "", TOO_LONG + ". str = %n%s, len = 4"},
      {"", 17, "", NOTHING},
      {nullptr, 17, "", NOTHING}}},
    {"cut_message_to_trim_newline",
     cut_message_to_trim_newline,
     {{"Status: 5\n", 8, "5"},
      {"abcdef", 2, "cde"},
      {"abc", 2, ""},
      {"abc", 3, ""},
      {"abc\n", 5, "", TOO_LONG + ". str = abc\n, len = 4"},
      {nullptr, 1, "", NOTHING}}},
    {"cutparamto",
     cutparamto,
     {{"Key: = value rest", 4, "value"},
      {"Key\t=\t=value\trest", 3, "value"},
      {"Keyvalue", 3, "value"},
      {"Key=a=b c", 3, "a=b"},
      {"Key", 3, ""},
      {"Key", 4, "", TOO_LONG},
      {nullptr, 3, "", NOTHING}}},
    {"cutqueryparamto",
     cutqueryparamto,
     {{"where \t'|'value' and", 5, "value"},
      {"k|value\trest", 1, "value"},
      {"k 'a|b' c", 1, "a|b"},
      {"k value more", 1, "value"},
      {"key", 3, ""},
      {"key", 4, "", TOO_LONG},
      {nullptr, 3, "", NOTHING}}},
};

TEST_F(Memory, CuttersLeaveTheRestOrComplain) {
    for (const auto &cutter : CUTTERS) {
        for (const cut_case &row : cutter.rows) {
            SCOPED_TRACE(cutter.name + std::to_string(&row - cutter.rows.data()));
            // One guard byte on either side of the text and its terminator.
            std::string bytes = std::string("<") + (row.text == nullptr ? "" : row.text);
            bytes.append(1, '\0').append(">");
            char *text = row.text == nullptr ? nullptr : bytes.data() + 1;
            const std::string output =
                harness::captured_output([&] { cutter.cut(text, row.length); });
            EXPECT_EQ(output, row.complaint.empty() ? ""
                                                    : harness::red(std::string("memory->") +
                                                                   cutter.name + row.complaint));
            EXPECT_STREQ(bytes.data() + 1, row.left);
            EXPECT_EQ(bytes.front(), '<');
            EXPECT_EQ(bytes.back(), '>');
        }
    }
}

} // namespace

// How an answer of FSMCore is read, and what is said of each failure: every row is tried with the
// local and the remote exchange.

#include "tests/fsmcore/fsmcore_exchanges.h"
#include "tests/harness/console.h"
#include "tests/protocol/texts.h"

#include <cerrno>
#include <cstring>
#include <gtest/gtest.h>
#include <malloc.h>

namespace {

using namespace harness;

/// What comes of an answer: a message, or the status with the returned parameters.
struct answer_row {
    std::string answer;
    int message = 0; ///< 0: none
    int status = 0;  ///< or the system's error number of message 6
    std::vector<const char *> values = {};
    std::string complaint = ""; ///< lines written on the way
    int count = static_cast<int>(values.size());
};

const std::string STATUS = "Response Status: FSMC-";
const std::string OK = STATUS + "000\n";
const std::string NO_VALUE = OK + "Parameter Count: 0\n";
const std::string ONE = OK + "Parameter Count: 1\n";
const std::string TWO = OK + "Parameter Count: 2\n";
const std::string HIGHEST = OK + "Parameter Count: 2147483647\n";
const std::string YES = "Param000 Length: 3\nParam000:\nyes\n";

/// What cutting the tag off a line that is shorter than a tag says.
std::string cut(const std::string &line) {
    return red("memory->cut_message_to_preserve_newline len is greater than string length; "
               "returning a null string. str = " +
               line + ", len = " + std::to_string(line.size()));
}

std::string many(std::size_t count, const std::string &text) {
    return protocol::joined(words(count, text), "");
}

/// Makes an answer of one parameter 1024 bytes long.
const std::string LONGEST(1024 - ONE.size() - strlen("Param000 Length: NNN\nParam000:\n"), 'v');

std::string answer_with(const std::string &value) {
    return ONE + "Param000 Length: " + std::to_string(value.size()) + "\nParam000:\n" + value;
}

const std::size_t MOST_LINES = (1024 - HIGHEST.size()) / 2; ///< of one letter, in one answer

const answer_row ANSWERS[] = {
    {TWO + YES + "Param001 Length: 2\nParam001:\nno", 0, 0, {"yes", "no"}},
    {STATUS + "004\nParameter Count: 0\n", 0, 4},
    {"response status: FSMC-003\nparameter count: 0\n", 0, 3},
    {STATUS + " 3\nParameter Count:  +0\n", 0, 3},
    {STATUS + "-3\nParameter Count: 0\n", 0, -3},
    {STATUS + "\nParameter Count: 0\n"},
    {OK + "Parameter Count: \n"},
    {.answer = OK + "Parameter Count: -5\n", .count = -5},
    {"\n\n" + ONE + "\n\nParam000 Length: 3\n\n\nParam000:\n\nyes\n\n\n", 0, 0, {"yes"}},
    {TWO + "Param000 Length: -1\nParam001 Length: 2\nParam001:\non\n", 0, 0, {nullptr, "on"}},
    {ONE + "abcdefghijklmnopq3\nanything\nyes\n", 0, 0, {"yes"}}, // tags are not looked at
    {ONE + "x\n", 0, 0, {nullptr}, cut("x")},
    {ONE + "Param000 Length: 4\nParam000:\r\nyes\r\n", 0, 0, {"yes\r"}},
    {NO_VALUE + std::string(1, '\0') + "more\n"},
    {"", 4},
    {"Response State: FSMC-000\nParameter Count: 0\n", 4},
    {"Response Status:xFSMC-000\nParameter Count: 0\n", 4},
    {"Response Status: \nParameter Count: 0\n", 5},
    {"Response Status: fsmc-000\nParameter Count: 0\n", 5},
    {"Response Status: FSMCx000\nParameter Count: 0\n", 5},
    {STATUS + "000x\nParameter Count: 0\n", 6},
    {STATUS + "4294967296\nParameter Count: 0\n", 6, ERANGE},
    {OK, 7},
    {OK + "Parameter Count:x0\n", 7},
    {OK + "Parameter Count: 1x\n", 8},
    {ONE, 9},
    {HIGHEST, 9},
    {HIGHEST + many(MOST_LINES, "x\n"), 9, 0, {}, many(MOST_LINES, cut("x"))},
    {ONE + "Param000 Length: 3x\nParam000:\nyes\n", 10},
    {ONE + "Param000 Length: 3\n", 11},
    {ONE + "Param000 Length: 3\nParam000:\n", 11},
    {ONE + "Param000 Length: 3\nParam000:\nyes!\n", 11},
    {ONE + "Param000 Length: 3\nParam000:\nno\n", 11},
    {ONE + "Param000 Length: 2147483647\nParam000:\nyes\n", 11},
    {ONE + YES + OK, 12},
    {NO_VALUE + "x", 12},
    {OK + "Parameter Count: -1\nParam000 Length: 0\n", 12},
    // An empty parameter has no tag line.
    {TWO + "Param000 Length: 0\nParam000:\n" + YES, 12, 0, {}, cut("Param000:")},
    // The receive takes 1024 bytes: what stands there counts, what stands behind does not.
    {answer_with(LONGEST), 0, 0, {LONGEST.c_str()}},
    {answer_with(LONGEST) + "\nmore", 0, 0, {LONGEST.c_str()}},
    {answer_with(LONGEST + "v"), 11},
    {NO_VALUE + std::string(1023 - NO_VALUE.size(), '\n') + "x", 12},
    {NO_VALUE + std::string(1024 - NO_VALUE.size(), '\n') + "x"},
};

void expect_outcome(const fsmcore_exchange &x, const answer_row &row,
                    const client_fault &fault = {}) {
    SCOPED_TRACE(x.tag + " " + std::to_string(row.message) + " " + row.answer);
    const meeting_point point(
        x.where, fault.send_error != 0
                     ? script{}
                     : script{collect_until("\n\n"), reply(row.answer), close_connection()});
    int count = 77;
    char *untouched[] = {nullptr};
    char **values = untouched;
    const client_outcome got = call(x, point, "GetState", {"a"}, {&count, &values}, fault);
    EXPECT_EQ(got.left_open, row.message == 6);
    EXPECT_EQ(point.daemon->finish(), "");
    if (row.message != 0) {
        EXPECT_EQ(got.output, row.complaint + red(fsmcore_message(x, row.message, "GetState",
                                                                  strerror(row.status))));
        EXPECT_EQ(got.status, row.message == 2 ? 7 : 8);
        EXPECT_EQ(count, 77);
        EXPECT_EQ(values, untouched);
        return;
    }
    EXPECT_EQ(got.output, row.complaint);
    EXPECT_EQ(got.status, row.status);
    EXPECT_EQ(count, row.count);
    ASSERT_EQ(values == nullptr, row.values.empty());
    for (std::size_t i = 0; i < row.values.size(); i++) {
        EXPECT_STREQ(values[i], row.values[i]) << i;
    }
}

/// A count that no answer can hold must not cost the memory of its list.
TEST(FsmcoreAnswer, IsReadAlikeFromNearAndFarInLittleMemory) {
    const auto in_use = [] { return mallinfo2().uordblks + mallinfo2().hblkhd; };
    const std::size_t before = in_use();
    for (const fsmcore_exchange *x : FSMCORE_EXCHANGES) {
        for (const answer_row &row : ANSWERS) {
            expect_outcome(*x, row);
        }
    }
    EXPECT_LT(in_use(), before + 1048576U);
}

TEST(FsmcoreAnswer, MissesForAReason) {
    for (const fsmcore_exchange *x : FSMCORE_EXCHANGES) {
        client_outcome got = call(*x, deserted_point(), "F", {});
        got.output.erase(0, got.output.find('\n') + 1); // the connector's own line
        EXPECT_EQ(got.output, red(fsmcore_message(*x, 1, "F")));
        EXPECT_EQ(got.status, 6);
        expect_outcome(*x, {"", 2, ENOBUFS}, {.send_error = ENOBUFS});
        expect_outcome(*x, {"", 3, EIO}, {.recv_error = EIO});
    }
}

TEST(FsmcoreAnswer, FillsBothHoldersOrNone) {
    int count = 77;
    char **values = nullptr;
    for (const holders &returned :
         {holders{nullptr, nullptr}, {&count, nullptr}, {nullptr, &values}}) {
        const meeting_point point(LOCAL.where, {collect_until("\n\n"), reply(ONE + YES)});
        EXPECT_EQ(call(LOCAL, point, "F", {}, returned).status, 0);
        EXPECT_EQ(count, 77);
        EXPECT_EQ(values, nullptr);
        EXPECT_EQ(point.daemon->finish(), "");
    }
}

} // namespace

// How an answer of FSMCore is read: every row is tried with the local and the remote exchange.

#include "tests/fsmcore/fsmcore_exchanges.h"
#include "tests/protocol/texts.h"

#include <cerrno>
#include <gtest/gtest.h>
#include <malloc.h>
#include <optional>

namespace {

using namespace harness;

using returned_values = std::vector<std::optional<std::string>>;

/// An answer and what comes of it: the status with the returned parameters, or a message.
struct answer_row {
    const char *name;
    std::string answer;
    int status; ///< or the system's error number of message 6
    int count;
    returned_values values;
    int message = 0;
    std::string complaint; ///< lines written on the way
};

constexpr std::nullopt_t NONE = std::nullopt;

answer_row accepted(const char *name, const std::string &answer, int status, int count,
                    returned_values values = {}, const std::string &complaint = "") {
    return {name, answer, status, count, std::move(values), 0, complaint};
}

answer_row refused(const char *name, const std::string &answer, int message, int error_number = 0,
                   const std::string &complaint = "") {
    return {name, answer, error_number, 0, {}, message, complaint};
}

const std::string OK = "Response Status: FSMC-000\n";
const std::string ONE = OK + "Parameter Count: 1\n";
const std::string TWO = OK + "Parameter Count: 2\n";
const std::string HIGHEST = OK + "Parameter Count: 2147483647\n";

/// What cutting the tag off a line that is shorter than a tag says.
std::string cut(const std::string &line) {
    return red("memory->cut_message_to_preserve_newline len is greater than string length; "
               "returning a null string. str = " +
               line + ", len = " + std::to_string(line.size()));
}

std::string many(std::size_t count, const std::string &text) {
    return protocol::joined(words(count, text), "");
}

/// The value that makes an answer of one parameter so many bytes long, and the answer.
std::string value_for(std::size_t size) {
    return std::string(size - ONE.size() - strlen("Param000 Length: NNN\nParam000:\n"), 'v');
}

std::string answer_of(std::size_t size) {
    const std::string value = value_for(size);
    return ONE + "Param000 Length: " + std::to_string(value.size()) + "\nParam000:\n" + value;
}

/// Line feeds behind a whole answer, up to so many bytes.
std::string filled_to(std::size_t size) {
    const std::string answer = OK + "Parameter Count: 0\n";
    return answer + std::string(size - answer.size(), '\n');
}

const std::size_t MOST_LINES = (1024 - HIGHEST.size()) / 2; ///< of one letter, in one answer

const answer_row ANSWERS[] = {
    accepted("OneValue", ONE + "Param000 Length: 3\nParam000:\nyes\n", 0, 1, {"yes"}),
    accepted("TwoValues",
             TWO + "Param000 Length: 3\nParam000:\nyes\nParam001 Length: 2\nParam001:\nno", 0, 2,
             {"yes", "no"}),
    accepted("StatusFourWithoutValues", "Response Status: FSMC-004\nParameter Count: 0\n", 4, 0),
    accepted("LowerCaseTags", "response status: FSMC-003\nparameter count: 0\n", 3, 0),
    accepted("NothingAfterTheCountTag", OK + "Parameter Count: \n", 0, 0),
    accepted("NegativeCount", OK + "Parameter Count: -5\n", 0, -5),
    accepted("LineFeedsBetweenTheLines",
             "\n\nResponse Status: FSMC-000\n\n\nParameter Count: 1\n\nParam000 Length: 3\n\n\n"
             "Param000:\n\nyes\n\n\n",
             0, 1, {"yes"}),
    accepted("EmptyParameters",
             OK + "Parameter Count: 3\nParam000 Length: 0\nParam001 Length: 2\nParam001:\non\n"
                  "Param002 Length: -1\n",
             0, 3, {NONE, "on", NONE}),
    accepted("TagsOfParametersAreNotLookedAt", ONE + "abcdefghijklmnopq3\nanything\nyes\n", 0, 1,
             {"yes"}),
    accepted("NoNumberBehindALengthTag", ONE + "Param000 Length: \n", 0, 1, {NONE}),
    accepted("ShortLengthLine", ONE + "x\n", 0, 1, {NONE}, cut("x")),
    accepted("CarriageReturnBelongsToTheValue", ONE + "Param000 Length: 4\nParam000:\r\nyes\r\n", 0,
             1, {"yes\r"}),
    accepted("ZeroByteEndsTheText", OK + "Parameter Count: 0\n" + std::string(1, '\0') + "more\n",
             0, 0),
    refused("NoByteAtAll", "", 4),
    refused("OtherTag", "Response State: FSMC-000\nParameter Count: 0\n", 4),
    refused("TagAlone", "Response Status: \nParameter Count: 0\n", 5),
    refused("LowerCasePrefix", "Response Status: fsmc-000\nParameter Count: 0\n", 5),
    refused("OtherPrefix", "Response Status: EIBG-000\nParameter Count: 0\n", 5),
    refused("LetterBehindTheStatus", "Response Status: FSMC-000x\nParameter Count: 0\n", 6),
    refused("StatusThatWraps", "Response Status: FSMC-4294967296\nParameter Count: 0\n", 6, ERANGE),
    refused("NothingBehindTheStatus", OK, 7),
    refused("OtherCountTag", OK + "Parameter count 0\n", 7),
    refused("LetterBehindTheCount", OK + "Parameter Count: 1x\n", 8),
    refused("NoLengthLine", ONE, 9),
    refused("HighestCountWithoutLines", HIGHEST, 9),
    refused("LetterBehindTheLength", ONE + "Param000 Length: 3x\nParam000:\nyes\n", 10),
    refused("TagOneCharacterTooLong", ONE + "Param0000 Length: 3x\nParam000:\nyes\n", 10),
    refused("NoTagLine", ONE + "Param000 Length: 3\n", 11),
    refused("NoValueLine", ONE + "Param000 Length: 3\nParam000:\n", 11),
    refused("ValueLonger", ONE + "Param000 Length: 3\nParam000:\nyes!\n", 11),
    refused("ValueShorter", ONE + "Param000 Length: 3\nParam000:\nno\n", 11),
    refused("HighestLength", ONE + "Param000 Length: 2147483647\nParam000:\nyes\n", 11),
    refused("TextBehindTheLastParameter",
            ONE + "Param000 Length: 3\nParam000:\nyes\nResponse Status: FSMC-000\n", 12),
    refused("TextBehindACountOfZero", OK + "Parameter Count: 0\nx", 12),
    refused("TextBehindANegativeCount", OK + "Parameter Count: -1\nParam000 Length: 0\n", 12),
    refused("TagLineOfAnEmptyParameter",
            TWO + "Param000 Length: 0\nParam000:\nParam001 Length: 3\nParam001:\nyes\n", 12, 0,
            cut("Param000:")),
    // The receive takes 1024 bytes: what stands there counts, what stands behind does not.
    accepted("AnswerOf1024Bytes", answer_of(1024), 0, 1, {value_for(1024)}),
    accepted("TextBehind1024Bytes", answer_of(1024) + "\nmore", 0, 1, {value_for(1024)}),
    refused("ValueCutAt1024Bytes", answer_of(1025), 11),
    refused("TextAtTheLastByte", filled_to(1023) + "x", 12),
    accepted("TextBehindTheLastByte", filled_to(1024) + "x", 0, 0),
    refused("AsManyLinesAsAnAnswerCanHold", HIGHEST + many(MOST_LINES, "x\n"), 9, 0,
            many(MOST_LINES, cut("x"))),
};

void expect_values(char *const *got, const returned_values &wanted) {
    ASSERT_EQ(got == nullptr, wanted.empty());
    for (std::size_t i = 0; i < wanted.size(); i++) {
        const char *text = wanted[i].has_value() ? wanted[i]->c_str() : nullptr;
        EXPECT_STREQ(got[i], text) << i;
    }
}

void expect_outcome(const fsmcore_exchange &x, const answer_row &row) {
    const meeting_point point(x.where,
                              {collect_until("\n\n"), reply(row.answer), close_connection()});
    watched_client client;
    int count = 77;
    char *untouched[] = {nullptr};
    char **values = untouched;
    const watched_client::outcome got =
        call(x, point, &client, "GetState", {"a"}, {&count, &values});
    const bool failed = row.message != 0;
    std::string wanted = row.complaint;
    if (failed) {
        wanted += red(fsmcore_message(x, row.message, "GetState", strerror(row.status)));
        EXPECT_EQ(values, untouched);
    } else {
        expect_values(values, row.values);
    }
    EXPECT_EQ(got.output, wanted);
    EXPECT_EQ(got.status, failed ? 8 : row.status);
    EXPECT_EQ(count, failed ? 77 : row.count);
    EXPECT_EQ(got.left_open, row.message == 6);
    EXPECT_EQ(client.receives, 1);
    EXPECT_EQ(point.daemon->finish(), "");
}

/// A count that no answer can hold must not cost the memory of its list.
TEST(FsmcoreAnswer, IsReadAlikeFromNearAndFarInLittleMemory) {
    const auto in_use = [] {
        const struct mallinfo2 now = mallinfo2();
        return now.uordblks + now.hblkhd;
    };
    const std::size_t before = in_use();
    for (const fsmcore_exchange *x : FSMCORE_EXCHANGES) {
        for (const answer_row &row : ANSWERS) {
            SCOPED_TRACE(x->tag + " " + row.name);
            expect_outcome(*x, row);
        }
    }
    EXPECT_LT(in_use(), before + 1048576U);
}

TEST(FsmcoreAnswer, FillsBothHoldersOrNone) {
    int count = 77;
    char *untouched[] = {nullptr};
    char **values = untouched;
    for (const fsmcore_exchange *x : FSMCORE_EXCHANGES) {
        for (const holders &returned :
             {holders{nullptr, nullptr}, {&count, nullptr}, {nullptr, &values}}) {
            const meeting_point point(
                x->where, {collect_until("\n\n"), reply(ONE + "Param000 Length: 1\nt\nx\n")});
            watched_client client;
            EXPECT_EQ(call(*x, point, &client, "F", {}, returned).status, 0);
            EXPECT_EQ(count, 77);
            EXPECT_EQ(values, untouched);
            EXPECT_EQ(point.daemon->finish(), "");
        }
    }
}

} // namespace

// FSMCore: parameters framed by length, both ways.
#include "tests/simulator/simulator_process.h"

#include <gtest/gtest.h>

namespace {

struct FsmCase {
    const char *name;
    std::string request;
    std::string answer;
};

const std::string MALFORMED = "Response Status: FSMC-002\nParameter Count: 0\n";

const FsmCase CASES[] = {
    {"ReturnsParameters",
     "Request: GETSTATE\nParameter Count: 2\nParam000 Length: 2\nParam000:\n12\n"
     "Param001 Length: 2\nParam001:\non\nWaittime: 5\n\n",
     "Response Status: FSMC-000\nParameter Count: 2\nParam000 Length: 2\nParam000:\n12\n"
     "Param001 Length: 2\nParam001:\non\n"},
    {"NoParameters", "Request: GETSTATE\nParameter Count: 0\nWaittime: 5\n\n",
     "Response Status: FSMC-000\nParameter Count: 0\n"},
    {"EmptyParameterIsItsLengthLineAlone",
     "Request: f\nParameter Count: 3\nParam000 Length: 1\nParam000:\na\n"
     "Param001 Length: 0\nParam001:\n\nParam002 Length: 1\nParam002:\nb\nWaittime: 5\n\n",
     "Response Status: FSMC-000\nParameter Count: 3\nParam000 Length: 1\nParam000:\na\n"
     "Param001 Length: 0\nParam002 Length: 1\nParam002:\nb\n"},
    {"ValueWithLineFeeds",
     "Request: f\nParameter Count: 1\nParam000 Length: 5\nParam000:\na\n\nb:\nWaittime: 5\n\n",
     "Response Status: FSMC-000\nParameter Count: 1\nParam000 Length: 5\nParam000:\na\n\nb:\n"},
    {"LengthTooSmall",
     "Request: f\nParameter Count: 1\nParam000 Length: 3\nParam000:\nfour\nWaittime: 5\n\n",
     MALFORMED},
    {"LengthTooLarge",
     "Request: f\nParameter Count: 1\nParam000 Length: 5\nParam000:\nfour\nWaittime: 5\n\n",
     MALFORMED},
    {"LengthNotANumber",
     "Request: f\nParameter Count: 1\nParam000 Length: 4x\nParam000:\nfour\nWaittime: 5\n\n",
     MALFORMED},
    {"NegativeCount", "Request: f\nParameter Count: -1\nWaittime: 5\n\n", MALFORMED},
    {"ZeroFilledCount", "Request: f\nParameter Count: 00\nWaittime: 5\n\n", MALFORMED},
    {"IndexFromOne",
     "Request: f\nParameter Count: 1\nParam001 Length: 1\nParam001:\na\nWaittime: 5\n\n",
     MALFORMED},
    {"IndexWithTwoDigits",
     "Request: f\nParameter Count: 1\nParam00 Length: 1\nParam00:\na\nWaittime: 5\n\n", MALFORMED},
    {"FewerParametersThanCounted",
     "Request: f\nParameter Count: 2\nParam000 Length: 1\nParam000:\na\nWaittime: 5\n\n",
     MALFORMED},
    {"NoWaittime", "Request: f\nParameter Count: 0\n\n", MALFORMED},
    {"WaittimeNotANumber", "Request: f\nParameter Count: 0\nWaittime: x\n\n", MALFORMED},
    {"NoName", "Request: \nParameter Count: 0\nWaittime: 5\n\n", MALFORMED},
    {"NoRequestLine", "GETSTATE\n\n", MALFORMED},
    {"CarriageReturn", "Request: f\nParameter Count: 0\r\nWaittime: 5\n\n", MALFORMED},
    {"BytesAfterTheEnd", "Request: f\nParameter Count: 0\nWaittime: 5\n\nmore", MALFORMED},
};

std::ostream &operator<<(std::ostream &out, const FsmCase &row) {
    return out << row.name;
}

class FsmCore : public testing::TestWithParam<FsmCase> {};

TEST_P(FsmCore, Answers) {
    Simulator simulator;
    ASSERT_TRUE(simulator.ready) << simulator.program.errors;
    EXPECT_EQ(ask_daemon(simulator.home.path, "fsmcore", GetParam().request), GetParam().answer)
        << GetParam().request;
}

INSTANTIATE_TEST_SUITE_P(Rows, FsmCore, testing::ValuesIn(CASES),
                         [](const auto &row) { return std::string(row.param.name); });

TEST(FsmCoreReading, TakesRequestsInSingleBytes) {
    Simulator simulator;
    ASSERT_TRUE(simulator.ready);
    for (const FsmCase &row : CASES) {
        if (row.answer != MALFORMED) {
            EXPECT_EQ(ask_daemon(simulator.home.path, "fsmcore", row.request, true), row.answer)
                << row.request;
        }
    }
}

TEST(FsmCoreReading, PrintsTheRequest) {
    Simulator simulator;
    ASSERT_TRUE(simulator.ready);
    ask_daemon(simulator.home.path, "fsmcore", CASES[2].request);
    EXPECT_TRUE(wait_for_output(simulator.program, "FSMCORE: f a||b -> FSMC-000\n"))
        << simulator.program.out;
}

TEST(FsmCoreReading, CarriesManyParameters) {
    std::string parameters;
    for (int i = 0; i < 48; ++i) {
        std::string tag = i < 10 ? "Param00" : "Param0";
        tag += std::to_string(i);
        parameters.append(tag).append(" Length: 511\n").append(tag).append(":\n");
        parameters.append(511, 'v').append("\n");
    }
    Simulator simulator;
    ASSERT_TRUE(simulator.ready);
    EXPECT_EQ(ask_daemon(simulator.home.path, "fsmcore",
                         "Request: f\nParameter Count: 48\n" + parameters + "Waittime: 5\n\n"),
              "Response Status: FSMC-000\nParameter Count: 48\n" + parameters);
}

} // namespace

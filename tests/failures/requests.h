// A request of every kind: to FSMCore, to a gateway, and to the web service for each way in which
// an answer is shown. What is answered, and what an answer or none of it looks like.

#pragma once

#include "tests/harness/peer.h"
#include "tests/harness/process.h"
#include "tests/protocol/gateway_row.h"

#include <gtest/gtest.h>
#include <span>
#include <string>
#include <vector>

namespace failure_tests {

/// Where an exchange with a daemon can fail.
enum failure {
    OPENING,
    SENDING,
    RECEIVING,
    NO_STATUS_LINE,
    WRONG_PREFIX,
    BAD_NUMBER,
    FURTHER_TEXT
};

inline std::string no_lines(pid_t /*pid*/, bool /*is_answered*/) {
    return "";
}

struct request {
    bool is_service() const {
        return where == harness::family::LOOPBACK;
    }

    std::string name;
    harness::family where; ///< the daemons have sockets, the services ports
    harness::words arguments;
    harness::script answered;
    std::string (*lines)(pid_t pid, bool is_answered) = no_lines; ///< above the last one
    int failed_status = 0;                                        ///< of a service
    // Of a daemon
    std::string text = {};   ///< all that is sent
    std::string prefix = {}; ///< of the status in its answer
    std::string rest = {};   ///< of the answer, behind the status line
    int base = 0;            ///< the codes of its failures count from here
    std::string (*shown)(int code) = nullptr;
    std::string (*message)(failure how, const std::string &reason) = nullptr;
};

/// The gateway, for what else its row says.
const protocol::gateway_row &sample_gateway();

std::span<const request> every_request();
std::span<const request> daemon_requests();
std::span<const request> service_requests();

/// The number that all of them are answered with, and how it is shown.
constexpr int ANSWERED = 42;
inline const char *const ANSWERED_TEXT = "FSMC-042\n";

/// A whole answer of a daemon with this number.
std::string answer_of(const request &daemon, const std::string &number);

/// The whole command for a peer.
harness::words arguments_of(const request &wanted, const harness::meeting_point &at);

/// What is shown, and how the run ends.
struct outcome {
    std::string output;
    int status;
};

outcome failed(const request &daemon, failure how, int error = 0);

/// The red line of the connector, and the failure that follows from it.
outcome unconnected(const request &daemon, const std::string &call, int error);

void expect_outcome(const harness::run_result &run, const outcome &wanted);
void expect_answered(const request &wanted, const harness::run_result &run,
                     bool is_output_lost = false);

/// Makes every request and has it answered.
void expect_every_answer(const harness::start_options &options, bool is_output_lost = false);

/// A service's failure is reported in the runtime's words, once.
void expect_reported(const request &service, const harness::run_result &run,
                     const std::string &reason = "");

/// Whether memory and time are the shipped program's own. Instrumented and emulated ones are slow
/// and large: they get smaller floods and no bounds.
bool is_shipped_program();

/// How much of a flood this program is sent.
std::size_t flooded(std::size_t size);

/// For what a caller does to the process: behind a wrapper it would hit that.
class unwrapped_test : public testing::Test {
  protected:
    void SetUp() override {
        if (harness::is_wrapped()) {
            GTEST_SKIP() << "what the caller does would hit the wrapper";
        }
    }
};

} // namespace failure_tests

// The gateways end to end: the real program against a scripted daemon.

#include "tests/harness/console.h"
#include "tests/harness/peer.h"
#include "tests/harness/process.h"

#include <gtest/gtest.h>

namespace {

using namespace harness;

TEST(GatewayProgram, BentelRequestAndAnswer) {
    const temporary_directory directory;
    const std::string path = directory.path + "/s";
    peer daemon(path, {expect("Request: sendbentelcommanddatagram\nSectionName: a\nUserCode: b\n"
                              "Command: c\nPayload: d\n\n"),
                       reply("Response Status: BENG-1302\n")});
    const run_result run = lumocmd({"-v", "ON", "-t", "BENTELLOCAL", "-s", path, "-f",
                                    "sendbentelcommanddatagram", "-p", "a|b|c|d"});
    EXPECT_EQ(daemon.finish(), "");
    EXPECT_EQ(run.output,
              green(run.pid, "[lumocmd] BENTEL Local request selected") +
                  green(run.pid, "[lumocmd] Socket selected: " + path) +
                  green(run.pid, "[lumocmd] Function selected: sendbentelcommanddatagram") +
                  green(run.pid, "[lumocmd] Parameters selected: a|b|c|d") + "BENT-1302\n");
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.status, 1302 & 0xff);
}

} // namespace

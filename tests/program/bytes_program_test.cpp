// Values are bytes, not characters: every byte that an argument can hold travels unchanged and is
// shown unchanged, whether or not the machine's char has a sign.

#include "tests/harness/console.h"
#include "tests/harness/peer.h"
#include "tests/harness/process.h"

#include <gtest/gtest.h>

namespace {

using namespace harness;

/// Every byte but zero, the line feed (it would end the line) and the bar (it would end the item).
std::string every_byte() {
    std::string bytes;
    for (int byte = 1; byte < 256; byte++) {
        if (byte != '\n' && byte != '|') {
            bytes += static_cast<char>(byte);
        }
    }
    return bytes;
}

TEST(EveryByte, TravelsToAGateway) {
    const temporary_directory directory;
    const std::string path = directory.path + "/s";
    peer daemon(path, {expect("Request: SENDBENTELCOMMANDDATAGRAM\nSectionName: a\nUserCode: b\n"
                              "Command: c\nPayload: " +
                              every_byte() + "\n\n"),
                       reply("Response Status: BENG-0000\n")});
    const run_result run = lumocmd({"-v", "ON", "-t", "BENTELLOCAL", "-s", path, "-f",
                                    "SENDBENTELCOMMANDDATAGRAM", "-p", "a|b|c|" + every_byte()});
    EXPECT_EQ(daemon.finish(), "");
    EXPECT_EQ(run.output,
              green(run.pid, "[lumocmd] BENTEL Local request selected") +
                  green(run.pid, "[lumocmd] Socket selected: " + path) +
                  green(run.pid, "[lumocmd] Function selected: SENDBENTELCOMMANDDATAGRAM") +
                  green(run.pid, "[lumocmd] Parameters selected: a|b|c|" + every_byte()) +
                  "LMCM-0000\n");
}

TEST(EveryByte, TravelsToFsmcoreAndBack) {
    const temporary_directory directory;
    const std::string path = directory.path + "/s";
    peer daemon(path, {expect("Request: F\nParameter Count: 1\nParam000 Length: 253\nParam000:\n" +
                              every_byte() + "\nWaittime: 5\n\n"),
                       reply("Response Status: FSMC-004\nParameter Count: 1\n"
                             "Param000 Length: 253\nParam000:\n" +
                             every_byte() + "\n")});
    const run_result run = lumocmd({"-t", "FSMCORE", "-s", path, "-f", "F", "-p", every_byte()});
    EXPECT_EQ(daemon.finish(), "");
    EXPECT_EQ(run.output, "FSMC-004\n");
    EXPECT_EQ(run.status, 4);
}

} // namespace

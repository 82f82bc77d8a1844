#include <gtest/gtest.h>

#include <chrono>
#include <optional>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "nav/SerialInput.h"
#include "platform/PtyPair.h"

namespace halvo {
namespace {

using test::PtyPair;

// Calls readLine until `calls` reads came back without a line; collects the lines.
std::vector<std::string> Drain(SerialInput& in, int& count, int quietCalls = 2) {
    std::vector<std::string> lines;
    int quiet = 0;
    for (int i = 0; i < 200 && quiet < quietCalls; ++i) {
        if (std::optional<std::string_view> line = in.readLine(count)) {
            lines.emplace_back(*line);
            quiet = 0;
        } else {
            ++quiet;
        }
    }
    return lines;
}

bool OpenOn(SerialInput& in, const PtyPair& pty) {
    return pty.ok() && in.setPort(1, pty.path());
}

// One input already open on a fresh pseudo-terminal.
class OpenSerialInput : public ::testing::Test {
  protected:
    void SetUp() override { ASSERT_TRUE(OpenOn(in, pty)) << in.lastError(); }
    PtyPair pty;
    SerialInput in;
};

TEST(SerialInput, CutsLinesByTheTerminatorRules) {
    const std::string longBody(1200, 'x');
    const std::string exactBody(997, 'y');
    const std::vector<std::tuple<const char*, std::string, std::vector<std::string>>> cases = {
        {"line feed kept", "$GPGLL,1\n", {"$GPGLL,1\n"}},
        {"CR LF is one line", "$GPGGA,2\r\n", {"$GPGGA,2\n"}},
        {"CR alone ends a line", "AB\rCD\r", {"AB\n", "CD\n"}},
        {"two bytes with terminator dropped", "A\nB\r", {}},
        {"three bytes returned", "AB\n", {"AB\n"}},
        {"empty lines dropped", "\r\n\r\n\n\r", {}},
        {"short then long", "Z\n$GPZDA\n", {"$GPZDA\n"}},
        {"998 bytes fit", exactBody + "\n", {exactBody + "\n"}},
        {"longer line cut, terminator on 997", longBody + "\n", {std::string(997, 'x') + "\n"}},
    };
    for (const auto& [what, bytes, lines] : cases) {
        PtyPair pty;
        SerialInput in;
        ASSERT_TRUE(OpenOn(in, pty)) << in.lastError();
        ASSERT_TRUE(pty.Write(bytes)) << what;
        int count = 0;
        const std::vector<std::string> got = Drain(in, count);
        EXPECT_EQ(got, lines) << what;
        EXPECT_EQ(count, static_cast<int>(lines.size())) << what;
        EXPECT_EQ(in.bytesReceived(), static_cast<int>(bytes.size())) << what;
    }
}

TEST_F(OpenSerialInput, PartialLineWaitsForTheNextReadAndVanishedDeviceCloses) {
    int count = 0;
    ASSERT_TRUE(pty.Write("$GPG"));
    EXPECT_TRUE(Drain(in, count).empty());
    ASSERT_TRUE(pty.Write("LL,5\r\n$GP"));
    EXPECT_EQ(Drain(in, count), std::vector<std::string>{"$GPGLL,5\n"});
    ASSERT_TRUE(pty.Write("VTG\n"));
    EXPECT_EQ(Drain(in, count), std::vector<std::string>{"$GPVTG\n"});
    EXPECT_EQ(count, 2);
    // A vanished device closes the port.
    pty.CloseMaster();
    EXPECT_FALSE(in.readLine(count).has_value());
    EXPECT_FALSE(in.isOpen());
}

TEST_F(OpenSerialInput, FullReadBufferIsDiscardedWhole) {
    // Complete lines throughout, and more than one buffer's worth queued at once.
    std::string burst;
    while (burst.size() < SerialInput::kReadBufferSize + 300) burst += "$GPGLL,burst\r\n";
    ASSERT_TRUE(pty.Write(burst));
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    int count = 0;
    EXPECT_FALSE(in.readLine(count).has_value());
    EXPECT_EQ(in.overflowCount(), 1);
    EXPECT_EQ(in.bytesReceived(), static_cast<int>(SerialInput::kReadBufferSize));
    // The purge took the rest too; what comes next is read normally.
    ASSERT_TRUE(pty.Write("$GPZDA,after\n"));
    EXPECT_EQ(Drain(in, count), std::vector<std::string>{"$GPZDA,after\n"});
    EXPECT_EQ(count, 1);
    EXPECT_EQ(in.overflowCount(), 1);
}

TEST(SerialInput, BaudOutsideTheListBecomes2400) {
    const std::tuple<int, int, speed_t> cases[] = {
        {4000, 2400, B2400}, {0, 2400, B2400},          {-9600, 2400, B2400},
        {600, 600, B600},    {115200, 115200, B115200}, {230400, 2400, B2400}};
    for (const auto& [baud, expected, speed] : cases) {
        SCOPED_TRACE(baud);
        PtyPair pty;
        SerialInput in;
        ASSERT_TRUE(OpenOn(in, pty));
        in.setBaud(baud);
        EXPECT_TRUE(in.isOpen());
        EXPECT_EQ(in.baud(), expected);
        EXPECT_EQ(pty.InputSpeed(), speed);
    }
    EXPECT_EQ(SerialInput::IntervalTimeoutMs(4800), 10);
    EXPECT_EQ(SerialInput::IntervalTimeoutMs(9600), 5);
    EXPECT_EQ(SerialInput::IntervalTimeoutMs(115200), 0);
}

TEST_F(OpenSerialInput, ReopenRulesAndCounters) {
    ASSERT_TRUE(pty.Write("$GPGLL\n"));
    int count = 0;
    Drain(in, count);
    ASSERT_EQ(in.bytesReceived(), 7);

    // The same baud does not reopen, so the counters stay.
    in.setBaud(in.baud());
    EXPECT_EQ(in.bytesReceived(), 7);
    // A new baud reopens, and every open clears both counters.
    in.setBaud(9600);
    EXPECT_TRUE(in.isOpen());
    EXPECT_EQ(in.bytesReceived(), 0);

    // Port numbers outside 1 to 255 leave the port closed, whatever the device.
    for (int number : {0, -1, 256}) {
        EXPECT_FALSE(in.setPort(number, pty.path())) << number;
        EXPECT_FALSE(in.isOpen()) << number;
        EXPECT_FALSE(in.readLine(count).has_value());
    }
}

}  // namespace
}  // namespace halvo

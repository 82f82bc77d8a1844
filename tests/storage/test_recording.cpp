// Recording: the roll, the name search, the stored forms, a real write failure, the side file,
// Bathy.dat, and files that play back as recorded.

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>

#include "core/ByteOrder.h"
#include "storage/RecordNames.h"
#include "storage/StorageRig.h"

namespace halvo {
namespace {

using Rig = test::StorageRig;

std::int32_t PingOf(const std::vector<std::uint8_t>& record) {
    return GetLE<std::int32_t>(record, 16 + 8);
}

// The message that crosses the limit still goes in the old file; the next one opens the new.
TEST(Recording, RollsAtTheFirstWriteAtOrPastTheLimit) {
    Rig rig;
    rig.Record([](StorageSettings& s) { s.maxRecordSize = 1; });
    ASSERT_EQ(rig.State(), StateRecord);
    constexpr int kMessages = 150;
    std::uintmax_t total = 0, firstEnd = 0;
    std::size_t firstPings = 0;
    for (int i = 1; i <= kMessages; ++i) {
        SonarMessage m = Rig::Trace(i, 5000);
        total += m.Wire().size();
        if (firstEnd < 1'000'000) {
            firstEnd = total;
            ++firstPings;
        }
        rig.Send(std::move(m));
    }
    EXPECT_EQ(Rig::Size(rig.File(0)), firstEnd);
    EXPECT_EQ(Rig::Size(rig.File(0)) + Rig::Size(rig.File(1)), total);
    EXPECT_EQ(rig.control.getStatus().fileNumber, 1);
    // Both files play back whole, and the pings run on without a gap.
    ReadStatus end0, end1;
    const auto a = Rig::Records(rig.File(0), &end0);
    const auto b = Rig::Records(rig.File(1), &end1);
    EXPECT_EQ(end0, ReadStatus::EndOfFile);
    EXPECT_EQ(end1, ReadStatus::EndOfFile);
    ASSERT_EQ(a.size(), firstPings);
    ASSERT_EQ(a.size() + b.size(), static_cast<std::size_t>(kMessages));
    EXPECT_EQ(PingOf(b.front()), PingOf(a.back()) + 1);
    EXPECT_TRUE(rig.Logged("RECORD : File Closed"));
    EXPECT_TRUE(rig.Logged("RECORD : New File: " + rig.File(1)));
}

TEST(Recording, RollRuleAndTheCeiling) {
    struct Case {
        std::uint64_t bytes;
        std::int32_t max;
        bool due;
    };
    const Case cases[] = {{999'999, 1, false},         {1'000'000, 1, true},
                          {2'999'999, 3, false},       {5'000'000, 0, false},
                          {2'000'999'999, 0, false},   {2'001'000'000, 0, true},
                          {2'001'000'000, 2001, true}, {1'000'000, -5, false}};
    for (const Case& c : cases) {
        EXPECT_EQ(HsfRecorder::RollDue(c.bytes, c.max), c.due) << c.bytes << " max " << c.max;
    }
}

TEST(Recording, NameSearchFillsGapsFromZero) {
    Rig rig;
    for (int n = 0; n < 5; ++n) std::ofstream(rig.File(n)) << "yesterday";
    rig.Record([](StorageSettings& s) { s.maxRecordSize = 1; });
    EXPECT_EQ(rig.control.getStatus().fileNumber, 5);
    EXPECT_EQ(rig.control.getStatus().file, rig.File(5));
    std::filesystem::remove(rig.File(3));
    for (int i = 0; i < 200; ++i) rig.Send(Rig::Trace(i, 5000));
    EXPECT_GT(Rig::Size(rig.File(3)), 0u);  // the gap, not 006, took the first roll
    EXPECT_GT(Rig::Size(rig.File(6)), 0u);  // and 006 the second
    for (int n : {0, 1, 2, 4}) EXPECT_EQ(Rig::Size(rig.File(n)), 9u) << n;  // never touched
}

TEST(Recording, NoFreeNameEndsInError) {
    Rig rig;
    for (int n = 0; n <= RecordNames::kLastNumber; ++n) std::ofstream(rig.File(n)).put('x');
    rig.Record();
    EXPECT_EQ(rig.State(), StateError);
    EXPECT_EQ(rig.control.getStatus().file, StorageStatus::kNoFile);
    rig.Send(Rig::Trace(1));
    EXPECT_FALSE(std::filesystem::exists(rig.dir.File("SonarData1000.hsf")));
    for (int n : {0, 999}) EXPECT_EQ(Rig::Size(rig.File(n)), 1u);
    // A name with no room left is refused the same way.
    Rig longName;
    longName.Record([](StorageSettings& s) { s.recordFile = std::string(200, 'n'); });
    EXPECT_EQ(longName.State(), StateError);
}

// Hides traces of subsystem 9 in the middle stage, as stamping or playback would.
struct Hider : MessageObserver {
    void ProcessMessage(SonarMessage* m, int, std::uint32_t) override {
        if (m && m->subsystem() == 9) m->set_type(MsgAlive);
    }
};

SonarMessage SideScanTrace(int ping) {
    std::vector<std::uint8_t> p(80 + 2 * 100);
    PutLE<std::int32_t>(p, 4, ping);
    PutLE<std::int32_t>(p, 12, 100);  // sample count
    return HsfTestWriter::MakeMessage(MsgSideScanTrace, DirReply, 20, 1, p);
}

TEST(Recording, StoredFormsBySegyOnly) {
    const std::vector<std::uint8_t> nmea(30, 'G');
    struct Case {
        int form;
        std::vector<std::uint16_t> types;  // stored, in order
    };
    for (const Case& c :
         std::vector<Case>{{0, {82, 2002, 80, 80}}, {1, {80, 2002, 80}}, {2, {80, 80}}}) {
        SCOPED_TRACE(c.form);
        Rig rig;
        Hider hider;
        rig.bus.Attach(&hider);
        rig.Record([&](StorageSettings& s) { s.recordForm = c.form; });
        const SonarMessage sideScan = SideScanTrace(7);
        rig.Send(sideScan.Clone());
        rig.Send(HsfTestWriter::MakeMessage(MsgNmea, DirReply, 100, 0, nmea), SourceSerial);
        rig.Send(HsfTestWriter::MakeMessage(MsgAlive, DirQuery, 0, 0, nmea));
        rig.Send(Rig::Trace(8, 100), SourceDerived);
        rig.Send(Rig::Trace(9, 100, 9));  // hidden after the first stage
        rig.Send(Rig::Trace(10, 100));
        rig.Stop();
        EXPECT_EQ(rig.State(), StateIdleRecord);
        const auto records = Rig::Records(rig.File(0));
        std::vector<std::uint16_t> types;
        for (const auto& r : records) types.push_back(GetLE<std::uint16_t>(r, 4));
        EXPECT_EQ(types, c.types);
        if (c.form == 0) {
            const auto wire = sideScan.Wire();
            EXPECT_EQ(records[0], std::vector<std::uint8_t>(wire.begin(), wire.end()));
        } else {
            EXPECT_EQ(PingOf(records[0]), 7);  // the 82 arrives as an 80 with its ping
        }
        EXPECT_EQ(PingOf(records.back()), 10);
    }
}

// In a child with a file size limit: record until a write runs into the limit. Exit code 0
// means ERROR came with the write error line and no further file was opened.
int RecordIntoLimit(const std::string& dir) {
    ::alarm(20);  // the child ends by itself whatever happens
    ::signal(SIGXFSZ, SIG_IGN);
    rlimit limit{200'000, 200'000};
    if (::setrlimit(RLIMIT_FSIZE, &limit) != 0) return 10;
    Rig rig;
    rig.Record([&](StorageSettings& s) { s.recordDir = dir; });
    if (rig.State() != StateRecord) return 11;
    for (int i = 1; i <= 40; ++i) rig.Send(Rig::Trace(i, 5000));
    if (rig.State() != StateError) return 12;
    if (!rig.Logged("RECORD : File write error")) return 13;
    if (std::filesystem::exists(dir + "/SonarData001.hsf")) return 14;
    return 0;
}

TEST(Recording, WriteFailureEndsInErrorAndKeepsWhatWasWritten) {
    test::TempDir dir;
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) ::_exit(RecordIntoLimit(dir.path()));
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status)) << status;
    ASSERT_EQ(WEXITSTATUS(status), 0);
    const std::size_t record = Rig::Trace(1, 5000).Wire().size();
    ReadStatus end;
    const auto records = Rig::Records(dir.File("SonarData000.hsf"), &end);
    EXPECT_EQ(end, ReadStatus::EndOfFile);  // the half message was cut off again
    ASSERT_EQ(records.size(), 200'000 / record);
    for (std::size_t i = 0; i < records.size(); ++i) {
        const SonarMessage sent = Rig::Trace(static_cast<int>(i) + 1, 5000);
        EXPECT_TRUE(std::ranges::equal(records[i], sent.Wire())) << i;
    }
}

TEST(Recording, SideFileLinesAtMostEveryTwoSeconds) {
    Rig rig;
    rig.Record([](StorageSettings& s) { s.diagnostics = 1; });
    const std::vector<std::uint32_t> steps = {0, 500, 500, 500, 500, 501, 2000, 1, 0};
    for (std::size_t i = 0; i < steps.size(); ++i) {
        rig.ticks.AdvanceTick(steps[i]);
        TraceSpec s;
        s.ping = static_cast<int>(i);
        s.groupCoordX = -1234567;
        s.groupCoordY = 7654321;
        s.course = 271;
        rig.Send(HsfTestWriter::MakeTrace(s));
    }
    rig.ticks.SetTick(5);  // backward: one line at once
    rig.Send(Rig::Trace(99, 10));
    rig.Stop();
    std::ifstream in(rig.File(0) + ".alt");
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    // The first trace, then 2501 ms on (2000 is not enough), 2001 ms on, then the step back.
    ASSERT_EQ(lines.size(), 4u);
    EXPECT_EQ(lines[0], "0 -1234567 7654321 271 0 0 0 0 0 0");
    EXPECT_EQ(lines[1].substr(0, 2), "5 ");
    EXPECT_EQ(lines[2].substr(0, 2), "7 ");
    EXPECT_EQ(lines[3].substr(0, 3), "99 ");

    // A side file that already exists is left alone; the data file is recorded anyway.
    Rig taken;
    std::ofstream(taken.File(0) + ".alt") << "keep";
    taken.Record([](StorageSettings& s) { s.diagnostics = 1; });
    taken.Send(Rig::Trace(1, 10));
    EXPECT_EQ(Rig::Size(taken.File(0) + ".alt"), 4u);
    EXPECT_EQ(Rig::Records(taken.File(0)).size(), 1u);
}

TEST(Recording, ReopenEveryFiveMillionBytes) {
    Rig rig;
    rig.Record();
    const std::size_t record = Rig::Trace(1, 5000).Wire().size();
    const std::size_t before = 5'000'000 / record;  // at most 5,000,000 written
    for (std::size_t i = 0; i <= before; ++i) rig.Send(Rig::Trace(1, 5000));
    // Gone from under the recorder: the reopen after 5,000,000 finds nothing, and writes are
    // skipped while the state still says RECORD.
    std::filesystem::remove(rig.File(0));
    for (int i = 0; i < 5; ++i) rig.Send(Rig::Trace(1, 5000));
    EXPECT_FALSE(std::filesystem::exists(rig.File(0)));
    EXPECT_EQ(rig.processor->State(), StateRecord);
}

// Status goes out on a change, and every two seconds while a file is open; an idle state sends
// none by itself.
TEST(Recording, StatusCarriesSizeAndFreeSpaceEveryTwoSeconds) {
    int asks = 0;
    StorageDataProcessor::Hooks hooks;
    hooks.freeBytes = [&asks](const std::string&) {
        ++asks;
        return std::int64_t{7'999'999'999};
    };
    Rig rig(std::move(hooks));
    rig.Idle(50);  // first notice: publishes once
    const int idle = asks;
    for (int i = 0; i < 100; ++i) rig.Idle(50);
    EXPECT_EQ(asks, idle);
    rig.Record();
    EXPECT_EQ(rig.control.getStatus().freeMB, 7999);
    for (int i = 0; i < 300; ++i) rig.Send(Rig::Trace(i, 5000));
    const int recording = asks;
    rig.Idle(1999);
    EXPECT_EQ(asks, recording);
    EXPECT_EQ(rig.control.getStatus().sizeMB, 0);  // not yet due
    rig.Idle(1);
    EXPECT_EQ(asks, recording + 1);
    EXPECT_EQ(rig.control.getStatus().sizeMB,
              static_cast<std::int32_t>(Rig::Size(rig.File(0)) >> 20));
    EXPECT_GT(rig.control.getStatus().sizeMB, 1);
}

TEST(Recording, LicenceGateEndsTheRun) {
    bool restricted = false;
    StorageDataProcessor::Hooks hooks;
    hooks.recordingRestricted = [&] { return restricted; };
    Rig rig(std::move(hooks));
    rig.Record();
    rig.Send(Rig::Trace(1, 10));
    restricted = true;
    rig.Send(Rig::Trace(2, 10));
    rig.Send(Rig::Trace(3, 10));
    rig.Idle();
    EXPECT_EQ(rig.State(), StateEndOfFile);
    EXPECT_EQ(rig.control.getSettings().mode, ModeStop);
    EXPECT_EQ(Rig::Records(rig.File(0)).size(), 1u);
    EXPECT_FALSE(std::filesystem::exists(rig.File(1)));
}

TEST(Recording, BathyRecordsForTheFirstDisplaysChannelInEveryMode) {
    test::TempDir work;
    StorageDataProcessor::Hooks hooks;
    hooks.bathyPath = work.File("Bathy.dat");
    hooks.bathy = [](const SonarMessage& m) -> std::optional<BathyTrace> {
        if (m.channel() != 0) return std::nullopt;
        return BathyTrace{1000.0, 10000.0, 1500.0};
    };
    Rig rig(std::move(hooks));
    std::ofstream(work.File("Bathy.dat")) << "old contents";
    rig.Set([](StorageSettings& s) { s.saveBathy = 1; });  // stopped, not recording
    for (int i = 1; i <= 4; ++i) {
        TraceSpec t;
        t.ping = i;
        t.channel = static_cast<std::uint8_t>(i % 2);
        t.groupCoordX = 11 * i;
        t.groupCoordY = 22 * i;
        rig.Send(HsfTestWriter::MakeTrace(t));
    }
    std::ifstream in(work.File("Bathy.dat"), std::ios::binary);
    std::vector<std::uint8_t> bytes((std::istreambuf_iterator<char>(in)), {});
    ASSERT_EQ(bytes.size(), 2 * BathyWriter::kRecordSize);
    const std::vector<std::int32_t> first = {123456, 2, 44, 22, 75000};
    for (std::size_t i = 0; i < first.size(); ++i)
        EXPECT_EQ(GetLE<std::int32_t>(bytes, 4 * i), first[i]);
    EXPECT_EQ(GetLE<std::int32_t>(bytes, 24 + 4), 4);

    rig.Set([](StorageSettings& s) { s.saveBathy = 0; });
    rig.Idle();
    rig.Send(Rig::Trace(6, 10));
    EXPECT_EQ(Rig::Size(work.File("Bathy.dat")), 2 * BathyWriter::kRecordSize);
    for (const auto& [t, mm] : std::vector<std::pair<BathyTrace, std::int32_t>>{
             {{1000, 0, 1500}, 0}, {{-10, 1000, 1500}, -7500}, {{1e12, 1, 1500}, 0}}) {
        EXPECT_EQ(BathyWriter::DepthMm(t), mm);
    }
}

}  // namespace
}  // namespace halvo

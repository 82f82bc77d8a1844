// The status digest on the bus and the texts made from it.

#include <gtest/gtest.h>

#include <string>

#include "status/CustomFormat.h"
#include "status/StatusCustomPresets.h"
#include "status/StatusTestSupport.h"
#include "status/StatusText.h"

namespace halvo::test {
namespace {

class StatusDigest : public StatusRig {
  protected:
    void PlugSources() {
        StatusSources s;
        s.positionText = [](const ConstTraceHeaderView&) { return std::string("[POS]"); };
        s.speedText = [](const ConstTraceHeaderView&) { return std::string("[SPD]"); };
        s.timeText = [](const ConstTraceHeaderView&) { return std::string("[TIME]"); };
        s.attitudeText = [](const ConstTraceHeaderView&) { return std::string("[ATT]"); };
        s.sonar = [](int sonar) {
            const SonarChannels table[3] = {{0, 1}, {1, 2}, {3, 1}};
            return table[sonar];
        };
        s.display = [](int) { return DisplayState{0, 1000, 0, 0.25f}; };
        // Words 0 and 11..13: overflows, bottle and ambient temperature, supply voltage.
        s.systemStatus = [] {
            return std::optional(
                SystemStatusWords{3, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 30000, 21500, 48000});
        };
        ASSERT_TRUE(processor_.SetSources(std::move(s)));
    }

    static SonarMessage Sb(int ping) {
        using F = TraceField;
        const Fields fields = {{F::PingNumber, ping},    {F::ADCGain, 7},
                               {F::ADCMax, 16383},       {F::DepthMM, 12345},
                               {F::PressurePSI, 20000},  {F::SoundSpeed, 1499.6},
                               {F::Temperature, 125},    {F::AnnotationWord5, -1000},
                               {F::WeightingFactor, 42}, {F::MarkNumber, 3}};
        return MakeTrace(fields);
    }
};

TEST_F(StatusDigest, StatusLineKeepsItsFixedOrder) {
    PlugSources();
    StatusSettings settings;
    for (const StatusItemLabel& item : StatusItemLabels()) {
        if (item.bit != ItemPulseID) settings.flags |= static_cast<std::int32_t>(item.bit);
    }
    settings.custom[0].enable = 1;
    settings.custom[0].label = "1,0,1,0|W %";
    settings.custom[0].channel = -1;
    control_.setSettings(settings);

    Feed(MakeTrace({{TraceField::ChannelNumber, 1},
                    {TraceField::PingNumber, 11},
                    {TraceField::ADCMax, 32767}}));
    Feed(MakePressure(0x13, 20000));
    Send([] {
        SonarMessage m = MakePressure(0x13, 20000);
        PutLE<std::int32_t>(m.Payload(), 16, 5000);
        PutLE<std::int32_t>(m.Payload(), 32, 1500000);
        return m;
    }());
    Feed(Sb(9));
    Feed(Sb(10));

    EXPECT_EQ(processor_.statusLine(),
              "[POS][SPD][TIME]"
              "SB 10 | SL 11 | SH 0 | "
              "SBS 499  | SLS MAX 000  | SHS 000  | "
              "SBG 7 | [ATT]OF:2 | M 3 | 12.3 M | 13.1 MT | 20.0 PSI | "
              "xPSI 20.0 degC  5.0 SVS 1500  | "
              "1500 M/S | 12.5 C | RC  0.25 | -14.4 BC | W 42 | "
              "OF=3 48V=48.0 AMB=21.5C BOT=30.0C | ");
}

TEST_F(StatusDigest, NothingSelectedSaysSo) {
    const std::int32_t cases[] = {0, ItemLatLong | ItemTime, ItemSBPing | ItemSBSignal};
    for (std::int32_t flags : cases) {
        StatusSettings settings;
        settings.flags = flags;
        control_.setSettings(settings);
        Feed(Sb(1));
        // No formatters and no sonar plugged in: those items have nothing to show.
        EXPECT_EQ(processor_.statusLine(), kNoSelectedStatus) << flags;
    }
}

TEST_F(StatusDigest, OverflowCountsGapsAndRepeatsOnKeptChannels) {
    StatusSettings settings;
    settings.custom[2].channel = -1;
    settings.custom[2].field = 8;  // the ping number itself
    control_.setSettings(settings);
    const int pings[] = {5, 6, 7, 7, 9, 10};  // first trace, repeat and gap count
    for (int p : pings) Feed(MakeTrace({{TraceField::PingNumber, p}}));
    StatusRecord r = processor_.getRecord();
    EXPECT_EQ(r.overflow, 3);
    EXPECT_EQ(r.ping[0], 10u);

    // Channel 63 is beyond the kept ones: no gap counted, custom fields still fed.
    Feed(MakeTrace({{TraceField::ChannelNumber, 63}, {TraceField::PingNumber, 500}}));
    r = processor_.getRecord();
    EXPECT_EQ(r.overflow, 3);
    EXPECT_EQ(r.custom[2], 500);
}

TEST_F(StatusDigest, TextsFollowReadersNotPings) {
    Feed(MakeTrace({{TraceField::DepthMM, 1000}}));
    Send(MakeTrace({{TraceField::DepthMM, 2000}, {TraceField::MarkNumber, 4}}));
    StatusRecord r = processor_.getRecord();
    EXPECT_EQ(r.depth, 1000);    // nobody read between the two traces
    EXPECT_EQ(r.markNumber, 4);  // marks are kept on every trace
    Send(MakeTrace({{TraceField::DepthMM, 3000}}));
    EXPECT_EQ(processor_.getRecord().depth, 3000);
    // Short traces and queries are not read at all.
    Feed(MakeTrace({{TraceField::DepthMM, 4000}}, DirQuery));
    SonarMessage shortTrace = SonarMessage::Build(MsgTrace, DirReply, 0, 0, 100);
    Feed(std::move(shortTrace));
    EXPECT_EQ(processor_.getRecord().depth, 3000);
}

TEST_F(StatusDigest, PingTextStopsAtTheLimitWithoutPartialItems) {
    StatusSettings settings;
    settings.flags = ItemSBPing | ItemSSLSignal | ItemSBGain | ItemMark;
    control_.setSettings(settings);
    SonarMessage m = MakeTrace({{TraceField::PingNumber, 5},
                                {TraceField::ADCMax, 32767},
                                {TraceField::ADCGain, 9},
                                {TraceField::MarkNumber, 2}});
    const PingView view{m.Payload().first(kTraceHeaderSize), 0, 0};
    const std::string full = "Ping 5 | Signal MAX | Gain 9 | Mark 2 | ";
    struct Case {
        std::size_t limit;
        std::string expected;
    };
    const Case cases[] = {{full.size() + 1, full},
                          {full.size(), "Ping 5 | Signal MAX | Gain 9 | "},
                          {10, "Ping 5 | "},
                          {9, ""}};
    for (const Case& c : cases) EXPECT_EQ(processor_.pingText(c.limit, &view), c.expected);
    EXPECT_EQ(processor_.pingText(200, nullptr), kNoPingData);

    TraceHeaderView(m.Payload()).SetInt(TraceField::ChannelNumber, 1);
    EXPECT_EQ(processor_.pingText(200, &view), "Ping 5 | Signal MAX | Mark 2 | ");
}

TEST_F(StatusDigest, SettingsRoundTripThroughTheSection) {
    WriteFile("Defaults.ini",
              "[Status]\nFlags=4101\nCustomLabel3=2,0,1,0|X %\nCustomChn3=-1\n"
              "RollMax=2.5\nAlertFlags=0x103\nCustomDesc1=" +
                  std::string(50, 'd') + "\n");
    const StatusSettings s = control_.getSettings();
    EXPECT_EQ(s.flags, 4101);
    EXPECT_EQ(s.custom[3].label, "2,0,1,0|X %");
    EXPECT_EQ(s.custom[3].channel, -1);
    EXPECT_EQ(s.custom[1].description.size(), CustomField::kDescriptionBytes - 1);
    const AlertSettings a = control_.getAlertSettings();
    EXPECT_EQ(a.alertFlags, 0x103);
    EXPECT_FLOAT_EQ(a.rollMax, 2.5f);

    AlertSettings changed = a;
    changed.beepTone = 880;
    const int before = control_.AlertChangeCount();
    control_.setAlertSettings(changed);
    EXPECT_EQ(control_.AlertChangeCount(), before + 1);
    control_.Save();
    StatusControl again(coordinator_);
    EXPECT_EQ(again.getAlertSettings(), changed);
    EXPECT_EQ(again.getSettings(), s);
}

TEST_F(StatusDigest, PresetsComeFromTheCustomFile) {
    EXPECT_TRUE(ReadStatusCustomPresets().empty());
    WriteFile("StatusCustom.ini",
              "[Heading]\nField=173\nFormat=0.01,0,5,1|HDG %\nDescription=Heading\n"
              "[Bare]\nChannel=zz\n");
    const auto presets = ReadStatusCustomPresets();
    ASSERT_EQ(presets.size(), 2u);
    CustomField field = StatusSettings::DefaultCustom(4);
    field.enable = 1;
    presets[0].ApplyTo(field);
    EXPECT_EQ(field.enable, 1);
    EXPECT_EQ(field.channel, -1);
    EXPECT_EQ(field.field, 173);
    EXPECT_EQ(field.description, "Heading");
    EXPECT_EQ(FormatCustomField(field.label, 9050), "HDG  90.5");
    EXPECT_EQ(presets[1].name, "Bare");
    EXPECT_EQ(presets[1].channel, -1);  // bad numbers fall back on the defaults
    EXPECT_EQ(presets[1].field, 0);
    EXPECT_EQ(presets[1].format, "");
}

}  // namespace
}  // namespace halvo::test

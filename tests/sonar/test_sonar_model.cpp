// The parameter model: sections and keys, what a load forces, the configuration overrides,
// the accessors' clamps and the storage side effect of switching transmit.

#include <gtest/gtest.h>

#include <tuple>

#include "app/IniFile.h"
#include "app/OverallConfig.h"
#include "app/Profile.h"
#include "sonar/SonarRig.h"

namespace halvo::test {
namespace {

using SonarModel = SonarRig;

TEST_F(SonarModel, DefaultsOfAnEmptyFile) {
    Make(OverallConfig::kConfigUnknown);
    SonarIF& s = *sonar;
    EXPECT_EQ(s.GetNumSonars(), 3);
    const int subs[] = {0, 20, 21, 3};
    for (int d = 0; d < 4; ++d) {
        SCOPED_TRACE(d);
        const SonarConfig c = s.GetSonar(d);
        EXPECT_EQ(std::tie(c.subsystem, c.inputChannels, c.transducers, c.channelOffset),
                  std::make_tuple(subs[d], d == 0 ? 1 : 2, d == 0 ? 1 : 2, 2 * d));
        EXPECT_EQ(std::tie(c.gain[15], c.pulsePower[15], c.enable[15]),
                  std::make_tuple(1.0f, 100.0f, 1));
        EXPECT_EQ(s.GetState(d), SonarIF::kStateLoaded);
        QCConfig qc;
        qc.changeCount = -5;
        ASSERT_TRUE(s.GetQC(qc, d));
        EXPECT_EQ(qc.longTrackSubsampling, 1);
        EXPECT_FALSE(s.GetQC(qc, d)) << "same change count: not filled again";
    }
    EXPECT_EQ(s.GetSensor(), SensorConfig{});
    EXPECT_EQ(s.GetRecorder().flags, 1);
}

TEST_F(SonarModel, ARestartNeverTransmitsOrCopiesQualityControl) {
    Make(OverallConfig::kConfigUnknown,
         "[SBSonar0]\nSonarOn=1\nQCSource=2\nQCBlendingMask=63\n[SBSonar2]\nSonarOn=1\n");
    EXPECT_EQ(sonar->GetSonar(0).sonarOn, 0);
    EXPECT_EQ(sonar->GetSonar(2).sonarOn, 0);
    QCConfig qc;
    qc.changeCount = -1;
    ASSERT_TRUE(sonar->GetQC(qc, 0));
    EXPECT_EQ(qc.source, QCConfig::SourceDisabled);
    EXPECT_EQ(qc.blendingMask, 63);
}

TEST_F(SonarModel, ConfigurationTypeOverrides) {
    struct Case {
        int type;
        int numSonars;
        int subs[3];
        int channels0, transducers0, dataType0;
    };
    const std::string file =
        "[Sonar]\nNumSonars=6\n[SBSonar0]\nSubSystem=7\nInputChannels=3\nTransducers=3\n"
        "DataType=2\n[SBSonar1]\nSubSystem=8\n[SBSonar2]\nSubSystem=9\n";
    const Case cases[] = {{OverallConfig::kConfigUnknown, 6, {7, 8, 9}, 3, 3, 2},
                          {OverallConfig::kConfigSBSS, 3, {0, 20, 21}, 3, 3, 2},
                          {OverallConfig::kConfigMPX, 1, {20, 8, 9}, 4, 2, 2},
                          {OverallConfig::kConfigR90, 1, {20, 8, 9}, 3, 3, 2},
                          {OverallConfig::kConfigSB, 1, {0, 8, 9}, 3, 3, 2},
                          {OverallConfig::kConfigSBRC900, 1, {0, 8, 9}, 3, 3, 1}};
    for (const Case& k : cases) {
        SCOPED_TRACE(k.type);
        TearDown();
        SetUp();
        Make(k.type, file);
        EXPECT_EQ(sonar->GetNumSonars(), k.numSonars) << "the setter's clamp does not apply";
        for (int d = 0; d < 3; ++d) EXPECT_EQ(sonar->GetSonar(d).subsystem, k.subs[d]);
        const SonarConfig c = sonar->GetSonar(0);
        EXPECT_EQ(std::tie(c.inputChannels, c.transducers, c.dataType),
                  std::tie(k.channels0, k.transducers0, k.dataType0));
    }
}

TEST_F(SonarModel, AccessorsClampIndexAndCount) {
    Make(OverallConfig::kConfigUnknown);
    SonarConfig c = sonar->GetSonar(3);
    c.pulse = "fourth";
    sonar->SetSonar(c, 9);
    for (int index : {3, 7, -1, 4}) EXPECT_EQ(sonar->GetSonar(index).pulse, "fourth");
    for (auto [set, want] : {std::pair{6, 4}, {-2, 0}, {2, 2}}) {
        sonar->SetNumSonars(set);
        EXPECT_EQ(sonar->GetNumSonars(), want);
    }
    const int before = sonar->GetChangeCount();
    sonar->SetSensor(sonar->GetSensor());
    sonar->SetRecorder(sonar->GetRecorder());
    sonar->SetQC(QCConfig{}, 0);
    EXPECT_EQ(sonar->GetChangeCount(), before + 3);
}

TEST_F(SonarModel, SaveWritesEveryKeyAndALoadReadsItBack) {
    Make(OverallConfig::kConfigUnknown);
    SonarConfig c = sonar->GetSonar(1);
    c.delay = 12.5f;
    c.couplingDecimator = 6;
    c.pulse = "Chirp 2-12kHz 20ms";
    c.gain[15] = 3.25f;
    c.agc[4] = 1;
    c.sonarOn = 1;
    c.secondPulseText = "memory only";
    sonar->SetSonar(c, 1);
    RecorderConfig r;
    r.recordFile = std::string(80, 'x');
    sonar->SetRecorder(r);
    sonar->Save();

    const std::string text = ReadFile("Defaults.ini");
    // SonarOn is written, though never read.
    for (const char* key : {"CouplingDecimator=6", "SonarOn=1", "[SBSonar3_15]"})
        EXPECT_NE(text.find(key), std::string::npos) << key;

    sonar.reset();
    sonar = std::make_unique<SonarIF>(coordinator, *hub, ticks, *storage, 0);
    sonar->Save();
    EXPECT_EQ(ReadFile("Defaults.ini"), text) << "a save before any load writes nothing";
    sonar->Load();
    // All but the two memory-only fields come back.
    c.sonarOn = 0;
    c.secondPulseText.clear();
    EXPECT_EQ(sonar->GetSonar(1), c);
    EXPECT_EQ(sonar->GetRecorder().recordFile, std::string(59, 'x'));
}

TEST_F(SonarModel, SwitchingTransmitLeavesPlaybackAcquisition) {
    Make(OverallConfig::kConfigSB);
    StorageSettings st = storage->getSettings();
    st.acquireMode = 1;
    storage->setSettings(st);
    SonarConfig c = sonar->GetSonar(0);
    c.pingRate = 9.0f;
    sonar->SetSonar(c, 0);
    EXPECT_EQ(storage->getSettings().acquireMode, 1) << "transmit unchanged: storage untouched";
    c.sonarOn = 1;
    sonar->SetSonar(c, 0);
    EXPECT_EQ(storage->getSettings().acquireMode, 0);
}

TEST(DataFormatWarning, OncePerRunAndOnlyOnTheAnalyticOnlyConfiguration) {
    DataFormatWarning w;
    EXPECT_FALSE(w.OnOperatorChange(OverallConfig::kConfigSBSS, 1, 2));
    EXPECT_FALSE(w.OnOperatorChange(OverallConfig::kConfigSBRC900, 1, 1));
    EXPECT_TRUE(w.OnOperatorChange(OverallConfig::kConfigSBRC900, 1, 2));
    EXPECT_FALSE(w.OnOperatorChange(OverallConfig::kConfigSBRC900, 2, 0));
    EXPECT_TRUE(w.Shown());
}

}  // namespace
}  // namespace halvo::test

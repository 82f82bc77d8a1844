#include "sonar/SonarIF.h"

#include <algorithm>

#include "app/IniFile.h"
#include "app/OverallConfig.h"
#include "storage/StorageControl.h"

namespace halvo {

namespace {

// The installation's kind fixes some fields whatever the operator's file says.
void ApplyConfigType(int type, int d, SonarConfig& c) {
    if (type == OverallConfig::kConfigSBRC900) c.dataType = SonarConfig::DataAnalytic;
    if (type == OverallConfig::kConfigMPX) {
        c.inputChannels = 4;
        c.transducers = 2;
    }
    if (d == 0 && (type == OverallConfig::kConfigMPX || type == OverallConfig::kConfigR90)) {
        c.subsystem = 20;
    }
    if (d == 0 && (type == OverallConfig::kConfigSBSS || type == OverallConfig::kConfigSB ||
                   type == OverallConfig::kConfigSBRC900)) {
        c.subsystem = 0;
    }
    if (type == OverallConfig::kConfigSBSS && d == 1) c.subsystem = 20;
    if (type == OverallConfig::kConfigSBSS && d == 2) c.subsystem = 21;
}

}  // namespace

SonarIF::SonarIF(const SystemCoordinator& coordinator, MessageHub& hub, TickSource& ticks,
                 StorageControl& storage, int configType)
    : coordinator_(coordinator),
      storage_(storage),
      controller_(std::make_unique<SonarController>(hub, ticks, configType)) {
    controller_->SetNumSonars(kDefaultNumSonars);
}

SonarIF::~SonarIF() = default;

void SonarIF::Tick() {
    controller_->Tick();
}

void SonarIF::Start() {
    lifecycle_.Start([this] { Load(); });
}

void SonarIF::Load() {
    const int type = controller_->ConfigType();
    IniFile ini(coordinator_);
    const RecorderConfig recorder = RecorderConfig::Load(ini);
    const SensorConfig sensor = SensorConfig::Load(ini);
    ini.Open("Sonar");
    const int fileCount = ini.ReadInt("NumSonars", kDefaultNumSonars);
    int count = fileCount;  // unclamped on purpose: the file's figure is kept as it is
    if (type == OverallConfig::kConfigSBSS) {
        count = 3;
    } else if (type >= OverallConfig::kConfigMPX && type <= OverallConfig::kConfigSBRC900) {
        count = 1;
    }
    controller_->SetNumSonars(count);
    controller_->SetRecorder(recorder);
    controller_->SetSensor(sensor);
    // All four are read and stored whatever the count: a page may raise it later.
    for (int d = 0; d < kSonars; ++d) {
        SonarConfig c = SonarConfig::Load(ini, d);
        const QCConfig qc = QCConfig::Load(ini, d);
        ApplyConfigType(type, d, c);
        SetSonar(c, d);
        SetQC(qc, d);
        state_[d] = kStateLoaded;
    }
    lifecycle_.MarkLoaded();
}

void SonarIF::Save() {
    if (!lifecycle_.MaySave()) return;
    IniFile ini(coordinator_);
    controller_->GetRecorder().Save(ini);
    controller_->GetSensor().Save(ini);
    ini.Open("Sonar");
    ini.WriteInt("NumSonars", controller_->NumSonars());
    for (int d = 0; d < kSonars; ++d) {
        controller_->GetSonar(d).Save(ini, d);
        controller_->QCRecord(d).Save(ini, d);
    }
}

int SonarIF::GetNumSonars() const {
    return controller_->NumSonars();
}

void SonarIF::SetNumSonars(int count) {
    controller_->SetNumSonars(std::clamp(count, 0, kSonars));
}

int SonarIF::ConfigType() const {
    return controller_->ConfigType();
}

SonarConfig SonarIF::GetSonar(int index) const {
    return controller_->GetSonar(index);
}

void SonarIF::SetSonar(const SonarConfig& record, int index) {
    const SonarConfig before = controller_->GetSonar(index);
    if (record.sonarOn != before.sonarOn) {
        StorageSettings s = storage_.getSettings();
        if (s.acquireMode == 1) {
            s.acquireMode = 0;
            storage_.setSettings(s);
        }
    }
    controller_->SetSonar(record, index);
}

bool SonarIF::GetQC(QCConfig& record, int index) const {
    return controller_->GetQC(record, index);
}

void SonarIF::SetQC(const QCConfig& record, int index) {
    controller_->SetQC(record, index);
}

SensorConfig SonarIF::GetSensor() const {
    return controller_->GetSensor();
}

void SonarIF::SetSensor(const SensorConfig& record) {
    controller_->SetSensor(record);
}

RecorderConfig SonarIF::GetRecorder() const {
    return controller_->GetRecorder();
}

void SonarIF::SetRecorder(const RecorderConfig& record) {
    controller_->SetRecorder(record);
}

std::int32_t SonarIF::GetState(int index) const {
    return state_[SonarController::ClampIndex(index)];
}

int SonarIF::GetChangeCount() const {
    return controller_->GetChangeCount();
}

int SonarIF::GetReplyChangeCount() const {
    return controller_->GetReplyChangeCount();
}

int SonarIF::GetReplyCount() const {
    return controller_->GetReplyCount();
}

std::vector<std::string> SonarIF::GetPulseNames(int index) const {
    return controller_->GetPulseNames(index);
}

std::vector<std::uint8_t> SonarIF::GetPulseBlock(int index) const {
    return controller_->GetPulseBlock(index);
}

int SonarIF::GetPulseBlockVersion(int index) const {
    return controller_->GetPulseBlockVersion(index);
}

bool SonarIF::HasStatus() const {
    return controller_->HasStatus();
}

std::array<std::int32_t, SonarController::kStatusWords> SonarIF::GetStatus() const {
    return controller_->GetStatus();
}

std::vector<std::uint8_t> SonarIF::GetRecorderStatus() const {
    return controller_->GetRecorderStatus();
}

std::string SonarIF::RateText(int index) const {
    return controller_->RateText(index);
}

}  // namespace halvo

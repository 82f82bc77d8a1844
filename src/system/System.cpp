#include "system/System.h"

#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <thread>

#include "app/EventLog.h"
#include "app/GeneralSettings.h"
#include "app/IniFile.h"
#include "app/Notifier.h"
#include "app/OverallConfig.h"
#include "app/ProgramClock.h"
#include "app/SystemCoordinator.h"
#include "core/MessageHub.h"
#include "nav/NavigationConfig.h"
#include "platform/TickSource.h"
#include "storage/StorageControl.h"
#include "storage/StorageDataProcessor.h"
#include "system/LogNotifier.h"

namespace halvo {

namespace {
constexpr const char* kMainSection = "Main";
constexpr const char* kRecentSection = "Recent File List";
}  // namespace

System::System(Platform platform) : platform_(platform) {
    coordinator_ = std::make_unique<SystemCoordinator>();
    clock_ = std::make_unique<ProgramClock>(platform_.ticks, platform_.systemClock);
    log_ = std::make_unique<EventLog>(*clock_);
    if (platform_.notifier != nullptr) {
        notifier_ = platform_.notifier;
    } else {
        ownNotifier_ = std::make_unique<LogNotifier>(*log_);
        notifier_ = ownNotifier_.get();
    }
    hub_ = std::make_unique<MessageHub>(coordinator_->Running());
    overall_ = std::make_unique<OverallConfig>(*coordinator_);
    general_ = std::make_unique<GeneralSettings>(*coordinator_);
    navigation_ = std::make_unique<NavigationConfigStore>(*coordinator_);
    storage_ = std::make_unique<StorageControl>(*coordinator_);
    recorder_ = std::make_unique<StorageDataProcessor>(hub_->DataBus(), *storage_, platform_.ticks);
    storage_->SetReporter(
        [this](std::string_view text, std::string_view title) { notifier_->Notify(title, text); });
    WireSequence();
}

System::~System() {
    Ending(false);
}

void System::WireSequence() {
    sequence_[Component::General] = {[this] { general_->Load(); }, [this] { general_->Save(); },
                                     [this] { general_->Start(); }};
    sequence_[Component::Navigation] = {
        [this] { navigation_->Load(); }, [this] { navigation_->Save(); }, {}};
    sequence_[Component::Hub] = {{}, {}, [this] {
                                     hub_->Start(platform_.busQueue != 0
                                                     ? platform_.busQueue
                                                     : MessageProcessor::kDefaultQueueSize);
                                 }};
    // The recorder registers itself on the bus at the first settings change, like the page does.
    sequence_[Component::Storage] = {
        [this] { storage_->Load(); }, [this] { storage_->Save(); },
        [this] {
            storage_->SetProcessorStarter([this] { recorder_->Start(); });
            storage_->setSettings(storage_->getSettings());
        }};
}

void System::ReadInstallation() {
    IniFile ini(*coordinator_);
    ini.Open("HalvoConfig");
    const OverallConfig::Installation inst = OverallConfig::ReadInstallation(ini);
    overall_->SetInstallation(inst.configType, inst.topsideForEngineering != 0);
    // Extensions register in this order: the multi-ping family first, then sediment.
    extensions_.clear();
    if (inst.multiPing == 2) {
        extensions_.push_back("DynamicFocus");
    } else if (inst.multiPing != 0) {
        extensions_.push_back("MultiPing");
    }
    if (inst.sedimentClassification != 0) extensions_.push_back("SedimentClassification");
}

void System::Startup(MainWindowHost* host, std::string_view defaultsFile) {
    if (started_) return;
    started_ = true;
    const std::string defaults = defaultsFile.empty()
                                     ? std::string(SystemCoordinator::kDefaultsFile)
                                     : std::string(defaultsFile);
    overall_->SetHost(host);
    coordinator_->SetActiveProfile(SystemCoordinator::kConfigFile);
    ReadInstallation();
    coordinator_->SetActiveProfile(defaults);
    overall_->Load();
    if (sequence_[Component::Sonar].reload) sequence_[Component::Sonar].reload();
    // A defaults-file prompt survives in the settings but is never put to the operator at
    // start: the defaults file is always the one in the working folder.
    if (overall_->Snapshot().promptForDefaultsFile != 0)
        coordinator_->SetDefaultsFile("HalvoDefaults.Hni");
    LoadFile(defaults);
    coordinator_->SetDefaultsFile(defaults);
    overall_->Start();
    StartSystem();
}

void System::StartSystem() {
    coordinator_->Running().Raise();
    sequence_.StartAll();
}

void System::ReadMain() {
    IniFile ini(*coordinator_);
    ini.Open(kMainSection);
    main_.priority = ini.ReadInt("Priority", 0);
    main_.timerSource = ini.ReadInt("TimerSource", -1);
    // High priority asks for a better nice value; without the privilege it stays as it is.
    if (main_.priority != 0) ::setpriority(PRIO_PROCESS, 0, -5);
    if (main_.timerSource >= 0) clock_->SetSource(main_.timerSource);
}

void System::WriteMain() {
    IniFile ini(*coordinator_);
    ini.Open(kMainSection);
    ini.WriteInt("Priority", main_.priority);
    ini.WriteInt("TimerSource", main_.timerSource);
}

void System::LoadRecentFiles() {
    IniFile ini(*coordinator_);
    ini.Open(kRecentSection);
    recent_.clear();
    for (int i = 1; i <= kRecentFiles; ++i) {
        char key[16];
        std::snprintf(key, sizeof key, "File%d", i);
        std::string name = ini.ReadString(key, "");
        if (!name.empty()) recent_.push_back(std::move(name));
    }
}

void System::SaveRecentFiles() {
    IniFile ini(*coordinator_);
    ini.Open(kRecentSection);
    for (int i = 1; i <= kRecentFiles; ++i) {
        char key[16];
        std::snprintf(key, sizeof key, "File%d", i);
        const std::size_t at = static_cast<std::size_t>(i - 1);
        ini.WriteString(key, at < recent_.size() ? recent_[at] : std::string());
    }
}

void System::AddRecentFile(std::string_view file) {
    std::string name(file);
    recent_.erase(std::remove(recent_.begin(), recent_.end(), name), recent_.end());
    recent_.insert(recent_.begin(), name);
    if (recent_.size() > static_cast<std::size_t>(kRecentFiles)) recent_.resize(kRecentFiles);
}

void System::LoadFile(std::string_view file) {
    const std::string previous = coordinator_->ActiveProfile();
    coordinator_->SetActiveProfile(file);
    ReadMain();
    if (!recentLoaded_) {
        recentLoaded_ = true;
        LoadRecentFiles();
        loaded_ = true;
    }
    overall_->Load();
    sequence_.ReloadAll();
    coordinator_->SetActiveProfile(previous);
}

bool System::SaveFile(std::string_view file) {
    if (!loaded_) return false;
    const std::string previous = coordinator_->ActiveProfile();
    if (!file.empty()) coordinator_->SetActiveProfile(file);
    WriteMain();
    sequence_.SaveAll();
    overall_->Save();
    {
        IniFile ini(*coordinator_);
        ini.Open(kMainSection);
        ini.WriteInt("SystemVersion", kSystemVersion);
    }
    SaveRecentFiles();
    coordinator_->SetActiveProfile(previous);
    return true;
}

void System::Ending(bool save) {
    if (ended_) return;
    ended_ = true;
    if (save && started_) SaveFile();
    if (!started_) return;
    // Late writes of anybody go to a scratch file, never the operator's defaults.
    coordinator_->SetActiveProfile(SystemCoordinator::kShutdownFile);
    coordinator_->Running().Clear();
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
}

Housekeeping::Sources System::HousekeepingSources() {
    Housekeeping::Sources s;
    s.tick = [this] { return clock_->Tick(); };
    s.isPlayback = [this] { return storage_->isPlaybackMode(); };
    s.recorder = [this] {
        const StorageStatus st = storage_->getStatus();
        RecorderIndicator r;
        switch (st.state) {
            case StateRecord:
                r.row = RecorderIndicator::Record;
                break;
            case StatePlayback:
                r.row = RecorderIndicator::Playback;
                break;
            case StateIdlePlayback:
                r.row = RecorderIndicator::IdlePlayback;
                break;
            case StateEndOfFile:
                r.row = RecorderIndicator::EndOfFile;
                break;
            default:
                r.row = RecorderIndicator::Other;
                break;
        }
        r.fileNumber = st.fileNumber;
        return r;
    };
    return s;
}

}  // namespace halvo

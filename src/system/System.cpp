#include "system/System.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <thread>

#include "app/EventLog.h"
#include "app/GeneralSettings.h"
#include "app/IniFile.h"
#include "app/Notifier.h"
#include "app/OverallConfig.h"
#include "app/ProgramClock.h"
#include "app/SystemCoordinator.h"
#include "core/MessageHub.h"
#include "core/MessageProcessor.h"
#include "core/SonarMessage.h"
#include "display/DisplayDrain.h"
#include "display/DisplayProcessingSet.h"
#include "dsp/DisplayLineOutput.h"
#include "dsp/HalvoDisplaysDataProcessor.h"
#include "dsp/graph/GraphModule.h"
#include "extensions/InstalledExtensions.h"
#include "nav/NavigationConfig.h"
#include "nav/NavigationInput.h"
#include "net/NetworkHub.h"
#include "net/SocketManager.h"
#include "platform/AlsaPcmOutput.h"
#include "platform/LinuxParallelPort.h"
#include "platform/ProcessPriority.h"
#include "platform/TickSource.h"
#include "sonar/SonarIF.h"
#include "stamping/SegyDataProcessor.h"
#include "stamping/SonarChannelSettings.h"
#include "status/SoundBeeper.h"
#include "status/StatusControl.h"
#include "status/StatusDataProcessor.h"
#include "storage/LoggingControl.h"
#include "storage/MessageLog.h"
#include "storage/PerFileLog.h"
#include "storage/StorageControl.h"
#include "storage/StorageDataProcessor.h"
#include "system/DisplayStateReader.h"
#include "system/LineCacheDocument.h"
#include "system/LogNotifier.h"
#include "system/RecorderWiring.h"
#include "system/SonarModelChannelMap.h"
#include "system/StatusWiring.h"

namespace halvo {

namespace {
constexpr const char* kMainSection = "Main";
constexpr const char* kRecentSection = "Recent File List";
}  // namespace

System::System(Platform platform) : platform_(platform) {
    coordinator_ = std::make_unique<SystemCoordinator>();
    extensions_ = std::make_unique<InstalledExtensions>();
    clock_ = std::make_unique<ProgramClock>(platform_.ticks, platform_.systemClock);
    log_ = std::make_unique<EventLog>(*clock_);
    if (platform_.notifier != nullptr) {
        notifier_ = platform_.notifier;
    } else {
        ownNotifier_ = std::make_unique<LogNotifier>(*log_);
        notifier_ = ownNotifier_.get();
    }
    auto report = [this](std::string_view text, std::string_view title) {
        notifier_->Notify(title, text);
    };
    hub_ = std::make_unique<MessageHub>(coordinator_->Running());
    overall_ = std::make_unique<OverallConfig>(*coordinator_);
    general_ = std::make_unique<GeneralSettings>(*coordinator_);
    navigation_ = std::make_unique<NavigationConfigStore>(*coordinator_);
    storage_ = std::make_unique<StorageControl>(*coordinator_);
    storage_->SetReporter(report);
    logging_ = std::make_unique<LoggingControl>(*coordinator_);

    sockets_ = std::make_unique<SocketManager>(platform_.ticks, platform_.socketTimerMs);
    network_ = std::make_unique<NetworkHub>(*hub_, *sockets_, *clock_, *coordinator_);

    Beeper* beeper = platform_.beeper;
    if (beeper == nullptr) {
        ownBeeper_ = std::make_unique<SoundBeeper>(std::make_unique<AlsaPcmOutput>());
        beeper = ownBeeper_.get();
    }
    statusControl_ = std::make_unique<StatusControl>(*coordinator_);
    statusControl_->SetReporter(report);
    status_ = std::make_unique<StatusDataProcessor>(
        StatusDataProcessor::Parts{*statusControl_, hub_->DataBus(), *general_, *log_, *beeper,
                                   coordinator_->Running(), [this] { return clock_->Tick(); }});

    stamping_ = std::make_unique<SegyDataProcessor>(*clock_, *general_, *navigation_, *notifier_);
    parallel_ = std::make_unique<LinuxParallelPort>();
    serial_ = std::make_unique<NavigationInput>(
        *navigation_, hub_->DataBus(), [this] { return clock_->Now(); },
        [this] { return storage_->isPlaybackMode(); }, *parallel_, coordinator_->Running());

    displays_ = std::make_unique<DisplayProcessingSet>(*coordinator_, *general_);
    lineOutput_ = std::make_unique<DisplayLineOutput>(
        displays_->Queue(), [this] { return storage_->isPlaybackMode(); }, coordinator_->Running(),
        [](int ms) { std::this_thread::sleep_for(std::chrono::milliseconds(ms)); });
    sonarMap_ = std::make_unique<SonarModelChannelMap>(sonarView_);
    chain_ = std::make_unique<HalvoDisplaysDataProcessor>(*displays_, *general_, *lineOutput_,
                                                          sonarMap_.get());
    displayStates_ = std::make_unique<DisplayStateReader>(*displays_, *general_, *chain_);
    lines_ = std::make_unique<LineCacheDocument>(!platform_.windows);
    documents_.push_back(lines_.get());
    drain_ = std::make_unique<DisplayDrain>(displays_->Queue(), *coordinator_);

    dataLog_ = std::make_unique<MessageLog>(LogStream::Data, *logging_, *log_);
    commandLog_ = std::make_unique<MessageLog>(LogStream::Command, *logging_, *log_);
    // Socket traffic is logged by the links themselves: a reply once its body has arrived, a
    // command once its bytes have left. Played records and serial lines never reach these lines,
    // and a command that never went out is never logged as sent.
    network_->SetMessageLog([this](const SonarMessage& message, std::string_view label) {
        (label == "SONRCMD" ? commandLog_ : dataLog_)->Log(message);
    });
    MakeRecorder();
    WireSequence();
    // The parts that register as modules, each with the component it loads, saves and starts with.
    AddModule(Component::Displays, std::make_unique<GraphModule>(Context(), sonarMap_.get()));
}

System::~System() {
    Ending(false);
    StopThreads();
}

SystemModule& System::AddModule(Component component, std::unique_ptr<SystemModule> module) {
    SystemModule& m = *module;
    modules_.push_back(std::move(module));
    sequence_.Add(component, m);
    return m;
}

void System::StopModules() {
    if (modulesStopped_ || !started_) return;
    modulesStopped_ = true;
    sequence_.StopAll();
}

ModuleContext System::Context() {
    return ModuleContext{*coordinator_,
                         *clock_,
                         *log_,
                         *notifier_,
                         hub_->DataBus(),
                         hub_->CommandBus(),
                         [this](DisplayDocumentIF* d) { AddDocument(d); },
                         [this](DisplayDocumentIF* d) { RemoveDocument(d); },
                         [this] { return storage_->isPlaybackMode(); }};
}

// Threads stop while everything they touch still exists: the sockets, the serial readers, the
// status writer; the buses stop with the hub, last.
void System::StopThreads() {
    // The buses first: from here an observer that detaches cannot be held for ever by a bus
    // thread stuck in another one.
    StopModules();
    if (hub_) hub_->RequestStop();
    if (network_) network_->StopNetwork();
    if (sockets_) sockets_->Stop();
    if (serial_) serial_->Stop();
    status_.reset();
}

void System::MakeRecorder() {
    recorder_ = std::make_unique<StorageDataProcessor>(
        hub_->DataBus(), *storage_, platform_.ticks,
        MakeRecorderHooks({*general_, *displayStates_, *clock_, *status_, *log_, *logging_,
                           *notifier_, sonarView_}));
}

void System::MakeSonar() {
    // The first use of the sonar model makes the controller, which attaches to the command bus
    // ahead of the network endpoint.
    sonar_ = std::make_unique<SonarIF>(*coordinator_, *hub_, platform_.ticks, *storage_,
                                       overall_->Snapshot().configType);
    sonarView_ = sonar_.get();
    sonar_->Controller().SetConnectionCount(
        [this] { return network_->GetStatus()[0].connectionCount; });
}

void System::WireSequence() {
    // Extensions read and write their settings before the fixed sections, at every load and save.
    sequence_[Component::Extensions] = {[this] { extensions_->List().ReadSettings(); },
                                        [this] { extensions_->List().WriteSettings(); },
                                        {}};
    sequence_[Component::General] = {[this] { general_->Load(); }, [this] { general_->Save(); },
                                     [this] { general_->Start(); }};
    // The display chain attaches to the data bus ahead of stamping, as designed: it sees each
    // trace in the delivery stage, after stamping has run in the processing stage.
    sequence_[Component::Displays] = {[this] { displays_->Load(); }, [this] { displays_->Save(); },
                                      [this] {
                                          displays_->Start();
                                          hub_->DataBus().Attach(chain_.get());
                                      }};
    sequence_[Component::Navigation] = {[this] {
                                            navigation_->Load();
                                            stamping_->RefreshNavigationConfig();
                                        },
                                        [this] { navigation_->Save(); },
                                        {}};
    // Stamping attaches to the data bus, then the serial readers start.
    sequence_[Component::Stamping] = {
        {}, {}, [this] {
            stamping_->SetSonarChannels(LoadSonarChannels(*coordinator_));
            hub_->DataBus().Attach(stamping_.get());
            serial_->Start();
        }};
    sequence_[Component::Sonar] = {[this] {
                                       if (sonar_) sonar_->Load();
                                   },
                                   [this] {
                                       if (sonar_) sonar_->Save();
                                   },
                                   [this] {
                                       if (sonar_) sonar_->Start();
                                   }};
    // The buses start first, then the endpoints.
    // The acquire filter is saved as the operator left it but always comes up as "All Sources":
    // a forgotten filter must not cut a survey's data at the next start.
    sequence_[Component::Hub] = {
        [this] {
            IniFile ini(*coordinator_);
            ini.Open("MessageProcessor");
            ini.ReadInt("Filter", 0);
            hub_->ResetFilterForLoad();
            network_->Load();
        },
        [this] {
            IniFile ini(*coordinator_);
            ini.Open("MessageProcessor");
            ini.WriteInt("Filter", static_cast<std::int32_t>(hub_->Filter().Value()));
            network_->Save();
        },
        [this] {
            hub_->Start(platform_.busQueue != 0 ? platform_.busQueue : ReadBusQueueSize());
            network_->StartNetwork();
        }};
    // The recorder registers itself on the bus at the first settings change, as the page does.
    sequence_[Component::Storage] = {
        [this] { storage_->Load(); }, [this] { storage_->Save(); },
        [this] {
            storage_->SetProcessorStarter([this] { recorder_->Start(); });
            storage_->setSettings(storage_->getSettings());
        }};
    sequence_[Component::Status] = {
        [this] { statusControl_->Load(); }, [this] { statusControl_->Save(); },
        [this] {
            status_->SetSources(
                MakeStatusSources({*storage_, *stamping_, *general_, *displayStates_, sonarView_}));
            status_->start();
        }};
    sequence_[Component::Logs] = {[this] { logging_->Load(); }, [this] { logging_->Save(); }, {}};
}

void System::ReadInstallation() {
    IniFile ini(*coordinator_);
    ini.Open("HalvoConfig");
    const OverallConfig::Installation inst = OverallConfig::ReadInstallation(ini);
    overall_->SetInstallation(inst.configType, inst.topsideForEngineering != 0);
    extensions_->SwitchOn(inst.multiPing, inst.sedimentClassification);
    ViewBinding binding;
    binding.overall = overall_.get();
    binding.notices = notifier_;
    binding.firstDocumentViews = [this] {
        return extensionViews_ ? extensionViews_() : std::nullopt;
    };
    extensions_->Sediment().SetViewBinding(std::move(binding));
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
    MakeSonar();
    sonar_->Load();
    // A defaults-file prompt survives in the settings but is never put to the operator at
    // start: the defaults file is always the one in the working folder.
    if (overall_->Snapshot().promptForDefaultsFile != 0)
        coordinator_->SetDefaultsFile("HalvoDefaults.Hni");
    LoadFile(defaults);
    coordinator_->SetDefaultsFile(defaults);
    overall_->Start();
    StartSystem();
    OpenDisplays();
}

// Display document 0 and the others the installation lists: each waterfall row of a document
// is one display, so the displays in use are the rows without the plot row, in order.
void System::OpenDisplays() {
    const OverallConfig::Values v = overall_->Snapshot();
    int opened = 0;
    for (int n = 0; n < std::max(1, v.displayCount) && n < OverallConfig::kDisplays; ++n) {
        const int rows = std::max(1, v.numSplits[n] - (v.hasPlot[n] != 0 ? 1 : 0));
        for (int r = 0; r < rows && opened < OverallConfig::kDisplays; ++r, ++opened)
            displays_->UseDisplay();
    }
}

// Extensions make their observers (phase 0) and hooks (phase 1) before any fixed subsystem
// starts, so what they attach sits ahead of the fixed observers on each bus.
void System::StartSystem() {
    coordinator_->Running().Raise();
    extensions_->List().StartPhase(0);
    extensions_->List().StartPhase(1);
    sequence_.StartAll();
}

void System::FinishStartup() {
    if (!started_ || finished_) return;
    finished_ = true;
    extensions_->List().StartPhase(3);
}

// Both buses take their capacity from the settings at start; a change waits for the next start.
// Every slot is allocated up front, so a wild value is held to a size that cannot exhaust memory.
std::size_t System::ReadBusQueueSize() {
    IniFile ini(*coordinator_);
    ini.Open("Messages");
    const std::int32_t size = ini.ReadInt(
        "ProcessorQueueSize", static_cast<std::int32_t>(MessageProcessor::kDefaultQueueSize));
    const std::int32_t used = std::clamp<std::int32_t>(size, 1, kMaxBusQueue);
    if (used != size) {
        log_->Add("MESSAGES : ProcessorQueueSize " + std::to_string(size) +
                  " out of range, using " + std::to_string(used));
    }
    return static_cast<std::size_t>(used);
}

void System::ReadMain() {
    IniFile ini(*coordinator_);
    ini.Open(kMainSection);
    main_.priority = ini.ReadInt("Priority", 0);
    main_.timerSource = ini.ReadInt("TimerSource", -1);
    // High priority asks for a better nice value, and 0 returns every thread to normal (a load
    // can turn it off again). Without the privilege a raise is refused and the run goes on.
    const bool high = main_.priority != 0;
    if (high != highPriority_) {
        const int refused = ProcessPriority::Shift(high ? ProcessPriority::kHighShift
                                                        : -ProcessPriority::kHighShift);
        if (high && refused != 0) {
            log_->Add("MAIN : High priority refused");
        } else {
            highPriority_ = high;
        }
    }
    if (main_.timerSource >= 0) clock_->SetSource(main_.timerSource);
    // Loading the time base calibrates the program's clock from the system clock.
    clock_->SyncFromSystem();
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
    if (loadCacheSizes_) loadCacheSizes_();
    coordinator_->SetActiveProfile(previous);
}

bool System::SaveFile(std::string_view file) {
    if (!loaded_) return false;
    const std::string previous = coordinator_->ActiveProfile();
    if (!file.empty()) coordinator_->SetActiveProfile(file);
    WriteMain();
    sequence_.SaveAll();
    if (saveCacheSizes_) saveCacheSizes_();
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
    StopSonars();
    // Modules let go of the buses and the line sink while everything they use still runs.
    StopModules();
    network_->StopNetwork();
    sockets_->Stop();
    // Late writes of anybody go to a scratch file, never the operator's defaults.
    coordinator_->SetActiveProfile(SystemCoordinator::kShutdownFile);
    coordinator_->Running().Clear();
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
}

// Sonars in use are told to stop transmitting, and their status is asked for until the replies
// show the link is alive; a silent sonar costs at most three seconds.
void System::StopSonars() {
    if (!sonar_) return;
    bool any = false;
    const int sonars = std::min(sonar_->GetNumSonars(), 3);
    for (int i = 0; i < sonars; ++i) {
        const SonarConfig s = sonar_->GetSonar(i);
        if (!s.InUse()) continue;
        any = true;
        if (s.sonarOn == 1) {
            std::uint8_t off[4] = {0, 0, 0, 0};
            hub_->SendCommand(off, sizeof off, MsgSonarOn, 0, DirSet, s.subsystem);
        }
    }
    if (!any) return;
    const int before = sonar_->GetReplyCount();
    for (int i = 0; i < 4; ++i) hub_->SendCommand(nullptr, 0, MsgSystemStatus, 0, DirQuery, 0);
    for (int poll = 0; poll < kEndingPolls; ++poll) {
        if (sonar_->GetReplyCount() - before > 2) break;
        std::this_thread::sleep_for(std::chrono::milliseconds(kEndingPollMs));
    }
}

void System::PrepareToPlay(const std::string& file) {
    const std::filesystem::path path(file);
    storage_->RequestStop();
    StorageSettings s = storage_->getSettings();
    s.playbackDir = path.has_parent_path() ? path.parent_path().string() : std::string();
    s.playbackFile = path.filename().string();
    s.mode = ModeStop;
    storage_->setSettings(s);
    log_->Add("PLAY : " + file);
}

void System::SwitchSonarsOn() {
    if (!sonar_) return;
    for (int i = 0; i < sonar_->GetNumSonars() && i < SonarIF::kSonars; ++i) {
        SonarConfig s = sonar_->GetSonar(i);
        if (!s.InUse()) continue;
        s.sonarOn = 1;
        sonar_->SetSonar(s, i);
    }
    log_->Add("SONAR : On requested");
}

void System::AddDocument(DisplayDocumentIF* document) {
    if (std::find(documents_.begin(), documents_.end(), document) == documents_.end())
        documents_.push_back(document);
}

void System::RemoveDocument(DisplayDocumentIF* document) {
    documents_.erase(std::remove(documents_.begin(), documents_.end(), document), documents_.end());
}

int System::DrainDisplays(bool guardHeld) {
    return drain_->Drain(documents_, guardHeld);
}

Housekeeping::Sources System::HousekeepingSources() {
    Housekeeping::Sources s;
    s.tick = [this] { return clock_->Tick(); };
    s.drainDisplays = [this] { DrainDisplays(drainInsidePass_); };
    s.isPlayback = [this] { return storage_->isPlaybackMode(); };
    s.navStatus = [this] { return stamping_->getNavStatus(); };
    s.altitudeDisplayNumber = [this] { return status_->getAlertSettings().altitudeDisplay; };
    s.statusAltitudeMetres = [this] { return status_->getRecord().altitude / 1000.0; };
    s.trackedAltitude = [this](int display) { return displayStates_->TrackedAltitude(display); };
    s.statusLine = [this] { return status_->statusLine(); };
    s.sonarTick = [this] {
        if (sonar_) sonar_->Tick();
    };
    s.sonarLinkWord = [this] {
        return static_cast<std::uint32_t>(network_->GetStatus()[0].connectionCount);
    };
    s.alertWord = [this] { return status_->getAlerts(); };
    s.alertText = [this] { return status_->alertText(); };
    s.statusStyle = [this] {
        const halvo::StatusSettings st = status_->getSettings();
        return StatusLineStyle{st.fontSize, st.statusLines};
    };
    s.sonarChangeCount = [this] { return sonar_ ? sonar_->GetChangeCount() : 0; };
    s.recorder = [this] { return storage_->getStatus().Indicator(); };
    return s;
}

}  // namespace halvo

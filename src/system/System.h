#pragma once
// The application object without its windows: it owns one instance of every subsystem, and it
// is the one place that fixes the order in which settings are read, objects are made, threads
// start and everything stops. The GUI and the headless program both run on one of these.
//
// It lives above every subsystem it assembles (and below the GUI), so it is a library of its own
// rather than part of the application layer those subsystems build on.

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app/Housekeeping.h"
#include "app/ModuleContext.h"
#include "app/SystemModule.h"
#include "system/SystemSequence.h"

namespace halvo {

class Beeper;
class DisplayDocumentIF;
class DisplayDrain;
class DisplayStateReader;
class ExtensionView;
class DisplayLineOutput;
class DisplayProcessingSet;
class HalvoDisplaysDataProcessor;
class InstalledExtensions;
class LineCacheDocument;
class SonarModelChannelMap;
class LinuxParallelPort;
class LoggingControl;
class MessageLog;
class NavigationInput;
class SegyDataProcessor;
class EventLog;
class GeneralSettings;
class NetworkHub;
class SocketManager;
class SonarIF;
class StatusControl;
class StatusDataProcessor;
class MainWindowHost;
class MessageHub;
class NavigationConfigStore;
class Notifier;
class OverallConfig;
class ProgramClock;
class StorageControl;
class StorageDataProcessor;
class SystemClock;
class SystemCoordinator;
class TickSource;

class System {
  public:
    struct Platform {
        TickSource& ticks;
        SystemClock& systemClock;
        Notifier* notifier = nullptr;  // null: notices go to the event log
        Beeper* beeper = nullptr;      // null: the sound system, else the terminal bell
        std::size_t busQueue = 0;      // 0: the bus default
        int socketTimerMs = 1000;      // the socket thread's once-a-second checks
        bool windows = false;          // window documents keep the lines; the system only counts
    };

    // Section Main of the defaults file.
    struct MainValues {
        std::int32_t priority = 0;
        std::int32_t timerSource = -1;
    };

    static constexpr int kRecentFiles = 8;
    static constexpr std::int32_t kSystemVersion = 11;
    static constexpr std::uint32_t kEndingPollMs = 50;
    static constexpr int kEndingPolls = 60;
    static constexpr std::int32_t kMaxBusQueue = 100000;

    explicit System(Platform platform);
    ~System();
    System(const System&) = delete;
    System& operator=(const System&) = delete;

    // The start-up steps that have nothing to do with windows, in their order: the installation
    // file, the defaults file, then the system itself. Call once. A defaults file given here
    // takes the place of ./HalvoDefaults.Hni, for loading and for saving.
    void Startup(MainWindowHost* host = nullptr, std::string_view defaultsFile = {});
    // The last start-up step, once the windows and their views exist (the headless run has
    // none, so it follows Startup at once): the extensions' phase 3. Once.
    void FinishStartup();

    // Loads a settings file into every subsystem, as the operator's "Load Configuration" does.
    void LoadFile(std::string_view file);
    // Saves to the file, or to the active file when empty. Nothing before a first load.
    bool SaveFile(std::string_view file = {});

    // The way out. With save the active defaults file is written first. Sonars in use are told
    // to stop, the links close, late writes go to "./temp.ini", the run flag drops and every
    // thread is joined. Safe to call twice.
    void Ending(bool save);
    bool Ended() const { return ended_; }

    // The first half of playing a file: the recorder stops and is pointed at the file. A new
    // file opens only through a stop and a start, so the caller asks for playback a moment later
    // (kPlayDelayMs), once the recorder has noticed the stop.
    static constexpr int kPlayDelayMs = 300;
    void PrepareToPlay(const std::string& file);

    // The operator's "on" for every sonar in use: settings never switch a transmitter on by
    // themselves (SonarOn is not loaded), so a run without the sonar page uses this.
    void SwitchSonarsOn();

    // A part added after the core (an output, a capture): it is loaded, saved, started and
    // stopped with the component it belongs to, in the fixed orders. Add before Startup; the
    // system keeps it until it ends.
    SystemModule& AddModule(Component component, std::unique_ptr<SystemModule> module);
    // What a module may use of this system.
    ModuleContext Context();
    // The first registered module of this type, or null: how the windows find the part they
    // show without an accessor for each.
    template <class T>
    T* FindModule() const {
        for (const auto& m : modules_) {
            if (auto* t = dynamic_cast<T*>(m.get())) return t;
        }
        return nullptr;
    }

    // The 250 ms update's inputs, wired to this system's subsystems.
    Housekeeping::Sources HousekeepingSources();

    std::vector<std::string> RecentFiles() const { return recent_; }
    void AddRecentFile(std::string_view file);
    bool Loaded() const { return loaded_; }
    const MainValues& Main() const { return main_; }
    InstalledExtensions& Extensions() { return *extensions_; }
    SystemSequence& Sequence() { return sequence_; }

    SystemCoordinator& Coordinator() { return *coordinator_; }
    ProgramClock& Clock() { return *clock_; }
    EventLog& Log() { return *log_; }
    Notifier& Notices() { return *notifier_; }
    MessageHub& Hub() { return *hub_; }
    OverallConfig& Overall() { return *overall_; }
    GeneralSettings& General() { return *general_; }
    NavigationConfigStore& Navigation() { return *navigation_; }
    StorageControl& Storage() { return *storage_; }
    StorageDataProcessor& Recorder() { return *recorder_; }
    TickSource& Ticks() { return platform_.ticks; }
    SocketManager& Sockets() { return *sockets_; }
    NetworkHub& Network() { return *network_; }
    // Made at start-up, once the installation's configuration type is known.
    SonarIF& Sonar() { return *sonar_; }
    bool HasSonar() const { return sonar_ != nullptr; }
    StatusControl& StatusSettings() { return *statusControl_; }
    SegyDataProcessor& Stamping() { return *stamping_; }
    NavigationInput& SerialInput() { return *serial_; }
    LoggingControl& Logging() { return *logging_; }
    DisplayProcessingSet& Displays() { return *displays_; }
    HalvoDisplaysDataProcessor& DisplayChain() { return *chain_; }
    DisplayLineOutput& LineOutput() { return *lineOutput_; }
    // The system's own document, which keeps every display's newest lines.
    LineCacheDocument& Lines() { return *lines_; }
    // Window documents join the display timer's drain here (window thread only).
    void AddDocument(DisplayDocumentIF* document);
    void RemoveDocument(DisplayDocumentIF* document);
    // The display timer's step: the display queue into every document. guardHeld: called from
    // inside the window's timer pass, which already holds the display timer's guard.
    int DrainDisplays(bool guardHeld = false);
    void SetDrainInsideTimerPass(bool inside) { drainInsidePass_ = inside; }
    // The window documents' `Display%d CacheSize`: re-read after a load, written at a save.
    // The window side's views for an extension to bind to (the first display document's, in its
    // order); none in a run without windows. Set before FinishStartup.
    using ExtensionViewsFn = std::function<std::optional<std::vector<ExtensionView*>>()>;
    void SetExtensionViews(ExtensionViewsFn views) { extensionViews_ = std::move(views); }
    void SetCacheSizeHooks(std::function<void()> load, std::function<void()> save) {
        loadCacheSizes_ = std::move(load);
        saveCacheSizes_ = std::move(save);
    }
    StatusDataProcessor& Status() { return *status_; }

  private:
    void ReadInstallation();
    void StartSystem();
    void WireSequence();
    void ReadMain();
    std::size_t ReadBusQueueSize();
    void WriteMain();
    void LoadRecentFiles();
    void SaveRecentFiles();
    void StopSonars();
    void OpenDisplays();
    void MakeSonar();
    void MakeRecorder();
    void StopThreads();
    void StopModules();

    Platform platform_;
    std::unique_ptr<Notifier> ownNotifier_;
    Notifier* notifier_ = nullptr;
    std::unique_ptr<SystemCoordinator> coordinator_;
    std::unique_ptr<ProgramClock> clock_;
    std::unique_ptr<EventLog> log_;
    std::unique_ptr<MessageHub> hub_;
    std::unique_ptr<OverallConfig> overall_;
    std::unique_ptr<GeneralSettings> general_;
    std::unique_ptr<NavigationConfigStore> navigation_;
    std::unique_ptr<StorageControl> storage_;
    std::unique_ptr<StorageDataProcessor> recorder_;
    std::unique_ptr<LoggingControl> logging_;
    std::unique_ptr<DisplayProcessingSet> displays_;
    std::unique_ptr<DisplayLineOutput> lineOutput_;
    std::unique_ptr<SonarModelChannelMap> sonarMap_;
    std::unique_ptr<HalvoDisplaysDataProcessor> chain_;
    std::unique_ptr<DisplayStateReader> displayStates_;
    std::unique_ptr<LineCacheDocument> lines_;
    std::unique_ptr<DisplayDrain> drain_;
    std::vector<DisplayDocumentIF*> documents_;
    const SonarIF* sonarView_ = nullptr;
    bool drainInsidePass_ = false;
    ExtensionViewsFn extensionViews_;
    std::function<void()> loadCacheSizes_;
    std::function<void()> saveCacheSizes_;
    std::unique_ptr<MessageLog> dataLog_;
    std::unique_ptr<MessageLog> commandLog_;
    std::unique_ptr<SegyDataProcessor> stamping_;
    std::unique_ptr<LinuxParallelPort> parallel_;
    std::unique_ptr<NavigationInput> serial_;
    std::unique_ptr<SocketManager> sockets_;
    std::unique_ptr<NetworkHub> network_;
    std::unique_ptr<SonarIF> sonar_;
    std::unique_ptr<Beeper> ownBeeper_;
    std::unique_ptr<StatusControl> statusControl_;
    std::unique_ptr<StatusDataProcessor> status_;

    SystemSequence sequence_;
    std::vector<std::unique_ptr<SystemModule>> modules_;
    bool modulesStopped_ = false;
    MainValues main_;
    std::unique_ptr<InstalledExtensions> extensions_;
    std::vector<std::string> recent_;
    bool recentLoaded_ = false;
    bool loaded_ = false;
    bool highPriority_ = false;  // threads moved up by a Priority setting
    bool started_ = false;
    bool ended_ = false;
    bool finished_ = false;
};

}  // namespace halvo

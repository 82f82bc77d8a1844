#pragma once
// The graph page's settings, section `Graph0`: which channels it takes, how it plots them and
// where it saves a trace. Held behind a lock and a change count, like every settings owner: the
// page and the file tool read copies, the bus thread reads only the few atomics of the taker.

#include <cstdint>
#include <mutex>
#include <string>

namespace halvo {

class SystemCoordinator;

struct GraphValues {
    static constexpr int kMaxSaveFile = 99;

    std::string PlotTime;  // the time plot's options, in the plot's own text form
    std::string PlotFreq;  // the frequency plot's options
    std::int32_t ScaleFreqByFFTSize = 1;
    std::int32_t Channel = 0;
    std::int32_t Channel2 = -1;
    std::int32_t RemoveMean = 1;
    std::int32_t TimePlotType = 0;
    std::int32_t Window = 0;
    std::string SaveFile;
    std::int32_t Pause = 0;
    // Not stored: the page's check boxes and its gate, kept for the run.
    bool xADCGain = false;
    bool GatedOnly = false;
    bool XCorrelate = false;
    bool GateSet = false;  // else the gate is the time plot's visible part
    std::int32_t GateFirst = 0;
    std::int32_t GateLast = 0;

    friend bool operator==(const GraphValues&, const GraphValues&) = default;
};

class GraphSettings {
  public:
    static constexpr const char* kSection = "Graph0";

    explicit GraphSettings(SystemCoordinator& coordinator) : coordinator_(coordinator) {}

    void Load();
    // Nothing before a first load, as for every settings owner.
    void Save();

    GraphValues Snapshot() const;
    // Counts a change only when something differs.
    void Set(const GraphValues& values);
    int ChangeCount() const;

  private:
    SystemCoordinator& coordinator_;
    mutable std::mutex lock_;
    GraphValues values_;
    int changes_ = 0;
    bool loaded_ = false;
};

}  // namespace halvo

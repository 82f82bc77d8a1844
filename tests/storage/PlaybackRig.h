#pragma once
// A storage processor on a held bus and a fake clock, with files made on demand: what the
// playback and chaining tests drive.

#include <memory>
#include <string>

#include "app/SystemCoordinator.h"
#include "platform/FakeTickSource.h"
#include "storage/HsfTestWriter.h"
#include "storage/StorageControl.h"
#include "storage/StorageDataProcessor.h"
#include "storage/StorageTestSupport.h"

namespace halvo::test {

class PlaybackRig {
  public:
    explicit PlaybackRig(std::size_t capacity = 100000, StorageDataProcessor::Hooks hooks = {})
        : bus(capacity), control(coordinator) {
        coordinator.SetActiveProfile(dir.File("Defaults.Hni"));
        ticks.SetTick(1'000'000);
        processor =
            std::make_unique<StorageDataProcessor>(bus.bus(), control, ticks, std::move(hooks));
        control.SetProcessorStarter([this] { processor->Start(); });
    }

    // A file of `records` traces with pings first, first + 1, ...
    std::string MakeFile(const std::string& name, int records, int first = 1) {
        HsfTestWriter w;
        for (int i = 0; i < records; ++i) {
            TraceSpec s;
            s.ping = first + i;
            w.Add(HsfTestWriter::MakeTrace(s));
        }
        w.Save(dir.File(name));
        return dir.File(name);
    }

    void Play(const std::string& name, int rate) {
        StorageSettings s = control.getSettings();
        s.playbackDir = dir.path();
        s.playbackFile = name;
        s.playbackRate = rate;
        s.mode = ModePlayback;
        control.setSettings(s);
        Idle();
    }
    void SetMode(int mode) {
        StorageSettings s = control.getSettings();
        s.mode = mode;
        control.setSettings(s);
    }
    void SetName(const std::string& name) {
        StorageSettings s = control.getSettings();
        s.playbackFile = name;
        control.setSettings(s);
    }

    // One idle tick of the bus, after the clock moved on by `ms`.
    void Idle(std::uint32_t ms = 0) {
        ticks.AdvanceTick(ms);
        processor->DeliverMessage(nullptr, -1, 0);
    }
    int State() { return control.getStatus().state; }
    std::uint32_t Posted() const { return bus.Depth(); }

    TempDir dir;
    SystemCoordinator coordinator;
    FakeTickSource ticks;
    HeldBus bus;
    StorageControl control;
    std::unique_ptr<StorageDataProcessor> processor;
};

}  // namespace halvo::test

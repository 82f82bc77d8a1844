#pragma once
// A storage processor set to record on a bus whose thread does not run: the test dispatches each
// message itself, so every stage (and the normalisation between them) runs at once on the test's
// thread, on a fake clock.

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "app/EventLog.h"
#include "app/SystemCoordinator.h"
#include "core/MessageTypes.h"
#include "platform/FakeTickSource.h"
#include "storage/HsfReader.h"
#include "storage/HsfTestWriter.h"
#include "storage/StorageControl.h"
#include "storage/StorageDataProcessor.h"
#include "storage/StorageTestSupport.h"

namespace halvo::test {

class RecordingRig {
  public:
    explicit RecordingRig(StorageDataProcessor::Hooks hooks = {})
        : events([] {
              return TimeValue{1'700'000'000, 0};
          }),
          bus(16),
          control(coordinator) {
        coordinator.SetActiveProfile(dir.File("Defaults.Hni"));
        ticks.SetTick(1'000'000);
        hooks.events = &events;
        processor =
            std::make_unique<StorageDataProcessor>(bus.bus(), control, ticks, std::move(hooks));
        control.SetProcessorStarter([this] { processor->Start(); });
    }

    // Mode 0 with the record directory in the test's folder; `change` adjusts the rest.
    template <class Change>
    void Record(Change&& change) {
        StorageSettings s = control.getSettings();
        s.recordDir = dir.path();
        s.recordFile = "SonarData";
        change(s);
        s.mode = ModeRecord;
        control.setSettings(s);
        Idle();
    }
    void Record() {
        Record([](StorageSettings&) {});
    }
    void Stop() {
        StorageSettings s = control.getSettings();
        s.mode = ModeStop;
        control.setSettings(s);
        Idle();
    }
    void Idle(std::uint32_t ms = 0) {
        ticks.AdvanceTick(ms);
        processor->DeliverMessage(nullptr, SourceIdle, 0);
    }
    // All three stages, with the bus's own normalisation between them.
    void Send(SonarMessage m, int source = SourceSonarData) {
        bus.bus().Dispatch(std::move(m), source, 0);
    }
    static SonarMessage Trace(int ping, std::uint16_t samples = 5000, std::uint8_t sub = 0) {
        TraceSpec s;
        s.ping = ping;
        s.samples = samples;
        s.subsystem = sub;
        return HsfTestWriter::MakeTrace(s);
    }

    std::string File(int number) const {
        char n[8];
        std::snprintf(n, sizeof n, "%03d", number);
        return dir.File(std::string("SonarData") + n + ".hsf");
    }
    static std::uintmax_t Size(const std::string& path) {
        std::error_code ec;
        const auto n = std::filesystem::file_size(path, ec);
        return ec ? 0 : n;
    }
    // Every record of a file, and how reading ended.
    static std::vector<std::vector<std::uint8_t>> Records(const std::string& path,
                                                          ReadStatus* end = nullptr) {
        std::vector<std::vector<std::uint8_t>> out;
        HsfReader reader;
        if (!reader.Open(path)) return out;
        std::span<const std::uint8_t> view;
        ReadStatus st = ReadStatus::Record;
        for (int i = 0; i < 100000 && (st = reader.NextView(view)) == ReadStatus::Record; ++i) {
            out.emplace_back(view.begin(), view.end());
        }
        if (end) *end = st;
        return out;
    }
    int State() { return control.getStatus().state; }
    bool Logged(const std::string& text) const {
        for (const std::string& line : events.Lines()) {
            if (line.find(text) != std::string::npos) return true;
        }
        return false;
    }

    TempDir dir;
    EventLog events;
    SystemCoordinator coordinator;
    FakeTickSource ticks;
    HeldBus bus;
    StorageControl control;
    std::unique_ptr<StorageDataProcessor> processor;
};

}  // namespace halvo::test

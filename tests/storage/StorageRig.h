#pragma once
// A storage processor on a bus whose thread does not run, on a fake clock. Posted records stay
// in the queue and can be counted; a message the test dispatches itself runs every stage (and
// the bus's normalisation between them) at once on the test's thread.

#include <cstdio>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "app/EventLog.h"
#include "app/SystemCoordinator.h"
#include "core/AcquireFilter.h"
#include "core/MessageProcessor.h"
#include "core/MessageTypes.h"
#include "core/RunFlag.h"
#include "platform/FakeTickSource.h"
#include "storage/HsfReader.h"
#include "storage/HsfTestWriter.h"
#include "storage/StorageControl.h"
#include "storage/StorageDataProcessor.h"
#include "storage/StorageTestSupport.h"

namespace halvo::test {

class StorageRig {
  public:
    explicit StorageRig(StorageDataProcessor::Hooks hooks = {}, std::size_t capacity = 100000)
        : events([] {
              return TimeValue{1'700'000'000, 0};
          }),
          bus("test-data", run, filter, [] { return std::int64_t{1'700'000'000}; }),
          control(coordinator) {
        bus.Start(capacity);  // the run flag is clear: the bus thread ends at once
        coordinator.SetActiveProfile(dir.File("Defaults.Hni"));
        ticks.SetTick(1'000'000);
        hooks.events = &events;
        processor = std::make_unique<StorageDataProcessor>(bus, control, ticks, std::move(hooks));
        control.SetProcessorStarter([this] { processor->Start(); });
    }

    using Change = std::function<void(StorageSettings&)>;
    void Set(const Change& change) {
        StorageSettings s = control.getSettings();
        change(s);
        control.setSettings(s);
    }
    void SetMode(int mode) {
        Set([&](StorageSettings& s) { s.mode = mode; });
    }
    // Record in the test's folder as "SonarData"; `change` adjusts the rest.
    void Record(const Change& change = {}) {
        Set([&](StorageSettings& s) {
            s.recordDir = dir.path();
            s.recordFile = "SonarData";
            if (change) change(s);
            s.mode = ModeRecord;
        });
        Idle();
    }
    void Play(const std::string& name, int rate) {
        Set([&](StorageSettings& s) {
            s.playbackDir = dir.path();
            s.playbackFile = name;
            s.playbackRate = rate;
            s.mode = ModePlayback;
        });
        Idle();
    }
    void Stop() {
        SetMode(ModeStop);
        Idle();
    }
    // One idle tick of the bus, after the clock moved on by `ms`.
    void Idle(std::uint32_t ms = 0) {
        ticks.AdvanceTick(ms);
        processor->DeliverMessage(nullptr, SourceIdle, 0);
    }
    void Send(SonarMessage m, int source = SourceSonarData) {
        bus.Dispatch(std::move(m), source, 0);
    }

    static SonarMessage Trace(int ping, std::uint16_t samples = 16, std::uint8_t sub = 0) {
        TraceSpec s;
        s.ping = ping;
        s.samples = samples;
        s.subsystem = sub;
        return HsfTestWriter::MakeTrace(s);
    }
    // A file of `records` traces with pings first, first + 1, ...
    std::string MakeFile(const std::string& name, int records, int first = 1) {
        HsfTestWriter w;
        for (int i = 0; i < records; ++i) w.Add(Trace(first + i));
        w.Save(dir.File(name));
        return dir.File(name);
    }
    // The recorded file of this number.
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
    std::uint32_t Posted() const { return bus.QueueDepth(); }
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
    RunFlag run;
    AcquireFilter filter;
    MessageProcessor bus;
    StorageControl control;
    std::unique_ptr<StorageDataProcessor> processor;
};

}  // namespace halvo::test

#pragma once
// Takes one trace at a time per channel slot straight from the data bus, without the display
// chain. Each slot is handed between the bus thread and the page by two counters and no lock:
// the bus writes a slot only while its counters are equal and then raises the request counter;
// the page reads it only while they differ and then makes them equal again. A trace that comes
// while the page has not yet taken the last one is dropped.

#include <array>
#include <atomic>
#include <cstdint>
#include <vector>

#include "core/MessageObserver.h"

namespace halvo {

class SonarChannelMapIF;
class SonarMessage;

struct GraphSlot {
    static constexpr int kMaxValues = 499999;

    std::atomic<std::uint32_t> requested{0};
    std::atomic<std::uint32_t> done{0};
    // Written by the bus only while requested == done.
    std::vector<float> values;   // complex data stays interleaved: values counts both parts
    int format = 0;              // normalised: 7 and 9 become 1, 10 becomes 2
    std::uint32_t interval = 0;  // sample interval, ns
    int startDepth = 0;
    int adcGain = 0;
    float scale = 1.0f;  // 2^-w, times the ADC gain when "xADCGain" is on
    std::uint32_t ping = 0;

    bool Waiting() const { return requested.load() != done.load(); }
    void Taken() { done.store(requested.load()); }
};

class GraphTaker final : public MessageObserver {
  public:
    explicit GraphTaker(const SonarChannelMapIF* sonars) : sonars_(sonars) {}

    // The bus reads these with every trace; the page sets them at any time.
    void SetChannels(int channel, int channel2) {
        channel_[0].store(channel);
        channel_[1].store(channel2);
    }
    void SetPause(bool pause) { pause_.store(pause); }
    void SetAdcGainScaling(bool on) { xAdcGain_.store(on); }

    GraphSlot& Slot(int s) { return slots_[static_cast<std::size_t>(s & 1)]; }

    // The channel the graph counts this trace as, or -1 for one it never shows.
    static int ChannelOf(const SonarMessage& message, const SonarChannelMapIF* sonars);

    void DeliverMessage(SonarMessage* message, int source, std::uint32_t extra) override;

  private:
    void Take(GraphSlot& slot, const SonarMessage& message);

    const SonarChannelMapIF* sonars_;
    std::array<std::atomic<int>, 2> channel_{0, -1};
    std::atomic<bool> pause_{false};
    std::atomic<bool> xAdcGain_{false};
    std::array<GraphSlot, 2> slots_;
};

}  // namespace halvo

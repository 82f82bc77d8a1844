#pragma once
// Chaining of played files, as the storage page drives it: a list of names, a position in it
// and an auto flag. At each end of file it takes the next name (or the same file again with
// "Auto Repeat") and opens it by asking for a stop and, 300 ms later, for playback: a new file
// opens only through that stop and start.
//
// The list keeps the layout of a multiple selection: slot 0 holds the directory and the names
// follow from slot 1, so position 2 is the slot after the first name. Nothing here blocks; the
// page's timer calls Tick and the wait is counted on the tick.

#include <cstdint>
#include <string>
#include <vector>

namespace halvo {

class StorageControl;

class PlaybackChain {
  public:
    static constexpr std::uint32_t kEndOfFileGapMs = 2000;  // one action per end of file
    static constexpr std::uint32_t kRestartDelayMs = 300;   // between the stop and the start

    explicit PlaybackChain(StorageControl& control) : control_(control) {}

    // The browse result: the first name goes into the file field and playback starts with the
    // auto flag set, except that a single name starts only with "Auto Repeat" checked.
    void Select(const std::string& directory, const std::vector<std::string>& names,
                std::uint32_t now);
    // The Playback button: the list position clears, the auto flag is set, mode 1.
    void PlaybackButton();

    void SetAutoRepeat(bool on) { autoRepeat_ = on; }
    bool AutoRepeat() const { return autoRepeat_; }
    bool Auto() const { return auto_; }
    int Position() const { return position_; }
    const std::vector<std::string>& Slots() const { return slots_; }
    // True between the stop and the start of the next file.
    bool Restarting() const { return restartPending_; }

    // The page's timer tick: acts on the published state while the auto flag is set.
    void Tick(std::uint32_t now);

  private:
    void AtEndOfFile(std::uint32_t now);
    void StopThenStart(const std::string* name, std::uint32_t now);

    StorageControl& control_;
    std::vector<std::string> slots_;
    int position_ = 0;
    bool auto_ = false;
    bool autoRepeat_ = false;
    bool restartPending_ = false;
    std::uint32_t stopTick_ = 0;
    bool acted_ = false;
    std::uint32_t lastActionTick_ = 0;
};

}  // namespace halvo

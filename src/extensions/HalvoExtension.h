#pragma once
// An optional function of the workstation. The program does not know an extension by name once
// it is switched on: it keeps a list of these and drives them at fixed moments — settings read
// and written before the fixed sections, and three start phases (0: make message observers;
// 1: make views' hooks and settings pages, just before the fixed subsystems start; 3: once the
// windows and their views exist). Every operation runs on the main thread.

namespace halvo {

class HalvoExtension {
  public:
    virtual ~HalvoExtension() = default;
    // What the start-up trace and the event log call it.
    virtual const char* Name() const = 0;
    // On every load of a settings file, before the fixed sections.
    virtual void ReadSettings() {}
    // On every save, before the fixed sections.
    virtual void WriteSettings() {}
    // Phase 0, 1, then 3; there is never a phase 2.
    virtual void StartPhase(int phase) { static_cast<void>(phase); }
};

}  // namespace halvo

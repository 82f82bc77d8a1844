#pragma once
// What every settings page shares, beside its window: it shows what the owning singleton says
// and writes back what the operator changed. Nothing is signalled; the sheet's timer calls Tick,
// which compares the singleton's change count with the one last seen.

class QWidget;

namespace halvo {

class DoIOHandler {
  public:
    static constexpr int kShow = 1;  // settings into the controls
    static constexpr int kRead = 0;  // controls into the settings

    virtual ~DoIOHandler() = default;

    // The change count of the settings this page shows.
    virtual int GetChangeCount() = 0;
    // Exchanges settings and controls in the direction given; non-zero when something changed.
    virtual int DoIO(int direction) = 0;
    // The page's own periodic work, after the exchange.
    virtual void OnTick() {}
    // First thing on each pass, even for a hidden page.
    virtual void BeforeTick() {}
    // The page window, or null.
    virtual QWidget* GetPage() = 0;

    // The first call ever shows the settings first. A DoIO that reports a change is followed by
    // a showing, so a held value appears at once. The change count is taken last, so a change
    // this exchange wrote back is not shown again by the next Tick.
    void Exchange(int direction);
    // Control notifications that want an exchange at the next Tick.
    void MarkDirty() { dirty_ = true; }
    // One pass of the sheet's timer.
    void Tick();

    bool IsDirty() const { return dirty_; }
    bool IsInitialised() const { return initialised_; }
    int SeenChangeCount() const { return changeCount_; }

  private:
    int changeCount_ = 0;
    bool dirty_ = false;
    bool initialised_ = false;
};

}  // namespace halvo

#pragma once
// The multi-document main window. It holds the display children, the colour status bar and the
// "Status And Control" sheet; its 250 ms timer runs the housekeeping and paints what that
// decided. It makes no subsystem of its own: the housekeeping, the commands and the settings of
// the options dialog come in from whoever assembles the program. It is also the settings'
// view of the main window (MainWindowHost), so the stored placement is applied and taken here.

#include <QMainWindow>
#include <QString>
#include <QTimer>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "app/MainWindowHost.h"
#include "gui/sheets/SheetContext.h"
#include "gui/shell/ShellCommands.h"

class QAction;
class QMdiArea;
class QMenu;
class QMimeData;

namespace halvo {

class CColorStatusBar;
class CfgSheet;
class DlgMainOptions;
class Housekeeping;
class MainOptionsStore;
class SetupSheet;

class CMainFrame : public QMainWindow, public MainWindowHost {
  public:
    static constexpr int kTimerMs = 250;
    static constexpr const char* kDiagnosticSuffix = "  - Diagnostic Version -";

    // The pane texts of the indicators, by the ids SetPane takes (0: none).
    static const char* IndicatorText(int textId);

    // Chooses a configuration file to load (save false) or save; empty when cancelled.
    using FileChooser =
        std::function<std::optional<std::string>(bool save, const std::string& suggested)>;

    CMainFrame(SheetContext& context, Housekeeping& housekeeping, ShellCommands commands,
               QString title, QWidget* parent = nullptr);
    ~CMainFrame() override;

    // Panes 0 to 7; the text if given, else the indicator text textId, else it stays.
    void SetPane(int pane, int state, int textId = 0, const char* text = nullptr);
    // Shows a message in the message area and holds it there for a while.
    void ShowMessage(const std::string& text);

    // 0 creates the "Status And Control" sheet; 2 shows the sheet given (or that one).
    CfgSheet* ControlBar(int command, CfgSheet* sheet = nullptr);
    CfgSheet* ControlSheet() const { return cfg_; }
    SetupSheet* Setup();

    void SetOptionsStore(MainOptionsStore* store) { optionsStore_ = store; }
    DlgMainOptions* OpenOptions();

    void SetDiagnostic(bool diagnostic);
    void AcceptDroppedFiles() { setAcceptDrops(true); }
    void StartDisplayTimer() { displayTimer_.start(); }
    // One pass of the 250 ms timer (the timer calls it; tests call it directly).
    void TimerPass();

    // The commands behind the menus.
    void LoadConfiguration();
    void SaveConfiguration();
    void OpenRecent(const std::string& file);
    void PlayFile(const std::string& file);
    // What a drop on the window does: plays its first local file. False when there was none.
    bool PlayDropped(const QMimeData& mime);
    void Exit(bool save);
    void SetFileChooser(FileChooser chooser) { chooser_ = std::move(chooser); }

    CColorStatusBar* ColourBar() const { return bar_; }
    QMdiArea* Area() const { return area_; }

    // MainWindowHost
    bool HasMainWindow() const override { return true; }
    void ShowPlacement(const WindowPlacement& placement) override;
    void ShowMaximised() override;
    WindowPlacement CurrentPlacement() const override;
    void ApplySplitSizes(std::span<const int> rows, std::span<const int> columns) override;
    void CollectSplitSizes(std::vector<int>& rows, std::vector<int>& columns) const override;

  protected:
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

  private:
    void BuildMenus();
    void RebuildRecentMenu();
    void Paint();
    std::optional<std::string> ChooseFile(bool save, const std::string& suggested);

    SheetContext& context_;
    Housekeeping& housekeeping_;
    ShellCommands commands_;
    QString title_;
    QMdiArea* area_ = nullptr;
    CColorStatusBar* bar_ = nullptr;
    QMenu* fileMenu_ = nullptr;
    QAction* recentEnd_ = nullptr;
    std::vector<QAction*> recentActions_;
    CfgSheet* cfg_ = nullptr;
    SetupSheet* setup_ = nullptr;
    DlgMainOptions* options_ = nullptr;
    MainOptionsStore* optionsStore_ = nullptr;
    FileChooser chooser_;
    QTimer displayTimer_;
    bool ended_ = false;
};

}  // namespace halvo

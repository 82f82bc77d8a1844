#include "gui/shell/CMainFrame.h"

#include <QAction>
#include <QCloseEvent>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QMdiArea>
#include <QMenuBar>
#include <QMimeData>
#include <QUrl>
#include <algorithm>
#include <exception>

#include "app/Housekeeping.h"
#include "app/SystemCoordinator.h"
#include "gui/dialogs/DlgMainOptions.h"
#include "gui/sheets/CfgSheet.h"
#include "gui/sheets/OperatorPrompts.h"
#include "gui/sheets/SetupSheet.h"
#include "gui/shell/CColorStatusBar.h"

namespace halvo {
namespace {

constexpr int kRedLevel = 200;
// A stored rectangle outside these bounds is not a window anybody can see.
constexpr std::int64_t kMinSide = 100;
constexpr std::int64_t kMaxSide = 16384;
constexpr std::int64_t kMaxOrigin = 32768;

bool IsConfigurationFile(const std::string& file) {
    return QFileInfo(QString::fromStdString(file)).suffix().compare("Hni", Qt::CaseInsensitive) ==
           0;
}

}  // namespace

const char* CMainFrame::IndicatorText(int textId) {
    static constexpr const char* kTexts[] = {"NET:OFF",  "NET:ON",   "Record:OFF", "Record ON",
                                             "Playback", "GPS:OFF",  "GPS:ON",     "GPS:PB",
                                             "GPS:NA",   "Alt : Off"};
    if (textId < 1 || textId > static_cast<int>(std::size(kTexts))) return nullptr;
    return kTexts[textId - 1];
}

CMainFrame::CMainFrame(SheetContext& context, Housekeeping& housekeeping, ShellCommands commands,
                       QString title, QWidget* parent)
    : QMainWindow(parent),
      context_(context),
      housekeeping_(housekeeping),
      commands_(std::move(commands)),
      title_(std::move(title)) {
    setWindowTitle(title_);
    area_ = new QMdiArea(this);
    area_->setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    area_->setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    setCentralWidget(area_);
    bar_ = new CColorStatusBar(this);
    setStatusBar(bar_);
    BuildMenus();
    resize(1024, 700);
    displayTimer_.setInterval(kTimerMs);
    connect(&displayTimer_, &QTimer::timeout, this, [this] { TimerPass(); });
    Paint();
}

CMainFrame::~CMainFrame() {
    displayTimer_.stop();
}

void CMainFrame::BuildMenus() {
    const auto add = [this](QMenu* menu, const char* text, bool enabled, auto slot) {
        QAction* a = menu->addAction(QString::fromUtf8(text));
        a->setEnabled(enabled);
        connect(a, &QAction::triggered, this, slot);
        return a;
    };
    fileMenu_ = menuBar()->addMenu("&File");
    add(fileMenu_, "&Load Configuration ...", bool(commands_.loadConfiguration),
        [this] { LoadConfiguration(); });
    add(fileMenu_, "&Save Configuration ...", bool(commands_.saveConfiguration),
        [this] { SaveConfiguration(); });
    fileMenu_->addSeparator();
    recentEnd_ = fileMenu_->addSeparator();
    add(fileMenu_, "E&xit / Save Settings", true, [this] { Exit(true); });
    add(fileMenu_, "Exit / &Dont Save Settings", true, [this] { Exit(false); });
    connect(fileMenu_, &QMenu::aboutToShow, this, [this] { RebuildRecentMenu(); });

    QMenu* play = menuBar()->addMenu("&Playback");
    add(play, "Change/Pause", bool(commands_.changePause), [this] { commands_.changePause(); });
    add(play, "Playback Slower", bool(commands_.playbackSlower),
        [this] { commands_.playbackSlower(); });
    add(play, "Playback Faster", bool(commands_.playbackFaster),
        [this] { commands_.playbackFaster(); });

    QMenu* view = menuBar()->addMenu("&View");
    add(view, "Status And Control", true, [this] { ControlBar(2); });
    add(view, "&Setup ...", true, [this] { Setup()->show(); });
    add(view, "&Options ...", true, [this] { OpenOptions(); });

    QMenu* window = menuBar()->addMenu("&Window");
    add(window, "&Cascade", true, [this] { area_->cascadeSubWindows(); });
    add(window, "&Tile", true, [this] { area_->tileSubWindows(); });
    RebuildRecentMenu();
}

void CMainFrame::RebuildRecentMenu() {
    for (QAction* a : recentActions_) {
        fileMenu_->removeAction(a);
        a->deleteLater();
    }
    recentActions_.clear();
    if (!commands_.recentFiles) return;
    const std::vector<std::string> files = commands_.recentFiles();
    int n = 0;
    for (const std::string& f : files) {
        if (n >= 8) break;
        if (f.empty()) continue;
        auto* a = new QAction(QString("&%1 %2").arg(++n).arg(QString::fromStdString(f)), this);
        connect(a, &QAction::triggered, this, [this, f] { OpenRecent(f); });
        fileMenu_->insertAction(recentEnd_, a);
        recentActions_.push_back(a);
    }
}

void CMainFrame::SetPane(int pane, int state, int textId, const char* text) {
    if (pane < 0 || pane >= Housekeeping::kPanes) return;
    std::optional<std::string> t;
    if (text != nullptr) {
        t = text;
    } else if (const char* fixed = IndicatorText(textId)) {
        t = fixed;
    }
    housekeeping_.SetPane(pane, state, t);
    Paint();
}

void CMainFrame::ShowMessage(const std::string& text) {
    housekeeping_.ShowMessage(text);
    Paint();
}

void CMainFrame::Paint() {
    const StatusLineStyle& style = housekeeping_.LineStyle();
    bar_->SetMessageStyle(style.fontSize, style.lines);
    bar_->SetMessage(QString::fromStdString(housekeeping_.StatusText()));
    for (int i = 0; i < Housekeeping::kPanes; ++i) {
        const PaneState& p = housekeeping_.Pane(i);
        bar_->SetPaneText(i, QString::fromStdString(p.text));
        if (p.state == 1 || p.state == 2) {
            const bool white = p.state == 2 || p.whiteText;
            bar_->SetPaneColours(i, QColor(kRedLevel, 0, 0),
                                 white ? QColor(Qt::white) : QColor(Qt::black));
        } else {
            bar_->ClearPaneColours(i);
        }
    }
}

void CMainFrame::TimerPass() {
    // The display timer shares the application's re-entrancy count with the sheets' timers: a
    // modal box raised inside one pass holds every later pass off until it closes.
    if (context_.coordinator.EnterDisplayTimer() == 0) {
        try {
            const Housekeeping::Result r = housekeeping_.Update();
            Paint();
            if (r.sonarSettingsChanged && commands_.sonarSettingsChanged) {
                commands_.sonarSettingsChanged();
            }
            if (r.channelsChanged && commands_.channelsChanged) {
                commands_.channelsChanged(housekeeping_.DisplayChannels());
            }
            if (options_ != nullptr && options_->isVisible()) options_->Serve();
        } catch (const std::exception& e) {
            context_.prompts.Notify("Timer Exception",
                                    std::string("Exception In On Timer Main Frame: ") + e.what());
        } catch (...) {
            context_.prompts.Notify("Timer Exception", "Exception In On Timer Main Frame");
        }
    }
    context_.coordinator.LeaveDisplayTimer();
}

CfgSheet* CMainFrame::ControlBar(int command, CfgSheet* sheet) {
    if (command == 0) {
        if (cfg_ == nullptr) cfg_ = new CfgSheet(context_, this);
        return cfg_;
    }
    if (command == 2) {
        CfgSheet* s = sheet != nullptr ? sheet : ControlBar(0);
        s->show();
        s->raise();
        return s;
    }
    return cfg_;
}

SetupSheet* CMainFrame::Setup() {
    if (setup_ == nullptr) setup_ = new SetupSheet(context_, this);
    return setup_;
}

DlgMainOptions* CMainFrame::OpenOptions() {
    if (optionsStore_ == nullptr) return nullptr;
    if (options_ == nullptr) options_ = new DlgMainOptions(context_.prompts, *optionsStore_, this);
    options_->Reset();
    options_->show();
    options_->raise();
    return options_;
}

void CMainFrame::SetDiagnostic(bool diagnostic) {
    setWindowTitle(diagnostic ? title_ + kDiagnosticSuffix : title_);
}

std::optional<std::string> CMainFrame::ChooseFile(bool save, const std::string& suggested) {
    if (chooser_) return chooser_(save, suggested);
    // The framework's own dialog, so it looks the same everywhere; it never changes the
    // working directory.
    QFileDialog dlg(this, "Select A Halvo Configuration", ".", "Halvo Default Values (*.Hni)");
    dlg.setOption(QFileDialog::DontUseNativeDialog, true);
    dlg.setDefaultSuffix("Hni");
    dlg.setAcceptMode(save ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
    dlg.setFileMode(save ? QFileDialog::AnyFile : QFileDialog::ExistingFile);
    dlg.selectFile(QString::fromStdString(suggested));
    if (dlg.exec() != QDialog::Accepted || dlg.selectedFiles().isEmpty()) return std::nullopt;
    return dlg.selectedFiles().front().toStdString();
}

void CMainFrame::LoadConfiguration() {
    if (!commands_.loadConfiguration) return;
    const auto file = ChooseFile(false, std::string(SystemCoordinator::kDefaultsFile));
    if (!file || file->empty()) return;
    commands_.loadConfiguration(*file);
    context_.coordinator.SetDefaultsFile(*file);
    if (commands_.addRecentFile) commands_.addRecentFile(*file);
}

void CMainFrame::SaveConfiguration() {
    if (!commands_.saveConfiguration) return;
    const auto file = ChooseFile(true, context_.coordinator.DefaultsFile());
    if (!file || file->empty()) return;
    commands_.saveConfiguration(*file);
    if (commands_.addRecentFile) commands_.addRecentFile(*file);
}

void CMainFrame::OpenRecent(const std::string& file) {
    if (IsConfigurationFile(file)) {
        if (!commands_.loadConfiguration) return;
        commands_.loadConfiguration(file);
        context_.coordinator.SetDefaultsFile(file);
        if (commands_.addRecentFile) commands_.addRecentFile(file);
    } else {
        PlayFile(file);
    }
}

void CMainFrame::PlayFile(const std::string& file) {
    if (!commands_.playFile || file.empty()) return;
    commands_.playFile(file);
    if (commands_.addRecentFile) commands_.addRecentFile(file);
}

void CMainFrame::Exit(bool save) {
    if (!ended_) {
        ended_ = true;
        displayTimer_.stop();
        if (commands_.ending) commands_.ending(save);
    }
    close();
}

void CMainFrame::closeEvent(QCloseEvent* event) {
    // Closing the window is the saving way out.
    if (!ended_) {
        ended_ = true;
        displayTimer_.stop();
        if (commands_.ending) commands_.ending(true);
    }
    if (cfg_ != nullptr) cfg_->hide();
    if (setup_ != nullptr) setup_->hide();
    if (options_ != nullptr) options_->hide();
    event->accept();
}

void CMainFrame::dragEnterEvent(QDragEnterEvent* event) {
    if (event->mimeData()->hasUrls() && commands_.playFile) event->acceptProposedAction();
}

void CMainFrame::dropEvent(QDropEvent* event) {
    if (PlayDropped(*event->mimeData())) event->acceptProposedAction();
}

bool CMainFrame::PlayDropped(const QMimeData& mime) {
    // Only the first file is played: one survey line at a time.
    if (!mime.hasUrls() || !commands_.playFile) return false;
    for (const QUrl& url : mime.urls()) {
        if (url.isLocalFile()) {
            PlayFile(url.toLocalFile().toStdString());
            return true;
        }
    }
    return false;
}

void CMainFrame::ShowPlacement(const WindowPlacement& placement) {
    const WindowPlacement::Rect r = placement.NormalPosition();
    const std::int64_t w = std::int64_t{r.right} - r.left;
    const std::int64_t h = std::int64_t{r.bottom} - r.top;
    if (w >= kMinSide && h >= kMinSide && w <= kMaxSide && h <= kMaxSide &&
        std::abs(std::int64_t{r.left}) <= kMaxOrigin &&
        std::abs(std::int64_t{r.top}) <= kMaxOrigin) {
        setGeometry(r.left, r.top, static_cast<int>(w), static_cast<int>(h));
    }
    switch (placement.ShowCmd()) {
        case WindowPlacement::kShowMaximised:
            showMaximized();
            break;
        case WindowPlacement::kShowMinimised:
            showMinimized();
            break;
        default:
            showNormal();
            break;
    }
}

void CMainFrame::ShowMaximised() {
    showMaximized();
}

WindowPlacement CMainFrame::CurrentPlacement() const {
    WindowPlacement p;
    QRect g = (isMaximized() || isMinimized()) ? normalGeometry() : geometry();
    if (!g.isValid()) g = geometry();
    p.SetNormalPosition({g.left(), g.top(), g.left() + g.width(), g.top() + g.height()});
    p.SetMinPosition({-1, -1});
    p.SetMaxPosition({-1, -1});
    p.SetShowCmd(isMaximized()   ? WindowPlacement::kShowMaximised
                 : isMinimized() ? WindowPlacement::kShowMinimised
                                 : WindowPlacement::kShowNormal);
    return p;
}

void CMainFrame::ApplySplitSizes(std::span<const int> rows, std::span<const int> columns) {
    if (commands_.applySplitSizes) commands_.applySplitSizes(rows, columns);
}

void CMainFrame::CollectSplitSizes(std::vector<int>& rows, std::vector<int>& columns) const {
    if (commands_.collectSplitSizes) commands_.collectSplitSizes(rows, columns);
}

}  // namespace halvo

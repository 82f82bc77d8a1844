#pragma once
// The "Disk" page: where recordings go and in what form, which file plays and how fast, the
// Record / Stop / Playback buttons with Pause, and the recorder's status. The page also drives
// the chaining of played files: the browse dialog's multiple selection becomes the list the
// chain walks at each end of file, and the chain ticks even while the page is hidden.

#include <QString>
#include <QStringList>
#include <cstdint>
#include <functional>

#include "gui/sheets/SettingsPage.h"
#include "gui/sheets/WizardTargets.h"
#include "storage/PlaybackChain.h"
#include "storage/StorageSettings.h"

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;

namespace halvo {

class StorageControl;

class CfgStorage : public SettingsPage<StorageSettings>, public WizardDiskTarget {
  public:
    static constexpr const char* kCaption = "Disk";
    // A composed file name has room for 199 characters.
    static constexpr std::size_t kMaxNameChars = 199;
    static constexpr std::int32_t kMaxRecordSizeMB = 2000;

    struct Sources {
        std::function<std::uint32_t()> tick;          // program ticks, ms
        std::function<std::uint32_t()> sonarQueue;    // messages waiting on the data bus
        std::function<std::uint32_t()> displayQueue;  // lines waiting for the views
    };

    // The controls, for the sheet's tests and the wizard's checks.
    struct Widgets {
        QComboBox* acquireMode = nullptr;
        QPushButton* record = nullptr;
        QPushButton* stop = nullptr;
        QPushButton* playback = nullptr;
        QCheckBox* pause = nullptr;
        QLineEdit* recordDir = nullptr;
        QLineEdit* recordFile = nullptr;
        QComboBox* recordForm = nullptr;
        QLineEdit* maxRecordSize = nullptr;
        QCheckBox* saveBathy = nullptr;
        QCheckBox* diagnostics = nullptr;
        QLineEdit* playbackDir = nullptr;
        QLineEdit* playbackFile = nullptr;
        QPushButton* browse = nullptr;
        QLineEdit* playbackRate = nullptr;
        QComboBox* rangeType = nullptr;
        QLineEdit* rangeFrom = nullptr;
        QLineEdit* rangeTo = nullptr;
        QLabel* rangeUnit = nullptr;
        QCheckBox* reparse = nullptr;
        QCheckBox* markFileStart = nullptr;
        QCheckBox* autoRepeat = nullptr;
        QLabel* status = nullptr;
        QLabel* queues = nullptr;
    };

    CfgStorage(SheetContext& context, StorageControl& storage, Sources sources,
               QWidget* parent = nullptr);

    const Widgets& Ui() const { return ui_; }
    PlaybackChain& Chain() { return chain_; }

    // Where the browse dialog's result goes: the full names of the chosen files.
    void FilesChosen(const QStringList& paths);
    // The two status lines as the page shows them.
    QString StatusText();
    QString QueueText() const;

    // The wizard: record into this directory under this name, now.
    void StartRecording(const std::string& directory, const std::string& fileName) override;

  protected:
    void Bind(FieldEditor& ed, int direction, StorageSettings& v) override;
    void BeforeTick() override;
    void OnTick() override;

  private:
    void BuildLayout();
    void Browse();
    void AfterRequest();
    void ApplyModeEnables(std::int32_t mode);
    // The range bounds in the form the range type asks for.
    int BindRange(FieldEditor& ed, int direction, QLineEdit* field, std::int32_t& value,
                  std::int32_t type);
    std::uint32_t Now() const;

    StorageControl& storage_;
    Sources sources_;
    PlaybackChain chain_;
    Widgets ui_;
    // The range type whose form the bound fields hold: a new type chosen in the list must not
    // make the old texts be read in the new form.
    std::int32_t shownRangeType_ = 0;
};

}  // namespace halvo

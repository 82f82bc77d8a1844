#pragma once
// The "Status" page: which items the status line shows, the eight custom fields read from any
// offset of the trace header with their format help, and the status bar's font size and
// number of lines. A custom field can be filled from the ready-made definitions of
// "./StatusCustom.ini", which stores the settings at once.

#include <QString>
#include <string>
#include <vector>

#include "gui/sheets/SettingsPage.h"
#include "status/StatusSettings.h"

class QCheckBox;
class QLabel;
class QLineEdit;
class QToolButton;

namespace halvo {

class StatusControl;

class SetupStatus : public SettingsPage<StatusSettings> {
  public:
    static constexpr const char* kCaption = "Status";
    static constexpr const char* kFormatHelp =
        "Format field example: J,K,L,M|S % or J,K,L,M|S %F\nWhere:\n J: Floating Point Gain\n K: "
        "Floating Point Offset(Integers Only)\n L: Width\n M: Decimal Digits\n |: Required "
        "Delmimter\n %: Insertion Point for Value\n S: Any Text String to Insert";
    // The last byte offset of the 240-byte trace header.
    static constexpr std::int32_t kMaxFieldOffset = 239;
    // Absolute channels 0 to 62 are kept; -1 takes any channel.
    static constexpr std::int32_t kMaxChannel = 62;

    struct CustomRow {
        QCheckBox* enable = nullptr;
        QLineEdit* description = nullptr;
        QLineEdit* field = nullptr;
        QLineEdit* channel = nullptr;
        QLineEdit* label = nullptr;
        QToolButton* presets = nullptr;
    };
    struct Item {
        std::uint32_t bit;
        QCheckBox* box;
    };
    struct Widgets {
        std::vector<Item> items;  // the status items, then "Cursor Depth" and "Sample #"
        CustomRow custom[StatusSettings::kCustomCount];
        QLineEdit* fontSize = nullptr;
        QLineEdit* statusLines = nullptr;
        QLabel* help = nullptr;
    };

    SetupStatus(SheetContext& context, StatusControl& status,
                std::string presetsFile = "./StatusCustom.ini", QWidget* parent = nullptr);

    const Widgets& Ui() const { return ui_; }
    // The box of one item bit, or null.
    QCheckBox* ItemBox(std::uint32_t bit) const;

    // The ready-made definitions' names, as the field's menu lists them.
    std::vector<std::string> PresetNames() const;
    // Copies definition `index` of the file into custom field `row` and stores the settings.
    // False when either is out of range.
    bool ChoosePreset(int row, int index);

  protected:
    void Bind(FieldEditor& ed, int direction, StatusSettings& v) override;

  private:
    void BuildLayout();
    void FillPresetMenu(int row);

    StatusControl& status_;
    std::string presetsFile_;
    Widgets ui_;
};

}  // namespace halvo

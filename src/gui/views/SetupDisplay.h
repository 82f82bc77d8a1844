#pragma once
// "Display Advanced": the less used settings of one display — filters, heave, palette, channel
// setup, subsampling, direct path removal, reflection, event marks and the cache size.

#include <QString>
#include <functional>
#include <optional>
#include <string>

#include "gui/views/DisplayRecordPage.h"

class QCheckBox;
class QComboBox;
class QFormLayout;
class QLineEdit;

namespace halvo {

class WaterfallDocSet;

class SetupDisplay final : public DisplayRecordPage {
  public:
    static constexpr const char* kTitle = "Display Advanced";
    // Asks for a palette file; empty when cancelled.
    using FileChooser = std::function<std::optional<std::string>()>;

    SetupDisplay(SheetContext& context, DisplayProcessingSet& displays, WaterfallDocSet& documents,
                 int display, QWidget* parent = nullptr);

    int GetChangeCount() override;
    void SetFileChooser(FileChooser chooser) { chooser_ = std::move(chooser); }
    // The palette button: the chosen file becomes `Pal`.
    void ChoosePalette();

    QLineEdit* Field(const char* name) const;
    QComboBox* List(const char* name) const;
    QCheckBox* Check(const char* name) const;

  protected:
    void Bind(FieldEditor& ed, int direction, DisplayProcessingConfig& record) override;
    int BindOutside(int direction) override;

  private:
    QLineEdit* AddField(QFormLayout* form, const char* label, const char* name);
    QComboBox* AddList(QFormLayout* form, const char* label, const char* name);
    QCheckBox* AddCheck(QFormLayout* form, const char* text, const char* name);

    WaterfallDocSet& documents_;
    FileChooser chooser_;
    QLineEdit* heaveTimeConst_ = nullptr;
    QCheckBox* palInvert_ = nullptr;
    QLineEdit* pal_ = nullptr;
    QLineEdit* medianFilter_ = nullptr;
    QLineEdit* dcFilter_ = nullptr;
    QCheckBox* clampAtZero_ = nullptr;
    QLineEdit* traceZoomFactor_ = nullptr;
    QLineEdit* ssGain_ = nullptr;
    QLineEdit* eventMarkWidth_ = nullptr;
    QComboBox* mpxOptions_ = nullptr;
    QComboBox* dualChannel_ = nullptr;
    QComboBox* zoomAverage_ = nullptr;
    QComboBox* heaveSource_ = nullptr;
    QLineEdit* directPath0_ = nullptr;
    QLineEdit* directPathn_ = nullptr;
    QLineEdit* directPathTraces_ = nullptr;
    QCheckBox* directPathFreeze_ = nullptr;
    QCheckBox* directPathEnable_ = nullptr;
    QLineEdit* reflectionGain_ = nullptr;
    QLineEdit* rcTimeConst_ = nullptr;
    QLineEdit* cacheSize_ = nullptr;
};

}  // namespace halvo

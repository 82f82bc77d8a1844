#pragma once
// The sonar page of the dual-frequency side-scan unit. Beside everything of an ordinary sonar
// page it switches the unit's two data streams, which go out as messages of their own. The
// unit takes its display window whole, whatever delay and depth say, and the page says so.

#include "gui/pages/CfgSonar.h"

namespace halvo {

class CfgSonarR90 : public CfgSonar {
  public:
    CfgSonarR90(SheetContext& context, QString caption, SonarIF& sonar, int index,
                QWidget* parent = nullptr);

  protected:
    void Bind(FieldEditor& ed, int direction, SonarConfig& c) override;

  private:
    QCheckBox* streamLow_ = nullptr;
    QCheckBox* streamHigh_ = nullptr;
};

}  // namespace halvo

#pragma once
// The operator's message boxes as modal QMessageBoxes over the main window.

#include <QPointer>
#include <QWidget>

#include "gui/sheets/OperatorPrompts.h"

namespace halvo {

class MessageBoxPrompts final : public OperatorPrompts {
  public:
    void SetParent(QWidget* parent) { parent_ = parent; }
    void Notify(std::string_view title, std::string_view text) override;
    bool AskYesNo(std::string_view title, std::string_view text) override;

  private:
    QPointer<QWidget> parent_;
};

}  // namespace halvo

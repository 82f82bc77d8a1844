#pragma once
// The base of every settings page: a tab's widget and a DoIOHandler in one. It wires the
// controls' notifications to the exchange: leaving a field, releasing a slider, choosing in a
// combo and pressing a button read the controls at once; Enter in a field does so through the
// Enter flag, so that a number half typed is never applied while the operator is still typing.

#include <QString>
#include <QWidget>

#include "gui/sheets/DoIOHandler.h"
#include "gui/sheets/SheetContext.h"

class QAbstractButton;
class QAbstractSlider;
class QComboBox;
class QLineEdit;

namespace halvo {

class SheetPage : public QWidget, public DoIOHandler {
  public:
    SheetPage(SheetContext& context, QString caption, QWidget* parent = nullptr);

    // The tab's caption; FindPage looks pages up by it.
    const QString& Caption() const { return caption_; }
    QWidget* GetPage() override { return this; }
    SheetContext& Context() { return context_; }

  protected:
    // Notifications of the controls a page shows. Each control is watched once.
    void WatchEdit(QLineEdit* edit);
    void WatchCombo(QComboBox* combo);
    void WatchButton(QAbstractButton* button);
    void WatchSlider(QAbstractSlider* slider);

    bool eventFilter(QObject* watched, QEvent* event) override;
    // A page coming into view shows the settings at once: the first time, and when they
    // changed while it was hidden.
    void showEvent(QShowEvent* event) override;

  private:
    // An exchange started by a notification; nothing thrown may leave a Qt slot.
    void SafeExchange(int direction);
    // Enter in a field: applies only when the Enter flag was set, and clears it.
    void OnEditEnter();

    SheetContext& context_;
    QString caption_;
};

}  // namespace halvo

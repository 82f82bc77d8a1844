#include "gui/sheets/SheetPage.h"

#include <QAbstractButton>
#include <QAbstractSlider>
#include <QComboBox>
#include <QEvent>
#include <QLineEdit>
#include <exception>
#include <string>

#include "app/SystemCoordinator.h"
#include "gui/sheets/OperatorPrompts.h"

namespace halvo {

SheetPage::SheetPage(SheetContext& context, QString caption, QWidget* parent)
    : QWidget(parent), context_(context), caption_(std::move(caption)) {}

void SheetPage::WatchEdit(QLineEdit* edit) {
    if (edit == nullptr) return;
    edit->installEventFilter(this);
    connect(edit, &QLineEdit::returnPressed, this, [this] { OnEditEnter(); });
}

void SheetPage::WatchCombo(QComboBox* combo) {
    if (combo == nullptr) return;
    connect(combo, &QComboBox::activated, this, [this] { SafeExchange(kRead); });
}

void SheetPage::WatchButton(QAbstractButton* button) {
    if (button == nullptr) return;
    connect(button, &QAbstractButton::clicked, this, [this] { SafeExchange(kRead); });
}

void SheetPage::WatchSlider(QAbstractSlider* slider) {
    if (slider == nullptr) return;
    // While dragging the value is only marked; the release applies it.
    connect(slider, &QAbstractSlider::valueChanged, this, [this, slider] {
        if (slider->isSliderDown()) {
            MarkDirty();
        } else {
            SafeExchange(kRead);
        }
    });
    connect(slider, &QAbstractSlider::sliderReleased, this, [this] { SafeExchange(kRead); });
}

bool SheetPage::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::FocusOut && qobject_cast<QLineEdit*>(watched) != nullptr) {
        SafeExchange(kRead);
    }
    return QWidget::eventFilter(watched, event);
}

void SheetPage::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    if (!IsInitialised() || GetChangeCount() != SeenChangeCount()) SafeExchange(kShow);
}

void SheetPage::OnEditEnter() {
    if (context_.coordinator.TakeEnterFlag() != 0) SafeExchange(kRead);
}

void SheetPage::SafeExchange(int direction) {
    try {
        Exchange(direction);
    } catch (const std::exception& e) {
        context_.prompts.Notify("Error", std::string("Settings page: ") + e.what());
    } catch (...) {
        context_.prompts.Notify("Error", "Settings page: unknown exception");
    }
}

}  // namespace halvo

#include "gui/shell/CColorStatusBar.h"

#include <QFontMetrics>
#include <QLabel>
#include <algorithm>

namespace halvo {

CColorStatusBar::CColorStatusBar(QWidget* parent) : QStatusBar(parent) {
    setSizeGripEnabled(false);
    message_ = new QLabel(this);
    message_->setTextFormat(Qt::PlainText);
    message_->setMinimumWidth(80);
    addWidget(message_, 1);
    for (Pane& p : panes_) {
        p.label = new QLabel(this);
        p.label->setTextFormat(Qt::PlainText);
        p.label->setFrameStyle(QFrame::NoFrame);
        p.label->setAlignment(Qt::AlignCenter);
        p.label->setAutoFillBackground(true);
        // Wide enough for the longest indicator, so panes do not jump as their texts change.
        p.label->setMinimumWidth(p.label->fontMetrics().horizontalAdvance("Record:OFF") + 16);
        p.label->hide();
        addPermanentWidget(p.label);
        Repaint(p);
    }
}

void CColorStatusBar::SetMessage(const QString& text) {
    if (message_->text() != text) message_->setText(text);
}

QString CColorStatusBar::Message() const {
    return message_->text();
}

void CColorStatusBar::SetMessageStyle(int pixelSize, int lines) {
    if (pixelSize == MessagePixelSize() && lines == lines_) return;
    QFont font = message_->font();
    font.setPixelSize(std::max(1, pixelSize));
    message_->setFont(font);
    lines_ = lines;
    message_->setVisible(lines > 0);
    message_->setWordWrap(lines > 1);
    // From the top: a line too long for the lines given loses its end, never its start.
    message_->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    // Exactly the lines asked for: a longer status text is cut rather than growing the bar.
    const int height = QFontMetrics(font).lineSpacing() * std::max(1, lines) + 2;
    message_->setFixedHeight(height);
}

int CColorStatusBar::MessagePixelSize() const {
    return message_->font().pixelSize();
}

void CColorStatusBar::SetPaneText(int pane, const QString& text) {
    if (pane < 0 || pane >= kPanes) return;
    Pane& p = panes_[static_cast<std::size_t>(pane)];
    if (p.text == text) return;
    p.text = text;
    p.label->setText(text);
    p.label->setVisible(!text.isEmpty());
}

void CColorStatusBar::SetPaneColours(int pane, const QColor& background, const QColor& text) {
    if (pane < 0 || pane >= kPanes) return;
    Pane& p = panes_[static_cast<std::size_t>(pane)];
    if (p.ownerColours && p.background == background && p.textColour == text) return;
    p.ownerColours = true;
    p.background = background;
    p.textColour = text;
    Repaint(p);
}

void CColorStatusBar::ClearPaneColours(int pane) {
    if (pane < 0 || pane >= kPanes) return;
    Pane& p = panes_[static_cast<std::size_t>(pane)];
    if (!p.ownerColours) return;
    p.ownerColours = false;
    Repaint(p);
}

QString CColorStatusBar::PaneText(int pane) const {
    if (pane < 0 || pane >= kPanes) return {};
    return panes_[static_cast<std::size_t>(pane)].text;
}

QColor CColorStatusBar::PaneBackground(int pane) const {
    if (pane < 0 || pane >= kPanes) return {};
    const Pane& p = panes_[static_cast<std::size_t>(pane)];
    return p.ownerColours ? p.background : FaceColour();
}

QColor CColorStatusBar::PaneTextColour(int pane) const {
    if (pane < 0 || pane >= kPanes) return {};
    const Pane& p = panes_[static_cast<std::size_t>(pane)];
    return p.ownerColours ? p.textColour : QColor(Qt::black);
}

bool CColorStatusBar::PaneOwnerColours(int pane) const {
    return pane >= 0 && pane < kPanes && panes_[static_cast<std::size_t>(pane)].ownerColours;
}

QColor CColorStatusBar::FaceColour() const {
    return palette().color(QPalette::Button);
}

void CColorStatusBar::Repaint(Pane& p) {
    QPalette pal = p.label->palette();
    pal.setColor(QPalette::Window, p.ownerColours ? p.background : FaceColour());
    pal.setColor(QPalette::WindowText, p.ownerColours ? p.textColour : QColor(Qt::black));
    p.label->setPalette(pal);
}

}  // namespace halvo

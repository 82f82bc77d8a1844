#pragma once
// The colour status bar: a message area for the status line, then eight indicator panes. Each
// pane has a text, a background, a text colour, and a flag that says the owner set the colours
// (else it shows the dialog face with black text). The bar only paints; what a pane says and
// which colour it has is worked out by the housekeeping logic.

#include <QColor>
#include <QStatusBar>
#include <QString>
#include <array>

class QLabel;

namespace halvo {

class CColorStatusBar : public QStatusBar {
  public:
    static constexpr int kPanes = 8;

    explicit CColorStatusBar(QWidget* parent = nullptr);

    void SetMessage(const QString& text);
    QString Message() const;
    // The status line's text height in pixels and the lines it may wrap onto; 0 lines hides
    // it. Large on purpose: it is read from across a wheelhouse.
    void SetMessageStyle(int pixelSize, int lines);
    int MessagePixelSize() const;
    int MessageLines() const { return lines_; }

    // Panes out of 0..7 are ignored. An empty pane is hidden.
    void SetPaneText(int pane, const QString& text);
    void SetPaneColours(int pane, const QColor& background, const QColor& text);
    // Back to the dialog face and black.
    void ClearPaneColours(int pane);

    QString PaneText(int pane) const;
    QColor PaneBackground(int pane) const;
    QColor PaneTextColour(int pane) const;
    bool PaneOwnerColours(int pane) const;

    QColor FaceColour() const;

  private:
    struct Pane {
        QLabel* label = nullptr;
        QString text;
        QColor background;
        QColor textColour;
        bool ownerColours = false;
    };
    void Repaint(Pane& pane);

    QLabel* message_ = nullptr;
    int lines_ = -1;
    std::array<Pane, kPanes> panes_{};
};

}  // namespace halvo

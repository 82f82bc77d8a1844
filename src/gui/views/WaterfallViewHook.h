#pragma once
// Where an extension joins a waterfall view: a left click it may consume, a text it adds to the
// cursor readout, and its turn after each column is drawn. No extension uses it yet; a view
// without one behaves exactly as if every call declined.

#include <string>

class QWidget;

namespace halvo {

class WaterfallViewHook {
  public:
    virtual ~WaterfallViewHook() = default;
    // True when it consumed the click.
    virtual bool LeftClick(int age, int sample, QWidget* window, int display) {
        (void)age, (void)sample, (void)window, (void)display;
        return false;
    }
    // Appended to the readout; empty adds nothing.
    virtual std::string CursorText(int age, QWidget* view, int display) {
        (void)age, (void)view, (void)display;
        return {};
    }
    // After column x (client coordinates) was drawn from the line of this age.
    virtual void DrawColumn(int age, int firstSample, int x, int imageTop, int imageBottom,
                            int display) {
        (void)age, (void)firstSample, (void)x, (void)imageTop, (void)imageBottom, (void)display;
    }
};

}  // namespace halvo

#pragma once
// The application's key watch: a key press of Enter or Return anywhere raises the Enter flag
// and then goes on as usual. A field's Enter notification takes the flag to tell Enter from a
// mere loss of focus.

#include <QObject>

namespace halvo {

class SystemCoordinator;

class EnterKeyFilter : public QObject {
  public:
    EnterKeyFilter(SystemCoordinator& coordinator, QObject* parent = nullptr)
        : QObject(parent), coordinator_(coordinator) {}

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    SystemCoordinator& coordinator_;
};

}  // namespace halvo

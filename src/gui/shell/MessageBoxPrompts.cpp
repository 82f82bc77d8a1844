#include "gui/shell/MessageBoxPrompts.h"

#include <QMessageBox>
#include <QString>

namespace halvo {
namespace {
QString Q(std::string_view s) {
    return QString::fromUtf8(s.data(), static_cast<int>(s.size()));
}
}  // namespace

void MessageBoxPrompts::Notify(std::string_view title, std::string_view text) {
    QMessageBox::information(parent_.data(), Q(title), Q(text));
}

bool MessageBoxPrompts::AskYesNo(std::string_view title, std::string_view text) {
    return QMessageBox::question(parent_.data(), Q(title), Q(text),
                                 QMessageBox::Yes | QMessageBox::No,
                                 QMessageBox::No) == QMessageBox::Yes;
}

}  // namespace halvo

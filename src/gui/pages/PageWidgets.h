#pragma once
// Small widgets the settings pages share: a right-aligned number field sized for its digits, and
// the greyed unit that stands beside it.

#include <QLabel>
#include <QLineEdit>
#include <QPalette>
#include <QString>

namespace halvo {

inline QLineEdit* NumberEdit(QWidget* parent, int chars) {
    auto* e = new QLineEdit(parent);
    e->setMaximumWidth(e->fontMetrics().horizontalAdvance(QString(chars, '0')) + 16);
    e->setAlignment(Qt::AlignRight);
    return e;
}

inline QLabel* Unit(const QString& text, QWidget* parent) {
    auto* l = new QLabel(text, parent);
    l->setForegroundRole(QPalette::PlaceholderText);
    return l;
}

}  // namespace halvo

#pragma once

#include "support/PaintedSymbols.h"

#include <QAbstractButton>

#include <gtest/gtest.h>

namespace tavrine {

/// The one that says or is called so; null when there is none.
inline QAbstractButton *button(const QWidget &view, const char *name) {
    for (auto *each : view.findChildren<QAbstractButton *>())
        if (each->text() == QString::fromUtf8(name) || each->accessibleName() == QString::fromUtf8(name))
            return each;
    return nullptr;
}

/// What a view paints, word for word.
inline QStringList wordsOn(QWidget &view) {
    test::WordsDevice device(view.size());
    view.render(&device, {}, {}, QWidget::DrawChildren);
    return device.words();
}

inline void expectNames(const QWidget &view) {
    for (const auto *each : view.findChildren<QAbstractButton *>())
        EXPECT_FALSE(each->text().isEmpty() && each->accessibleName().isEmpty());
}

} // namespace tavrine

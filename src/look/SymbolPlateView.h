#pragma once

#include "look/Look.h"
#include "look/Paint.h"

#include <QPainter>
#include <QWidget>

#include <cmath>

namespace tavrine {

/// What a small panel is about, at the left of its title.
class SymbolPlate : public QWidget {
public:
    explicit SymbolPlate(const QString &symbol, QWidget *parent = nullptr) : QWidget(parent), m_symbol(symbol) {
        setFixedSize(28, 28);
    }

protected:
    void paintEvent(QPaintEvent *) override {
        QPainter painter(this);
        look::preparePainter(painter);
        const look::Theme &theme = look::themeOf(this);
        look::paintSymbolPlate(painter, rect(), m_symbol, theme.accent, theme.onAccent);
    }

private:
    QString m_symbol;
};

/// A key that does what stands beside it.
class KeyCap : public QWidget {
public:
    explicit KeyCap(const QString &key, QWidget *parent = nullptr) : QWidget(parent), m_key(key) {
        setFixedSize(int(std::ceil(look::keyCapWidth(key))), 24);
    }

protected:
    void paintEvent(QPaintEvent *) override {
        QPainter painter(this);
        look::preparePainter(painter);
        look::paintKeyCap(painter, rect(), m_key, look::themeOf(this));
    }

private:
    QString m_key;
};

} // namespace tavrine

#pragma once

#include "ports/MoviePlayer.h"

#include <QColor>
#include <QCoreApplication>
#include <QFile>
#include <QImage>
#include <QString>

#include <cstdlib>

#include <sys/types.h>

namespace tavrine::test {

/// What is to be seen of a movie, 160 by 90 pixels at first.
class MovieScreen {
public:
    static constexpr QSize size{160, 90};

    /// From now on it is this player's; nothing is seen of an earlier one. Outlives it.
    void show(MoviePlayer &player, QSize pixels = size) {
        m_picture = {};
        m_count = 0;
        player.setPictureSize(pixels);
        player.setOnPicture([this](const QImage &picture) {
            m_picture = picture;
            ++m_count;
        });
    }

    [[nodiscard]] const QImage &picture() const { return m_picture; }
    [[nodiscard]] int count() const { return m_count; } ///< of pictures until now
    [[nodiscard]] bool isUntouched() const { return m_picture.isNull(); }
    [[nodiscard]] QColor color(QPoint place = {size.width() / 2, size.height() / 2}) const {
        return m_picture.rect().contains(place) ? m_picture.pixelColor(place) : QColor();
    }

private:
    QImage m_picture;
    int m_count = 0;
};

/// The processes of players that this program runs.
[[nodiscard]] inline QList<pid_t> playerProcesses() {
    const QString parent = QString::number(QCoreApplication::applicationPid());
    QFile file(QStringLiteral("/proc/%1/task/%1/children").arg(parent));
    QList<pid_t> found;
    if (!file.open(QIODevice::ReadOnly))
        return found;
    for (const QString &child : QString::fromUtf8(file.readAll()).split(u' ', Qt::SkipEmptyParts)) {
        QFile name(QStringLiteral("/proc/%1/comm").arg(child.trimmed()));
        if (name.open(QIODevice::ReadOnly) && name.readAll().startsWith("TavrinePlayer"))
            found.append(child.toInt());
    }
    return found;
}

/// Of the same kind, as far as an encoder keeps it.
[[nodiscard]] inline bool isLike(const QColor &color, const QColor &other) {
    constexpr int tolerance = 40;
    return color.isValid() && std::abs(color.red() - other.red()) < tolerance &&
           std::abs(color.green() - other.green()) < tolerance && std::abs(color.blue() - other.blue()) < tolerance;
}

} // namespace tavrine::test

#pragma once

#include "base/Time.h"
#include "ports/FileIcons.h"

#include <QColor>
#include <QHash>
#include <QStringList>

#include <algorithm>
#include <utility>

namespace tavrine {

/// A plain square for each kind of file, in a colour of its own, and small pictures of those files that a test names.
class FakeFileIcons final : public FileIcons {
public:
    explicit FakeFileIcons(Time &time) : m_time(time) {}

    [[nodiscard]] QImage iconForFile(const QString &path, int pixels) override {
        m_asked.append(path);
        const QString kind = path.section(u'.', -1);
        QImage &icon = m_icons[{kind, pixels}];
        if (icon.isNull()) {
            icon = QImage(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
            icon.fill(QColor::fromHsv(static_cast<int>(qHash(kind) % 360), 160, 220));
        }
        return icon;
    }
    [[nodiscard]] Token thumbnail(const QString &path, int pixels,
                                  std::function<void(const QImage &)> handler) override {
        auto token = std::make_shared<int>();
        if (const auto picture = m_pictures.constFind(path); picture != m_pictures.constEnd())
            m_time.async(
                [token = std::weak_ptr(token), handler = std::move(handler), small = fitting(*picture, pixels)] {
                    if (!token.expired())
                        handler(small);
                });
        return token;
    }

    /// What is in a file.
    void setPicture(const QString &path, const QImage &picture) { m_pictures.insert(path, picture); }
    /// The files whose icon was asked for.
    [[nodiscard]] const QStringList &asked() const { return m_asked; }

private:
    static QImage fitting(const QImage &picture, int pixels) {
        return std::max(picture.width(), picture.height()) > pixels
                   ? picture.scaled(pixels, pixels, Qt::KeepAspectRatio, Qt::SmoothTransformation)
                   : picture;
    }

    Time &m_time;
    QHash<std::pair<QString, int>, QImage> m_icons; ///< by kind and size
    QHash<QString, QImage> m_pictures;
    QStringList m_asked;
};

} // namespace tavrine

#pragma once

#include <QMap>
#include <QString>

namespace tavrine {

/// What the portal gave so that a person who has once shown a screen is not asked again: a token for each screen, by
/// its name, good for one time. In a private file among the program's own data. One thread at a time.
class CastTokens {
public:
    explicit CastTokens(QString path) : m_path(std::move(path)) {}
    /// Of this person.
    [[nodiscard]] static QString usualPath();

    /// Empty for none.
    [[nodiscard]] QString of(const QString &screen) const { return read().value(screen); }
    /// An empty one is forgotten. What cannot be written is asked for again.
    void set(const QString &screen, const QString &token) const;

private:
    [[nodiscard]] QMap<QString, QString> read() const;

    QString m_path;
};

} // namespace tavrine

#pragma once

#include "ports/Appearance.h"

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QVariantMap>

class QDBusVariant;

namespace tavrine {

/// Appearance from the desktop portal's settings. A portal that is not running is not started; one that starts later is
/// heard.
class PortalAppearance final : public QObject, public Appearance {
    Q_OBJECT
public:
    explicit PortalAppearance(const QDBusConnection &bus, QObject *parent = nullptr);

    [[nodiscard]] DesktopAppearance settings() const override { return m_told.settings(); }
    /// True once a portal has told its settings, until it goes.
    [[nodiscard]] bool hasAnswered() const { return m_hasAnswered; }
    void setOnChange(std::function<void()> onChange) override { m_onChange = std::move(onChange); }

private Q_SLOTS:
    void settingChanged(const QString &group, const QString &key, const QDBusVariant &value);

private:
    /// Three settings ask for less motion. A portal may tell several of them, and each counts by itself: one that says
    /// nothing takes back what another says in none of them.
    struct Told {
        DesktopAppearance colours;
        bool isMotionReduced = false;
        bool isStillInGnome = false;
        bool isStillInPlasma = false;

        void take(const QString &group, const QString &key, const QVariant &value);
        [[nodiscard]] DesktopAppearance settings() const;
    };

    void read();
    void take(const Told &told, bool hasAnswered);

    QDBusConnection m_bus;
    QDBusServiceWatcher m_watcher;
    Told m_told;
    std::function<void()> m_onChange;
    bool m_hasAnswered = false;
    quint64 m_reading = 0; // the number of the last question: answers to older ones are dropped
};

} // namespace tavrine

#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QObject>
#include <QVariantMap>

#include <functional>
#include <optional>

namespace tavrine {

/// One question to a desktop portal, which may show the person a dialog and so answers when it likes. Main thread; with
/// the object goes the interest in the answer.
class PortalRequest final : public QObject {
    Q_OBJECT

public:
    /// None when the portal does not know the question, fails, or the person says no.
    using Answered = std::function<void(const std::optional<QVariantMap> &results)>;

    static const QString service;
    static const QString path;

    /// A name for a handle, another each time.
    [[nodiscard]] static QString newToken();
    /// Of `service`'s object, without its arguments.
    [[nodiscard]] static QDBusMessage message(const QString &interface, const QString &method);

    /// `arguments` go before the options, to which the request adds its handle.
    PortalRequest(const QDBusConnection &bus, QDBusMessage message, QVariantMap options, Answered answered,
                  QObject *parent);

private Q_SLOTS:
    void responded(uint response, const QVariantMap &results);

private:
    void listenAt(const QString &handle);

    QDBusConnection m_bus;
    Answered m_answered;
};

} // namespace tavrine

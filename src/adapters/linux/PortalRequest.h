#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QObject>
#include <QVariantMap>

#include <functional>

namespace tavrine {

struct PortalAnswer {
    enum class Outcome {
        given,
        refused, ///< by the person
        failed,  ///< the portal does not know the question, or something went wrong
    };
    Outcome outcome = Outcome::failed;
    QVariantMap results; ///< of what was given
};

/// One question to a desktop portal, which may show the person a dialog and so answers when it likes. Lives on a thread
/// with an event loop; with the object goes the interest in the answer, and a dialog that still asks for it.
class PortalRequest final : public QObject {
    Q_OBJECT

public:
    using Answered = std::function<void(const PortalAnswer &answer)>;

    static const QString service;
    static const QString path;
    static const QString sessionInterface;

    /// A name for a handle, another each time.
    [[nodiscard]] static QString newToken();
    /// Of `service`'s object, without its arguments.
    [[nodiscard]] static QDBusMessage message(const QString &interface, const QString &method);
    /// Tells the portal, before anything else is asked over the connection, which program this is: one that runs in no
    /// sandbox may say so. A portal that does not know the question refuses it.
    static void introduce(const QDBusConnection &bus);

    /// `arguments` go before the options, to which the request adds its handle.
    PortalRequest(const QDBusConnection &bus, QDBusMessage message, QVariantMap options, Answered answered,
                  QObject *parent);
    ~PortalRequest() override;

private Q_SLOTS:
    void responded(uint response, const QVariantMap &results);

private:
    void listenAt(const QString &handle);

    QDBusConnection m_bus;
    Answered m_answered; ///< none once it was told
    QString m_handle;    ///< of the request, at the portal
};

} // namespace tavrine

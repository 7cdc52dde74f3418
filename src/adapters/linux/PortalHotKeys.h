#pragma once

#include "ports/HotKeys.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QVariantMap>

#include <map>
#include <memory>
#include <optional>
#include <set>

namespace tavrine {

/// Hot keys by the GlobalShortcuts portal, whose desktop may ask the person and give other keys than the ones wished
/// for.
///
/// Lives on the main thread; nothing waits for the portal or the person. All that is registered within a turn is bound
/// in one session, as the portal has it; what changes later is bound in a new one, and what is as before is not asked
/// for again. That a portal is there proves nothing: a hot key is held once the answer to the binding names it.
class PortalHotKeys final : public QObject, public HotKeys {
    Q_OBJECT

public:
    PortalHotKeys();
    ~PortalHotKeys() override;

    void installHandler(Handler handler) override;
    void removeHandler() override;
    [[nodiscard]] std::optional<HotKeyRef> registerHotKey(int keyCode, quint32 modifiers, HotKeyId id) override;
    void unregisterHotKey(HotKeyRef ref) override;
    [[nodiscard]] HotKeyTraits traits() const override;
    void setTitle(HotKeyId id, const QString &title) override;
    void setOnHeld(std::function<void(HotKeyRef, bool)> handler) override;

    /// Whether the portal has answered for all that is registered.
    [[nodiscard]] bool isSettled() const { return !m_isBindDue && !m_isBinding; }

private Q_SLOTS:
    void activated(const QDBusObjectPath &session, const QString &shortcut, qulonglong timestamp,
                   const QVariantMap &options);
    void closed(const QVariantMap &details, const QDBusMessage &news);

private:
    /// A shortcut as the portal is told it.
    struct Shortcut {
        QString trigger; ///< the wished keys
        QString title;
        bool operator==(const Shortcut &) const = default;
    };
    using Shortcuts = std::map<quint32, Shortcut>; ///< by the numbers of the hot keys
    struct Wish {
        quint32 id;
        QString trigger;
    };

    void onBusOpen(const QDBusConnection &bus);
    void bindSoon();
    void bind();
    void createSession(const Shortcuts &wanted);
    void bindShortcuts(const Shortcuts &wanted);
    void bound(const QVariantMap &results);
    void closeSession();
    void loseSession();
    void settleAll(bool isAnswered);
    [[nodiscard]] Shortcuts wanted() const;

    Handler m_handler;
    std::function<void(HotKeyRef, bool)> m_onHeld;
    std::map<HotKeyRef, Wish> m_wishes;
    std::map<quint32, QString> m_titles;
    std::optional<QDBusConnection> m_bus;
    std::unique_ptr<QDBusServiceWatcher> m_watcher;
    std::unique_ptr<QObject> m_questions; ///< of the present session
    QString m_session;                    ///< its path; empty for none
    Shortcuts m_asked;                    ///< for in the present session
    std::set<quint32> m_held;             ///< what it answered
    HotKeyRef m_lastRef = 0;
    bool m_isBindDue = false;
    bool m_isBinding = false;
    bool m_hasAnswered = false;
};

} // namespace tavrine

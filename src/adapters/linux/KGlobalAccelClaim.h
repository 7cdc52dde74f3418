#pragma once

#include <QDBusArgument>
#include <QDBusConnection>
#include <QList>
#include <QObject>
#include <QStringList>

#include <functional>
#include <optional>

namespace tavrine {

/// Keys as Plasma's service has them: one combination, or up to four that follow one another.
struct KeySequence {
    QList<int> keys;
};

QDBusArgument &operator<<(QDBusArgument &argument, const KeySequence &sequence);
const QDBusArgument &operator>>(const QDBusArgument &argument, KeySequence &sequence);

/// One hot key on its way to Plasma's service. Main thread; owned by who registered it. As long as it lives the key is
/// wanted, and with it the key goes.
class KGlobalAccelClaim final : public QObject {
    Q_OBJECT

public:
    static const QString service;
    static const QString path;
    static const QString interface;

    struct Wish {
        QStringList action; ///< component, action, and what the settings show for each
        int key = 0;        ///< as the toolkit numbers keys, with its modifiers
    };
    struct Answers {
        std::function<bool(const QString &action)> isWanted; ///< by a registration of this program that lives
        std::function<void(bool isHeld)> settled;
    };

    KGlobalAccelClaim(Wish wish, Answers answers);
    ~KGlobalAccelClaim() override;

    void ask(const QDBusConnection &bus);
    /// The service went: what it had answered holds no more.
    void forget();

    [[nodiscard]] const QString &action() const { return m_wish.action.at(1); }
    [[nodiscard]] int key() const { return m_wish.key; }
    [[nodiscard]] bool isSettled() const { return m_isSettled; }

private:
    void setShortcut(bool isPersonsChoiceKept);
    void onShortcut(const QList<KeySequence> &given);
    void lookWhoHasIt();
    void onHolder(const QStringList &holder);
    void settle(bool isHeld);
    void send(const char *method, const QVariantList &arguments) const;
    void call(const char *method, const QVariantList &arguments, std::function<void(const QVariant &answer)> answered);

    const Wish m_wish;
    const Answers m_answers;
    std::optional<QDBusConnection> m_bus;
    QObject *m_question = nullptr; ///< holds the answers to the present round of questions
    bool m_wasRetried = false;
    bool m_isSettled = false;
};

} // namespace tavrine

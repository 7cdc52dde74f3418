#pragma once

#include "adapters/cast/CastSource.h"
#include "adapters/linux/CastTokens.h"
#include "adapters/linux/PortalRequest.h"
#include "adapters/linux/StreamBus.h"

#include <atomic>

namespace tavrine {

/// A screen as the toolkit tells it.
struct PortalScreen {
    QString name;
    QRect place;         ///< of the compositor's plane, in points
    bool isOnly = false; ///< there is no other
};

/// A screen that the person shows by the ScreenCast portal, which asks for it: once, where it gives a token for the
/// next time. A token that it does not take, or that is for another screen, leads to one more question; one that nobody
/// answers to none. Over a connection of its own to the session bus: the cast, and a question that stands, end with
/// that.
class PortalCast final : public CastSource {
public:
    struct Patience {
        StreamBus::Wait answer = std::chrono::seconds(25); ///< the first question may start the portal
        StreamBus::Wait choice = std::chrono::minutes(2);  ///< of the person
    };

    PortalCast(PortalScreen screen, CastTokens tokens, Patience patience)
        : m_screen(std::move(screen)), m_tokens(std::move(tokens)), m_patience(patience) {}
    ~PortalCast() override;

    [[nodiscard]] std::variant<QString, Cast> open(const StreamPlan &plan,
                                                   const ScreenStreamConfiguration &configuration,
                                                   const ThreadedScreenStream::Session &session) override;
    [[nodiscard]] int descriptor() const override;
    [[nodiscard]] std::optional<QString> lost() override;

private:
    enum class Result { shown, refused, unanswered, failed };
    class SessionEnd;

    /// None where it was given up.
    [[nodiscard]] std::optional<PortalAnswer> ask(const QString &method, const QVariantList &arguments,
                                                  const QVariantMap &options, StreamBus::Wait longest);
    [[nodiscard]] uint property(const char *name);
    [[nodiscard]] Result begin(const StreamPlan &plan, const QString &token);
    void closeSession();
    [[nodiscard]] bool find(const QVariant &streams);
    [[nodiscard]] Descriptor remote();

    const PortalScreen m_screen;
    const CastTokens m_tokens;
    const Patience m_patience;
    std::optional<StreamBus> m_bus;
    QString m_session;
    SessionEnd *m_end = nullptr;
    std::uint32_t m_node = 0;
};

} // namespace tavrine

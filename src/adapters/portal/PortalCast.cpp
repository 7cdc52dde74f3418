#include "adapters/portal/PortalCast.h"

#include "base/Waker.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusUnixFileDescriptor>
#include <QDBusVariant>

#include <algorithm>
#include <cmath>

#include <fcntl.h>

namespace tavrine {
namespace {

const auto interface = QStringLiteral("org.freedesktop.portal.ScreenCast");
constexpr uint monitor = 1;
constexpr uint pointerHidden = 1;
constexpr uint pointerEmbedded = 2;
constexpr uint untilRevoked = 2;
constexpr int mostStreams = 64; // in an answer; we ask for one

struct Stream {
    std::uint32_t node = 0;
    std::optional<QPoint> place;
};

std::vector<Stream> streamsIn(const QVariant &answer) {
    std::vector<Stream> streams;
    if (answer.userType() != qMetaTypeId<QDBusArgument>())
        return streams;
    const auto argument = answer.value<QDBusArgument>();
    if (argument.currentSignature() != QLatin1String("a(ua{sv})"))
        return streams;
    argument.beginArray();
    while (!argument.atEnd() && streams.size() < mostStreams) {
        Stream stream;
        QVariantMap properties;
        argument.beginStructure();
        argument >> stream.node >> properties;
        argument.endStructure();
        const QVariant place = properties.value(QStringLiteral("position"));
        if (place.userType() == qMetaTypeId<QDBusArgument>()) {
            const auto numbers = place.value<QDBusArgument>();
            if (numbers.currentSignature() == QLatin1String("(ii)")) {
                int x = 0;
                int y = 0;
                numbers.beginStructure();
                numbers >> x >> y;
                numbers.endStructure();
                stream.place = QPoint(x, y);
            }
        }
        streams.push_back(stream);
    }
    argument.endArray();
    return streams;
}

} // namespace

/// Hears that the desktop ends the session. Lives on the main thread, as the stream's runs no events while it gives
/// pictures.
class PortalCast::SessionEnd final : public QObject {
    Q_OBJECT

public:
    [[nodiscard]] bool hasCome() const { return m_hasCome; }
    [[nodiscard]] int descriptor() const { return m_waker.descriptor(); }

public Q_SLOTS:
    void closed(const QVariantMap & /*details*/) {
        m_hasCome = true;
        m_waker.wake();
    }

private:
    std::atomic<bool> m_hasCome = false;
    const Waker m_waker;
};

PortalCast::~PortalCast() {
    closeSession();
}

int PortalCast::descriptor() const {
    return m_end ? m_end->descriptor() : -1; // readable for good once the end has come
}

std::optional<QString> PortalCast::lost() {
    return m_end && m_end->hasCome() ? std::optional(QStringLiteral("The desktop has ended its pictures."))
                                     : std::nullopt;
}

std::variant<QString, Cast> PortalCast::open(const StreamPlan &plan, const ScreenStreamConfiguration &configuration,
                                             const ThreadedScreenStream::Session &session) {
    m_bus.emplace(session);
    if (!m_bus->isOpen())
        return QStringLiteral("There is no session bus to ask for the screen.");
    PortalRequest::introduce(m_bus->connection());
    const QString token = m_tokens.of(m_screen.name);
    Result result = begin(plan, token);
    if (result == Result::failed && !token.isEmpty() && !session.isOver()) {
        m_tokens.set(m_screen.name, QString());
        result = begin(plan, QString());
    }
    if (result == Result::refused)
        return QStringLiteral("The person does not show the screen.");
    Descriptor connection = result == Result::shown ? remote() : Descriptor();
    if (!connection.isOpen())
        return QStringLiteral("The desktop does not show this screen.");
    const auto areaIn = [configuration, points = m_screen.place.size(), tokens = m_tokens,
                         name = m_screen.name](QSize pictures) -> std::optional<QRect> {
        const double scale = double(pictures.width()) / std::max(points.width(), 1);
        const auto differ = [scale](double inPoints, int pixels) { return std::abs(inPoints * scale - pixels); };
        // Each side in points is a rounded one. Recordings have even sides.
        if (std::abs(qint64{pictures.width()} * points.height() - qint64{pictures.height()} * points.width()) >
                pictures.width() + pictures.height() ||
            differ(configuration.sourceRect.width(), configuration.width) > 2 ||
            differ(configuration.sourceRect.height(), configuration.height) > 2) {
            tokens.set(name, QString()); // of another screen: the next recording shall ask again
            return std::nullopt;
        }
        return pixelsOf(configuration, {}, pictures, scale);
    };
    return Cast{.node = m_node, .areaIn = areaIn, .remote = std::move(connection)};
}

PortalCast::Result PortalCast::begin(const StreamPlan &plan, const QString &token) {
    closeSession();
    const auto made = ask(QStringLiteral("CreateSession"), {},
                          {{QStringLiteral("session_handle_token"), PortalRequest::newToken()}}, m_patience.answer);
    if (!made)
        return Result::unanswered;
    m_session = made->results.value(QStringLiteral("session_handle")).toString();
    if (m_session.isEmpty())
        return Result::failed;
    m_end = new SessionEnd;
    m_end->moveToThread(QCoreApplication::instance()->thread());
    // Of any sender, else the toolkit asks who has the name, and waits.
    m_bus->connection().connect(QString(), m_session, PortalRequest::sessionInterface, QStringLiteral("Closed"), m_end,
                                SLOT(closed(QVariantMap)));

    const auto path = QVariant::fromValue(QDBusObjectPath(m_session));
    QVariantMap wanted{{QStringLiteral("types"), monitor},
                       {QStringLiteral("multiple"), false},
                       {QStringLiteral("persist_mode"), untilRevoked}};
    const uint pointer = plan.showsPointer ? pointerEmbedded : pointerHidden;
    if (property("AvailableCursorModes") & pointer) // one that it does not have is an error
        wanted[QStringLiteral("cursor_mode")] = pointer;
    if (!token.isEmpty())
        wanted[QStringLiteral("restore_token")] = token;
    const auto selected = ask(QStringLiteral("SelectSources"), {path}, wanted, m_patience.answer);
    if (!selected)
        return Result::unanswered;
    if (selected->outcome != PortalAnswer::Outcome::given)
        return Result::failed;
    const auto started = ask(QStringLiteral("Start"), {path, QString()}, {}, m_patience.choice);
    if (!started)
        return Result::unanswered;
    if (started->outcome == PortalAnswer::Outcome::refused)
        return Result::refused;
    if (started->outcome != PortalAnswer::Outcome::given || !find(started->results.value(QStringLiteral("streams"))))
        return Result::failed;
    m_tokens.set(m_screen.name, started->results.value(QStringLiteral("restore_token")).toString());
    return Result::shown;
}

/// The stream of the screen, if that is among them.
bool PortalCast::find(const QVariant &streams) {
    const auto all = streamsIn(streams);
    const auto found = std::ranges::find_if(all, [this](const Stream &each) {
        return m_screen.isOnly || !each.place || each.place == m_screen.place.topLeft();
    });
    if (found == all.end())
        return false;
    m_node = found->node;
    return true;
}

std::optional<PortalAnswer> PortalCast::ask(const QString &method, const QVariantList &arguments,
                                            const QVariantMap &options, StreamBus::Wait longest) {
    std::optional<PortalAnswer> answer;
    QDBusMessage question = PortalRequest::message(interface, method);
    question.setArguments(arguments);
    const PortalRequest request(
        m_bus->connection(), question, options, [&answer](const PortalAnswer &given) { answer = given; }, nullptr);
    const auto isOver = [&] { return answer || (m_end && m_end->hasCome()); };
    if (m_bus->waitUntil(isOver, longest, m_end ? m_end->descriptor() : -1) && !answer)
        return PortalAnswer(); // the desktop has ended the session
    return answer;
}

uint PortalCast::property(const char *name) {
    QDBusMessage question =
        PortalRequest::message(QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    question << interface << QLatin1String(name);
    const auto values = m_bus->ask(question, m_patience.answer).arguments();
    return values.value(0).value<QDBusVariant>().variant().toUInt();
}

Descriptor PortalCast::remote() {
    QDBusMessage question = PortalRequest::message(interface, QStringLiteral("OpenPipeWireRemote"));
    question << QVariant::fromValue(QDBusObjectPath(m_session)) << QVariantMap();
    const auto answer = m_bus->ask(question, m_patience.answer).arguments().value(0).value<QDBusUnixFileDescriptor>();
    return answer.isValid() ? Descriptor(::fcntl(answer.fileDescriptor(), F_DUPFD_CLOEXEC, 0)) : Descriptor();
}

void PortalCast::closeSession() {
    if (m_end)
        m_end->deleteLater();
    m_end = nullptr;
    const QString session = std::exchange(m_session, QString());
    if (session.isEmpty())
        return;
    auto message = QDBusMessage::createMethodCall(PortalRequest::service, session, PortalRequest::sessionInterface,
                                                  QStringLiteral("Close"));
    message.setAutoStartService(false);
    m_bus->connection().send(message);
}

} // namespace tavrine

#include "PortalCast.moc"

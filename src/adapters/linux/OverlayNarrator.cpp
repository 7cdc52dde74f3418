#include "adapters/linux/OverlayNarrator.h"

#include "adapters/linux/BusValues.h"
#include "adapters/linux/OverlayTree.h"
#include "adapters/linux/ScreenReaderBus.h"

#include <QDBusPendingCallWatcher>

namespace tavrine {

/// What screen readers find, and the bus that they find it on.
struct OverlayNarrator::Stage {
    explicit Stage(const QDBusConnection &onBus) : bus(onBus), tree(onBus) {}

    /// As every toolkit does: the registry is told of the root, and gives the desktop that it belongs to.
    void enter() {
        bus.registerVirtualObject(QLatin1String(OverlayTree::folder), &tree, QDBusConnection::SubPath);
        auto embed = QDBusMessage::createMethodCall(QStringLiteral("org.a11y.atspi.Registry"),
                                                    QStringLiteral("/org/a11y/atspi/accessible/root"),
                                                    QStringLiteral("org.a11y.atspi.Socket"), QStringLiteral("Embed"));
        embed << QVariant::fromValue(tree.root());
        auto *const watcher = new QDBusPendingCallWatcher(bus.asyncCall(embed), &tree);
        QObject::connect(watcher, &QDBusPendingCallWatcher::finished, &tree, [this, watcher] {
            watcher->deleteLater();
            if (!watcher->isError())
                tree.enter(busValue<AccessibleReference>(watcher->reply().arguments().value(0), QLatin1String("(so)")));
        });
    }

    QDBusConnection bus;
    OverlayTree tree;
};

OverlayNarrator::OverlayNarrator(std::function<void()> onNobody) {
    const auto onBus = [this](const QDBusConnection &bus) {
        m_stage = std::make_unique<Stage>(bus);
        for (const auto &place : {m_screen, m_latest})
            if (place)
                m_stage->tree.tell(*place);
        m_stage->enter();
    };
    screenReaderBus::find(this, onBus, [this, onNobody = std::move(onNobody)] {
        QMetaObject::invokeMethod(this, onNobody, Qt::QueuedConnection);
    });
}

OverlayNarrator::~OverlayNarrator() = default;

void OverlayNarrator::tell(const NarratedPlace &place) {
    (place.kind == NarratedPlace::Kind::screen ? m_screen : m_latest) = place;
    if (m_stage)
        m_stage->tree.tell(place);
}

void OverlayNarrator::leave() {
    if (m_stage)
        m_stage->tree.leave();
}

} // namespace tavrine

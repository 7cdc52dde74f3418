#pragma once

#include "base/Program.h"

#include <QByteArray>
#include <QDBusAbstractAdaptor>
#include <QDBusArgument>
#include <QDBusObjectPath>
#include <QImage>
#include <QList>
#include <QPoint>

#include <functional>

namespace tavrine {

/// A picture as the status notifier protocol sends it: ARGB, not premultiplied, in network byte order.
struct StatusNotifierPixmap {
    int width = 0;
    int height = 0;
    QByteArray argb;
    bool operator==(const StatusNotifierPixmap &) const = default;

    [[nodiscard]] static StatusNotifierPixmap fromImage(const QImage &image);
    [[nodiscard]] QImage toImage() const;
};
using StatusNotifierPixmaps = QList<StatusNotifierPixmap>;

struct StatusNotifierToolTip {
    QString iconName;
    StatusNotifierPixmaps iconPixmap;
    QString title;
    QString description;
};

/// The item as hosts see it on the bus: org.kde.StatusNotifierItem. Its fields are what it tells; its owner changes
/// them and emits the signal that goes with each. Lives on the main thread; owned by the object that is exported.
///
/// Pictures go out as pixels, without an icon name: hosts prefer a name to the pixels, most show a broken picture when
/// their theme has no such icon (a program that runs from its build folder, an old icon cache), and what is to be
/// shown changes with every figure of the speed meter, which no theme can know.
class StatusNotifierAdaptor : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierItem")
    Q_PROPERTY(QString Category READ category)
    Q_PROPERTY(QString Id READ id)
    Q_PROPERTY(QString Title READ title)
    Q_PROPERTY(QString Status READ status)
    Q_PROPERTY(int WindowId READ windowId)
    Q_PROPERTY(QString IconThemePath READ empty)
    Q_PROPERTY(bool ItemIsMenu READ itemIsMenu)
    Q_PROPERTY(QDBusObjectPath Menu READ menu)
    Q_PROPERTY(QString IconName READ empty)
    Q_PROPERTY(tavrine::StatusNotifierPixmaps IconPixmap READ iconPixmap)
    Q_PROPERTY(QString OverlayIconName READ empty)
    Q_PROPERTY(tavrine::StatusNotifierPixmaps OverlayIconPixmap READ noPixmap)
    Q_PROPERTY(QString AttentionIconName READ empty)
    Q_PROPERTY(tavrine::StatusNotifierPixmaps AttentionIconPixmap READ noPixmap)
    Q_PROPERTY(QString AttentionMovieName READ empty)
    Q_PROPERTY(tavrine::StatusNotifierToolTip ToolTip READ toolTip)

public:
    using OnPress = std::function<void(QPoint)>;

    /// Both are called with the place that the host gives.
    StatusNotifierAdaptor(QObject *exported, OnPress onPress, OnPress onSecondaryPress);

    StatusNotifierPixmaps pixmaps;
    QString toolTipText;
    bool isActive = false;
    QDBusObjectPath menuPath{QStringLiteral("/NO_DBUSMENU")}; ///< what stands for none in this protocol

    [[nodiscard]] QString category() const { return QStringLiteral("ApplicationStatus"); }
    [[nodiscard]] QString id() const { return ownBundleIdentifier; }
    [[nodiscard]] QString title() const { return QStringLiteral("Tavrine"); }
    [[nodiscard]] QString status() const { return isActive ? QStringLiteral("Active") : QStringLiteral("Passive"); }
    [[nodiscard]] int windowId() const { return 0; }
    [[nodiscard]] QString empty() const { return {}; }
    [[nodiscard]] bool itemIsMenu() const { return false; }
    [[nodiscard]] QDBusObjectPath menu() const { return menuPath; }
    [[nodiscard]] StatusNotifierPixmaps iconPixmap() const { return pixmaps; }
    [[nodiscard]] StatusNotifierPixmaps noPixmap() const { return {}; }
    [[nodiscard]] StatusNotifierToolTip toolTip() const { return {{}, {}, toolTipText, {}}; }

public Q_SLOTS:
    void Activate(int x, int y) { m_onPress({x, y}); }
    void ContextMenu(int x, int y) { m_onPress({x, y}); }
    void SecondaryActivate(int x, int y) { m_onSecondaryPress({x, y}); }
    void Scroll(int, const QString &) {} // a wheel over an icon is mostly an accident
    void ProvideXdgActivationToken(const QString &) {}

Q_SIGNALS:
    void NewTitle();
    void NewIcon();
    void NewAttentionIcon();
    void NewOverlayIcon();
    void NewToolTip();
    void NewStatus(const QString &status);

private:
    OnPress m_onPress;
    OnPress m_onSecondaryPress;
};

QDBusArgument &operator<<(QDBusArgument &argument, const StatusNotifierPixmap &pixmap);
const QDBusArgument &operator>>(const QDBusArgument &argument, StatusNotifierPixmap &pixmap);
QDBusArgument &operator<<(QDBusArgument &argument, const StatusNotifierToolTip &toolTip);
const QDBusArgument &operator>>(const QDBusArgument &argument, StatusNotifierToolTip &toolTip);

} // namespace tavrine

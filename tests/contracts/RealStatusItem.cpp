// The status item in both kinds of tray: one of our own that speaks the D-Bus protocol, and trayer for the older one.

#include "adapters/linux/StatusNotifierItem.h"
#include "adapters/linux/TrayStatusItem.h"
#include "adapters/x11/XEmbedTrayIcon.h"
#include "contracts/StatusItemContract.h"
#include "support/Program.h"
#include "support/ProgramName.h"
#include "support/StatusNotifierTray.h"

#include <optional>

namespace tavrine::test {
namespace {

TrayStatusItem makeItem() {
    std::vector<std::unique_ptr<TrayIcon>> trays;
    trays.push_back(std::make_unique<StatusNotifierItem>());
    trays.push_back(std::make_unique<XEmbedTrayIcon>(nullptr));
    return TrayStatusItem(std::move(trays));
}

struct NotifierDesk {
    StatusItem &item() { return real; }
    void startTray() { tray.start(); }
    void endTray() { tray.end(); }
    bool isInTray() { return !tray.items().isEmpty() && !tray.properties().isEmpty(); }
    QSize sizeInTray() { return tray.pixmaps().isEmpty() ? QSize() : tray.pixmaps().constFirst().toImage().size(); }
    QString toolTipInTray() { return tray.toolTip().title; }
    QPoint click() {
        tray.call(QStringLiteral("Activate"), {640, 9});
        return {640, 9};
    }
    ProgramName bar{"waybar"}; // which is known to keep a picture's shape
    StatusNotifierTray tray;
    TrayStatusItem real = makeItem();
};

struct TrayerDesk {
    StatusItem &item() { return real; }
    void startTray() {
        tray.emplace(QStringLiteral("trayer"),
                     QStringList{QStringLiteral("--edge"), QStringLiteral("top"), QStringLiteral("--height"),
                                 QStringLiteral("24"), QStringLiteral("--widthtype"), QStringLiteral("request")});
    }
    void endTray() { tray.reset(); }
    /// The icon's window, as the server has it; 0 when it is not to be seen.
    quint32 window() {
        return outputOf(QStringLiteral("xdotool"), {QStringLiteral("search"), QStringLiteral("--onlyvisible"),
                                                    QStringLiteral("--class"), QStringLiteral("^Tavrine$")})
            .section(u'\n', 0, 0)
            .toUInt();
    }
    QRect place() {
        const QString text = outputOf(QStringLiteral("xwininfo"), {QStringLiteral("-id"), QString::number(window())});
        const auto number = [&text](const QString &label) {
            return text.section(label, 1).section(u'\n', 0, 0).trimmed().toInt();
        };
        return {number(QStringLiteral("Absolute upper-left X:")), number(QStringLiteral("Absolute upper-left Y:")),
                number(QStringLiteral("Width:")), number(QStringLiteral("Height:"))};
    }
    bool isInTray() { return window() != 0; }
    QSize sizeInTray() { return place().size(); }
    QString toolTipInTray() {
        return outputOf(QStringLiteral("xprop"),
                        {QStringLiteral("-id"), QString::number(window()), QStringLiteral("-f"),
                         QStringLiteral("_NET_WM_NAME"), QStringLiteral("8u"), QStringLiteral("_NET_WM_NAME")})
            .section(u'"', 1, 1);
    }
    QPoint click() {
        const QPoint point = place().center();
        static_cast<void>(outputOf(QStringLiteral("xdotool"),
                                   {QStringLiteral("mousemove"), QString::number(point.x()), QString::number(point.y()),
                                    QStringLiteral("click"), QStringLiteral("1")}));
        return point;
    }
    std::optional<Program> tray;
    TrayStatusItem real = makeItem();
};

} // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(StatusNotifier, StatusItemContract, NotifierDesk);
INSTANTIATE_TYPED_TEST_SUITE_P(XEmbed, StatusItemContract, TrayerDesk);

} // namespace tavrine::test

#include "desktop/GnomeFixture.h"

#include <QColor>
#include <QDBusReply>
#include <QRegularExpression>

namespace tavrine::testing {
namespace {

/// The mean of some pixels: a movie has one colour for four, and is not exact.
QColor meanAt(const QImage &picture, QPoint corner) {
    constexpr int side = 8;
    int sum[3] = {};
    for (int y = 0; y < side; ++y)
        for (int x = 0; x < side; ++x) {
            const QColor pixel = picture.pixelColor(corner + QPoint(x, y));
            sum[0] += pixel.red();
            sum[1] += pixel.green();
            sum[2] += pixel.blue();
        }
    return {sum[0] / (side * side), sum[1] / (side * side), sum[2] / (side * side)};
}

} // namespace

QImage patternIn(const QRect &area) {
    QImage picture(area.size(), QImage::Format_RGB32);
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x) {
            const int column = (area.x() + x) % 64;
            const int row = (area.y() + y) % 64;
            picture.setPixel(x, y, qRgb(4 * column, 4 * row, column + row));
        }
    return picture;
}

void expectPicturesAreLike(const QImage &drawn, const QByteArray &pixels) {
    const qsizetype each = qsizetype{3} * drawn.width() * drawn.height();
    ASSERT_GE(pixels.size(), each);
    EXPECT_EQ(pixels.size() % each, 0);
    for (qsizetype at = 0; at < pixels.size(); at += each) {
        const QImage seen(reinterpret_cast<const uchar *>(pixels.constData()) + at, drawn.width(), drawn.height(),
                          drawn.width() * 3, QImage::Format_RGB888);
        int wrong = 0;
        for (int y = 8; y < drawn.height() - 16; y += 24)
            for (int x = 8; x < drawn.width() - 16; x += 24) {
                const QColor one = meanAt(seen, {x, y});
                const QColor other = meanAt(drawn, {x, y});
                const int difference = std::abs(one.red() - other.red()) + std::abs(one.green() - other.green()) +
                                       std::abs(one.blue() - other.blue());
                wrong += difference > 48 ? 1 : 0;
            }
        EXPECT_LE(wrong, 6) << "at " << at / each;
    }
}

int runProgram(const QString &command, const QStringList &arguments, const QByteArray &input) {
    QProcess process;
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(command, arguments);
    process.write(input);
    process.closeWriteChannel();
    return process.waitForFinished(10000) ? process.exitCode() : -1;
}

void copyOnWayland(const QByteArray &text) {
    ASSERT_EQ(runProgram(QStringLiteral("wl-copy"), {}, text), 0);
}

QDBusMessage askExtension(const char *method, const QVariantList &arguments) {
    auto call =
        QDBusMessage::createMethodCall(QStringLiteral("org.gnome.Shell"), QStringLiteral("/com/veltrane/Tavrine/Shell"),
                                       QStringLiteral("com.veltrane.Tavrine.Shell"), QString::fromUtf8(method));
    call.setArguments(arguments);
    return QDBusConnection::sessionBus().call(call);
}

bool isRefused(const char *method, const QVariantList &arguments) {
    return askExtension(method, arguments).errorName() == QLatin1String("org.freedesktop.DBus.Error.AccessDenied");
}

bool isAttached() {
    auto ask =
        QDBusMessage::createMethodCall(QStringLiteral("org.gnome.Shell"), QStringLiteral("/com/veltrane/Tavrine/Shell"),
                                       QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    ask.setArguments({QStringLiteral("com.veltrane.Tavrine.Shell"), QStringLiteral("IsAttached")});
    const QDBusReply<QVariant> answer = QDBusConnection::sessionBus().call(ask);
    return answer.isValid() && answer.value().toBool();
}

bool isExtensionThere() {
    return isRefused("Attach");
}

bool switchExtension(bool isOn) {
    const QString list =
        isOn ? QStringLiteral("['tavrine@veltrane.com', 'tavrine-45@veltrane.com']") : QStringLiteral("[]");
    return runProgram(QStringLiteral("gsettings"), {QStringLiteral("set"), QStringLiteral("org.gnome.shell"),
                                                    QStringLiteral("enabled-extensions"), list}) == 0 &&
           waitUntil([isOn] { return isExtensionThere() == isOn; }, gnomePatience);
}

namespace {

bool isLocked() {
    const QDBusReply<bool> answer = QDBusConnection::sessionBus().call(QDBusMessage::createMethodCall(
        QStringLiteral("org.gnome.Shell.ScreenShield"), QStringLiteral("/org/gnome/ScreenSaver"),
        QStringLiteral("org.gnome.ScreenSaver"), QStringLiteral("GetActive")));
    return answer.isValid() && answer.value();
}

/// What logind says to a session.
void tellSession(const char *signal) {
    auto call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.login1"), QStringLiteral("/org/freedesktop/login1/session/c1"),
        QStringLiteral("org.freedesktop.DBus.Mock"), QStringLiteral("EmitSignal"));
    call.setArguments({QStringLiteral("org.freedesktop.login1.Session"), QString::fromUtf8(signal), QString(),
                       QVariant::fromValue(QVariantList())});
    QDBusConnection::systemBus().call(call);
}

} // namespace

bool lockScreen() {
    tellSession("Lock");
    return waitUntil([] { return isLocked() && !isExtensionThere(); }, gnomePatience);
}

bool unlockScreen(const GnomeHands &hands) {
    return waitUntil(
        [&hands] {
            hands.tap(evdev::escape);
            tellSession("Unlock");
            return waitUntil([] { return !isLocked() && isExtensionThere(); }, 8s);
        },
        40s);
}

std::unique_ptr<ForeignWindow> lineOf(const char *command, const char *platform) {
    qputenv("QT_QPA_PLATFORM", platform);
    auto window = std::make_unique<ForeignWindow>(QString::fromUtf8(command));
    qunsetenv("QT_QPA_PLATFORM");
    return window;
}

bool Gnome::openPanel() {
    return waitUntil(isAttached, gnomePatience) &&
           waitUntil(
               [this] {
                   if (!isPanelShown())
                       hands.chord({evdev::leftSuper, evdev::leftShift, evdev::v});
                   return waitUntil([this] { return isPanelActive(); }, 8s);
               },
               60s);
}

void Gnome::closePanel() {
    ASSERT_TRUE(waitUntil(
        [this] {
            hands.tap(evdev::escape);
            return waitUntil([this] { return !isPanelShown(); }, 3s);
        },
        gnomePatience));
}

void Gnome::paste(ForeignWindow &target, const char *text) {
    copyOnWayland(text);
    ASSERT_TRUE(isRecorded(text));
    ASSERT_TRUE(target.waitForFocus());
    ASSERT_TRUE(openPanel());
    // The toolkit hears of the keyboard a moment after the server does; what is pressed before is lost.
    ASSERT_TRUE(waitUntil(
        [this] {
            hands.tap(evdev::returnKey);
            return waitUntil([this] { return !isPanelShown(); }, 3s);
        },
        gnomePatience));
    EXPECT_TRUE(target.waitForText(QString::fromUtf8(text), gnomePatience)) << target.text().toStdString();
}

bool Gnome::pointAt(QPoint place) {
    hands.movePointer(place);
    return waitUntil([&] { return desktop.pointer() == place; }, 5s);
}

/// The shell gives the mouse to a window a moment after the X server shows it: a press before that is for another.
bool Gnome::dragAcross(const QRect &area) {
    if (!pointAt(area.topLeft()))
        return false;
    hands.pressButton();
    const bool isThere = pointAt(area.topLeft() + QPoint(area.width(), area.height()));
    hands.releaseButton();
    return isThere;
}

bool Gnome::freeze() {
    return waitUntil(
        [this] {
            hands.chord({evdev::leftSuper, evdev::leftShift, evdev::two});
            return waitUntil([this] { return desktop.isFrozen(); }, 8s);
        },
        30s);
}

bool Gnome::capture(const QRect &area) {
    return freeze() && dragAcross(area) && waitUntil([this] { return desktop.isShown("Screenshot"); }, gnomePatience);
}

QString Gnome::record(const QRect &area) {
    static constexpr auto overlay = "Select Area to Record";
    const auto begin = [&] {
        if (!desktop.isShown(overlay)) {
            hands.movePointer(area.topLeft()); // it opens on the screen that the pointer is on
            hands.chord({evdev::leftSuper, evdev::leftShift, evdev::six});
            if (!waitUntil([this] { return desktop.hasKeyboard(overlay); }, 8s))
                return false;
        }
        if (!dragAcross(area))
            return false;
        hands.tap(evdev::returnKey);
        return waitUntil([this] { return desktop.isShown("Recording"); }, 3s);
    };
    const auto isStopped = [this] {
        const auto bars = desktop.windowsTitled(QStringLiteral("Recording"));
        if (!bars.empty()) {
            hands.movePointer(desktop.geometry(bars.front()).bottomRight() - QPoint(30, 20));
            hands.pressButton();
            hands.releaseButton();
        }
        return waitUntil([this] { return program.output().contains(QLatin1String("stopRecording() called")); }, 3s);
    };
    const auto isRunning = [this] { return program.output().contains(QLatin1String("from first SCStream frame")); };
    QRegularExpressionMatch match;
    const auto isWritten = [&] {
        static const QRegularExpression words(QStringLiteral("finished successfully at (.*), showing preview"));
        match = words.match(program.output());
        return match.hasMatch();
    };
    const bool isDone = waitUntil(begin, gnomePatience) && waitUntil(isRunning, gnomePatience) &&
                        waitUntil(isStopped, gnomePatience) && waitUntil(isWritten, gnomePatience);
    return isDone ? match.captured(1) : QString();
}

bool Gnome::escape() {
    return waitUntil(
        [this] {
            hands.tap(evdev::escape);
            return !desktop.isFrozen();
        },
        gnomePatience);
}

} // namespace tavrine::testing

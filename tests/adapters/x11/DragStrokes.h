#pragma once

#include "adapters/x11/X11DragPasteboards.h"
#include "adapters/x11/X11EventMonitors.h"
#include "support/Eventually.h"
#include "support/TestKeyboard.h"

#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QRect>
#include <QRegularExpression>

namespace tavrine::test {

/// A foreign program with a window of five fields, each a fifth of its height: they drag a file, text and a link, and
/// hold a line of text and a slider.
class DragProgram {
public:
    enum Field { file, text, link, line, slider };

    /// Waits until its window is there.
    DragProgram(const QString &command, const QString &title) {
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start(command, {QStringLiteral("/etc/hostname")});
        QByteArray output;
        if (!eventually([&] { return (output += m_process.readAllStandardOutput()).contains("ready"); }))
            return;
        m_frame = frameOf(title);
    }
    ~DragProgram() {
        m_process.kill();
        m_process.waitForFinished();
    }
    DragProgram(const DragProgram &) = delete;
    DragProgram &operator=(const DragProgram &) = delete;

    [[nodiscard]] bool isShown() const { return m_frame.isValid(); }
    /// Drags that it says it began since the last question.
    [[nodiscard]] int takeBegun() {
        m_process.waitForReadyRead(0);
        return static_cast<int>(m_process.readAllStandardOutput().count("drag\n"));
    }
    [[nodiscard]] qint64 processId() const { return m_process.processId(); }
    [[nodiscard]] QPoint middleOf(Field field) const {
        return {m_frame.x() + m_frame.width() / 2, m_frame.y() + m_frame.height() * (2 * field + 1) / 10};
    }
    [[nodiscard]] QPoint titleBar() const { return {m_frame.x() + 60, m_frame.y() - 8}; }

    /// Of the contents of the window with that title, on the screen.
    static QRect frameOf(const QString &title) {
        QRect frame;
        static_cast<void>(eventually([&] {
            QProcess info;
            info.start(QStringLiteral("xwininfo"), {QStringLiteral("-name"), title});
            info.waitForFinished();
            const QString text = QString::fromUtf8(info.readAllStandardOutput());
            const auto number = [&](const char *name) {
                const QRegularExpression line(QLatin1String(name) + QStringLiteral(":\\s+(-?\\d+)"));
                return line.match(text).captured(1).toInt();
            };
            frame = {number("Absolute upper-left X"), number("Absolute upper-left Y"), number("Width"),
                     number("Height")};
            return frame.isValid();
        }));
        return frame;
    }

private:
    QProcess m_process;
    QRect m_frame;
};

/// Who opens for drags of files, by the same rule as the shelf: for a drag under way, or a stroke, with a file on the
/// drag pasteboard whose count is not that of a drag that is over.
class Opener {
public:
    Opener() {
        m_pasteboard = X11DragPasteboards().watch();
        m_over = m_pasteboard->changeCount();
        m_pasteboard->setOnChange([this] { m_pasteboard->isDragging() ? dragged() : complete(); });
        constexpr quint32 releases = eventMask::leftMouseUp | eventMask::rightMouseUp | eventMask::otherMouseUp;
        m_monitor =
            m_monitors.addGlobalMonitor(releases | eventMask::leftMouseDragged, [this](const InputEvent &event) {
                event.type == eventMask::leftMouseDragged ? dragged() : complete();
            });
        letPass(std::chrono::milliseconds(100)); // it has connected
    }

    struct Result {
        bool isOpened = false;
        int drags = 0;            ///< that the pasteboard counted
        double milliseconds = -1; ///< from the first motion to the opening
    };

    /// The button goes down, moves, and goes up again `steps` motions later; an opening is waited for as long as one is
    /// expected.
    Result stroke(QPoint from, QPoint to, bool isOpeningExpected, int steps = 40) {
        using std::chrono::milliseconds;
        m_hand.movePointer(from.x(), from.y());
        letPass(milliseconds(10));
        const int count = m_pasteboard->changeCount();
        m_isOpened = false;
        m_hand.press(1);
        QElapsedTimer clock;
        clock.start();
        m_openedAt = &clock;
        for (int step = 1; step <= steps; ++step) {
            m_hand.movePointer(from.x() + (to.x() - from.x()) * step / steps,
                               from.y() + (to.y() - from.y()) * step / steps);
            letPass(milliseconds(2));
        }
        if (isOpeningExpected)
            static_cast<void>(eventually([&] { return m_isOpened; }, milliseconds(1000)));
        else
            letPass(milliseconds(15));
        m_hand.release(1);
        static_cast<void>(eventually([&] { return !m_pasteboard->isDragging(); }));
        letPass(milliseconds(10));
        m_openedAt = nullptr;
        return {m_isOpened, m_pasteboard->changeCount() - count, m_milliseconds};
    }

    [[nodiscard]] DragPasteboard &pasteboard() { return *m_pasteboard; }
    [[nodiscard]] testing::TestKeyboard &hand() { return m_hand; }
    [[nodiscard]] bool isOpen() const { return m_isOpen; }

private:
    void dragged() {
        if (!m_pasteboard->holdsFileReference() || (!m_isOpen && m_pasteboard->changeCount() == m_over))
            return;
        m_active = m_pasteboard->changeCount();
        if (std::exchange(m_isOpen, true))
            return;
        m_isOpened = true;
        m_milliseconds = m_openedAt ? static_cast<double>(m_openedAt->nsecsElapsed()) / 1e6 : -1;
    }
    void complete() {
        if (m_active)
            m_over = *m_active;
        else if (!m_pasteboard->isDragging())
            m_over = m_pasteboard->changeCount();
        m_active.reset();
        m_isOpen = false;
    }

    testing::TestKeyboard m_hand;
    X11EventMonitors m_monitors;
    std::unique_ptr<EventMonitor> m_monitor;
    std::unique_ptr<DragPasteboard> m_pasteboard;
    std::optional<int> m_active;
    const QElapsedTimer *m_openedAt = nullptr;
    double m_milliseconds = -1;
    int m_over = 0;
    bool m_isOpen = false;
    bool m_isOpened = false;
};

} // namespace tavrine::test

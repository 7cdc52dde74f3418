#pragma once

#include "adapters/x11/ForeignWindow.h"
#include "desktop/Desktop.h"

#include <QFile>
#include <QTemporaryDir>

#include <memory>

namespace tavrine::testing {

/// A foreign program into which one pastes, and what has arrived in it.
class PasteTarget {
public:
    virtual ~PasteTarget() = default;
    /// Waits until it has the keyboard.
    [[nodiscard]] virtual bool isReady() = 0;
    [[nodiscard]] virtual QString text() = 0;
    /// Behind each text that is pasted, where the program only shows whole lines.
    [[nodiscard]] virtual QString end() const { return {}; }
};

/// A line of text of a toolkit.
class LineTarget final : public PasteTarget {
public:
    explicit LineTarget(const char *command) : m_window(QString::fromUtf8(command)) {}
    /// The window manager tells whose the keyboard is a little after it has given it, and a person is not so fast that
    /// its word could be that of before.
    bool isReady() override {
        const Desktop desktop;
        return m_window.waitForFocus() && waitUntil([&] {
                   const quint32 window = desktop.windowOf(processId());
                   return window != 0 && desktop.activeWindow() == window;
               });
    }
    QString text() override { return m_window.text(); }
    [[nodiscard]] int presses(const QString &key) { return m_window.presses(key); }
    [[nodiscard]] qint64 processId() const { return m_window.processId(); }

private:
    ForeignWindow m_window;
};

class TerminalTarget final : public PasteTarget {
public:
    explicit TerminalTarget(Desktop &desktop) : m_desktop(desktop) {
        m_path = m_folder.filePath(QStringLiteral("typed"));
        m_process.start(QStringLiteral("xterm"),
                        {QStringLiteral("-T"), QStringLiteral("terminal"), QStringLiteral("-e"), QStringLiteral("sh"),
                         QStringLiteral("-c"), QStringLiteral("exec cat > '%1'").arg(m_path)});
    }
    ~TerminalTarget() override {
        m_process.kill();
        m_process.waitForFinished(5000);
    }
    bool isReady() override {
        if (!waitUntil([this] { return QFile::exists(m_path) && m_desktop.isShown("terminal"); }))
            return false;
        // The keyboard reaches xterm's inner window a little later: a line tells.
        return waitUntil([this] {
                   m_desktop.keyboard.tap(key::returnKey);
                   return waitUntil([this] { return !text().isEmpty(); }, std::chrono::milliseconds(300));
               }) &&
               start();
    }
    QString text() override {
        QFile file(m_path);
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()).mid(m_begin) : QString();
    }
    [[nodiscard]] QString end() const override { return QStringLiteral("\n"); }

private:
    /// Whatever lines are still to come, this one comes behind them.
    bool start() {
        m_desktop.type("begin");
        m_desktop.keyboard.tap(key::returnKey);
        if (!waitUntil([this] { return text().endsWith(QLatin1String("begin\n")); }))
            return false;
        m_begin = text().size();
        return true;
    }

    Desktop &m_desktop;
    QTemporaryDir m_folder;
    QString m_path;
    QProcess m_process;
    qsizetype m_begin = 0;
};

/// A field of a page in a browser, with a profile of its own. The browser tells of a new title up to a fifth of a
/// second after the page has set it.
class PageTarget final : public PasteTarget {
public:
    PageTarget(Desktop &desktop, const QString &page) : m_desktop(desktop) {
        m_process.setStandardOutputFile(QProcess::nullDevice());
        m_process.setStandardErrorFile(QProcess::nullDevice());
        m_process.start(QStringLiteral("chromium"),
                        {QStringLiteral("--no-sandbox"), QStringLiteral("--user-data-dir=") + m_profile.path(),
                         QStringLiteral("--no-first-run"), QStringLiteral("--no-default-browser-check"),
                         QStringLiteral("--disable-gpu"), QStringLiteral("--disable-background-networking"),
                         QStringLiteral("--disable-component-update"), QStringLiteral("--disable-sync"),
                         QStringLiteral("--password-store=basic"), QStringLiteral("--window-size=700,300"),
                         QStringLiteral("--app=file://") + page});
    }
    ~PageTarget() override {
        m_process.terminate(); // so that it ends its own processes
        if (!m_process.waitForFinished(5000)) {
            m_process.kill();
            m_process.waitForFinished(5000);
        }
    }
    bool isReady() override {
        return waitUntil(
                   [this] {
                       for (const quint32 window :
                            m_desktop.windowsMatching([](const QString &t) { return isOurs(t); }))
                           m_window = window;
                       return m_window != 0 && m_desktop.keyboard.focusedWindow() == m_window;
                   },
                   std::chrono::seconds(40)) &&
               waitUntil([this] { // the page takes keys a little after its window does
                   m_desktop.type("x");
                   return waitUntil([this] { return text().endsWith(QLatin1Char('x')); },
                                    std::chrono::milliseconds(500));
               }) &&
               clear();
    }
    QString text() override {
        const QString title = m_desktop.title(m_window);
        return isOurs(title) ? title.mid(mark().size()) : QString();
    }

private:
    static QLatin1String mark() { return QLatin1String("page:"); }
    static bool isOurs(const QString &title) { return title.startsWith(mark()); }
    bool clear() {
        return waitUntil([this] {
            m_desktop.keyboard.tap(key::backspace);
            return waitUntil([this] { return text().isEmpty(); }, std::chrono::milliseconds(200));
        });
    }

    Desktop &m_desktop;
    QTemporaryDir m_profile;
    QProcess m_process;
    quint32 m_window = 0;
};

} // namespace tavrine::testing

#pragma once

#include <QByteArray>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <memory>

namespace tavrine::testing {

/// The built program, run as a person would run it: in a home of its own, on the display and the bus of the test.
/// What it starts ends with it.
class Program {
public:
    Program();
    ~Program();

    /// Starts it and waits until it has opened its database and answers on the bus (when there is one).
    [[nodiscard]] bool start();
    /// The same for a person who has seen the welcome window, with further preferences: entries of a property list.
    /// Waits until pastes are possible.
    [[nodiscard]] bool startOnboarded(const QByteArray &preferences = {});
    /// Writes them from outside, as another program or a person does; it may run or not.
    [[nodiscard]] bool writePreferences(const QByteArray &entries) const;
    /// Runs a statement in the history from outside.
    [[nodiscard]] bool execute(const QString &sql) const;
    /// Adds rows to the history from outside, the first of them the oldest. For a program that has run and does not
    /// now.
    [[nodiscard]] bool addRows(const QStringList &contents) const;
    /// A further start of the same program in the same home; the process is the caller's.
    [[nodiscard]] std::unique_ptr<QProcess> startAgain(const QStringList &arguments = {}) const;
    void kill9();
    [[nodiscard]] bool isRunning() const;
    [[nodiscard]] qint64 processId() const { return m_process ? m_process->processId() : 0; }
    /// All that it wrote on standard output since it was last started.
    [[nodiscard]] QString output();

    [[nodiscard]] QString home() const { return m_home.path(); }
    [[nodiscard]] QString dataFolder() const { return home() + QStringLiteral("/.local/share/Tavrine"); }
    [[nodiscard]] QString databasePath() const { return dataFolder() + QStringLiteral("/clipboard.db"); }
    [[nodiscard]] QString preferencesPath() const {
        return home() + QStringLiteral("/.config/com.veltrane.Tavrine.plist");
    }

    /// The first column of what a query gives, read from outside; empty when it cannot be run.
    [[nodiscard]] QStringList rows(const char *sql) const;
    /// How many rows have exactly this content.
    [[nodiscard]] int rowsWith(const QString &content) const;

    /// Variables to leave out of, or to set in, the program's environment.
    QProcessEnvironment environment;

private:
    QTemporaryDir m_home;
    std::unique_ptr<QProcess> m_process;
    QByteArray m_output;
};

/// Starts a command and keeps it for the scope; it is killed at the end.
class Client {
public:
    Client(const QString &command, const QStringList &arguments, const QByteArray &input = {});
    ~Client();
    void kill9();
    [[nodiscard]] qint64 processId() const { return m_process.processId(); }

private:
    QProcess m_process;
};

/// Puts `text` on the clipboard with xclip, which stays in the background as its owner.
void copy(const QByteArray &text, const char *target = "UTF8_STRING");

/// What a foreign program would paste now.
[[nodiscard]] QByteArray paste(const char *target = "UTF8_STRING");

} // namespace tavrine::testing

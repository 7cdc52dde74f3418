#include "desktop/Program.h"

#include "support/Wait.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QUuid>

#include <sqlite3.h>

namespace tavrine::testing {
namespace {

constexpr std::chrono::seconds longestStart{30}; ///< on a machine that does much else

bool hasBusName() {
    QProcess ask;
    ask.start(QStringLiteral("dbus-send"),
              {QStringLiteral("--session"), QStringLiteral("--print-reply"),
               QStringLiteral("--dest=org.freedesktop.DBus"), QStringLiteral("/"),
               QStringLiteral("org.freedesktop.DBus.NameHasOwner"), QStringLiteral("string:com.veltrane.Tavrine")});
    return ask.waitForFinished(3000) && ask.readAllStandardOutput().contains("true");
}

} // namespace

Program::Program() : environment(QProcessEnvironment::systemEnvironment()) {
    for (const char *folder : {"/.config", "/.local/share", "/.cache", "/Documents"})
        QDir().mkpath(home() + QLatin1String(folder));
    environment.insert(QStringLiteral("HOME"), home());
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), home() + QStringLiteral("/.config"));
    environment.insert(QStringLiteral("XDG_DATA_HOME"), home() + QStringLiteral("/.local/share"));
    environment.insert(QStringLiteral("XDG_CACHE_HOME"), home() + QStringLiteral("/.cache"));
}

Program::~Program() {
    kill9();
}

bool Program::start() {
    m_output.clear();
    m_process = std::make_unique<QProcess>();
    m_process->setProcessEnvironment(environment);
    m_process->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process->start(QStringLiteral(TAVRINE_BINARY), QStringList());
    if (!m_process->waitForStarted(5000))
        return false;
    // The launch's last printed line: everything before it is done, the poll included.
    return waitUntil([this] { return output().contains(QLatin1String("Registering Hotkeys...")) || !isRunning(); },
                     longestStart) &&
           isRunning() && (!environment.contains(QStringLiteral("DBUS_SESSION_BUS_ADDRESS")) || waitUntil(hasBusName));
}

bool Program::writePreferences(const QByteArray &entries) const {
    QFile file(preferencesPath());
    if (!file.open(QIODevice::WriteOnly))
        return false;
    file.write("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
               "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
               "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
               "<plist version=\"1.0\"><dict><key>hasCompletedOnboarding</key><true/>" +
               entries + "</dict></plist>\n");
    return file.flush();
}

bool Program::startOnboarded(const QByteArray &preferences) {
    return writePreferences(preferences) && start() &&
           waitUntil([this] { return output().contains(QLatin1String("Accessibility Trusted on Launch: true")); });
}

bool Program::execute(const QString &sql) const {
    sqlite3 *db = nullptr;
    const bool isDone = sqlite3_open_v2(QFile::encodeName(databasePath()).constData(), &db, SQLITE_OPEN_READWRITE,
                                        nullptr) == SQLITE_OK &&
                        sqlite3_busy_timeout(db, 2000) == SQLITE_OK &&
                        sqlite3_exec(db, sql.toUtf8().constData(), nullptr, nullptr, nullptr) == SQLITE_OK;
    sqlite3_close(db);
    return isDone;
}

bool Program::addRows(const QStringList &contents) const {
    sqlite3 *db = nullptr;
    sqlite3_stmt *statement = nullptr;
    bool isDone = sqlite3_open_v2(QFile::encodeName(databasePath()).constData(), &db, SQLITE_OPEN_READWRITE, nullptr) ==
                      SQLITE_OK &&
                  sqlite3_exec(db, "BEGIN", nullptr, nullptr, nullptr) == SQLITE_OK &&
                  sqlite3_prepare_v2(db, "INSERT INTO items(id,content,date) VALUES (?,?,?)", -1, &statement,
                                     nullptr) == SQLITE_OK;
    double date = static_cast<double>(QDateTime::currentSecsSinceEpoch()) - static_cast<double>(contents.size());
    for (qsizetype i = 0; isDone && i < contents.size(); ++i) {
        const QByteArray id = QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper().toUtf8();
        const QByteArray content = contents.at(i).toUtf8();
        sqlite3_bind_text(statement, 1, id.constData(), static_cast<int>(id.size()), SQLITE_TRANSIENT);
        sqlite3_bind_text(statement, 2, content.constData(), static_cast<int>(content.size()), SQLITE_TRANSIENT);
        sqlite3_bind_double(statement, 3, date++);
        isDone = sqlite3_step(statement) == SQLITE_DONE;
        sqlite3_reset(statement);
    }
    sqlite3_finalize(statement);
    isDone = isDone && sqlite3_exec(db, "COMMIT", nullptr, nullptr, nullptr) == SQLITE_OK;
    sqlite3_close(db);
    return isDone;
}

std::unique_ptr<QProcess> Program::startAgain(const QStringList &arguments) const {
    auto process = std::make_unique<QProcess>();
    process->setProcessEnvironment(environment);
    process->start(QStringLiteral(TAVRINE_BINARY), arguments);
    return process;
}

void Program::kill9() {
    if (!m_process || m_process->state() == QProcess::NotRunning)
        return;
    m_process->kill();
    m_process->waitForFinished(5000);
}

bool Program::isRunning() const {
    return m_process && m_process->state() == QProcess::Running;
}

QString Program::output() {
    if (m_process)
        m_output += m_process->readAllStandardOutput();
    return QString::fromUtf8(m_output);
}

QStringList Program::rows(const char *sql) const {
    QStringList result;
    sqlite3 *db = nullptr;
    sqlite3_stmt *statement = nullptr;
    if (sqlite3_open_v2(QFile::encodeName(databasePath()).constData(), &db, SQLITE_OPEN_READONLY, nullptr) ==
        SQLITE_OK) {
        sqlite3_busy_timeout(db, 2000);
        if (sqlite3_prepare_v2(db, sql, -1, &statement, nullptr) == SQLITE_OK)
            while (sqlite3_step(statement) == SQLITE_ROW)
                result += QString::fromUtf8(reinterpret_cast<const char *>(sqlite3_column_text(statement, 0)),
                                            sqlite3_column_bytes(statement, 0));
        sqlite3_finalize(statement);
    }
    sqlite3_close(db);
    return result;
}

int Program::rowsWith(const QString &content) const {
    return static_cast<int>(rows("SELECT content FROM items").count(content));
}

Client::Client(const QString &command, const QStringList &arguments, const QByteArray &input) {
    m_process.setProcessChannelMode(QProcess::SeparateChannels);
    m_process.start(command, arguments);
    m_process.waitForStarted(5000);
    if (!input.isEmpty()) {
        m_process.write(input);
        m_process.closeWriteChannel();
    }
}

Client::~Client() {
    kill9();
}

void Client::kill9() {
    if (m_process.state() == QProcess::NotRunning)
        return;
    m_process.kill();
    m_process.waitForFinished(5000);
}

void copy(const QByteArray &text, const char *target) {
    static std::unique_ptr<Client> owner;
    auto next = std::make_unique<Client>(QStringLiteral("xclip"),
                                         QStringList{QStringLiteral("-quiet"), QStringLiteral("-selection"),
                                                     QStringLiteral("clipboard"), QStringLiteral("-t"),
                                                     QLatin1String(target), QStringLiteral("-i")},
                                         text);
    // The old owner goes once the new one has the clipboard, as a program does that is closed later.
    (void)waitUntil([target, &text] { return paste(target) == text; }, std::chrono::seconds(5));
    owner = std::move(next);
}

QByteArray paste(const char *target) {
    QProcess xclip;
    xclip.start(QStringLiteral("xclip"), {QStringLiteral("-selection"), QStringLiteral("clipboard"),
                                          QStringLiteral("-t"), QLatin1String(target), QStringLiteral("-o")});
    if (!xclip.waitForFinished(3000))
        return {};
    return xclip.readAllStandardOutput();
}

} // namespace tavrine::testing

#pragma once

#include <QFile>
#include <QHash>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>

#include <csignal>
#include <memory>
#include <utility>
#include <vector>

namespace tavrine::test {

enum class SoundServerKind { pulseAudio, pipeWire };

/// A sound server of the test's own with two devices that nobody hears, "one" (the default at first) and "two". Until
/// it goes, programs that this one starts find it and no other.
class PrivateSound {
public:
    static constexpr int rate = 48'000;

    explicit PrivateSound(SoundServerKind kind) : m_kind(kind) {
        for (const char *name : {"PULSE_SERVER", "XDG_RUNTIME_DIR"})
            m_before.push_back({name, qgetenv(name)});
        enter();
        if (kind == SoundServerKind::pulseAudio)
            startPulseAudio();
        else
            startPipeWire();
        for (const char *device : {"one", "two"})
            addDevice(QLatin1String(device));
        setDefault(QStringLiteral("one"));
        // Or the default input follows the default output, and PulseAudio carries recordings along with it: who listens
        // to one device would hear the other.
        if (kind == SoundServerKind::pulseAudio)
            control({QStringLiteral("set-default-source"), QStringLiteral("one.monitor")});
    }
    ~PrivateSound() {
        end();
        for (const auto &[name, value] : m_before)
            value.isNull() ? qunsetenv(name) : qputenv(name, value);
    }
    PrivateSound(const PrivateSound &) = delete;
    PrivateSound &operator=(const PrivateSound &) = delete;

    /// Where there are several: this is the one to be found from now on.
    void enter() {
        qputenv("XDG_RUNTIME_DIR", QFile::encodeName(m_folder.path()));
        if (m_kind == SoundServerKind::pulseAudio)
            qputenv("PULSE_SERVER", "unix:" + QFile::encodeName(socketOfPulseAudio()));
        else
            qunsetenv("PULSE_SERVER");
    }

    void addDevice(const QString &name) {
        m_modules[name] = control({QStringLiteral("load-module"), QStringLiteral("module-null-sink"),
                                   QStringLiteral("sink_name=") + name, QStringLiteral("rate=%1").arg(rate),
                                   QStringLiteral("channels=2")});
    }
    /// Something to be heard: nothing, or a tone of 440 Hz.
    void addMicrophone(const QString &name) {
        m_modules[name] = control({QStringLiteral("load-module"), QStringLiteral("module-null-source"),
                                   QStringLiteral("source_name=") + name, QStringLiteral("rate=%1").arg(rate)});
        setDefaultMicrophone(name);
    }
    void addTone(const QString &name) {
        m_modules[name] = control({QStringLiteral("load-module"), QStringLiteral("module-sine-source"),
                                   QStringLiteral("source_name=") + name, QStringLiteral("rate=%1").arg(rate)});
    }
    /// It hears what is played on the device. A device's own monitor is no microphone.
    void addMicrophoneBefore(const QString &device, const QString &name) {
        m_modules[name] =
            control({QStringLiteral("load-module"), QStringLiteral("module-remap-source"),
                     QStringLiteral("source_name=") + name, QStringLiteral("master=%1.monitor").arg(device)});
        setDefaultMicrophone(name);
    }
    static void setDefaultMicrophone(const QString &name) { control({QStringLiteral("set-default-source"), name}); }
    static void setMuted(const QString &microphone, bool isMuted) {
        control({QStringLiteral("set-source-mute"), microphone, QString::number(isMuted ? 1 : 0)});
    }
    static void setSuspended(const QString &microphone, bool isSuspended) {
        control({QStringLiteral("suspend-source"), microphone, QString::number(isSuspended ? 1 : 0)});
    }
    void removeDevice(const QString &name) { control({QStringLiteral("unload-module"), m_modules.take(name)}); }
    void setDefault(const QString &name) { control({QStringLiteral("set-default-sink"), name}); }
    /// The streams that are there.
    [[nodiscard]] static qsizetype streams() {
        return control({QStringLiteral("list"), QStringLiteral("short"), QStringLiteral("sink-inputs")})
            .split(u'\n', Qt::SkipEmptyParts)
            .size();
    }

    void hang() { signal(SIGSTOP); }
    void goOn() { signal(SIGCONT); }
    /// PulseAudio, after its end, without the devices.
    void startAgain() {
        QFile::remove(socketOfPulseAudio());
        startPulseAudio();
    }
    void end() {
        for (auto program = m_programs.rbegin(); program != m_programs.rend(); ++program) {
            (*program)->kill();
            (*program)->waitForFinished();
        }
        m_programs.clear();
    }

private:
    [[nodiscard]] QString socketOfPulseAudio() const { return m_folder.filePath(QStringLiteral("sound")); }

    void startPulseAudio() {
        const QString socket = socketOfPulseAudio();
        start(QStringLiteral("pulseaudio"),
              {QStringLiteral("-n"), QStringLiteral("--daemonize=no"), QStringLiteral("--exit-idle-time=-1"),
               QStringLiteral("--use-pid-file=no"), QStringLiteral("--high-priority=no"),
               QStringLiteral("--realtime=no"), QStringLiteral("-L"),
               QStringLiteral("module-native-protocol-unix socket=") + socket},
              socket);
    }
    void startPipeWire() {
        start(QStringLiteral("pipewire"), {}, m_folder.filePath(QStringLiteral("pipewire-0")));
        start(QStringLiteral("wireplumber"), {}, {});
        start(QStringLiteral("pipewire-pulse"), {}, m_folder.filePath(QStringLiteral("pulse/native")));
    }
    void start(const QString &program, const QStringList &arguments, const QString &socket) {
        auto &process = m_programs.emplace_back(std::make_unique<QProcess>());
        process->setStandardOutputFile(QProcess::nullDevice());
        process->setStandardErrorFile(QProcess::nullDevice());
        process->start(program, arguments);
        process->waitForStarted();
        for (int i = 0; i < 500 && !socket.isEmpty() && !QFile::exists(socket); ++i)
            QThread::msleep(10);
    }
    void signal(int number) {
        for (const auto &program : m_programs)
            ::kill(static_cast<pid_t>(program->processId()), number);
    }
    static QString control(const QStringList &arguments) {
        QProcess process;
        process.start(QStringLiteral("pactl"), arguments);
        process.waitForFinished(5'000);
        return QString::fromUtf8(process.readAllStandardOutput()).trimmed();
    }

    SoundServerKind m_kind;
    QTemporaryDir m_folder;
    std::vector<std::pair<const char *, QByteArray>> m_before;
    std::vector<std::unique_ptr<QProcess>> m_programs;
    QHash<QString, QString> m_modules;
};

} // namespace tavrine::test

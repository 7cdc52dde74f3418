#include "adapters/wayland/WaylandColorSampler.h"

#include <QCoreApplication>
#include <QProcess>

#include <csignal>
#include <vector>

#include <sys/prctl.h>

namespace tavrine {
namespace {

/// What the tool has written; anything else is no colour.
std::optional<QColor> colourIn(const QByteArray &line) {
    static constexpr qsizetype length = 8; // "#12ABEF" and a new line
    if (line.size() != length || line.front() != '#' || line.back() != '\n')
        return std::nullopt;
    const QColor colour(QString::fromLatin1(line.chopped(1)));
    return colour.isValid() ? std::optional(colour) : std::nullopt;
}

} // namespace

/// The programs that have not ended yet. Only the last of them is to be seen.
struct WaylandColorSamplers::Shown {
    std::vector<std::unique_ptr<QProcess>> programs;

    ~Shown() {
        for (const auto &program : programs)
            program->disconnect();
    }
    void remove(const QProcess *program) {
        std::erase_if(programs, [program](auto &each) {
            if (each.get() != program)
                return false;
            each.release()->deleteLater(); // it is calling us
            return true;
        });
    }
};

class WaylandColorSamplers::Sampler final : public ColorSampler {
public:
    explicit Sampler(std::weak_ptr<Shown> shown) : m_shown(std::move(shown)) {}

    void showSampler(std::function<void(std::optional<QColor>)> selection) override {
        const auto shown = m_shown.lock();
        if (!shown)
            return;
        for (const auto &other : shown->programs)
            other->terminate();
        auto *const program = shown->programs.emplace_back(std::make_unique<QProcess>()).get();
        program->setProgram(QCoreApplication::applicationDirPath() + QStringLiteral("/screencapture"));
        program->setArguments({QStringLiteral("-p")});
        program->setStandardInputFile(QProcess::nullDevice());
        program->setProcessChannelMode(QProcess::ForwardedErrorChannel);
        program->setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGTERM); });
        const auto answer = [weak = m_shown, program, selection](std::optional<QColor> colour) {
            if (const auto samplers = weak.lock())
                samplers->remove(program);
            selection(colour);
        };
        QObject::connect(program, &QProcess::finished, program, [program, answer](int status) {
            answer(status == 0 ? colourIn(program->readAllStandardOutput()) : std::nullopt);
        });
        QObject::connect(
            program, &QProcess::errorOccurred, program,
            [answer](QProcess::ProcessError error) {
                if (error == QProcess::FailedToStart) // else it ends, which is told
                    answer(std::nullopt);
            },
            Qt::QueuedConnection);
        program->start(QIODevice::ReadOnly);
    }

private:
    std::weak_ptr<Shown> m_shown;
};

WaylandColorSamplers::WaylandColorSamplers() : m_shown(std::make_shared<Shown>()) {}

WaylandColorSamplers::~WaylandColorSamplers() = default;

int WaylandColorSamplers::running() const {
    return static_cast<int>(m_shown->programs.size());
}

std::shared_ptr<ColorSampler> WaylandColorSamplers::makeSampler() {
    return std::make_shared<Sampler>(m_shown);
}

} // namespace tavrine

#include "adapters/wayland/CompositorLoss.h"

#include <QString>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>

#include <poll.h>
#include <unistd.h>
#include <wayland-client.h>

namespace tavrine::compositorLoss {
namespace {

/// How the toolkit begins what it says last: it ends the process without asking anybody.
constexpr auto toolkitsLastWords = "The Wayland connection ";

/// It tells of its choice of buffers as of a fault, and the choice is this program's: see `LayerShell::prepareToolkit`.
constexpr const char *ownChoice[] = {"Failed to load client buffer integration: \"none\"",
                                     "Available client buffer integrations: "};

QtMessageHandler othersHandler = nullptr;

void handleMessage(QtMsgType type, const QMessageLogContext &context, const QString &text) {
    if (type == QtWarningMsg && text.startsWith(QLatin1String(toolkitsLastWords)))
        endProgram(text.toStdString());
    const bool isOwnChoice = std::ranges::any_of(
        ownChoice, [&text](const char *beginning) { return text.startsWith(QLatin1String(beginning)); });
    if (!isOwnChoice)
        othersHandler(type, context, text);
}

/// Past the streams: another thread may hold their lock, and stand still within it.
void tell(std::string line) {
    while (!line.empty() && line.back() == '\n')
        line.pop_back();
    line += '\n';
    pollfd errors{.fd = STDERR_FILENO, .events = POLLOUT, .revents = 0};
    if (::poll(&errors, 1, 0) == 1 && (errors.revents & POLLOUT)) // what nobody reads holds up no end
        static_cast<void>(::write(STDERR_FILENO, line.data(), line.size()));
}

/// libwayland writes of nothing but errors, and may end the process behind it without a further word: told at once.
[[gnu::format(printf, 1, 0)]] void tellWords(const char *format, va_list arguments) {
    std::array<char, 512> text{};
    std::vsnprintf(text.data(), text.size(), format, arguments);
    tell(std::string("tavrine: libwayland: ") + text.data());
}

} // namespace

void watchToolkit() {
    wl_log_set_handler_client(tellWords);
    othersHandler = qInstallMessageHandler(handleMessage);
}

void endProgram(const std::string &reason) {
    static std::atomic_flag isEnding;
    while (isEnding.test_and_set())
        ::pause(); // until the process ends
    tell("tavrine: the Wayland compositor is gone: " + reason);
    std::_Exit(exitStatus);
}

} // namespace tavrine::compositorLoss

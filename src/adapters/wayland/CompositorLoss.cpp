#include "adapters/wayland/CompositorLoss.h"

#include <QString>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <mutex>

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

struct LastWords {
    std::mutex mutex;
    std::string text;
};
LastWords &libraryWords() {
    static auto &words = *new LastWords; // connections may end after everything static
    return words;
}

/// libwayland writes of nothing but errors that end a connection.
[[gnu::format(printf, 1, 0)]] void noteWords(const char *format, va_list arguments) {
    std::array<char, 512> text{};
    const int length = std::vsnprintf(text.data(), text.size(), format, arguments);
    const std::lock_guard lock(libraryWords().mutex);
    libraryWords().text.assign(text.data(),
                               std::min<std::size_t>(static_cast<std::size_t>(std::max(length, 0)), text.size() - 1));
}

} // namespace

void watchToolkit() {
    wl_log_set_handler_client(noteWords);
    othersHandler = qInstallMessageHandler(handleMessage);
}

void endProgram(const std::string &reason) {
    static std::atomic_flag isEnding;
    while (isEnding.test_and_set())
        ::pause(); // until the process ends
    std::string line = "tavrine: the Wayland compositor is gone: " + reason;
    {
        const std::lock_guard lock(libraryWords().mutex);
        if (!libraryWords().text.empty())
            line += " (" + libraryWords().text + ")";
    }
    while (line.back() == '\n')
        line.pop_back();
    std::fflush(nullptr);
    std::fprintf(stderr, "%s\n", line.c_str());
    std::_Exit(exitStatus);
}

} // namespace tavrine::compositorLoss

#include "adapters/desktops/MakeDesktop.h"
#include "base/Catalogue.h"
#include "base/DesktopWords.h"
#include "base/NotificationCenter.h"
#include "base/Program.h"
#include "base/UserDefaults.h"
#include "clipboard/ClipboardDatabase.h"
#include "look/Look.h"
#include "ports/Desktop.h"
#include "ports/Folders.h"
#include "shell/AppDelegate.h"
#include "shell/LastWords.h"

#include <QApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>

#include <malloc.h>

using namespace tavrine;

namespace {

constexpr QLatin1String byBusWord("service"); // of the bus's service file alone
constexpr int wrongWordStatus = 2;

/// The one word that a start can have, behind two dashes: what it asks for, or that the bus started it. None for a word
/// that nobody knows; what begins with one dash is the toolkit's.
std::optional<StartRequest> startRequest(int argc, char **argv) {
    const QString word = argc == 2 ? QString::fromUtf8(argv[1]) : QString();
    if (!word.startsWith(QLatin1String("--")))
        return StartRequest{};
    const QString named = word.mid(2);
    if (named == byBusWord)
        return StartRequest{.action = {}, .isByBus = true};
    if (!startAction::isKnown(named))
        return std::nullopt;
    return StartRequest{.action = named};
}

int refuseWord(const char *word) {
    std::fprintf(stderr, "%.40s is no word of Tavrine. There are:", word);
    for (const QLatin1String known : startAction::all)
        std::fprintf(stderr, " --%s", known.data());
    std::fputc('\n', stderr);
    return wrongWordStatus;
}

/// From the launch to the end of the main loop, with everything that the program owns.
int run(Desktop &desktop, ClipboardDatabase &database, const QString &action, AppDelegate *&delegate) {
    look::Look look(desktop.time(), &desktop.appearance());
    NotificationCenter &center = NotificationCenter::defaultCenter();
    UserDefaults defaults(QStringLiteral("%1/%2.plist").arg(desktop.folders().preferences, ownBundleIdentifier),
                          desktop.time(), center);
    AppDelegate appDelegate({desktop, defaults, center, database});
    delegate = &appDelegate;
    appDelegate.applicationDidFinishLaunching();
    if (!action.isEmpty())
        appDelegate.startedAgain(action);
    const int status = QApplication::exec();
    delegate = nullptr;
    return status;
}

} // namespace

int main(int argc, char **argv) {
    // A reader of our output that goes away must not take a resident program with it.
    std::signal(SIGPIPE, SIG_IGN);
    tellLastWords();
    // One heap for all threads. Most of ours sleep, and one of its own for each holds pages that it never gives back.
    ::mallopt(M_ARENA_MAX, 1);

    const auto request = startRequest(argc, argv);
    if (!request)
        return refuseWord(argv[1]);
    // Beside a running program there is nothing to make.
    if (const Instance instance = becomeOnlyInstance(*request); instance != Instance::first) {
        std::fflush(nullptr);
        std::_Exit(instance == Instance::handedOver ? EXIT_SUCCESS : EXIT_FAILURE);
    }

    std::unique_ptr<Desktop> desktop = makeDesktop();
    const Folders &folders = desktop->folders();
    // The database reads on its own thread while Qt starts on this one. It is never closed: it ends with the process.
    auto &database = *new ClipboardDatabase(folders.applicationSupport + QStringLiteral("/Tavrine/clipboard.db"));
    database.warmUp();

    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Tavrine"));
    QApplication::setApplicationVersion(QStringLiteral(TAVRINE_VERSION));
    QApplication::setDesktopFileName(ownBundleIdentifier);
    QApplication::setQuitOnLastWindowClosed(false);

    QTranslator toolkitTexts; // of the chooser of files
    if (auto catalogue =
            Catalogue::find(folders.resources + QStringLiteral("/texts"), QLocale::system().uiLanguages())) {
        const QString toolkitFile = QStringLiteral("qtbase_") + catalogue->language();
        setTranslation(std::move(*catalogue));
        if (toolkitTexts.load(toolkitFile, QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
            QApplication::installTranslator(&toolkitTexts);
    }

    AppDelegate *delegate = nullptr;
    desktop->followStarts([&delegate](const QString &asked) {
        if (delegate)
            delegate->startedAgain(asked);
    });

    const int status = run(*desktop, database, request->action, delegate);
    desktop.reset(); // hands what it holds of the clipboard over
    std::fflush(nullptr);
    // What there was to write is written. The toolkit's own end would wait for buses that may hang.
    std::_Exit(status);
}

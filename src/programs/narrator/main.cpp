// TavrineNarrator: stands before screen readers for the overlay of `screencapture`, which links no bus and waits for
// nobody. Told on its standard input where the person has come to; ends with it, or at once where nobody listens.
#include "adapters/linux/HelperLines.h"
#include "adapters/linux/OverlayNarrator.h"
#include "base/Catalogue.h"
#include "base/DesktopWords.h"

#include <QCoreApplication>
#include <QLocale>
#include <QSocketNotifier>

#include <array>

#include <unistd.h>

using namespace tavrine;

namespace {

/// Hands on what has come on the standard input. False at its end.
bool hearInput(HelperLines &lines, OverlayNarrator &narrator) {
    std::array<char, 4096> bytes{};
    const ssize_t count = ::read(STDIN_FILENO, bytes.data(), bytes.size());
    if (count <= 0)
        return false;
    for (const std::string &line : lines.take({bytes.data(), size_t(count)}))
        if (const auto place = NarratedPlace::parse(line))
            narrator.tell(*place);
    return !lines.isBroken();
}

} // namespace

int main(int count, char **arguments) {
    QCoreApplication application(count, arguments);
    const QString texts = QCoreApplication::applicationDirPath() + QStringLiteral("/../share/tavrine/texts");
    if (auto catalogue = Catalogue::find(texts, QLocale::system().uiLanguages()))
        setTranslation(std::move(*catalogue));
    HelperLines lines;
    OverlayNarrator narrator([] { QCoreApplication::quit(); });
    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, &narrator, [&] {
        if (hearInput(lines, narrator))
            return;
        input.setEnabled(false);
        narrator.leave();
        QCoreApplication::quit();
    });
    return QCoreApplication::exec();
}

// TavrineGlyphs TABLE SIDE FONT FILE: draws every emoji of TABLE that the desktop's fonts have, in squares of SIDE
// pixels, into FILE; FONT is that of text signs, as QFont::toString has it. The file is there whole or not at all. Exit
// status 0 when it is.
#include "base/WholeFile.h"
#include "look/DrawnGlyphs.h"
#include "look/EmojiGlyphs.h"
#include "look/EmojiText.h"
#include "look/Text.h"
#include "utilities/emoji/EmojiTable.h"

#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>

#include <cstdio>
#include <memory>
#include <string_view>

#include <fontconfig/fontconfig.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/signal.h>

namespace {

using namespace tavrine;

constexpr int largestSide = 512;
constexpr rlim_t longestSeconds = 60; // of the processor; it takes a second

/// Behind everything else that wants to run, and not longer than the program that wants the pictures.
void stepBack() {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    const rlimit limit{longestSeconds, longestSeconds};
    ::setrlimit(RLIMIT_CPU, &limit);
    ::setpriority(PRIO_PROCESS, 0, 10);
}

QString fileOfFont(const QString &family) {
    const auto release = [](FcPattern *pattern) { FcPatternDestroy(pattern); };
    using Pattern = std::unique_ptr<FcPattern, decltype(release)>;
    const QByteArray name = family.toUtf8();
    Pattern wanted(FcPatternCreate(), release);
    FcPatternAddString(wanted.get(), FC_FAMILY, reinterpret_cast<const FcChar8 *>(name.constData()));
    FcConfigSubstitute(nullptr, wanted.get(), FcMatchPattern);
    FcDefaultSubstitute(wanted.get());
    FcResult result = FcResultNoMatch;
    Pattern found(FcFontMatch(nullptr, wanted.get(), &result), release);
    FcChar8 *file = nullptr;
    if (!found || FcPatternGetString(found.get(), FC_FILE, 0, &file) != FcResultMatch)
        return {};
    return QFile::decodeName(reinterpret_cast<const char *>(file));
}

QImage inColour(look::EmojiGlyphs &glyphs, const QString &emoji, const QColor &colour) {
    return glyphs.picture(emoji, colour, 1).toImage().convertToFormat(QImage::Format_ARGB32_Premultiplied);
}

std::vector<look::DrawnGlyph> drawn(const std::vector<EmojiItem> &items, int side) {
    look::EmojiGlyphs glyphs(side, 0);
    std::vector<look::DrawnGlyph> pictures;
    for (const EmojiItem &item : items) {
        const QImage picture = inColour(glyphs, item.emoji, Qt::black);
        // What changes with the text's colour is a sign of the text, whatever font it came from.
        if (!picture.isNull())
            pictures.push_back({item.emoji, picture, inColour(glyphs, item.emoji, Qt::white) != picture});
    }
    return pictures;
}

} // namespace

int main(int argc, char **argv) {
    stepBack();
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const int side = arguments.value(2).toInt();
    if (arguments.size() != 5 || side <= 0 || side > largestSide) {
        std::fputs("usage: TavrineGlyphs TABLE SIDE FONT FILE\n", stderr);
        return 2;
    }
    const QString &path = arguments[4];
    QFont font;
    if (font.fromString(arguments[3]))
        QGuiApplication::setFont(font);
    if (look::emojiFamilies().isEmpty())
        return 1;
    const QString family = look::emojiFamilies().first();
    const look::GlyphSources sources{family, arguments[3], arguments[1], side};
    const QByteArray data =
        look::drawnGlyphsData(sources, fileOfFont(family), drawn(loadEmojiTable(arguments[1]), side));
    QDir().mkpath(QFileInfo(path).path());
    return writeWholeFile(path.toStdString(), {std::string_view(data.constData(), size_t(data.size()))}) == 0 ? 0 : 1;
}

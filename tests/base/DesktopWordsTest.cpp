#include "base/DesktopWords.h"

#include "support/OtherPlatform.h"

#include <QDirIterator>
#include <QFile>
#include <QRegularExpression>

#include <gmock/gmock.h>

namespace tavrine {
namespace {

QString text(const char *utf8) {
    return QString::fromUtf8(utf8);
}
std::string onGnome(const char *utf8) {
    return inDesktopWords(text(utf8), QStringLiteral("GNOME")).toStdString();
}

TEST(DesktopWords, theComputerAndItsSettingsHaveTheirNames) {
    EXPECT_EQ(onGnome("Your Mac. Simplified."), "Your computer. Simplified.");
    EXPECT_EQ(onGnome("You can change these anytime in System Settings."), "You can change these anytime in Settings.");
    EXPECT_EQ(onGnome("Open System Settings"), "Open Settings");
}

TEST(DesktopWords, superIsTheKeyOfWhatWorksEverywhereAndControlThatOfOurWindows) {
    EXPECT_EQ(onGnome("⌘⇧V"), "Super+Shift+V");
    EXPECT_EQ(onGnome("⌘⇧6"), "Super+Shift+6");
    EXPECT_EQ(onGnome("⌘Q"), "Ctrl+Q");
    EXPECT_EQ(onGnome("⌥ twice"), "Alt twice");
}

TEST(DesktopWords, whatATextIsComposedOfIsSaidToo) {
    EXPECT_EQ(onGnome("Default is ⌘⇧E"), "Default is Super+Shift+E");
    EXPECT_EQ(onGnome("Conflicts with Emoji Picker uses ⌘⇧E — pick a different key"),
              "Conflicts with Emoji Picker uses Super+Shift+E — pick a different key");
    EXPECT_EQ(onGnome("Another program uses ⌘⇧K — pick a different key"),
              "Another program uses Super+Shift+K — pick a different key");
    EXPECT_EQ(onGnome("Screen Record already uses ⌥ twice — pick a different shortcut"),
              "Screen Record already uses Alt twice — pick a different shortcut");
}

TEST(DesktopWords, theDesktopIsNamedWhereItsNameIsKnown) {
    EXPECT_EQ(onGnome("macOS's Screenshot app shortcut (⌘⇧5) — can't be saved"),
              "GNOME's Screenshot app shortcut (Super+Shift+5) — can't be saved");
    EXPECT_EQ(inDesktopWords(text("macOS's screenshot shortcut (⌘⇧3)"), QString()),
              text("The desktop's screenshot shortcut (Super+Shift+3)"));
    EXPECT_EQ(desktopName(text("ubuntu:GNOME")), text("GNOME"));
    EXPECT_EQ(desktopName(text("X-Cinnamon")), text("Cinnamon"));
    EXPECT_EQ(desktopName(QString()), QString());
}

TEST(DesktopWords, whatIsNoTextOfOursStaysAsItIs) {
    for (const char *theirs : {"", "My Mac", "Your Mac. Simplified. Really.", "⌘VV", "Settings", "Default is ⌘⇧"})
        EXPECT_EQ(onGnome(theirs), theirs);
    const QString longText = text("Tap Option twice quickly to ") + QString(1'000'000, u'x');
    EXPECT_EQ(inDesktopWords(longText, QString()), longText);
}

/// The strings of a source, neighbours joined and escapes resolved. Comments have none.
QStringList stringsOf(const QString &source) {
    static const QRegularExpression token(
        QStringLiteral(R"re((?://[^\n]*|/\*.*?\*/|'(?:\\.|[^'\\\n])+')|(?:"(?:\\.|[^"\\\n])*"\s*)+)re"),
        QRegularExpression::DotMatchesEverythingOption);
    static const QRegularExpression joint(QStringLiteral(R"re("\s*")re"));
    static const QRegularExpression codePoint(QStringLiteral(R"re(\\u([0-9A-Fa-f]{4}))re"));
    QStringList strings;
    for (auto found = token.globalMatch(source); found.hasNext();) {
        QString string = found.next().captured();
        if (!string.startsWith(u'"'))
            continue;
        string = string.trimmed().replace(joint, QString());
        string = string.mid(1, string.size() - 2);
        for (auto point = codePoint.match(string); point.hasMatch(); point = codePoint.match(string))
            string.replace(point.capturedStart(), point.capturedLength(),
                           QChar(point.captured(1).toUShort(nullptr, 16)));
        strings.append(string.replace(QLatin1String("\\n"), QLatin1String("\n")));
    }
    return strings;
}

TEST(DesktopWords, noTextOfTheProgramNamesAnotherPlatformWhenItIsShown) {
    // What is no text for a person: the names of fonts, and what people insert.
    const QStringList notShown{text("Apple Color Emoji")};
    int seen = 0;
    for (QDirIterator files(text(TAVRINE_SOURCES), {text("*.h"), text("*.cpp")}, QDir::Files,
                            QDirIterator::Subdirectories);
         files.hasNext();) {
        QFile file(files.next());
        if (file.fileName().endsWith(text("base/DesktopWords.cpp")))
            continue;
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        for (const QString &string : stringsOf(QString::fromUtf8(file.readAll()))) {
            if (!namesAnotherPlatform(string) || notShown.contains(string))
                continue;
            ++seen;
            QString shown = inDesktopWords(string, QString());
            // A text that ends with a sign of the keyboard may go on with a key.
            if (shown == string && text("⌘⌥⇧").contains(string.back()))
                shown = inDesktopWords(string + u'V', QString());
            EXPECT_FALSE(namesAnotherPlatform(shown)) << file.fileName().toStdString() << ": " << string.toStdString();
        }
    }
    EXPECT_GT(seen, 15);
}

} // namespace
} // namespace tavrine

#include "base/Catalogue.h"

#include "base/DesktopWords.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gmock/gmock.h>

namespace tavrine {
namespace {

QString u(const char *text) {
    return QString::fromUtf8(text);
}

Catalogue of(const char *file) {
    QStringList faults;
    Catalogue catalogue = Catalogue::parse(file, &faults);
    EXPECT_EQ(faults.join(u'\n'), QString());
    return catalogue;
}

QStringList faultsOf(const char *file) {
    QStringList faults;
    (void)Catalogue::parse(file, &faults);
    return faults;
}

TEST(CatalogueTest, aTextHasItsWordsAndOneThatItDoesNotKnowStays) {
    const Catalogue german = of("# of menus\nOpen\n= Öffnen\n\nClose\n= Schließen\n");
    EXPECT_EQ(german.shown(u("Open")), u("Öffnen"));
    EXPECT_EQ(german.shown(u("Open it")), u("Open it"));
    EXPECT_EQ(german.shown(QString()), QString());
    EXPECT_TRUE(german.has(u("Close")));
    EXPECT_FALSE(german.has(u("close")));
}

TEST(CatalogueTest, whatDiffersComesBackAsItIsInAnyOrder) {
    const Catalogue german = of("%1 of %2 items\n= Von %2 Objekten %1\n%1 items\n= %1 Objekte\nOpen\n= Öffnen\n");
    EXPECT_EQ(german.shown(u("3 items")), u("3 Objekte"));
    EXPECT_EQ(german.shown(u("Open of 12 items")), u("Von 12 Objekten Open"));
    EXPECT_EQ(german.shown(u(" items")), u(" items")) << "nothing differs";
}

TEST(CatalogueTest, aNumberAloneStandsWhereOneIsMeant) {
    const Catalogue german = of("%N1 items\n= %N1 Objekte\nRecording time %N1\n= Aufnahmezeit %N1\n");
    for (const char *number : {"12", "1,234", "1.234", "1\u00A0234"})
        EXPECT_EQ(german.shown(u(number) + u(" items")), u(number) + u(" Objekte"));
    EXPECT_EQ(german.shown(u("Recording time 01:02")), u("Aufnahmezeit 01:02"));
    for (const char *words : {"Lost items", "12 lost items", ". items", "number 9 items"})
        EXPECT_EQ(german.shown(u(words)), u(words));
}

TEST(CatalogueTest, aTextWithinATextIsLookedUpWhereTheCatalogueSaysSo) {
    const Catalogue german =
        of("Conflicts with %L1 — pick a different key\n= Kollidiert mit %L1 – andere Taste wählen\n"
           "Emoji Picker uses Super+Shift+%1\n= Emoji-Auswahl nutzt Super+Umschalt+%1\n");
    EXPECT_EQ(german.shown(u("Conflicts with Emoji Picker uses Super+Shift+E — pick a different key")),
              u("Kollidiert mit Emoji-Auswahl nutzt Super+Umschalt+E – andere Taste wählen"));
}

TEST(CatalogueTest, aLineEndStandsInATextAsItIsWritten) {
    EXPECT_EQ(of("One.\\n\\nTwo.\n= Eins.\\nZwei.\n").shown(u("One.\n\nTwo.")), u("Eins.\nZwei."));
}

TEST(CatalogueTest, aTextOfManyMegabytesIsNotLookedAt) {
    const Catalogue german = of("%1 items\n= %1 Objekte\n");
    const QString longText = QString(1 << 22, u'x') + u(" items");
    EXPECT_EQ(german.shown(longText), longText);
}

TEST(CatalogueTest, whatIsWrongInAFileIsToldAndLeftOut) {
    EXPECT_THAT(faultsOf("Open\nClose\n= Schließen\n"),
                testing::ElementsAre(u("line 2: nothing stands under it: Open")));
    EXPECT_THAT(faultsOf("= Öffnen\n"), testing::ElementsAre(u("line 1: no text stands over it: ")));
    EXPECT_THAT(faultsOf("Open\n"), testing::ElementsAre(u("line 2: nothing stands under it: Open")));
    EXPECT_THAT(faultsOf("%1 of %2\n= %1\n"), testing::ElementsAre(u("line 2: its places are others: %1 of %2")));
    EXPECT_THAT(faultsOf("%L1 items\n= %1 Objekte\n"), testing::SizeIs(1));
    EXPECT_THAT(faultsOf("%N1 items\n= %1 Objekte\n"), testing::SizeIs(1));
    EXPECT_THAT(faultsOf("Open\n= Öffnen\nOpen\n= Auf\n"),
                testing::ElementsAre(u("line 4: it stands there twice: Open")));
    EXPECT_EQ(Catalogue::parse("%1 of %2\n= %1\n").shown(u("1 of 2")), u("1 of 2"));
    EXPECT_EQ(Catalogue::parse(QByteArray("\xFF\xFE\0\n= \xC3", 7)).shown(u("Open")), u("Open"));
}

class CatalogueFiles : public testing::Test {
protected:
    CatalogueFiles() {
        write("de.txt", "Open\n= Öffnen\n");
        write("fr.txt", "Open\n= Ouvrir\n");
    }
    void write(const char *name, const char *content) {
        QFile file(folder.filePath(u(name)));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
    }
    [[nodiscard]] QString openIn(const QStringList &languages) const {
        const auto found = Catalogue::find(folder.path(), languages);
        return found ? found->shown(u("Open")) : u("none");
    }
    QTemporaryDir folder;
};

TEST_F(CatalogueFiles, theFirstLanguageThatThereIsIsTaken) {
    EXPECT_EQ(openIn({u("de-AT"), u("de"), u("fr")}), u("Öffnen"));
    EXPECT_EQ(openIn({u("it"), u("fr_CA"), u("de")}), u("Ouvrir"));
    EXPECT_EQ(openIn({u("it")}), u("none"));
    EXPECT_EQ(Catalogue::find(folder.path(), {u("it"), u("fr_CA")})->language(), u("fr"))
        << "the toolkit's is found by it";
}

TEST_F(CatalogueFiles, whoWantsEnglishFirstGetsNoOther) {
    EXPECT_EQ(openIn({u("en-GB"), u("de")}), u("none"));
    EXPECT_EQ(openIn({u("C"), u("de")}), u("none"));
    EXPECT_EQ(openIn({}), u("none"));
}

TEST_F(CatalogueFiles, aLanguageIsNoPath) {
    ASSERT_TRUE(QDir(folder.path()).mkdir(u("sub")));
    const auto found = Catalogue::find(folder.filePath(u("sub")), {u("../de")});
    EXPECT_FALSE(found.has_value());
}

TEST(CatalogueTest, aTextIsInThisDesktopsWordsBeforeItIsInThePersonsLanguage) {
    setTranslation(of("Your computer. Simplified.\n= Ihr Computer. Einfacher.\n"));
    EXPECT_EQ(inDesktopWords(u("Your Mac. Simplified.")), u("Ihr Computer. Einfacher."));
    EXPECT_EQ(inDesktopWords(u("⌘⇧V")), u("Super+Shift+V"));
    setTranslation(nullptr);
    EXPECT_EQ(inDesktopWords(u("Your Mac. Simplified.")), u("Your computer. Simplified."));
}

} // namespace
} // namespace tavrine

// That every text that is shown can be in the person's language, that German has all of them, and that they fit.

#include "base/Catalogue.h"
#include "base/DesktopWords.h"
#include "look/Control.h"
#include "shell/views/ProgramViews.h"
#include "support/PaintedWords.h"

#include <QAbstractButton>
#include <QFile>
#include <QRegularExpression>
#include <QSet>

#include <algorithm>

#include <gmock/gmock.h>

namespace tavrine {
namespace {

constexpr QChar ellipsis(0x2026);

bool hasLetters(QStringView text) {
    return std::ranges::any_of(text, [](QChar c) { return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z'); });
}

/// A time of day stays as the desktop's own language has it.
QString withoutTimes(QString text) {
    static const QRegularExpression time(QStringLiteral("\\d+:\\d\\d [AP]M"));
    return text.remove(time);
}

/// What a person made, and what is written the same way everywhere. A piece of it may be a line of its own.
bool isNoTextOfOurs(const QString &words) {
    static const QStringList all{
        QStringLiteral("A line of text"), // of the fixture's history
        QStringLiteral("https://www.debian.org/"),
        QStringLiteral("mira@example.org"),
        QStringLiteral("#7B61FF"),
        QStringLiteral("#007AFF"),       // a colour well
        QStringLiteral("/Documents/"),   // folders
        QStringLiteral("31 Jan 2026, "), // by the desktop's own language
        QStringLiteral(" esc "),         // a key
        QStringLiteral("function uploadImage(imageBase64, fileName) { … }"),
    };
    const auto isIn = [&words](const QString &each) { return words.contains(each) || each.contains(words); };
    return std::ranges::any_of(all, isIn) || words.startsWith(QStringLiteral("//")); // the template's comments
}

class Language : public ProgramViews {
protected:
    ~Language() override { setTranslation(nullptr); }

    /// Painted, and then told to who does not see it.
    struct Words {
        QStringList painted;
        QStringList told;
        QStringList cut; ///< of those painted, by what lies beside them
    };
    static Words wordsOf(QWidget &view) {
        test::WordsDevice device(view.size());
        view.render(&device, {}, {}, QWidget::DrawChildren);
        Words words{device.words(), {}, {}};
        for (const test::PaintedWord &each : device.painted())
            if (!each.isWhole && each.place.height() > 1 && !isNoTextOfOurs(each.text)) // a script scrolls
                words.cut.append(each.text);
        QWidgetList widgets = view.findChildren<QWidget *>();
        widgets.append(&view);
        for (const QWidget *widget : widgets) {
            const bool asksForItsTip = qobject_cast<const look::Control *>(widget) != nullptr;
            words.told += {widget->windowTitle(), widget->accessibleName(), widget->accessibleDescription(),
                           asksForItsTip ? inDesktopWords(widget->toolTip()) : widget->toolTip()};
            if (const auto *button = qobject_cast<const QAbstractButton *>(widget))
                words.told += button->text();
        }
        return words;
    }
    void visitAll(const Visit &visit) {
        visitSettings(visit);
        visitMenu(visit);
        visitPanels(visit);
        visitEditor(visit);
        visitWelcome(visit);
        visitCards(visit);
        visitCapture(visit);
        visitRecording(visit);
    }
    static Catalogue german() {
        QFile file(QStringLiteral(TAVRINE_TEXTS "/de.txt"));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        QStringList faults;
        Catalogue catalogue = Catalogue::parse(file.readAll(), &faults);
        EXPECT_EQ(faults.join(u'\n'), QString());
        return catalogue;
    }
};

TEST_F(Language, everyTextIsAskedForBeforeItIsShown) {
    setTranslation([](QString text) {
        for (QChar &each : text)
            if (hasLetters(QStringView(&each, 1)))
                each = u'я';
        return text;
    });
    start(ColorScheme::light);
    int seen = 0;
    visitAll([&seen](QWidget &view, const QString &name) {
        const auto [painted, told, cut] = wordsOf(view);
        seen += int(painted.size());
        for (const QString &each : painted + told)
            EXPECT_TRUE(!hasLetters(withoutTimes(each)) || isNoTextOfOurs(each))
                << name.toStdString() << ": " << each.toStdString();
    });
    EXPECT_GT(seen, 300);
}

TEST_F(Language, germanHasEveryText) {
    const Catalogue catalogue = german();
    QSet<QString> missing;
    setTranslation([&](const QString &text) {
        if (hasLetters(text) && !catalogue.has(text) && !isNoTextOfOurs(text))
            missing.insert(text);
        return text;
    });
    start(ColorScheme::light);
    visitAll([](QWidget &view, const QString &) { (void)wordsOf(view); });
    EXPECT_EQ(missing.values().join(u'\n'), QString());
}

/// Controls ask again for what they were given in German.
TEST_F(Language, aGermanTextIsShownAsItIs) {
    const Catalogue catalogue = german();
    QFile file(QStringLiteral(TAVRINE_TEXTS "/de.txt"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const auto lines = QString::fromUtf8(file.readAll()).split(u'\n');
    for (const QString &line : lines) {
        if (!line.startsWith(QStringLiteral("= ")))
            continue;
        const QString words = line.mid(2).replace(QStringLiteral("\\n"), QStringLiteral("\n"));
        EXPECT_EQ(catalogue.shown(words), words);
    }
}

TEST_F(Language, inGermanNothingIsCutThatIsNotToldInFull) {
    setTranslation(german());
    start(ColorScheme::light);
    visitAll([](QWidget &view, const QString &name) {
        const auto [painted, told, cut] = wordsOf(view);
        EXPECT_EQ(cut.join(u'\n'), QString()) << name.toStdString();
        const QString all = told.join(u'\n');
        for (const QString &each : painted)
            EXPECT_TRUE(!each.endsWith(ellipsis) || all.contains(each))
                << name.toStdString() << ": " << each.toStdString();
    });
}

TEST_F(Language, inGermanNoControlLiesOnAnother) {
    setTranslation(german());
    start(ColorScheme::light);
    visitAll([](QWidget &view, const QString &name) {
        for (const auto *control : view.findChildren<look::Control *>()) {
            if (!control->isVisibleTo(&view) || control->text().isEmpty())
                continue;
            for (const auto *other :
                 control->parentWidget()->findChildren<look::Control *>(QString(), Qt::FindDirectChildrenOnly))
                EXPECT_TRUE(other == control || !other->isVisibleTo(&view) ||
                            !other->geometry().intersects(control->geometry()))
                    << name.toStdString() << ": " << control->text().toStdString() << " / "
                    << other->text().toStdString();
        }
    });
}

} // namespace
} // namespace tavrine

// That the controls say their texts in this desktop's words.
#include "look/Button.h"
#include "look/EmptyState.h"
#include "look/Indicators.h"
#include "look/ModalAlerts.h"
#include "look/Paint.h"
#include "look/SegmentedControl.h"
#include "look/Tile.h"
#include "support/OtherPlatform.h"

#include <gmock/gmock.h>

namespace tavrine::look {
namespace {

const QString ours = QStringLiteral("Your Mac. Simplified.");
const QString shown = QStringLiteral("Your computer. Simplified.");

/// What a reader of the screen and a screen reader get from a widget and all within it.
QStringList wordsOf(const QWidget &widget) {
    QStringList words{widget.windowTitle(), widget.accessibleName(), widget.accessibleDescription()};
    if (const auto *button = qobject_cast<const QAbstractButton *>(&widget))
        words.append(button->text());
    if (const auto *label = qobject_cast<const Label *>(&widget))
        words.append(label->text());
    for (const QObject *child : widget.children()) {
        if (child->isWidgetType())
            words += wordsOf(static_cast<const QWidget &>(*child));
    }
    words.removeAll(QString());
    return words;
}

void expectShown(const QWidget &widget) {
    const QStringList words = wordsOf(widget);
    EXPECT_THAT(words, testing::Contains(shown));
    for (const QString &text : words)
        EXPECT_FALSE(namesAnotherPlatform(text)) << text.toStdString();
}

TEST(ShownWords, controlsSayTheirTextsInTheDesktopsWords) {
    expectShown(Button(ours));
    expectShown(Button(QStringLiteral("plus"), ours));
    expectShown(Label(ours));
    expectShown(Tile({}, ours, ours));
    expectShown(EmptyState({}, ours, ours));
    expectShown(SegmentedControl({ours, QStringLiteral("Double Option")}));
    expectShown(AlertWindow({ours, ours, {QStringLiteral("Open System Settings")}}, {}));
}

TEST(ShownWords, aTextThatIsSetLaterIsSaidSoToo) {
    Label label(QStringLiteral("a"));
    label.setText(ours);
    expectShown(label);
    Tile tile({}, QStringLiteral("a"), QStringLiteral("b"));
    tile.setTitle(ours);
    tile.setSubtitle(ours);
    expectShown(tile);
    EmptyState empty({}, QStringLiteral("a"), {});
    empty.set({}, ours, ours);
    expectShown(empty);
    Button button(QStringLiteral("plus"), QStringLiteral("a"));
    button.setToolTip(ours);
    EXPECT_EQ(button.accessibleName(), shown);
}

TEST(ShownWords, aRowIsCalledByWhatItShows) {
    SettingsRow row({}, ours, ours);
    auto *trailing = new Button(QString());
    row.setTrailing(trailing);
    EXPECT_EQ(trailing->accessibleName(), shown);
}

TEST(ShownWords, aKeyCapHasTheWidthOfWhatItSays) {
    EXPECT_EQ(keyCapWidth(QStringLiteral("⌘⇧V")), keyCapWidth(QStringLiteral("Super+Shift+V")));
    EXPECT_GT(keyCapWidth(QStringLiteral("⌘⇧V")), keyCapWidth(QStringLiteral("V")));
}

} // namespace
} // namespace tavrine::look

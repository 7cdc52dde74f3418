#include "upload/CloudUploadSettingsView.h"

#include "adapters/fake/FakeScriptSyntax.h"
#include "adapters/fake/FakeUrlOpener.h"
#include "look/Button.h"
#include "look/Theme.h"
#include "look/Toggle.h"
#include "look/WrappedText.h"
#include "support/PaintedSymbols.h"
#include "upload/ScriptEditorView.h"
#include "upload/ScriptHighlighter.h"
#include "upload/TestLogView.h"
#include "upload/UploadFixture.h"

#include <QApplication>
#include <QTest>
#include <QTextBlock>

#include <gmock/gmock.h>

namespace tavrine::test {
namespace {

const QString defaultScript = QStringLiteral("function uploadImage() {\n  throw 1;\n}\n");
const QString stored = QStringLiteral("// a\u00a0b\r\nfunction uploadImage() {}");

class SettingsView : public UploadFixture {
protected:
    FakeScriptSyntax syntax;
    FakeUrlOpener urls;
    std::unique_ptr<CloudUploadSettingsView> view;
    ScriptEditorView *editor = nullptr;

    void open() {
        if (!manager)
            makeManager().setEnabled(true);
        view = std::make_unique<CloudUploadSettingsView>(
            CloudUploadSettingsModel::Ports{*manager, time, urls, [this] { return &syntax; }, runner(),
                                            [] { return QStringLiteral("name.png"); }},
            CloudUploadSettingsModel::Texts{defaultScript, QStringLiteral("the template")});
        view->resize(700, 600);
        view->show();
        editor = view->findChild<ScriptEditorView *>();
    }
    look::Button *button(const char *text) {
        for (auto *each : view->findChildren<look::Button *>()) {
            if (each->text() == QString::fromUtf8(text))
                return each;
        }
        return nullptr;
    }
    look::WrappedText *shown(const QString &text) {
        for (auto *each : view->findChildren<look::WrappedText *>()) {
            if (each->text() == text && each->isVisible())
                return each;
        }
        return nullptr;
    }
    void place(int position, int selectTo = -1) {
        QTextCursor cursor = editor->textCursor();
        cursor.setPosition(position);
        if (selectTo >= 0)
            cursor.setPosition(selectTo, QTextCursor::KeepAnchor);
        editor->setTextCursor(cursor);
    }
};

TEST_F(SettingsView, thePageSaysWhatTheScriptIsForWhatToBewareOfAndWhatEachButtonDoes) {
    open();
    const auto painted = [this] {
        view->resize(700, 1200); // all of the page
        QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
        WordsDevice device(view->size());
        view->render(&device, {}, {}, QWidget::DrawChildren);
        return std::pair(device.words().join(u' ').simplified(), symbolsOn(device));
    };
    const auto [words, symbols] = painted();
    for (const char *text :
         {"Custom Upload Script", "Adds an Upload button to screenshots once a script is saved below",
          "Upload screenshots anywhere with your own JavaScript function — S3, R2, Imgur, your own server, or anything "
          "else.",
          "Only use scripts you wrote or trust — this script can send your screenshots anywhere the code specifies.",
          "Read the Custom Upload Script docs", "function uploadImage(imageBase64, fileName) { … }",
          "Use ImgBB Template", "Test Script"})
        EXPECT_TRUE(words.contains(QString::fromUtf8(text))) << text << " in " << words.toStdString();
    for (const char *symbol : {"exclamationmark.triangle.fill", "arrow.up.right", "wand.and.stars", "play.fill"})
        EXPECT_TRUE(symbols.contains(QString::fromUtf8(symbol))) << symbol;
    EXPECT_FALSE(symbols.contains(QStringLiteral("lock.fill")));
    EXPECT_EQ(
        button("Use ImgBB Template")->toolTip(),
        QStringLiteral("Replaces the script below with a ready-to-use ImgBB uploader — just paste in your API key"));
    button("Read the Custom Upload Script docs")->click();
    EXPECT_EQ(urls.opened().size(), 1);
    manager->setEnabled(false);
    EXPECT_TRUE(painted().second.contains(QStringLiteral("lock.fill")));
}

TEST_F(SettingsView, whileItIsOffTheEditorIsReplaced) {
    open();
    EXPECT_TRUE(editor->isVisible());
    const auto words = [this] {
        view->resize(700, 1200); // all of the page
        QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
        WordsDevice device(view->size());
        view->render(&device);
        return device.words();
    };
    const QString locked = QStringLiteral("Turn on Custom Upload Script above to edit");
    EXPECT_FALSE(words().contains(locked));
    view->findChild<look::Toggle *>()->click();
    EXPECT_FALSE(manager->isEnabled());
    EXPECT_FALSE(editor->isVisible());
    EXPECT_FALSE(button("Save")->isVisible());
    EXPECT_TRUE(words().contains(locked));
    view->findChild<look::Toggle *>()->click();
    EXPECT_TRUE(manager->isEnabled());
    EXPECT_TRUE(editor->isVisible());
    EXPECT_FALSE(words().contains(locked));
}

TEST_F(SettingsView, aSwitchFromElsewhereIsShown) {
    open();
    manager->setEnabled(false);
    EXPECT_FALSE(view->findChild<look::Toggle *>()->isChecked());
    EXPECT_FALSE(editor->isVisible());
}

TEST_F(SettingsView, aStoredScriptThatNobodyTouchedIsSavedAsItIs) {
    makeManagerWith(stored);
    open();
    button("Save")->click();
    EXPECT_EQ(manager->savedScript(), stored);
}

TEST_F(SettingsView, whatIsTypedIsSavedToTheLetter) {
    open();
    editor->selectAll();
    QTest::keyClicks(editor, QStringLiteral("let uploadImage = 'a"));
    editor->insertPlainText(QStringLiteral("\u00a0\U0001F642'"));
    button("Save")->click();
    EXPECT_EQ(manager->savedScript(), QStringLiteral("let uploadImage = 'a\u00a0\U0001F642'"));
}

TEST_F(SettingsView, theKeyRingsAnswerLeavesTypedTextAlone) {
    keychain.store(item, stored.toUtf8());
    keychain.hold();
    open();
    QTest::keyClicks(editor, QStringLiteral("x"));
    keychain.release();
    ASSERT_TRUE(happens([&] { return manager->savedScript() == stored; }));
    EXPECT_EQ(editor->script(), QLatin1Char('x') + defaultScript);
}

TEST_F(SettingsView, theKeyRingsAnswerReplacesTheDefaultScript) {
    keychain.store(item, "function uploadImage() {}");
    keychain.hold();
    open();
    EXPECT_EQ(editor->script(), defaultScript);
    keychain.release();
    EXPECT_TRUE(happens([&] { return editor->script() == QStringLiteral("function uploadImage() {}"); }));
}

TEST_F(SettingsView, theSaveButtonConfirmsForAMoment) {
    open();
    button("Save")->click();
    ASSERT_TRUE(button("Saved"));
    EXPECT_EQ(button("Saved")->symbol(), QStringLiteral("checkmark"));
    time.advance(Seconds(1.6));
    EXPECT_TRUE(button("Save"));
}

TEST_F(SettingsView, theTemplateCanBeTakenBack) {
    open();
    button("Use ImgBB Template")->click();
    EXPECT_EQ(editor->script(), QStringLiteral("the template"));
    editor->undo();
    EXPECT_EQ(editor->script(), defaultScript);
}

TEST_F(SettingsView, aSyntaxErrorIsToldAndItsLineFound) {
    open();
    syntax.setError(QStringLiteral("SyntaxError: no"), 2);
    button("Save")->click();
    EXPECT_TRUE(shown(QStringLiteral("SyntaxError: no")));
    EXPECT_EQ(editor->textCursor().blockNumber(), 1);
    syntax.setError(QStringLiteral("SyntaxError: far"), 999); // past the end: no line
    button("Save")->click();
    EXPECT_TRUE(shown(QStringLiteral("SyntaxError: far")));
}

TEST_F(SettingsView, aTestCannotBeStartedTwice) {
    open();
    button("Test Script")->click();
    EXPECT_FALSE(button("Test Script")->isEnabled());
    runs[0].completion({.logs = {QStringLiteral("a"), QStringLiteral("b")}, .error = UploadScriptError::timeout(30)});
    EXPECT_TRUE(button("Test Script")->isEnabled());
    EXPECT_EQ(view->findChild<TestLogView *>()->toPlainText(), QStringLiteral("a\nb"));
    auto *told = shown(QStringLiteral("Script execution timed out after 30 seconds."));
    ASSERT_TRUE(told);
    EXPECT_EQ(told->symbol(), QStringLiteral("xmark.circle.fill"));
}

TEST_F(SettingsView, theLinkOfATestCanBeOpened) {
    open();
    button("Test Script")->click();
    runs[0].completion({.url = QStringLiteral("https://a.b/c")});
    auto *link = shown(QStringLiteral("https://a.b/c"));
    ASSERT_TRUE(link);
    EXPECT_EQ(link->symbol(), QStringLiteral("checkmark.circle.fill"));
    QTest::mouseClick(link, Qt::LeftButton);
    QTest::keyClick(link, Qt::Key_Return);
    EXPECT_EQ(urls.opened().size(), 2);
}

TEST_F(SettingsView, aLogWithoutEndIsShownByItsLastLines) {
    TestLogView log;
    QStringList lines(TestLogView::mostLines, QStringLiteral("x"));
    log.setLines(lines);
    EXPECT_EQ(log.blockCount(), TestLogView::mostLines);
    lines << QString(TestLogView::longestLine + 1, QLatin1Char('y'));
    log.setLines(lines);
    EXPECT_EQ(log.blockCount(), TestLogView::mostLines);
    EXPECT_EQ(log.document()->lastBlock().text().size(), TestLogView::longestLine);
}

TEST_F(SettingsView, returnKeepsTheIndentation) {
    open();
    place(int(defaultScript.indexOf(QLatin1String(";"))) + 1);
    QTest::keyClick(editor, Qt::Key_Return);
    QTest::keyClicks(editor, QStringLiteral("x"));
    EXPECT_EQ(editor->script(), QStringLiteral("function uploadImage() {\n  throw 1;\n  x\n}\n"));
}

TEST_F(SettingsView, returnBetweenBracesOpensALineWithin) {
    open();
    editor->selectAll();
    QTest::keyClicks(editor, QStringLiteral("if (a) {}"));
    QTest::keyClick(editor, Qt::Key_Left);
    QTest::keyClick(editor, Qt::Key_Return);
    QTest::keyClicks(editor, QStringLiteral("b"));
    EXPECT_EQ(editor->script(), QStringLiteral("if (a) {\n  b\n}"));
}

TEST_F(SettingsView, tabMovesTheSelectedLinesAndBackTabMovesThemBack) {
    open();
    editor->replaceText(QStringLiteral("a\n\nb\nc"));
    place(0, 4); // to the end of "b"
    QTest::keyClick(editor, Qt::Key_Tab);
    EXPECT_EQ(editor->script(), QStringLiteral("  a\n\n  b\nc"));
    QTest::keyClick(editor, Qt::Key_Backtab, Qt::ShiftModifier);
    EXPECT_EQ(editor->script(), QStringLiteral("a\n\nb\nc"));
    QTest::keyClick(editor, Qt::Key_Backtab, Qt::ShiftModifier);
    EXPECT_EQ(editor->script(), QStringLiteral("a\n\nb\nc"));
    editor->undo();
    EXPECT_EQ(editor->script(), QStringLiteral("  a\n\n  b\nc"));
}

TEST_F(SettingsView, tabWithoutASelectionIsAStep) {
    open();
    editor->replaceText(QStringLiteral("ab"));
    place(1);
    QTest::keyClick(editor, Qt::Key_Tab);
    EXPECT_EQ(editor->script(), QStringLiteral("a  b"));
}

TEST_F(SettingsView, aClosingBraceFirstOnItsLineMovesAStepBack) {
    open();
    editor->replaceText(QStringLiteral("{\n  "));
    place(4);
    QTest::keyClicks(editor, QStringLiteral("}"));
    EXPECT_EQ(editor->script(), QStringLiteral("{\n}"));
}

TEST_F(SettingsView, bothBracketsOfAPairAreMarked) {
    open();
    editor->replaceText(QStringLiteral("f(a)"));
    place(1);
    EXPECT_EQ(editor->extraSelections().size(), editor->hasFocus() ? 3 : 2);
    place(0);
    EXPECT_EQ(editor->extraSelections().size(), editor->hasFocus() ? 1 : 0);
}

TEST_F(SettingsView, everyColourCanBeRead) {
    for (const bool isDark : {false, true}) {
        const look::Theme theme = isDark ? look::darkTheme() : look::lightTheme();
        for (int kind = 0; kind <= int(ScriptTokenKind::bracket); ++kind)
            EXPECT_GE(look::contrast(ScriptHighlighter::colourOf(ScriptTokenKind(kind), isDark), theme.field), 4.5)
                << kind << isDark;
    }
}

} // namespace
} // namespace tavrine::test

int main(int argc, char **argv) {
    testing::InitGoogleMock(&argc, argv);
    if (GTEST_FLAG_GET(list_tests))
        return RUN_ALL_TESTS();
    QApplication application(argc, argv);
    return RUN_ALL_TESTS();
}

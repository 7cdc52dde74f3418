#include "look/ModalAlerts.h"

#include "look/Button.h"
#include "support/PaintedWords.h"

#include <QApplication>
#include <QPlainTextEdit>
#include <QScreen>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

namespace tavrine::look {
namespace {

class ModalAlertsTest : public testing::Test {
protected:
    /// What the person does while the question is up.
    void whileShown(std::function<void(AlertWindow &)> act) {
        QTimer::singleShot(0, qApp, [act = std::move(act)] {
            auto *window = qobject_cast<AlertWindow *>(QApplication::activeModalWidget());
            ASSERT_NE(window, nullptr);
            window->activateWindow();
            act(*window);
            if (window->isVisible()) { // a question that nobody answers would stand for ever
                ADD_FAILURE() << "the question was not answered";
                window->reject();
            }
        });
    }
    static void click(AlertWindow &window, const QString &text) {
        for (Button *button : window.findChildren<Button *>()) {
            if (button->text() == text)
                QTest::mouseClick(button, Qt::LeftButton);
        }
    }
    [[nodiscard]] std::optional<QString> ask() { return alerts.runModalForText(question, 360, 120); }

    ModalAlerts alerts;
    Alert question{QStringLiteral("Keep?"),
                   QStringLiteral("It will be there tomorrow."),
                   {QStringLiteral("Save"), QStringLiteral("Cancel")}};
};

TEST_F(ModalAlertsTest, returnTakesTheFirstButtonAndEscapeTheLast) {
    whileShown([](AlertWindow &window) { QTest::keyClick(&window, Qt::Key_Return); });
    EXPECT_TRUE(alerts.runModal(question));
    whileShown([](AlertWindow &window) { QTest::keyClick(&window, Qt::Key_Escape); });
    EXPECT_FALSE(alerts.runModal(question));
}

TEST_F(ModalAlertsTest, beforeAWindowAtTheEdgeOfTheScreenItStandsWhollyOnTheScreen) {
    const QRect usable = QGuiApplication::primaryScreen()->availableGeometry();
    QWidget asking;
    asking.setGeometry(QRect(usable.bottomRight() - QPoint(40, 40), QSize(80, 80)));
    asking.show();
    asking.activateWindow();
    QRect frame;
    whileShown([&](AlertWindow &window) {
        QApplication::processEvents();
        frame = window.frameGeometry();
        window.reject();
    });
    EXPECT_FALSE(alerts.runModal(question));
    EXPECT_TRUE(usable.contains(frame)) << frame.right() << " " << frame.bottom();
}

TEST_F(ModalAlertsTest, longWordsWrapWhereTheyAreReadWellAndStandInTheirParagraphs) {
    question.message = QStringLiteral("A question that has more to say than fits into one line of such a window");
    question.information = QStringLiteral("The first of a sentence of many words. ").repeated(6) +
                           QStringLiteral("\n\nAnd the second paragraph.");
    whileShown([&](AlertWindow &window) {
        QApplication::processEvents();
        EXPECT_LE(window.width(), 500);
        test::WordsDevice device(window.size());
        window.render(&device, {}, {}, QWidget::DrawChildren);
        const QString all = device.words().join(u' ').simplified();
        EXPECT_TRUE(all.contains(question.message)) << all.toStdString();
        EXPECT_TRUE(all.contains(question.information.simplified())) << all.toStdString();
        qreal bottom = 0;
        for (const test::PaintedWord &each : device.painted()) {
            EXPECT_TRUE(each.isWhole) << each.text.toStdString();
            const bool isParagraph = each.text.startsWith(QStringLiteral("And the second"));
            EXPECT_TRUE(!isParagraph || each.place.top() >= bottom + 10) << each.place.top() << " after " << bottom;
            if (!isParagraph && each.text.contains(QStringLiteral("words")))
                bottom = std::max(bottom, each.place.bottom());
        }
        EXPECT_GT(bottom, 0);
        window.reject();
    });
    EXPECT_FALSE(alerts.runModal(question));
}

TEST_F(ModalAlertsTest, fewWordsMakeASmallWindow) {
    whileShown([](AlertWindow &window) {
        QApplication::processEvents();
        EXPECT_LT(window.width(), 280);
        window.reject();
    });
    EXPECT_FALSE(alerts.runModal(question));
}

TEST_F(ModalAlertsTest, theButtonsDoWhatTheySay) {
    whileShown([](AlertWindow &window) { click(window, QStringLiteral("Save")); });
    EXPECT_TRUE(alerts.runModal(question));
    whileShown([](AlertWindow &window) { click(window, QStringLiteral("Cancel")); });
    EXPECT_FALSE(alerts.runModal(question));
}

TEST_F(ModalAlertsTest, controlReturnSavesWhatWasWrittenLinesAndAll) {
    whileShown([](AlertWindow &window) {
        QTest::keyClicks(window.textEdit(), QStringLiteral("two"));
        QTest::keyClick(window.textEdit(), Qt::Key_Return);
        QTest::keyClicks(window.textEdit(), QStringLiteral("lines"));
        QTest::keyClick(window.textEdit(), Qt::Key_Return, Qt::ControlModifier);
    });
    EXPECT_EQ(ask(), QStringLiteral("two\nlines"));
}

TEST_F(ModalAlertsTest, escapeInTheTextCancels) {
    whileShown([](AlertWindow &window) {
        QTest::keyClicks(window.textEdit(), QStringLiteral("lost"));
        QTest::keyClick(window.textEdit(), Qt::Key_Escape);
    });
    EXPECT_EQ(ask(), std::nullopt);
}

TEST_F(ModalAlertsTest, anEmptyTextIsAText) {
    whileShown([](AlertWindow &window) { click(window, QStringLiteral("Save")); });
    const auto text = ask();
    ASSERT_TRUE(text);
    EXPECT_TRUE(text->isEmpty());
}

TEST_F(ModalAlertsTest, theTextHasItsRoomAndTheKeyboard) {
    whileShown([](AlertWindow &window) {
        EXPECT_EQ(window.textEdit()->parentWidget()->size(), QSize(360, 120));
        EXPECT_EQ(window.focusWidget(), window.textEdit());
        QTest::keyClick(&window, Qt::Key_Escape);
    });
    EXPECT_EQ(ask(), std::nullopt);
}

} // namespace
} // namespace tavrine::look

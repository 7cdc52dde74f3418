#include "look/ModalAlerts.h"

#include "look/Button.h"

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

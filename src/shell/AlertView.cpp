#include "shell/AlertView.h"

#include <QDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QShortcut>
#include <QVBoxLayout>

namespace tavrine {
namespace {

constexpr int margin = 20;
constexpr int spacing = 12;
constexpr int textWidth = 360;

/// The window of one question, with an area for text between its words and its buttons when there is one.
class Question : public QDialog {
public:
    Question(const Alert &alert, QPlainTextEdit *text) {
        setWindowTitle(QStringLiteral("Tavrine"));
        // Above the panels, which stand above everything else.
        setWindowFlags(Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowStaysOnTopHint);
        auto *column = new QVBoxLayout(this);
        column->setContentsMargins(margin, margin, margin, margin);
        column->setSpacing(spacing);
        column->setSizeConstraint(QLayout::SetFixedSize);

        auto *message = new QLabel(alert.message);
        QFont bold = message->font();
        bold.setBold(true);
        message->setFont(bold);
        column->addWidget(message);
        auto *information = new QLabel(alert.information);
        information->setWordWrap(true);
        information->setFixedWidth(textWidth);
        column->addWidget(information);
        if (text)
            column->addWidget(text);
        column->addLayout(buttons(alert.buttons));
        if (text)
            text->setFocus();
        auto *accept = new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_Return), this);
        connect(accept, &QShortcut::activated, this, &QDialog::accept);
    }

private:
    QLayout *buttons(const QStringList &titles) {
        auto *row = new QHBoxLayout;
        row->addStretch();
        // The first button stands last, where the desktop's dialogues have the one that goes on.
        for (qsizetype i = titles.size() - 1; i >= 0; --i) {
            auto *button = new QPushButton(titles.at(i));
            button->setDefault(i == 0);
            button->setAutoDefault(i == 0);
            connect(button, &QPushButton::clicked, this, i == 0 ? &QDialog::accept : &QDialog::reject);
            row->addWidget(button);
        }
        return row;
    }
};

} // namespace

bool AlertView::runModal(const Alert &alert) {
    return Question(alert, nullptr).exec() == QDialog::Accepted;
}

std::optional<QString> AlertView::runModalForText(const Alert &alert, int width, int height) {
    auto *text = new QPlainTextEdit;
    text->setFixedSize(width, height);
    text->setTabChangesFocus(true);
    text->setAccessibleName(alert.message);
    Question question(alert, text);
    if (question.exec() != QDialog::Accepted)
        return std::nullopt;
    return text->toPlainText();
}

} // namespace tavrine

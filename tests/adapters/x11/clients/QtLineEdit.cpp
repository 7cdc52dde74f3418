// A foreign window with one line of text. Prints "focus" when it has the keyboard, and the text at each change.
#include <QApplication>
#include <QLineEdit>

#include <cstdio>

namespace {

class Line final : public QLineEdit {
protected:
    void focusInEvent(QFocusEvent *event) override {
        QLineEdit::focusInEvent(event);
        std::puts("focus");
        std::fflush(stdout);
    }
};

} // namespace

int main(int argc, char **argv) {
    QApplication application(argc, argv);
    Line line;
    line.resize(500, 60);
    QObject::connect(&line, &QLineEdit::textChanged, [](const QString &text) {
        std::printf("text %s\n", text.toUtf8().constData());
        std::fflush(stdout);
    });
    line.show();
    return QApplication::exec();
}

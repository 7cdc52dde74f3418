// A foreign window that copies a text at each key that is pressed in it: copy_on_key TEXT [FURTHER_TYPE]. With the
// further type the copy carries that too, as password managers mark theirs. Prints "focus" when it has the keyboard.
#include <QClipboard>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMimeData>
#include <QRasterWindow>

#include <cstdio>

namespace {

class Window final : public QRasterWindow {
protected:
    void focusInEvent(QFocusEvent * /*event*/) override {
        std::puts("focus");
        std::fflush(stdout);
    }
    void keyPressEvent(QKeyEvent * /*event*/) override {
        const QStringList arguments = QGuiApplication::arguments();
        auto *const data = new QMimeData;
        data->setText(arguments.value(1));
        if (arguments.size() > 2)
            data->setData(arguments.at(2), "secret");
        QGuiApplication::clipboard()->setMimeData(data);
    }
};

} // namespace

int main(int argc, char **argv) {
    QGuiApplication application(argc, argv);
    Window window;
    window.resize(300, 100);
    window.show();
    return QGuiApplication::exec();
}

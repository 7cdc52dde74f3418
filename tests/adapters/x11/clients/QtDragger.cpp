// As gtk3-dragger, in this toolkit.

#include <QApplication>
#include <QDrag>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QMouseEvent>
#include <QSlider>
#include <QTimer>
#include <QUrl>
#include <QVBoxLayout>

#include <cstdio>

namespace {

class Field final : public QLabel {
public:
    Field(const QString &title, const QUrl &url, const QString &text) : QLabel(title), m_url(url), m_text(text) {
        setFixedHeight(80);
    }

protected:
    void mousePressEvent(QMouseEvent *event) override { m_start = event->pos(); }
    void mouseMoveEvent(QMouseEvent *event) override {
        if ((event->pos() - m_start).manhattanLength() < QApplication::startDragDistance())
            return;
        auto *content = new QMimeData;
        if (!m_url.isEmpty())
            content->setUrls({m_url});
        if (!m_text.isEmpty())
            content->setText(m_text);
        auto *drag = new QDrag(this);
        drag->setMimeData(content);
        std::puts("drag");
        std::fflush(stdout);
        drag->exec(Qt::CopyAction);
    }

private:
    QUrl m_url;
    QString m_text;
    QPoint m_start;
};

} // namespace

int main(int argc, char **argv) {
    const QApplication application(argc, argv);
    const QUrl file = QUrl::fromLocalFile(QString::fromLocal8Bit(argc > 1 ? argv[1] : "/etc/hostname"));
    QWidget window;
    window.setWindowTitle(QStringLiteral("Qt 6 drags"));
    auto *column = new QVBoxLayout(&window);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(new Field(QStringLiteral("file"), file, {}));
    column->addWidget(new Field(QStringLiteral("text"), {}, file.toString()));
    column->addWidget(new Field(QStringLiteral("link"), QUrl(QStringLiteral("https://example.org/")), {}));
    auto *line = new QLineEdit(QStringLiteral("a line of text that strokes select ").repeated(3));
    line->setFixedHeight(80);
    column->addWidget(line);
    auto *slider = new QSlider(Qt::Horizontal);
    slider->setFixedHeight(80);
    column->addWidget(slider);
    window.setGeometry(100, 150, 400, 400);
    window.show();
    QTimer::singleShot(300, &window, [] {
        std::puts("ready");
        std::fflush(stdout);
    });
    return QApplication::exec();
}

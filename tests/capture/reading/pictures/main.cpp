// Paints the notepad, the result sheet, the panel of codes and what lies over the editor's picture into files, for
// people to look at; it is never installed.
//
// usage: reading_pictures FOLDER
#include "adapters/fake/FakeAppearance.h"
#include "adapters/fake/FakeCodeDetector.h"
#include "adapters/fake/FakeFilePanels.h"
#include "adapters/fake/FakeImageCoder.h"
#include "adapters/fake/FakePasteboard.h"
#include "adapters/fake/FakeRecognizer.h"
#include "adapters/fake/FakeUrlOpener.h"
#include "adapters/fake/VirtualTime.h"
#include "base/ConcurrentQueue.h"
#include "base/NotificationCenter.h"
#include "base/SerialQueue.h"
#include "capture/editor/EditorScans.h"
#include "capture/reading/OCRManager.h"
#include "capture/reading/OCRNotepadState.h"
#include "capture/reading/OCRNotepadView.h"
#include "capture/reading/OCRResultView.h"
#include "capture/reading/QRResultView.h"
#include "look/Look.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDir>
#include <QPainter>
#include <QSemaphore>
#include <QTest>

using namespace tavrine;

namespace {

QString words(const char *utf8) {
    return QString::fromUtf8(utf8);
}

const char *const letter = "Dear Margaret,\n\nthank you for your letter of 14 March, which reached us only yesterday. "
                           "The parcel with the two lamps was sent on Monday and should be with you by Thursday.\n\n"
                           "With kind regards,\nOrders";

QImage photograph() {
    QImage image(760, 480, QImage::Format_RGB32);
    QPainter painter(&image);
    QLinearGradient sky(0, 0, 0, 480);
    sky.setColorAt(0, QColor(0x3A, 0x6E, 0xC8));
    sky.setColorAt(1, QColor(0xF6, 0xB2, 0x6B));
    painter.fillRect(image.rect(), sky);
    return image;
}

class Studio {
public:
    explicit Studio(QString folder) : m_folder(std::move(folder)) {}

    void paintAll() {
        paintNotepads();
        paintSheets();
        paintPanels();
        paintEditor();
    }
    FakeAppearance appearance;
    VirtualTime time;
    QString theme;

private:
    void save(QWidget &widget, const char *name) {
        widget.resize(widget.sizeHint());
        widget.show();
        QTest::qWait(20);
        const QPixmap picture = widget.grab();
        QImage image(picture.size() + QSize(40, 40), QImage::Format_RGB32);
        image.fill(QColor(0x6B, 0x7A, 0x8F));
        QPainter(&image).drawPixmap(20, 20, picture);
        image.save(QStringLiteral("%1/%2-%3.png").arg(m_folder, QLatin1String(name), theme));
    }
    void paintNotepads() {
        OCRNotepadState state;
        OCRNotepadView view(state, m_pasteboard, time, [] {});
        save(view, "notepad-loading");
        state.setText(words(letter));
        state.setLoading(false);
        save(view, "notepad-copied");
        time.advance(Seconds{1});
        save(view, "notepad-text");

        OCRNotepadState empty;
        OCRNotepadView none(empty, m_pasteboard, time, [] {});
        empty.setErrorMessage(words(OCRNotepadState::noTextMessage));
        empty.setLoading(false);
        save(none, "notepad-error");

        OCRNotepadState much;
        OCRNotepadView full(much, m_pasteboard, time, [] {});
        QString book;
        for (int i = 0; i < 200; ++i)
            book += words(letter) + QLatin1Char('\n');
        much.setText(book);
        much.setLoading(false);
        time.advance(Seconds{1});
        save(full, "notepad-long");
    }
    void paintSheets() {
        OCRResultView sheet(words(letter), m_pasteboard, m_opener, time, {.onCopy = {}, .onCancel = [] {}});
        save(sheet, "sheet");
        sheet.model().copyText();
        save(sheet, "sheet-copied");
    }
    void paintPanels() {
        const QRResultView::Ports ports{m_pasteboard, m_opener, time};
        QRResultView none({}, ports, [] {});
        save(none, "codes-none");
        QRResultView text({words("WIFI:S:Guest;T:WPA;P:welcome;;")}, ports, [] {});
        save(text, "codes-one");
        QRResultView url({words("https://example.org/menu?table=7")}, ports, [] {});
        save(url, "codes-url");
        QRResultView copied({words("https://example.org/menu?table=7"), words("4006381333931")}, ports, [] {});
        copied.findChildren<QAbstractButton *>().last()->click();
        save(copied, "codes-copied");
        QRResultView tall({words("BEGIN:VCARD\nVERSION:3.0\nN:Quigley;Margaret\n") + QString(3000, QLatin1Char('x'))},
                          ports, [] {});
        save(tall, "codes-long");
        QStringList ten;
        for (int i = 0; i < 10; ++i)
            ten.append(i % 3 == 0 ? words("https://example.org/a/very/long/path/that/goes/on?and=on&and=on%1").arg(i)
                                  : words("Seat %1, row 12").arg(i));
        QRResultView many(ten, ports, [] {});
        save(many, "codes-ten");
    }
    void paintEditor() {
        FakeFilePanels panels(time);
        FakeImageCoder coder;
        NotificationCenter center;
        FakeRecognizer recognizer;
        FakeCodeDetector detector;
        SerialQueue queue(words("pictures"));
        ConcurrentQueue recognition(words("recognition"), 1);
        OCRManager manager(recognizer, recognition, time);
        const EditorScans::Ports ports{{manager, detector, recognition, time}, m_pasteboard, m_opener};
        EditorView editor(
            photograph(), {time, m_pasteboard, panels, coder, center, words("/tmp"), queue}, {},
            {.opened = {}, .extractText = EditorScans::extractText(ports), .scanQr = EditorScans::scanQr(ports)});
        editor.setFixedSize(900, 600);
        const auto settle = [&] {
            QSemaphore done; // one thread, so what was handed in before is done
            recognition.async([&done] { done.release(); });
            done.acquire();
            time.runPending();
        };
        save(editor, "editor");
        editor.model().scanQr();
        save(editor, "editor-scanning");
        settle();
        time.advance(Seconds{0.3});
        save(editor, "editor-no-code");
        time.advance(Seconds{3});
        detector.setCodes({{words("https://example.org/left"), {0, 0.7, 0.12, 0.2}},
                           {words("WIFI:S:Guest;T:WPA;P:welcome;;"), {0.4, 0.4, 0.15, 0.2}},
                           {words("short"), {0.85, 0.05, 0.12, 0.15}},
                           {words("HTTP://EXAMPLE.ORG/IN/CAPITALS"), {0.05, 0, 0.12, 0.15}}});
        editor.model().scanQr();
        settle();
        save(editor, "editor-codes");
        recognizer.setLines(words(letter).split(QLatin1Char('\n')));
        editor.model().extractText();
        save(editor, "editor-extracting");
        settle();
        time.advance(Seconds{1.2});
        save(editor, "editor-sheet");
    }

    QString m_folder;
    FakePasteboard m_pasteboard;
    FakeUrlOpener m_opener;
};

} // namespace

int main(int argc, char **argv) {
    QApplication application(argc, argv);
    const QString folder = QApplication::arguments().value(1, QStringLiteral("."));
    QDir().mkpath(folder);
    for (const bool isDark : {false, true}) {
        Studio studio(folder);
        studio.theme = isDark ? words("dark") : words("light");
        DesktopAppearance appearance = studio.appearance.settings();
        appearance.colorScheme = isDark ? ColorScheme::dark : ColorScheme::light;
        studio.appearance.set(appearance);
        look::Look look(studio.time, &studio.appearance);
        look.setCompositing(true);
        studio.paintAll();
    }
    return 0;
}

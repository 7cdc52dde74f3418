// Shows the card, the save dialog and the settings page to people, as pictures in a folder: snip_pictures FOLDER.
#include "adapters/fake/FakeAppearance.h"
#include "adapters/fake/FakeFilePanels.h"
#include "adapters/fake/VirtualTime.h"
#include "base/NotificationCenter.h"
#include "base/UserDefaults.h"
#include "capture/SnipSaveDialogModel.h"
#include "capture/SnipSaveDialogView.h"
#include "capture/SnipperSettingsModel.h"
#include "capture/SnipperSettingsView.h"
#include "capture/SnippetPreviewCard.h"
#include "capture/SnippetPreviewModel.h"
#include "look/Look.h"
#include "upload/PlayedUpload.h"

#include <QAbstractButton>
#include <QApplication>
#include <QEnterEvent>
#include <QLinearGradient>
#include <QPainter>
#include <QTemporaryDir>

using namespace tavrine;

namespace {

QImage capture(int width, int height, bool isDark) {
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(isDark ? QColor(0x1B, 0x1E, 0x26) : QColor(0xFA, 0xFA, 0xF7));
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    QLinearGradient band(0, 0, width, 0);
    band.setColorAt(0, QColor(0x5B, 0x6C, 0xF9));
    band.setColorAt(1, QColor(0x2F, 0xC8, 0xB8));
    painter.fillRect(QRectF(0, 0, width, height / 8.0), band);
    QFont font = painter.font();
    font.setPixelSize(std::max(6, height / 22));
    painter.setFont(font);
    painter.setPen(isDark ? Qt::white : Qt::black);
    for (int line = 0; line < 14; ++line)
        painter.drawText(QPointF(width * 0.05, height * (0.22 + line * 0.055)),
                         QStringLiteral("The quick brown fox jumps over the lazy dog, line %1").arg(line));
    return image;
}

void save(QWidget &widget, const QString &path, bool isDark) {
    widget.show();
    QApplication::processEvents();
    const QPixmap picture = widget.grab();
    QImage image(picture.size() + QSize(40, 40) * picture.devicePixelRatio(), QImage::Format_RGB32);
    image.setDevicePixelRatio(picture.devicePixelRatio());
    image.fill(isDark ? QColor(0x12, 0x14, 0x1A) : QColor(0xD8, 0xDE, 0xE8));
    QPainter painter(&image);
    painter.drawPixmap(20, 20, picture);
    painter.end();
    image.save(path);
}

} // namespace

int main(int argc, char **argv) {
    QApplication application(argc, argv);
    const QString folder = QApplication::arguments().value(1);
    QTemporaryDir home;
    VirtualTime time;
    NotificationCenter center;
    UserDefaults defaults(home.filePath(QStringLiteral("d.plist")), time, center);
    FakePasteboard pasteboard;
    test::PlayedUpload played{time, pasteboard};
    FakeFilePanels panels(time);
    Folders folders;
    folders.documents = QStringLiteral("/home/ada/Documents");
    for (const bool isDark : {false, true}) {
        const QString suffix = isDark ? QStringLiteral("-dark.png") : QStringLiteral("-light.png");
        FakeAppearance appearance;
        appearance.set({.colorScheme = isDark ? ColorScheme::dark : ColorScheme::light});
        look::Look look(time, &appearance);
        look.setCompositing(true);
        const auto card = [&](const char *name, const QImage &image, double seconds, auto prepare) {
            SnippetPreviewModel::Actions actions;
            actions.onSave = [](const auto &completion) { completion(true); };
            const auto model = std::make_shared<SnippetPreviewModel>(
                image, actions, time, played.makeButton(UploadButton::AfterLink::dismissView));
            SnippetPreviewCard view(model);
            model->appear();
            time.advance(Seconds(seconds));
            view.show();
            prepare(*model, view);
            time.advance(Seconds(0.1));
            save(view, folder + QLatin1Char('/') + QLatin1String(name) + suffix, isDark);
            model->stop();
        };
        const auto nothing = [](SnippetPreviewModel &, QWidget &) {};
        played.isShown = false;
        card("card", capture(1600, 900, isDark), 2.0, nothing);
        card("card-one-pixel", capture(1, 1, isDark), 4.0, nothing);
        card("card-narrow", capture(60, 2000, isDark), 6.0, nothing);
        card("card-wide", capture(3840, 90, isDark), 6.0, nothing);
        card("card-saved", capture(900, 700, !isDark), 1.0,
             [](SnippetPreviewModel &model, QWidget &) { model.pressSave(); });
        card("card-hover", capture(900, 700, !isDark), 1.0, [](SnippetPreviewModel &, QWidget &view) {
            for (QAbstractButton *button : view.findChildren<QAbstractButton *>())
                if (button->toolTip() == QStringLiteral("Open in editor") ||
                    button->text() == QStringLiteral("Get Text")) {
                    QEnterEvent enter(QPointF(5, 5), QPointF(5, 5), QPointF(5, 5));
                    QApplication::sendEvent(button, &enter);
                }
        });
        card("card-focus", capture(900, 700, isDark), 1.0, [](SnippetPreviewModel &, QWidget &view) {
            view.activateWindow();
            for (QAbstractButton *button : view.findChildren<QAbstractButton *>())
                if (button->text() == QStringLiteral("Save"))
                    button->setFocus(Qt::TabFocusReason);
        });
        played.isShown = true;
        card("card-upload", capture(1280, 800, isDark), 3.0, nothing);
        const auto uploading = [&](SnippetPreviewModel &model, QWidget &) {
            model.pressUpload();
            played.prepare();
        };
        card("card-uploading", capture(1280, 800, isDark), 3.0, uploading);
        card("card-uploaded", capture(1280, 800, isDark), 3.0, [&](SnippetPreviewModel &model, QWidget &view) {
            uploading(model, view);
            played.succeed();
        });
        for (const char *path : {"/home/ada/Documents/tavrine",
                                 "/home/ada/Documents/Work/Customers/A rather long name of a customer/Pictures/2026"}) {
            SnipSaveDialogView dialog(
                std::make_shared<SnipSaveDialogModel>(QLatin1String(path), SnipSaveDialogModel::Actions{}));
            save(dialog, folder + QStringLiteral("/dialog-%1").arg(qstrlen(path)) + suffix, isDark);
        }
        QWidget window;
        window.setAutoFillBackground(true);
        window.setPalette(look::paletteOf(look.theme()));
        window.resize(640, 420);
        defaults.set(QStringLiteral("snipMuteSound"), isDark);
        auto *page = new SnipperSettingsView(
            std::make_unique<SnipperSettingsModel>(SnipperSettingsModel::Ports{defaults, center, panels, folders}));
        page->setParent(&window);
        page->setGeometry(window.rect());
        save(window, folder + QStringLiteral("/settings") + suffix, isDark);
    }
    return 0;
}

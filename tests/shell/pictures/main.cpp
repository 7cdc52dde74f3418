// Shows the emoji picker, the menu, a toast and the welcome window to people, as pictures in a folder, and how long the
// picker takes from a key to its repaint: views_pictures FOLDER EMOJI_TABLE.
#include "adapters/fake/FakeAccess.h"
#include "adapters/fake/FakeAppearance.h"
#include "adapters/fake/FakeDesktop.h"
#include "adapters/fake/FakeUrlOpener.h"
#include "adapters/fake/VirtualTime.h"
#include "base/NotificationCenter.h"
#include "base/UserDefaults.h"
#include "clipboard/ClipboardDatabase.h"
#include "look/Look.h"
#include "look/SearchField.h"
#include "panels/ToastView.h"
#include "shell/AppDelegate.h"
#include "shell/OnboardingView.h"
#include "shell/menu/StatusMenuView.h"
#include "shell/settings/MainAppView.h"
#include "utilities/emoji/EmojiPickerView.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QPainter>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>

using namespace tavrine;

namespace {

void save(QWidget &widget, const QString &path, const QColor &ground) {
    const QPixmap picture = widget.grab();
    QImage image(picture.size(), QImage::Format_RGB32);
    image.fill(ground);
    QPainter painter(&image);
    painter.drawPixmap(0, 0, picture);
    painter.end();
    image.save(path);
}

void measure(EmojiPickerView &view) {
    auto *field = view.findChild<QLineEdit *>();
    const QImage screen(view.size(), QImage::Format_RGB32);
    for (const char *round : {"first", "cached"}) {
        std::vector<double> times;
        for (const char *query : {"a", "e", "s", "fl", "man", "face", "heart", "o", "t", "flag", "arrow", ""}) {
            QElapsedTimer timer;
            timer.start();
            field->setText(QLatin1String(query));
            QImage target = screen;
            view.render(&target);
            times.push_back(double(timer.nsecsElapsed()) / 1e6);
        }
        std::ranges::sort(times);
        printf("%s: key to repaint median %.2f ms, worst %.2f ms\n", round, times[times.size() / 2], times.back());
    }
}

} // namespace

/// The menu of the tray item, and every page of the settings, of a program on a desktop of fakes.
void saveMenuAndSettings(const QString &folder, const QString &suffix, const QColor &ground) {
    QTemporaryDir home;
    FakeDesktop desktop{{.applicationSupport = home.filePath(QStringLiteral("data")),
                         .home = home.path(),
                         .documents = home.filePath(QStringLiteral("Documents")),
                         .temporary = home.filePath(QStringLiteral("tmp"))}};
    NotificationCenter center;
    UserDefaults defaults(home.filePath(QStringLiteral("d.plist")), desktop.time(), center);
    defaults.set(QStringLiteral("hasCompletedOnboarding"), true);
    ClipboardDatabase database(home.filePath(QStringLiteral("data/clipboard.db")));
    AppDelegate delegate(Shell::Parts{desktop, defaults, center, database});
    delegate.applicationDidFinishLaunching();
    const auto settle = [&desktop] {
        desktop.time().advance(std::chrono::seconds(3));
        QCoreApplication::processEvents();
    };
    desktop.statusItem().press({1300, 12});
    for (QWidget *widget : QApplication::allWidgets()) {
        if (auto *menu = qobject_cast<StatusMenuView *>(widget)) {
            menu->resize(menu->sizeHint());
            menu->show();
            settle();
            save(*menu, folder + QStringLiteral("/menu") + suffix, ground);
        }
    }
    delegate.openSettings();
    auto *window = static_cast<MainAppView *>(delegate.shell().largeWindows().window(LargeWindows::Kind::settings));
    for (const QSize size : {MainAppView::firstSize, MainAppView::smallestSize}) {
        window->resize(size);
        const QString name =
            size == MainAppView::smallestSize ? QStringLiteral("/small-") : QStringLiteral("/settings-");
        for (const SidebarItemText &page : sidebarItemTexts) {
            window->setSelection(page.item);
            settle();
            save(*window, folder + name + QString::fromLatin1(page.text).toLower().replace(u' ', u'-') + suffix,
                 ground);
        }
    }
}

int main(int argc, char **argv) {
    QApplication application(argc, argv);
    const QString folder = application.arguments().value(1);
    QTemporaryDir home;
    VirtualTime time;
    NotificationCenter center;
    UserDefaults defaults(home.filePath(QStringLiteral("d.plist")), time, center);
    EmojiPickerStore store(defaults, application.arguments().value(2));
    for (const bool isDark : {false, true}) {
        const QString suffix = isDark ? QStringLiteral("-dark.png") : QStringLiteral("-light.png");
        const QColor ground = isDark ? QColor(0x12, 0x14, 0x1A) : QColor(0xD8, 0xDE, 0xE8);
        FakeAppearance appearance;
        appearance.set({.colorScheme = isDark ? ColorScheme::dark : ColorScheme::light});
        look::Look look(time, &appearance);
        look.setCompositing(true);
        const auto settle = [&time] {
            time.advance(std::chrono::seconds(1));
            QCoreApplication::processEvents();
        };

        EmojiPickerView picker(
            {store, center, time}, [] {}, [](const EmojiItem &) {});
        picker.setWindowTitle(QLatin1String(EmojiPickerModel::windowTitle));
        picker.setAttribute(Qt::WA_TranslucentBackground);
        picker.resize(picker.sizeHint());
        picker.show();
        settle();
        save(picker, folder + QStringLiteral("/picker") + suffix, ground);
        for (int i = 0; i < 6; ++i)
            QTest::keyClick(picker.findChild<QLineEdit *>(), Qt::Key_Right, Qt::ControlModifier);
        settle();
        QTest::keyClick(picker.findChild<QLineEdit *>(), Qt::Key_Down);
        settle();
        save(picker, folder + QStringLiteral("/picker-symbols") + suffix, ground);
        center.post(QLatin1String(EmojiPickerModel::openedNotification));
        for (const char *query : {"cat", "zzzz"}) {
            picker.findChild<QLineEdit *>()->setText(QLatin1String(query));
            settle();
            save(picker, folder + QStringLiteral("/picker-") + QLatin1String(query) + suffix, ground);
        }
        measure(picker);

        saveMenuAndSettings(folder, suffix, ground);

        for (const char *words : {"Copied to clipboard", "Enable Accessibility to insert automatically"}) {
            ToastView toast(QLatin1String(words), QStringLiteral("checkmark.circle.fill"));
            toast.setAttribute(Qt::WA_TranslucentBackground);
            toast.resize(toast.sizeHint());
            save(toast, folder + QStringLiteral("/toast-") + QLatin1String(words).left(6) + suffix, ground);
        }
        if (isDark)
            continue;
        FakeAccess access;
        access.setAccessibilityTrusted(true);
        FakeUrlOpener urls;
        const auto window = OnboardingView::makeWindow({defaults, access, time, urls}, [] {});
        window->show();
        for (int page = 0; page < 3; ++page) {
            settle();
            settle();
            save(*window, folder + QStringLiteral("/welcome-%1.png").arg(page), ground);
            QTest::keyClick(window.get(), Qt::Key_Return);
            time.advance(std::chrono::milliseconds(120));
            if (page == 0)
                save(*window, folder + QStringLiteral("/welcome-turning.png"), ground);
        }
    }
    return 0;
}

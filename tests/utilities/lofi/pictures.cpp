// Shows the card and the settings page to people, as pictures in a folder: lofi_pictures FOLDER.
#include "LofiTest.h"
#include "adapters/fake/FakeAppearance.h"
#include "look/Look.h"
#include "utilities/lofi/LofiMiniPlayer.h"
#include "utilities/lofi/LofiPlayerModel.h"
#include "utilities/lofi/LofiSettingsView.h"

#include <QAbstractButton>
#include <QApplication>
#include <QPainter>

using namespace tavrine;

namespace {

void save(QWidget &widget, const QString &path) {
    widget.ensurePolished();
    const QPixmap picture = widget.grab();
    QImage image(picture.size() + QSize(40, 40), QImage::Format_RGB32);
    image.fill(look::themeOf(&widget).surface);
    QPainter painter(&image);
    painter.drawPixmap(20, 20, picture);
    painter.end();
    image.save(path);
}

/// Both views in the state that the music is in.
class Pictures {
public:
    Pictures(const QString &folder, bool isDark)
        : m_folder(folder), m_suffix(isDark ? QStringLiteral("-dark.png") : QStringLiteral("-light.png")),
          m_look(m_world.time, &m_appearance) {
        m_appearance.set({.colorScheme = isDark ? ColorScheme::dark : ColorScheme::light});
    }
    LofiWorld &world() { return m_world; }
    LofiManager &manager() { return *m_manager; }
    void settle() {
        m_world.settle();
        m_world.time.advance(Seconds(1));
    }
    void paint(const char *state) {
        LofiMiniPlayer card(model());
        card.show();
        LofiSettingsView page(model());
        page.resize(560, 460);
        page.show();
        QApplication::processEvents();
        settle();
        const QString name = m_folder + QLatin1Char('/') + QLatin1String(state);
        save(card, name + QStringLiteral("-card") + m_suffix);
        save(page, name + QStringLiteral("-page") + m_suffix);
        card.findChild<QAbstractButton *>()->setFocus(Qt::TabFocusReason);
        QApplication::processEvents();
        save(card, name + QStringLiteral("-focus") + m_suffix);
    }

private:
    std::unique_ptr<LofiPlayerModel> model() {
        return std::make_unique<LofiPlayerModel>(LofiPlayerModel::Ports{*m_manager, m_world.center, m_world.urlOpener});
    }

    QString m_folder;
    QString m_suffix;
    LofiWorld m_world;
    FakeAppearance m_appearance;
    look::Look m_look;
    std::unique_ptr<LofiManager> m_manager = m_world.makeManager();
};

} // namespace

int main(int argc, char **argv) {
    QApplication application(argc, argv);
    for (const bool isDark : {false, true}) {
        Pictures pictures(QApplication::arguments().value(1), isDark);
        pictures.paint("idle");
        pictures.manager().play();
        pictures.world().downloads.progress(427, 1000);
        pictures.paint("downloading");
        pictures.world().downloads.finish("music");
        pictures.settle();
        pictures.paint("playing");
        pictures.manager().importCustomTrack(pictures.world().write(
            pictures.world().home.filePath(text("Rain on the window, late at night – live at the small hall.mp3"))));
        pictures.settle();
        pictures.paint("custom");
    }
    return 0;
}

#include "look/Look.h"

#include <QApplication>
#include <QEvent>
#include <QPalette>
#include <QWidget>

namespace tavrine::look {
namespace {

Look *instance = nullptr;

bool isDark(const QPalette &palette) {
    return palette.color(QPalette::Window).lightness() < 128;
}

} // namespace

Look::Look(Time &time, Appearance *appearance) : m_appearance(appearance), m_clock(time) {
    instance = this;
    if (m_appearance)
        m_appearance->setOnChange([this] { refresh(); });
    qApp->installEventFilter(this);
    refresh();
}

Look::~Look() {
    if (m_appearance)
        m_appearance->setOnChange({});
    if (instance == this)
        instance = nullptr;
}

Look *Look::current() {
    return instance;
}
bool Look::moves() {
    return instance && !instance->m_reducesMotion;
}
bool Look::composites() {
    return instance && instance->m_isCompositing;
}

void Look::setCompositing(bool isCompositing) {
    if (m_isCompositing == isCompositing)
        return;
    m_isCompositing = isCompositing;
    repaintEverything();
}

void Look::setTheme(QWidget *widget, const Theme &theme) {
    if (!m_themes.contains(widget))
        connect(widget, &QObject::destroyed, this,
                [this](QObject *gone) { m_themes.remove(static_cast<const QWidget *>(gone)); });
    m_themes.insert(widget, theme);
    repaintEverything();
}

bool Look::eventFilter(QObject *object, QEvent *event) {
    if (object == qApp && event->type() == QEvent::ApplicationPaletteChange && !m_isRefreshing)
        refresh();
    return QObject::eventFilter(object, event);
}

void Look::refresh() {
    const DesktopAppearance settings = m_appearance ? m_appearance->settings() : DesktopAppearance{};
    m_isRefreshing = true;
    const bool isSaid = settings.colorScheme != ColorScheme::noPreference;
    if (!isSaid && std::exchange(m_setsPalette, false))
        QApplication::setPalette(QPalette());
    const bool dark = isSaid ? settings.colorScheme == ColorScheme::dark : isDark(QApplication::palette());
    const QColor accent = settings.accent.value_or(defaultAccent);
    const Theme theme = dark ? darkTheme(accent) : lightTheme(accent);
    const bool isOther = theme != m_theme || m_reducesMotion != settings.reducesMotion;
    m_theme = theme;
    m_reducesMotion = settings.reducesMotion;
    if (isSaid) {
        m_setsPalette = true;
        QApplication::setPalette(paletteOf(theme));
    }
    m_isRefreshing = false;
    if (isOther)
        repaintEverything();
}

void Look::repaintEverything() {
    Q_EMIT changed();
    for (QWidget *widget : QApplication::allWidgets())
        widget->update();
}

const Theme &themeOf(const QWidget *widget) {
    if (instance) {
        if (!instance->m_themes.isEmpty()) {
            for (const QWidget *place = widget; place; place = place->parentWidget()) {
                const auto own = instance->m_themes.constFind(place);
                if (own != instance->m_themes.constEnd())
                    return *own;
            }
        }
        return instance->m_theme;
    }
    static const Theme light = lightTheme();
    static const Theme dark = darkTheme();
    return isDark(QApplication::palette()) ? dark : light;
}

QPalette paletteOf(const Theme &theme) {
    QPalette palette(theme.isDark ? theme.elevated : theme.surface);
    palette.setColor(QPalette::Window, theme.surface);
    palette.setColor(QPalette::WindowText, theme.text);
    palette.setColor(QPalette::Base, theme.field);
    palette.setColor(QPalette::AlternateBase, theme.elevated);
    palette.setColor(QPalette::Text, theme.text);
    palette.setColor(QPalette::PlaceholderText, theme.placeholder);
    palette.setColor(QPalette::Button, theme.elevated);
    palette.setColor(QPalette::ButtonText, theme.text);
    palette.setColor(QPalette::ToolTipBase, theme.toolTip);
    palette.setColor(QPalette::ToolTipText, theme.onToolTip);
    palette.setColor(QPalette::Highlight, theme.accent);
    palette.setColor(QPalette::HighlightedText, theme.onAccent);
    palette.setColor(QPalette::Link, theme.accentText);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, theme.tertiaryText);
    return palette;
}

} // namespace tavrine::look

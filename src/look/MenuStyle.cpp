#include "look/MenuStyle.h"

#include "look/Look.h"
#include "look/Metrics.h"
#include "look/Paint.h"

#include <QBitmap>
#include <QEvent>
#include <QMenu>
#include <QPainter>
#include <QProxyStyle>
#include <QStyleFactory>
#include <QStyleOptionMenuItem>

#include <cmath>

namespace tavrine::look {
namespace {

constexpr int itemHeight = 28;
constexpr int separatorHeight = 9;
constexpr int menuMargin = 5;
constexpr int itemPadding = space::medium;
constexpr int betweenColumns = space::huge;

/// The words of an item and, behind a tab, its key. The mark of a mnemonic is not shown.
std::pair<QString, QString> columns(const QString &text) {
    QString words = text.section(u'\t', 0, 0);
    for (qsizetype at = words.indexOf(u'&'); at >= 0; at = words.indexOf(u'&', at + 1))
        words.remove(at, 1); // of two, one stays, and is passed over
    return {words, text.section(u'\t', 1, 1)};
}

class MenuStyle final : public QProxyStyle {
public:
    MenuStyle() : QProxyStyle(QStyleFactory::create(QStringLiteral("Fusion"))) {}

    int pixelMetric(PixelMetric metric, const QStyleOption *option, const QWidget *widget) const override {
        switch (metric) {
        case PM_MenuHMargin:
        case PM_MenuVMargin:
            return menuMargin;
        case PM_MenuPanelWidth:
            return 0;
        case PM_SubMenuOverlap:
            return -space::hair;
        default:
            return QProxyStyle::pixelMetric(metric, option, widget);
        }
    }

    QSize sizeFromContents(ContentsType type, const QStyleOption *option, const QSize &size,
                           const QWidget *widget) const override {
        const auto *item = qstyleoption_cast<const QStyleOptionMenuItem *>(option);
        if (type != CT_MenuItem || !item)
            return QProxyStyle::sizeFromContents(type, option, size, widget);
        if (item->menuItemType == QStyleOptionMenuItem::Separator)
            return {1, separatorHeight}; // a menu leaves out what has no width
        const auto [words, key] = columns(item->text);
        const qreal wide =
            lineWidth(words, TextRole::body) + (key.isEmpty() ? 0 : betweenColumns + lineWidth(key, TextRole::callout));
        return {int(std::ceil(wide)) + 2 * itemPadding + 1, itemHeight};
    }

    void drawPrimitive(PrimitiveElement element, const QStyleOption *option, QPainter *painter,
                       const QWidget *widget) const override {
        if (element == PE_FrameMenu)
            return; // part of the ground
        if (element != PE_PanelMenu)
            return QProxyStyle::drawPrimitive(element, option, painter, widget);
        const Theme &theme = themeOf(widget);
        painter->save();
        preparePainter(*painter);
        if (!Look::composites()) // the mask cuts pixels whole
            painter->fillRect(option->rect, theme.elevated);
        fillRounded(*painter, option->rect, radius::card, theme.elevated);
        strokeHairline(*painter, option->rect, radius::card, theme.outline);
        painter->restore();
    }

    void drawControl(ControlElement element, const QStyleOption *option, QPainter *painter,
                     const QWidget *widget) const override {
        const auto *item = qstyleoption_cast<const QStyleOptionMenuItem *>(option);
        if (element == CE_MenuEmptyArea || element == CE_MenuHMargin || element == CE_MenuVMargin)
            return;
        if (element != CE_MenuItem || !item)
            return QProxyStyle::drawControl(element, option, painter, widget);
        painter->save();
        preparePainter(*painter);
        drawItem(*painter, *item, themeOf(widget));
        painter->restore();
    }

private:
    static void drawItem(QPainter &painter, const QStyleOptionMenuItem &item, const Theme &theme) {
        const QRectF rect = item.rect;
        if (item.menuItemType == QStyleOptionMenuItem::Separator) {
            paintSeparator(painter,
                           QRectF(rect.left() + itemPadding - menuMargin, rect.top(),
                                  rect.width() - 2 * (itemPadding - menuMargin), rect.height() / 2 + 1),
                           theme);
            return;
        }
        const bool isEnabled = item.state & State_Enabled;
        const bool isChosen = isEnabled && item.state & State_Selected;
        if (isChosen)
            fillRounded(painter, rect, radius::control - 1, theme.accent);
        const auto [words, key] = columns(item.text);
        const QRectF line = rect.adjusted(itemPadding, 0, -itemPadding, 0);
        paintLine(painter, line, words, TextRole::body,
                  isChosen    ? theme.onAccent
                  : isEnabled ? theme.text
                              : theme.tertiaryText);
        paintLine(painter, line, key, TextRole::callout,
                  isChosen    ? theme.onAccent
                  : isEnabled ? theme.secondaryText
                              : theme.tertiaryText,
                  Qt::AlignRight);
    }
};

/// Masks the corners of a menu where nothing composites.
class MenuCorners final : public QObject {
public:
    using QObject::QObject;

protected:
    bool eventFilter(QObject *object, QEvent *event) override {
        if (event->type() == QEvent::Resize && !Look::composites()) {
            auto *menu = static_cast<QMenu *>(object);
            QBitmap mask(menu->size());
            mask.fill(Qt::color0);
            QPainter painter(&mask);
            painter.setPen(Qt::NoPen);
            painter.setBrush(Qt::color1);
            painter.drawRoundedRect(mask.rect(), radius::card, radius::card);
            painter.end();
            menu->setMask(mask);
        }
        return false;
    }
};

} // namespace

void dress(QMenu &menu, const QWidget *of) {
    auto *style = new MenuStyle;
    style->setParent(&menu);
    menu.setStyle(style);
    menu.setWindowFlag(Qt::FramelessWindowHint);
    menu.setWindowFlag(Qt::NoDropShadowWindowHint);
    menu.setAttribute(Qt::WA_TranslucentBackground, Look::composites());
    menu.installEventFilter(new MenuCorners(&menu));
    if (Look *look = Look::current(); look && of)
        look->setTheme(&menu, themeOf(of));
}

} // namespace tavrine::look

#include "capture/SnippetPreviewCard.h"

#include "base/DesktopWords.h"
#include "capture/PreviewActionButton.h"
#include "capture/SnipDrag.h"
#include "capture/SnippetPreviewModel.h"
#include "look/Control.h"
#include "look/Look.h"
#include "look/Paint.h"
#include "look/SoftChange.h"
#include "look/Symbols.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

namespace tavrine {
namespace {

constexpr QSize cardSize{340, 248};
constexpr int margin = 12;
constexpr int timeBarHeight = 3;
constexpr int widthWithSixButtons = 46;
constexpr int widthWithFiveButtons = 56;
const QString doneIcon = QStringLiteral("checkmark.circle.fill");

/// The picture as large as it fits, never larger than it is; at least one pixel either way.
QPixmap fitted(const QImage &image, const QSizeF &room, qreal scale) {
    const QSizeF whole(image.width(), image.height());
    const double part = std::min({1.0, room.width() * scale / whole.width(), room.height() * scale / whole.height()});
    const QSize size(std::max(1, int(std::round(whole.width() * part))),
                     std::max(1, int(std::round(whole.height() * part))));
    QImage small = image;
    if (size != image.size()) {
        // Smooth scaling reads every pixel; a large screen is first taken down without it, to three times the size.
        if (image.width() > 4 * size.width() && image.height() > 4 * size.height())
            small = small.scaled(size * 3, Qt::IgnoreAspectRatio, Qt::FastTransformation);
        small = small.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    }
    QPixmap pixmap = QPixmap::fromImage(small);
    pixmap.setDevicePixelRatio(scale);
    return pixmap;
}

} // namespace

/// The picture on a ground of its own. A click opens the editor; a drag takes the picture away as a file.
class SnippetPreviewCard::Thumbnail final : public look::Control {
public:
    Thumbnail(SnippetPreviewModel &model, QWidget *parent) : Control(parent), m_model(model) {
        setToolTip(QStringLiteral("Open in editor"));
        setCursor(Qt::PointingHandCursor);
        setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
        setAccessibleDescription(
            inDesktopWords(QStringLiteral("%1 × %2 pixels").arg(model.image().width()).arg(model.image().height())));
    }

protected:
    void paint(QPainter &painter) override {
        const look::Theme &colours = theme();
        look::fillRounded(painter, rect(), cornerRadius(), colours.field);
        const QSizeF room(width() - 2.0 * look::space::small, height() - 2.0 * look::space::small);
        if (m_shown.isNull() || m_shownRoom != room || m_shown.devicePixelRatio() != devicePixelRatioF()) {
            m_shown = fitted(m_model.image(), room, devicePixelRatioF());
            m_shownRoom = room;
        }
        const QSizeF size = m_shown.deviceIndependentSize();
        const QRectF place(
            QPointF(std::round((width() - size.width()) / 2), std::round((height() - size.height()) / 2)), size);
        painter.drawPixmap(place.topLeft(), m_shown);
        look::strokeHairline(painter, place.adjusted(-1, -1, 1, 1), 2, colours.outline);
        look::strokeHairline(painter, rect(), cornerRadius(), colours.separator);
        if (hoverPart() > 0)
            paintHint(painter, colours);
    }
    qreal cornerRadius() const override { return look::radius::row; }

    void mousePressEvent(QMouseEvent *event) override {
        if (event->button() == Qt::LeftButton)
            m_grip = event->position().toPoint();
        Control::mousePressEvent(event);
    }
    void mouseMoveEvent(QMouseEvent *event) override {
        if (!m_isDragging && (event->buttons() & Qt::LeftButton) &&
            (event->position().toPoint() - m_grip).manhattanLength() >= QApplication::startDragDistance()) {
            setDown(false); // no click comes of it
            const QPointer<Thumbnail> self(this);
            m_isDragging = true;
            dragSnip(m_model, fitted(m_model.image(), {128, 96}, devicePixelRatioF()));
            if (self)
                self->m_isDragging = false;
            return;
        }
        Control::mouseMoveEvent(event);
    }

private:
    void paintHint(QPainter &painter, const look::Theme &colours) const {
        const QRectF plate(std::round(width() / 2.0 - 18), std::round(height() / 2.0 - 18), 36, 36);
        painter.setOpacity(hoverPart());
        QColor groundColour = colours.toolTip;
        groundColour.setAlphaF(0.82F);
        look::fillRounded(painter, plate, plate.height() / 2, groundColour);
        look::paintSymbol(painter, plate, QStringLiteral("pencil.and.outline"), look::symbolsize::large,
                          colours.onToolTip);
        painter.setOpacity(1);
    }

    SnippetPreviewModel &m_model;
    QPixmap m_shown;
    QSizeF m_shownRoom;
    QPoint m_grip;
    bool m_isDragging = false;
};

/// A small cross on a disc that shows on any picture.
class SnippetPreviewCard::DismissButton final : public look::Control {
public:
    explicit DismissButton(QWidget *parent) : Control(parent) {
        setToolTip(QStringLiteral("Dismiss"));
        setFixedSize(22, 22);
    }

protected:
    void paint(QPainter &painter) override {
        const look::Theme &colours = theme();
        QColor disc = colours.toolTip;
        disc.setAlphaF(float(0.62 + 0.3 * hoverPart()));
        look::fillRounded(painter, rect(), cornerRadius(), disc);
        look::strokeHairline(painter, rect(), cornerRadius(), QColor(255, 255, 255, 46));
        look::paintSymbol(painter, rect(), QStringLiteral("xmark"), look::symbolsize::small, colours.onToolTip);
    }
    qreal cornerRadius() const override { return 11; }
};

/// The time that is left.
class SnippetPreviewCard::TimeBar final : public QWidget {
public:
    explicit TimeBar(QWidget *parent) : QWidget(parent) {
        setFixedHeight(timeBarHeight);
        setAccessibleName(inDesktopWords(QStringLiteral("Time left")));
    }
    void setPart(double part) {
        // Twenty steps a second are fewer than pixels only on a card of another size: no repaint without a change.
        if (const int pixels = int(std::lround(part * width() * devicePixelRatioF())); pixels != m_pixels) {
            m_pixels = pixels;
            update();
        }
    }

protected:
    void paintEvent(QPaintEvent *) override {
        QPainter painter(this);
        look::preparePainter(painter);
        const look::Theme &theme = look::themeOf(this);
        look::fillRounded(painter, rect(), timeBarHeight / 2.0, theme.control);
        const double wide = m_pixels / devicePixelRatioF();
        if (wide > 0)
            look::fillRounded(painter, QRectF(0, 0, std::max<qreal>(timeBarHeight, wide), timeBarHeight),
                              timeBarHeight / 2.0, theme.accent);
    }

private:
    int m_pixels = 0;
};

SnippetPreviewCard::SnippetPreviewCard(std::shared_ptr<SnippetPreviewModel> model) : m_model(std::move(model)) {
    setFixedSize(cardSize);
    setAccessibleName(inDesktopWords(QStringLiteral("Screenshot")));
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(margin, margin, margin, margin);
    column->setSpacing(0);
    m_thumbnail = new Thumbnail(*m_model, this);
    connect(m_thumbnail, &QAbstractButton::clicked, this, [this] { m_model->pressEdit(); });
    column->addWidget(m_thumbnail, 1);
    column->addSpacing(look::space::small + 1);
    m_timeBar = new TimeBar(this);
    column->addWidget(m_timeBar);
    column->addSpacing(look::space::small + 1);
    addButtons();

    auto *dismiss = new DismissButton(this);
    dismiss->move(cardSize.width() - margin - 6 - dismiss->width(), margin + 6);
    dismiss->raise();
    connect(dismiss, &QAbstractButton::clicked, this, [this] { m_model->pressDismiss(); });
    QWidget::setTabOrder(m_thumbnail, m_buttons.front());
    QWidget::setTabOrder(m_buttons.back(), dismiss);

    connect(m_model.get(), &SnippetPreviewModel::changed, this, &SnippetPreviewCard::refresh);
    connect(m_model.get(), &SnippetPreviewModel::remainingChanged, this,
            [this] { m_timeBar->setPart(m_model->remainingPart()); });
    refresh();
    m_timeBar->setPart(m_model->remainingPart());
}

SnippetPreviewCard::~SnippetPreviewCard() = default;

void SnippetPreviewCard::addButtons() {
    m_row = new QWidget(this);
    layout()->addWidget(m_row);
    const auto add = [&](const char *icon, const char *title, void (SnippetPreviewModel::*press)()) {
        auto *button = new PreviewActionButton(QLatin1String(icon), QLatin1String(title), m_row);
        if (!m_buttons.empty())
            QWidget::setTabOrder(m_buttons.back(), button);
        m_buttons.push_back(button);
        connect(button, &QAbstractButton::clicked, this, [this, press] { (m_model.get()->*press)(); });
        return button;
    };
    add("plus", "New", &SnippetPreviewModel::pressNew);
    m_copy = add("doc.on.doc", "Copy", &SnippetPreviewModel::pressCopy);
    m_save = add("tray.and.arrow.down", "Save", &SnippetPreviewModel::pressSave);
    add("pencil.and.outline", "Edit", &SnippetPreviewModel::pressEdit)->setProminentBlue(true);
    add("text.viewfinder", "Get Text", &SnippetPreviewModel::pressGetText);
    m_upload = add("icloud.and.arrow.up", "Upload", &SnippetPreviewModel::pressUpload);
    m_row->setFixedHeight(m_upload->sizeHint().height());
}

void SnippetPreviewCard::refresh() {
    const auto show = [](PreviewActionButton *button, bool isDone, const char *icon, const char *title) {
        if (button->isActive() != isDone)
            look::changeSoftly(*button);
        button->setIcon(isDone ? doneIcon : QString(QLatin1String(icon)));
        button->setTitle(QLatin1String(title));
        button->setActive(isDone);
    };
    show(m_copy, m_model->isCopied(), "doc.on.doc", m_model->isCopied() ? "Copied" : "Copy");
    show(m_save, m_model->isSaved(), "tray.and.arrow.down", m_model->isSaved() ? "Saved" : "Save");
    const UploadButton &upload = m_model->uploadButton();
    m_upload->setIcon(upload.symbol());
    m_upload->setTitle(upload.title());
    m_upload->setActive(upload.state() == UploadButtonState::done);
    m_upload->setLoading(upload.state() == UploadButtonState::uploading);
    const bool hasUpload = upload.isShown();
    m_upload->setVisible(hasUpload);
    // Spread over the whole row, the same distance between them.
    const int wide = hasUpload ? widthWithSixButtons : widthWithFiveButtons;
    const double room = cardSize.width() - 2.0 * margin - wide;
    const auto count = m_buttons.size() - (hasUpload ? 0 : 1);
    for (size_t i = 0; i < m_buttons.size(); ++i) {
        m_buttons[i]->setButtonWidth(wide);
        m_buttons[i]->setGeometry(int(std::lround(room * double(i) / double(count - 1))), 0, wide, m_row->height());
    }
}

void SnippetPreviewCard::enterEvent(QEnterEvent *event) {
    m_model->setHovering(true);
    PanelSurface::enterEvent(event);
}

void SnippetPreviewCard::leaveEvent(QEvent *event) {
    m_model->setHovering(false);
    PanelSurface::leaveEvent(event);
}

void SnippetPreviewCard::keyPressEvent(QKeyEvent *event) {
    if (event->key() == Qt::Key_Escape)
        m_model->pressDismiss();
    else
        PanelSurface::keyPressEvent(event);
}

/// What its window is told of the keyboard comes to all that is in it.
bool SnippetPreviewCard::event(QEvent *event) {
    const bool hasKeyboard = event->type() == QEvent::WindowActivate;
    if (hasKeyboard || event->type() == QEvent::WindowDeactivate)
        m_model->setHoldingKeyboard(hasKeyboard);
    if (hasKeyboard && (!window()->focusWidget() || window()->focusWidget() == m_thumbnail))
        m_thumbnail->setFocus(Qt::TabFocusReason); // it is seen where the keys go
    return PanelSurface::event(event);
}

} // namespace tavrine

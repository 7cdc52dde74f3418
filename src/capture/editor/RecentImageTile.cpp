#include "capture/editor/RecentImageTile.h"

#include "base/DesktopWords.h"
#include "capture/editor/EditorLandingModel.h"
#include "look/Metrics.h"
#include "look/Paint.h"
#include "look/Symbols.h"

#include <QPainter>

#include <cmath>

namespace tavrine {
namespace {

constexpr int padding = 6;
constexpr int pictureHeight = 90;

} // namespace

RecentImageTile::RecentImageTile(EditorLandingModel &model, const RecentImage &image, QWidget *parent)
    : Control(parent), m_model(model), m_fileName(image.fileName) {
    setFixedSize(sizeHint());
    setText(model.timeText(image.date));
    setToolTip(QStringLiteral("Click to edit this screenshot"));
    setAccessibleName(inDesktopWords(QStringLiteral("Click to edit this screenshot, %1").arg(text())));
    connect(this, &QAbstractButton::clicked, &model, [this] { m_model.openRecentImage(m_fileName); });
    connect(&model, &EditorLandingModel::thumbnailMade, this, [this](const QString &fileName) {
        if (fileName == m_fileName)
            update();
    });
}

qreal RecentImageTile::cornerRadius() const {
    return look::radius::card;
}

// Scaled down once: a repaint under the pointer scales nothing.
bool RecentImageTile::loadPicture() {
    if (!m_picture.isNull())
        return true;
    const std::optional<QImage> image = m_model.thumbnail(m_fileName);
    if (!image)
        return false;
    const qreal ratio = devicePixelRatioF();
    const QSize wanted(int(std::ceil((tileWidth - 2 * padding) * ratio)), int(std::ceil(pictureHeight * ratio)));
    const bool isSmall = image->width() <= wanted.width() || image->height() <= wanted.height();
    m_picture = QPixmap::fromImage(
        isSmall ? *image : image->scaled(wanted, Qt::KeepAspectRatioByExpanding, Qt::SmoothTransformation));
    return true;
}

void RecentImageTile::paint(QPainter &painter) {
    look::fillRounded(painter, rect(), cornerRadius(), ground(theme().elevated));
    look::strokeHairline(painter, rect(), cornerRadius(), theme().outline);
    const QRectF picture(padding, padding, width() - 2 * padding, pictureHeight);
    if (loadPicture()) {
        look::paintThumbnail(painter, picture, m_picture, theme());
    } else {
        look::fillRounded(painter, picture, look::radius::control, theme().control);
        look::paintSymbol(painter, picture, QStringLiteral("photo"), look::symbolsize::large, theme().tertiaryText);
    }
    look::paintLine(painter,
                    QRectF(padding + 2, picture.bottom(), width() - 2 * padding - 4, height() - picture.bottom()),
                    text(), look::TextRole::caption, theme().secondaryText);
}

} // namespace tavrine

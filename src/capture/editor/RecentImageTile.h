#pragma once

#include "look/Control.h"

#include <QPixmap>

namespace tavrine {

class EditorLandingModel;
struct RecentImage;

/// One picture of the history on the landing page: its thumbnail and when it was taken. A press opens it. The thumbnail
/// is asked for when the tile is painted, and so only for tiles in sight.
///
/// Belongs to the landing view; lives on the main thread.
class RecentImageTile : public look::Control {
    Q_OBJECT

public:
    static constexpr int tileWidth = 148;
    static constexpr int tileHeight = 128;

    /// The model outlives the tile.
    RecentImageTile(EditorLandingModel &model, const RecentImage &image, QWidget *parent = nullptr);

    [[nodiscard]] QSize sizeHint() const override { return {tileWidth, tileHeight}; }

protected:
    void paint(QPainter &painter) override;
    [[nodiscard]] qreal cornerRadius() const override;

private:
    [[nodiscard]] bool loadPicture();

    EditorLandingModel &m_model;
    QString m_fileName;
    QPixmap m_picture;
};

} // namespace tavrine

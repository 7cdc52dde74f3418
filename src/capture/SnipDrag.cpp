#include "capture/SnipDrag.h"

#include "capture/SnippetPreviewModel.h"

#include <QCoreApplication>
#include <QDrag>
#include <QMimeData>
#include <QPixmap>
#include <QPointer>
#include <QUrl>

namespace tavrine {
namespace {

constexpr QLatin1String uriList("text/uri-list");

/// The file's address and the picture. The address is handed out once the file stands there whole.
class SnipData final : public QMimeData {
public:
    SnipData(SnippetPreviewModel &model, const QString &path) : m_model(&model) {
        setImageData(model.image());
        if (!path.isEmpty())
            setUrls({QUrl::fromLocalFile(path)});
    }

protected:
    QVariant retrieveData(const QString &type, QMetaType preferred) const override {
        if (type == uriList && m_model)
            m_model->finishDragFile();
        return QMimeData::retrieveData(type, preferred);
    }

private:
    QPointer<SnippetPreviewModel> m_model;
};

} // namespace

void dragSnip(SnippetPreviewModel &model, const QPixmap &picture) {
    const QPointer<SnippetPreviewModel> card(&model);
    model.setDragging(true);
    // The next capture may take the card away meanwhile, so the drag does not belong to it.
    auto *drag = new QDrag(QCoreApplication::instance());
    drag->setMimeData(new SnipData(model, model.beginDragFile()));
    drag->setPixmap(picture);
    drag->setHotSpot(
        QPoint(int(picture.deviceIndependentSize().width() / 2), int(picture.deviceIndependentSize().height() / 2)));
    drag->exec(Qt::CopyAction);
    if (card)
        card->setDragging(false);
}

} // namespace tavrine

#include "capture/editor/EditorToolbarView.h"

#include "capture/editor/EditorModel.h"
#include "look/Button.h"
#include "look/Look.h"
#include "look/Metrics.h"
#include "look/Paint.h"

#include <QHBoxLayout>
#include <QPainter>

namespace tavrine {
namespace {

/// A hairline between groups of buttons.
class Divider final : public QWidget {
public:
    explicit Divider(QWidget *parent) : QWidget(parent) { setFixedSize(2 * look::space::small + 1, 20); }

protected:
    void paintEvent(QPaintEvent *) override {
        QPainter painter(this);
        painter.fillRect(QRect(width() / 2, 0, 1, height()), look::themeOf(this).separator);
    }
};

look::Button *iconButton(const char *symbol, const char *help, const char *key, QWidget *parent) {
    auto *button = new look::Button(QLatin1String(symbol), QLatin1String(help), parent);
    if (*key != '\0')
        button->setToolTip(QStringLiteral("%1  (%2)").arg(QLatin1String(help), QLatin1String(key)));
    button->setAccessibleName(QLatin1String(help)); // the key is for the eye
    return button;
}

look::Button *wordButton(const char *symbol, const char *text, const char *help, QWidget *parent) {
    auto *button = new look::Button(QLatin1String(text), look::ButtonStyle::plain, parent);
    button->setSymbol(QLatin1String(symbol));
    button->setToolTip(QLatin1String(help));
    return button;
}

} // namespace

EditorToolbarView::EditorToolbarView(EditorModel &model, QWidget *parent) : QWidget(parent), m_model(model) {
    setFixedHeight(barHeight);
    build();
    connect(&model, &EditorModel::isCopiedChanged, this, &EditorToolbarView::showCopied);
    connect(&model, &EditorModel::uploadChanged, this, &EditorToolbarView::showUpload);
    connect(&model, &EditorModel::cropChanged, this, &EditorToolbarView::showMode);
    connect(&model, &EditorModel::drawingsChanged, this, &EditorToolbarView::showMode);
    showCopied();
    showUpload();
    showMode();
}

void EditorToolbarView::build() {
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(look::space::medium, 0, look::space::medium, 1);
    row->setSpacing(look::space::tiny);
    auto *newSnip = iconButton("camera.badge.ellipsis", "Take a new screenshot", "", this);
    connect(newSnip, &QAbstractButton::clicked, &m_model, &EditorModel::takeNewSnip);
    row->addWidget(newSnip);
    if (m_model.canOpenNewImage()) {
        auto *open = iconButton("folder.badge.plus", "Open an image file to edit", "Ctrl+O", this);
        connect(open, &QAbstractButton::clicked, &m_model, &EditorModel::openImageFile);
        row->addWidget(open);
    }
    row->addWidget(new Divider(this));
    m_crop = iconButton("crop", "Crop image area", "", this);
    m_undo = iconButton("arrow.uturn.backward", "Undo", "Ctrl+Z", this);
    row->addWidget(m_crop);
    row->addWidget(m_undo);
    row->addStretch(1);
    auto *extract = wordButton("text.viewfinder", "Extract Text", "Read the text in the image", this);
    auto *scan = wordButton("qrcode.viewfinder", "Scan QR", "Find QR codes in the image", this);
    row->addWidget(extract);
    row->addWidget(scan);
    row->addWidget(new Divider(this));
    m_copy = wordButton("doc.on.doc", "Copy", "Copy the image  (Ctrl+C)", this);
    auto *save = wordButton("tray.and.arrow.down", "Save", "Save the image as a file  (Ctrl+S)", this);
    m_upload = wordButton("icloud.and.arrow.up", "Upload", "Upload the image and copy its link", this);
    row->addWidget(m_copy);
    row->addWidget(save);
    row->addWidget(m_upload);

    connect(m_crop, &QAbstractButton::clicked, this, &EditorToolbarView::cropPressed);
    connect(m_undo, &QAbstractButton::clicked, this, &EditorToolbarView::undoPressed);
    connect(extract, &QAbstractButton::clicked, &m_model, &EditorModel::extractText);
    connect(scan, &QAbstractButton::clicked, &m_model, &EditorModel::scanQr);
    connect(m_copy, &QAbstractButton::clicked, &m_model, &EditorModel::copyFlattened);
    connect(save, &QAbstractButton::clicked, &m_model, &EditorModel::saveFlattened);
    connect(m_upload, &QAbstractButton::clicked, &m_model, &EditorModel::upload);
}

void EditorToolbarView::showCopied() {
    const bool isCopied = m_model.isCopied();
    m_copy->setText(isCopied ? QStringLiteral("Copied") : QStringLiteral("Copy"));
    m_copy->setSymbol(isCopied ? QStringLiteral("checkmark") : QStringLiteral("doc.on.doc"));
    m_copy->setSymbolColour(isCopied ? look::themeOf(this).successText : QColor());
    m_copy->updateGeometry();
}

void EditorToolbarView::showUpload() {
    const UploadButton *const button = m_model.uploadButton();
    m_upload->setVisible(button && button->isShown());
    if (!button)
        return;
    m_upload->setText(button->title());
    m_upload->setSymbol(button->symbol());
    m_upload->setSymbolColour(button->state() == UploadButtonState::done ? look::themeOf(this).successText : QColor());
    m_upload->setEnabled(button->state() != UploadButtonState::uploading);
    m_upload->updateGeometry();
}

void EditorToolbarView::showMode() {
    m_crop->setSymbolColour(m_model.isCropping() ? look::themeOf(this).accentText : QColor());
    m_undo->setEnabled(!m_model.drawings().empty());
}

void EditorToolbarView::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    const look::Theme &theme = look::themeOf(this);
    painter.fillRect(rect(), theme.surface);
    look::paintSeparator(painter, rect(), theme);
}

} // namespace tavrine

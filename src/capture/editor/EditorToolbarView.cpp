#include "capture/editor/EditorToolbarView.h"

#include "base/DesktopWords.h"
#include "capture/editor/EditorModel.h"
#include "look/Button.h"
#include "look/Look.h"
#include "look/Metrics.h"
#include "look/Paint.h"
#include "look/SoftChange.h"

#include <QHBoxLayout>
#include <QPainter>

#include <cmath>

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
    button->setAccessibleName(inDesktopWords(QLatin1String(help))); // the key is for the eye
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
    auto *extract = addWordButton("text.viewfinder", "Extract Text", "Read the text in the image");
    auto *scan = addWordButton("qrcode.viewfinder", "Scan QR", "Find QR codes in the image");
    row->addWidget(new Divider(this));
    m_copy = addWordButton("doc.on.doc", "Copy", "Copy the image  (Ctrl+C)");
    auto *save = addWordButton("tray.and.arrow.down", "Save", "Save the image as a file  (Ctrl+S)");
    m_upload = addWordButton("icloud.and.arrow.up", "Upload", "Upload the image and copy its link");

    connect(m_crop, &QAbstractButton::clicked, this, &EditorToolbarView::cropPressed);
    connect(m_undo, &QAbstractButton::clicked, this, &EditorToolbarView::undoPressed);
    connect(extract, &QAbstractButton::clicked, &m_model, &EditorModel::extractText);
    connect(scan, &QAbstractButton::clicked, &m_model, &EditorModel::scanQr);
    connect(m_copy, &QAbstractButton::clicked, &m_model, &EditorModel::copyFlattened);
    connect(save, &QAbstractButton::clicked, &m_model, &EditorModel::saveFlattened);
    connect(m_upload, &QAbstractButton::clicked, &m_model, &EditorModel::upload);
}

look::Button *EditorToolbarView::addWordButton(const char *symbol, const char *word, const char *help) {
    auto *button = new look::Button(QLatin1String(word), look::ButtonStyle::plain, this);
    button->setSymbol(QLatin1String(symbol));
    button->setToolTip(QLatin1String(help));
    button->setAccessibleName(inDesktopWords(QLatin1String(word)));
    layout()->addWidget(button);
    m_wordButtons.push_back(button);
    return button;
}

void EditorToolbarView::setWord(look::Button *button, const QString &word) {
    button->setAccessibleName(inDesktopWords(word));
    fitWords();
}

void EditorToolbarView::showWords(bool areShown) {
    for (look::Button *button : m_wordButtons) {
        button->setText(areShown ? button->accessibleName() : QString());
        button->updateGeometry();
    }
    layout()->invalidate();
}

void EditorToolbarView::fitWords() {
    showWords(true);
    if (layout()->totalMinimumSize().width() > width())
        showWords(false);
}

QSize EditorToolbarView::minimumSizeHint() const {
    int wide = layout()->totalMinimumSize().width();
    for (const look::Button *button : m_wordButtons)
        if (!button->isHidden() && !button->text().isEmpty())
            wide -= int(std::floor(look::lineWidth(button->text(), look::TextRole::bodyStrong)));
    return {wide, barHeight};
}

void EditorToolbarView::resizeEvent(QResizeEvent *event) {
    QWidget::resizeEvent(event);
    fitWords();
}

void EditorToolbarView::showCopied() {
    const bool isCopied = m_model.isCopied();
    look::changeSoftly(*m_copy);
    setWord(m_copy, isCopied ? QStringLiteral("Copied") : QStringLiteral("Copy"));
    m_copy->setSymbol(isCopied ? QStringLiteral("checkmark") : QStringLiteral("doc.on.doc"));
    m_copy->setSymbolColour(isCopied ? look::themeOf(this).successText : QColor());
}

void EditorToolbarView::showUpload() {
    const UploadButton *const button = m_model.uploadButton();
    m_upload->setVisible(button && button->isShown());
    if (!button)
        return;
    setWord(m_upload, button->title());
    m_upload->setSymbol(button->symbol());
    m_upload->setSymbolColour(button->state() == UploadButtonState::done ? look::themeOf(this).successText : QColor());
    m_upload->setEnabled(button->state() != UploadButtonState::uploading);
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

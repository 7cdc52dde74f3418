#include "capture/reading/OCRResultView.h"

#include "base/DesktopWords.h"
#include "capture/reading/CharacterCount.h"
#include "capture/reading/EditableTextView.h"
#include "capture/reading/ReadingTexts.h"
#include "look/Button.h"
#include "look/Indicators.h"
#include "look/Look.h"
#include "look/Metrics.h"
#include "look/Paint.h"
#include "look/SoftChange.h"
#include "look/SymbolPlateView.h"

#include <QKeyEvent>
#include <QPainter>
#include <QVBoxLayout>

namespace tavrine {
namespace {

constexpr QSize sheetSize(560, 440);

QString text(const char *utf8) {
    return QString::fromUtf8(utf8);
}

} // namespace

OCRResultView::OCRResultView(const QString &found, Pasteboard &pasteboard, UrlOpener &urlOpener, Time &time,
                             Actions actions, QWidget *parent)
    : QWidget(parent), m_model(found, pasteboard, urlOpener, time), m_actions(std::move(actions)) {
    setAccessibleName(inDesktopWords(text(readingTexts::extractedText)));
    m_text = new EditableTextView(EditableTextView::Kind::editable);
    m_text->setAccessibleName(inDesktopWords(text(readingTexts::extractedText)));
    m_text->setText(found);
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(look::space::large, look::space::large, look::space::large, look::space::large);
    column->setSpacing(look::space::medium);
    column->addLayout(makeHeader());
    column->addWidget(m_text, 1);
    column->addLayout(makeFooter());
    setFocusProxy(m_text);
    connect(m_text, &EditableTextView::textEdited, &m_model, &OCRResultModel::setEditableText);
    connect(&m_model, &OCRResultModel::editableTextChanged, this, &OCRResultView::showText);
    connect(&m_model, &OCRResultModel::isCopiedChanged, this, &OCRResultView::showCopied);
    showText();
    showCopied();
}

OCRResultView::~OCRResultView() = default;

QSize OCRResultView::sizeHint() const {
    return sheetSize;
}

QLayout *OCRResultView::makeHeader() {
    auto *close = new look::Button(text(readingTexts::closeSymbol), text(readingTexts::close));
    connect(close, &QAbstractButton::clicked, this, [this] { m_actions.onCancel(); });
    auto *words = new QVBoxLayout;
    words->setSpacing(0);
    words->addWidget(new look::Label(text(readingTexts::extractedText), look::TextRole::heading));
    words->addWidget(
        new look::Label(text(readingTexts::tapToEdit), look::TextRole::callout, look::Label::Tone::secondary));
    auto *header = new QHBoxLayout;
    header->setSpacing(look::space::medium);
    header->addWidget(new SymbolPlate(text(readingTexts::textSymbol)));
    header->addLayout(words, 1);
    header->addWidget(close);
    return header;
}

QLayout *OCRResultView::makeFooter() {
    m_count = new look::Label({}, look::TextRole::callout, look::Label::Tone::secondary);
    auto *cancel = new look::Button(text(readingTexts::cancel));
    // Two words on one button: what it does, and where.
    auto *search = new look::Button(text(readingTexts::search) + QLatin1Char(' ') + text(readingTexts::google));
    search->setSymbol(text(readingTexts::searchSymbol));
    search->setToolTip(text(readingTexts::searchToolTip));
    m_copy = new look::Button(text(readingTexts::copyText), look::ButtonStyle::prominent);
    connect(cancel, &QAbstractButton::clicked, this, [this] { m_actions.onCancel(); });
    connect(search, &QAbstractButton::clicked, &m_model, &OCRResultModel::searchOnGoogle);
    connect(m_copy, &QAbstractButton::clicked, this, [this] {
        m_model.copyText();
        if (m_actions.onCopy)
            m_actions.onCopy();
    });
    auto *footer = new QHBoxLayout;
    footer->setSpacing(look::space::small);
    footer->addWidget(m_count, 1);
    footer->addWidget(cancel);
    footer->addWidget(search);
    footer->addWidget(m_copy);
    return footer;
}

void OCRResultView::showText() {
    m_count->setText(characterCountText(m_model.editableText()));
}

void OCRResultView::showCopied() {
    const bool isCopied = m_model.isCopied();
    look::changeSoftly(*m_copy);
    m_copy->setText(text(isCopied ? readingTexts::copiedWithMark : readingTexts::copyText));
    m_copy->setSymbol(text(isCopied ? readingTexts::copiedSymbol : readingTexts::copyTextSymbol));
    m_copy->updateGeometry();
}

void OCRResultView::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    look::preparePainter(painter);
    const look::Theme &theme = look::themeOf(this);
    look::fillRounded(painter, rect(), look::radius::card, theme.surface);
    look::strokeHairline(painter, rect(), look::radius::card, theme.outline);
}

void OCRResultView::keyPressEvent(QKeyEvent *event) {
    if (event->key() == Qt::Key_Escape)
        m_actions.onCancel(); // the sheet may be gone
    else
        QWidget::keyPressEvent(event);
}

} // namespace tavrine

#include "capture/reading/OCRNotepadView.h"

#include "base/DesktopWords.h"
#include "capture/reading/CharacterCount.h"
#include "capture/reading/EditableTextView.h"
#include "capture/reading/ReadingTexts.h"
#include "look/Button.h"
#include "look/EmptyState.h"
#include "look/Indicators.h"
#include "look/Look.h"
#include "look/Paint.h"
#include "look/SoftChange.h"
#include "look/SymbolPlateView.h"

#include <QKeyEvent>
#include <QVBoxLayout>

namespace tavrine {
namespace {

constexpr QSize panelSize(440, 320);

QString text(const char *utf8) {
    return QString::fromUtf8(utf8);
}

} // namespace

OCRNotepadView::OCRNotepadView(OCRNotepadState &state, Pasteboard &pasteboard, Time &time,
                               std::function<void()> onDismiss, QWidget *parent)
    : PanelSurface(look::radius::panel, parent), m_model(state, pasteboard, time), m_onDismiss(std::move(onDismiss)) {
    setAccessibleName(inDesktopWords(text(readingTexts::extractedText)));
    build();
    connect(&m_model, &OCRNotepadModel::changed, this, &OCRNotepadView::showState);
    connect(&m_model, &OCRNotepadModel::ocrCopiedChanged, this, &OCRNotepadView::showCopied);
    showState();
    showCopied();
}

OCRNotepadView::~OCRNotepadView() = default;

QSize OCRNotepadView::sizeHint() const {
    return panelSize;
}

QLayout *OCRNotepadView::makeHeader() {
    auto *close = new look::Button(text(readingTexts::closeSymbol), text(readingTexts::close));
    connect(close, &QAbstractButton::clicked, this, [this] { m_onDismiss(); });
    auto *header = new QHBoxLayout;
    header->setSpacing(look::space::small);
    header->addWidget(new SymbolPlate(text(readingTexts::textSymbol)));
    header->addWidget(new look::Label(text(readingTexts::extractedText), look::TextRole::heading), 1);
    header->addWidget(new KeyCap(text(readingTexts::escapeKey)));
    header->addWidget(close);
    return header;
}

void OCRNotepadView::build() {
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(look::space::large, look::space::medium, look::space::medium, look::space::medium);
    column->setSpacing(look::space::medium);
    column->addLayout(makeHeader());

    m_loading = new QWidget;
    auto *loading = new QVBoxLayout(m_loading);
    loading->setSpacing(look::space::medium);
    auto *words = new look::Label(text(readingTexts::extracting), look::TextRole::body, look::Label::Tone::secondary);
    words->setAlignment(Qt::AlignHCenter);
    loading->addStretch(5);
    loading->addWidget(new look::Spinner, 0, Qt::AlignHCenter);
    loading->addWidget(words);
    loading->addStretch(6);

    m_error = new look::EmptyState(text(readingTexts::errorSymbol), {});
    m_text = new EditableTextView(EditableTextView::Kind::selectable);
    m_text->setAccessibleName(inDesktopWords(text(readingTexts::extractedText)));
    m_text->installEventFilter(this);

    m_footer = new QWidget;
    auto *footer = new QHBoxLayout(m_footer);
    footer->setContentsMargins(0, 0, 0, 0);
    m_count = new look::Label({}, look::TextRole::callout, look::Label::Tone::secondary);
    m_copy = new look::Button(text(readingTexts::copyAll), look::ButtonStyle::prominent);
    connect(m_copy, &QAbstractButton::clicked, &m_model, &OCRNotepadModel::copyAll);
    footer->addWidget(m_count, 1);
    footer->addWidget(m_copy);

    column->addWidget(m_loading, 1);
    column->addWidget(m_error, 1);
    column->addWidget(m_text, 1);
    column->addWidget(m_footer);
    setFocusPolicy(Qt::ClickFocus);
}

void OCRNotepadView::showState() {
    const bool isLoading = m_model.isLoading();
    const bool isError = !isLoading && m_model.errorMessage().has_value();
    const bool isText = !isLoading && !isError;
    if (isError)
        m_error->set(text(readingTexts::errorSymbol), *m_model.errorMessage());
    if (isText) {
        m_text->setText(m_model.text());
        m_count->setText(characterCountText(m_model.text()));
    }
    m_loading->setVisible(isLoading);
    m_error->setVisible(isError);
    m_text->setVisible(isText);
    m_footer->setVisible(isText);
    m_copy->setEnabled(!m_model.text().isEmpty());
}

void OCRNotepadView::showCopied() {
    const bool isCopied = m_model.ocrCopied();
    look::changeSoftly(*m_copy);
    m_copy->setText(text(isCopied ? readingTexts::copied : readingTexts::copyAll));
    m_copy->setSymbol(text(isCopied ? readingTexts::copiedSymbol : readingTexts::copySymbol));
    m_copy->updateGeometry();
}

void OCRNotepadView::keyPressEvent(QKeyEvent *event) {
    if (event->key() == Qt::Key_Escape)
        m_onDismiss(); // the panel may be gone
    else if (event->matches(QKeySequence::Copy))
        m_model.copyAll();
    else
        PanelSurface::keyPressEvent(event);
}

// The text takes the keyboard for its selection, and would keep Escape.
bool OCRNotepadView::eventFilter(QObject *object, QEvent *event) {
    if (object == m_text && event->type() == QEvent::KeyPress) {
        auto *key = static_cast<QKeyEvent *>(event);
        const bool copiesNothing = key->matches(QKeySequence::Copy) && !m_text->textCursor().hasSelection();
        if (key->key() == Qt::Key_Escape || copiesNothing) {
            keyPressEvent(key);
            return true;
        }
    }
    return PanelSurface::eventFilter(object, event);
}

} // namespace tavrine

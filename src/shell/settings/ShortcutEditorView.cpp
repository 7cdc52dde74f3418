#include "shell/settings/ShortcutEditorView.h"

#include "look/Button.h"
#include "look/Indicators.h"
#include "look/Metrics.h"
#include "look/OutcomeView.h"
#include "look/SegmentedControl.h"
#include "look/Unfolding.h"
#include "look/WrappedText.h"
#include "ports/UrlOpener.h"
#include "shell/settings/KeyFieldView.h"

#include <QHBoxLayout>

namespace tavrine {

using namespace look;

namespace {

constexpr int saveHeight = 48;
constexpr int smallSpinner = 13; // 20 scaled to 0.65, in a frame of 12

QHBoxLayout *rowIn(QWidget *widget) {
    auto *row = new QHBoxLayout(widget);
    row->setContentsMargins(space::medium, space::small, space::medium, space::small);
    row->setSpacing(space::small);
    return row;
}

} // namespace

/// What stands in the way, and the way to the settings that could clear it.
class ShortcutEditorView::Banner final : public QWidget {
public:
    explicit Banner(UrlOpener &urlOpener)
        : m_words(new WrappedText(QLatin1String(ShortcutEditor::bannerIcon), {}, WrappedText::Tone::warning)),
          m_button(new Button(QStringLiteral("Open Settings"))) {
        QHBoxLayout *row = rowIn(this);
        m_button->setButtonSize(ButtonSize::small);
        row->addWidget(m_words, 1);
        row->addWidget(m_button);
        connect(m_button, &QAbstractButton::clicked, this,
                [&urlOpener] { urlOpener.openUrl(QUrl(QLatin1String(ShortcutEditor::keyboardSettingsUrl))); });
    }
    void show(const ShortcutEditor::Banner &banner) {
        m_words->set(QLatin1String(ShortcutEditor::bannerIcon), banner.text, WrappedText::Tone::warning);
        m_button->setVisible(banner.hasSettingsButton);
    }

private:
    WrappedText *m_words;
    Button *m_button;
};

/// "Save Changes", "Setting up…", "Saved".
class ShortcutEditorView::SaveRow final : public QWidget {
public:
    explicit SaveRow(ShortcutEditor &editor)
        : m_spinner(new Spinner),
          m_words(new Label(QStringLiteral("Setting up…"), TextRole::callout, Label::Tone::secondary)) {
        setFixedHeight(saveHeight);
        QHBoxLayout *row = rowIn(this);
        row->addStretch();
        m_words->setFixedWidth(m_words->sizeHint().width());
        m_spinner->setFixedSize(smallSpinner, smallSpinner);
        auto *button = new Button(QStringLiteral("Save Changes"), ButtonStyle::prominent);
        button->setButtonSize(ButtonSize::small);
        m_outcome = new OutcomeView(button, QStringLiteral("Saved"));
        row->addWidget(m_spinner);
        row->addWidget(m_words);
        row->addWidget(m_outcome);
        connect(button, &QAbstractButton::clicked, &editor, &ShortcutEditor::save);
    }
    void show(HotkeySaveState state) {
        m_spinner->setVisible(state == HotkeySaveState::saving);
        m_words->setVisible(state == HotkeySaveState::saving);
        m_outcome->setVisible(state != HotkeySaveState::saving);
        m_outcome->setDone(state == HotkeySaveState::saved);
    }

private:
    Spinner *m_spinner;
    Label *m_words;
    OutcomeView *m_outcome;
};

ShortcutEditorView::ShortcutEditorView(std::unique_ptr<ShortcutEditor> editor, Texts texts, UrlOpener &urlOpener,
                                       QWidget *parent)
    : Card(parent), m_editor(std::move(editor)), m_texts(std::move(texts)) {
    if (!m_texts.typeNote.isEmpty())
        addTypeRow();
    addKeyRow();
    addBanner(urlOpener);
    addSaveRow();
    connect(m_editor.get(), &ShortcutEditor::changed, this, &ShortcutEditorView::refresh);
    refresh();
}

ShortcutEditorView::~ShortcutEditorView() = default;

look::Draft::Question ShortcutEditorView::question() const {
    return {QStringLiteral("Save the new shortcut?"), QStringLiteral("It does nothing until it is saved.")};
}

bool ShortcutEditorView::saveDraft() {
    m_editor->save();
    return true; // what stands in its way makes it no draft
}

void ShortcutEditorView::addTypeRow() {
    auto *row = new SettingsRow(QStringLiteral("keyboard"), QStringLiteral("Shortcut Type"), m_texts.typeNote);
    m_type = new SegmentedControl({QStringLiteral("Global Shortcut"), QStringLiteral("Double Option")});
    row->setTrailing(m_type);
    add(row);
    connect(m_type, &SegmentedControl::chosen, this, [this](int index) {
        m_editor->setDraftMode(index == 0 ? triggerMode::commandShift : triggerMode::doubleOption);
    });
}

void ShortcutEditorView::addKeyRow() {
    const QString note = m_texts.keyNote.isEmpty() ? m_editor->defaultKeyText() : m_texts.keyNote;
    m_keyRow = new SettingsRow(QStringLiteral("keyboard.fill"), m_texts.keyTitle, note);
    m_key = new KeyFieldView;
    m_key->setKey(m_editor->draftKey());
    m_keyRow->setTrailing(m_key);
    add(m_keyRow);
    connect(m_key, &KeyFieldView::typed, m_editor.get(), &ShortcutEditor::setDraftKey);
    auto *tapNote = new SettingsRow(QStringLiteral("hand.point.up.left"), m_texts.doubleTapNote);
    m_tapNote = tapNote;
    add(tapNote);
}

void ShortcutEditorView::addBanner(UrlOpener &urlOpener) {
    m_banner = new Banner(urlOpener);
    m_bannerPlace = new Unfolding(m_banner);
    add(m_bannerPlace);
}

void ShortcutEditorView::addSaveRow() {
    m_save = new SaveRow(*m_editor);
    m_savePlace = new Unfolding(m_save);
    add(m_savePlace);
}

void ShortcutEditorView::refresh() {
    // What another hand has stored may be neither: then there is no trigger to set, only one to choose.
    const bool isHotKey = !m_type || m_editor->draftMode() == triggerMode::commandShift;
    const bool isDoubleTap = m_type && m_editor->draftMode() == triggerMode::doubleOption;
    if (m_type)
        m_type->setCurrent(isHotKey ? 0 : isDoubleTap ? 1 : SegmentedControl::none);
    m_key->setKey(m_editor->draftKey());
    m_keyRow->setTrailing(m_key);
    m_keyRow->setVisible(isHotKey);
    m_tapNote->setVisible(isDoubleTap);
    const auto banner = m_editor->banner();
    if (banner)
        m_banner->show(*banner);
    m_bannerPlace->setShown(banner.has_value());
    if (m_editor->showsSaveControl())
        m_save->show(m_editor->saveState());
    m_savePlace->setShown(m_editor->showsSaveControl());
    update();
}

} // namespace tavrine

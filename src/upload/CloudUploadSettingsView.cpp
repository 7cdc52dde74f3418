#include "upload/CloudUploadSettingsView.h"

#include "base/DesktopWords.h"
#include "base/Time.h"
#include "look/Button.h"
#include "look/EmptyState.h"
#include "look/Indicators.h"
#include "look/Look.h"
#include "look/Metrics.h"
#include "look/Paint.h"
#include "look/ScrollArea.h"
#include "look/Tile.h"
#include "look/Toggle.h"
#include "look/WrappedText.h"
#include "upload/ScriptEditorView.h"
#include "upload/TestLogView.h"

#include <QBoxLayout>
#include <QPainter>
#include <QShortcut>

namespace tavrine {

using namespace look;

namespace {

constexpr int editorHeight = 200;
const QString warningSymbol = QStringLiteral("exclamationmark.triangle.fill");

/// A rounded field round an editor.
class Field final : public QWidget {
public:
    Field(QWidget *content, QWidget *parent) : QWidget(parent), m_content(content) {
        auto *layout = new QVBoxLayout(this);
        layout->setContentsMargins(1, 6, 1, 6);
        layout->addWidget(content);
    }

protected:
    void paintEvent(QPaintEvent *) override {
        QPainter painter(this);
        preparePainter(painter);
        const Theme &theme = themeOf(this);
        fillRounded(painter, rect(), radius::row, theme.field);
        strokeHairline(painter, rect(), radius::row, m_content->hasFocus() ? theme.focusRing : theme.outline);
    }

private:
    QWidget *m_content;
};

QBoxLayout *row(int spacing = space::small) {
    auto *layout = new QHBoxLayout;
    layout->setSpacing(spacing);
    layout->setContentsMargins(0, 0, 0, 0);
    return layout;
}

} // namespace

CloudUploadSettingsView::CloudUploadSettingsView(CloudUploadSettingsModel::Ports ports,
                                                 CloudUploadSettingsModel::Texts texts, QWidget *parent)
    : QWidget(parent), m_time(ports.time), m_model(std::move(ports), std::move(texts)) {
    auto *page = new QWidget;
    auto *column = new QVBoxLayout(page);
    column->setContentsMargins(space::huge, space::huge, space::huge, space::huge);
    column->setSpacing(space::medium);
    column->addWidget(makeHeader());
    column->addWidget(new WrappedText({},
                                      QStringLiteral("Upload screenshots anywhere with your own JavaScript function — "
                                                     "S3, R2, Imgur, your own server, or anything else."),
                                      WrappedText::Tone::secondary));
    column->addWidget(new WrappedText(warningSymbol,
                                      QStringLiteral("Only use scripts you wrote or trust — this script can send your "
                                                     "screenshots anywhere the code specifies."),
                                      WrappedText::Tone::warning));
    auto *docs = new Button(QStringLiteral("Read the Custom Upload Script docs"), ButtonStyle::link);
    docs->setSymbol(QStringLiteral("arrow.up.right"));
    connect(docs, &QAbstractButton::clicked, &m_model, &CloudUploadSettingsModel::openDocs);
    column->addWidget(docs, 0, Qt::AlignLeft);
    m_editing = makeEditing();
    column->addWidget(m_editing, 1);
    m_locked =
        new EmptyState(QStringLiteral("lock.fill"), QStringLiteral("Turn on Custom Upload Script above to edit"));
    m_locked->setAccessibleName(inDesktopWords(QStringLiteral("Turn on Custom Upload Script above to edit")));
    m_locked->setMinimumHeight(editorHeight);
    column->addWidget(m_locked, 1);
    m_pane = new ScrollPane(page, this);

    auto *saveKey = new QShortcut(QKeySequence::Save, m_editing);
    saveKey->setContext(Qt::WidgetWithChildrenShortcut);
    connect(saveKey, &QShortcut::activated, &m_model, &CloudUploadSettingsModel::save);
    connect(m_editor, &ScriptEditorView::edited, &m_model, [this] { m_model.setDraftScript(m_editor->script()); });
    connect(&m_model, &CloudUploadSettingsModel::draftReplaced, this,
            [this] { m_editor->replaceText(m_model.draftScript()); });
    connect(&m_model, &CloudUploadSettingsModel::changed, this, &CloudUploadSettingsView::refresh);
    m_model.appear();
    refresh();
}

CloudUploadSettingsView::~CloudUploadSettingsView() = default;

look::Draft::Question CloudUploadSettingsView::question() const {
    return {QStringLiteral("Save the upload script?"), QStringLiteral("What you changed in it is lost otherwise.")};
}

QWidget *CloudUploadSettingsView::makeHeader() {
    auto *card = new Card;
    auto *header = new SettingsRow(QStringLiteral("icloud.and.arrow.up.fill"), QStringLiteral("Custom Upload Script"),
                                   QStringLiteral("Adds an Upload button to screenshots once a script is saved below"));
    m_toggle = new Toggle;
    m_toggle->setAccessibleDescription(
        inDesktopWords(QStringLiteral("Adds an Upload button to screenshots once a script is saved below")));
    header->setTrailing(m_toggle);
    card->add(header);
    connect(m_toggle, &QAbstractButton::toggled, &m_model, &CloudUploadSettingsModel::setEnabled);
    return card;
}

QWidget *CloudUploadSettingsView::makeEditing() {
    auto *editing = new QWidget;
    auto *column = new QVBoxLayout(editing);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(space::small);

    QBoxLayout *caption = row();
    caption->addWidget(new WrappedText({}, QStringLiteral("function uploadImage(imageBase64, fileName) { … }"),
                                       WrappedText::Tone::secondary),
                       1, Qt::AlignVCenter);
    auto *imgbb = new Button(QStringLiteral("Use ImgBB Template"));
    imgbb->setButtonSize(ButtonSize::small);
    imgbb->setSymbol(QStringLiteral("wand.and.stars"));
    imgbb->setToolTip(
        QStringLiteral("Replaces the script below with a ready-to-use ImgBB uploader — just paste in your API key"));
    imgbb->setAccessibleDescription(inDesktopWords(imgbb->toolTip()));
    connect(imgbb, &QAbstractButton::clicked, &m_model, &CloudUploadSettingsModel::useImgbbTemplate);
    caption->addWidget(imgbb);
    column->addLayout(caption);

    m_editor = new ScriptEditorView;
    m_editorFrame = new Field(m_editor, nullptr);
    m_editorFrame->setMinimumHeight(editorHeight);
    connect(m_editor, &ScriptEditorView::focusChanged, m_editorFrame, qOverload<>(&QWidget::update));
    column->addWidget(m_editorFrame, 1);

    m_error = new WrappedText(warningSymbol, {}, WrappedText::Tone::danger);
    column->addWidget(m_error);

    QBoxLayout *buttons = row();
    m_save = new Button(QStringLiteral("Save"), ButtonStyle::prominent);
    m_save->setMinimumWidth(96);
    connect(m_save, &QAbstractButton::clicked, &m_model, &CloudUploadSettingsModel::save);
    m_test = new Button(QStringLiteral("Test Script"));
    m_test->setSymbol(QStringLiteral("play.fill"));
    connect(m_test, &QAbstractButton::clicked, &m_model, &CloudUploadSettingsModel::testScript);
    m_spinner = new Spinner;
    buttons->addWidget(m_save);
    buttons->addWidget(m_test);
    buttons->addWidget(m_spinner);
    buttons->addStretch();
    column->addLayout(buttons);
    column->addWidget(makeResult());
    return editing;
}

QWidget *CloudUploadSettingsView::makeResult() {
    m_result = new QWidget;
    auto *column = new QVBoxLayout(m_result);
    column->setContentsMargins(0, space::tiny, 0, 0);
    column->setSpacing(space::small);
    m_log = new TestLogView;
    m_logFrame = new Field(m_log, nullptr);
    column->addWidget(m_logFrame);
    m_outcome = new WrappedText({}, {}, WrappedText::Tone::plain);
    connect(m_outcome, &WrappedText::pressed, &m_model, &CloudUploadSettingsModel::openResult);
    column->addWidget(m_outcome);
    return m_result;
}

void CloudUploadSettingsView::refresh() {
    const bool isEnabled = m_model.isEnabled();
    m_toggle->setChecked(isEnabled);
    m_editing->setVisible(isEnabled);
    m_locked->setVisible(!isEnabled);
    m_error->set(warningSymbol, m_model.syntaxError().value_or(QString()), WrappedText::Tone::danger);
    m_error->setVisible(m_model.syntaxError().has_value());
    m_editor->setErrorLine(m_model.syntaxErrorLine());
    m_save->setText(m_model.saveConfirmation() ? QStringLiteral("Saved") : QStringLiteral("Save"));
    m_save->setSymbol(m_model.saveConfirmation() ? QStringLiteral("checkmark") : QString());
    m_test->setEnabled(!m_model.isTesting());
    m_spinner->setVisible(m_model.isTesting());
    refreshResult();
}

void CloudUploadSettingsView::refreshResult() {
    if (m_result->isHidden() && m_model.hasTestResult()) // in sight, once the page has found its height
        m_time.asyncAfter(Seconds(0.05), this, [this] { m_pane->scrollTo(m_pane->maximumOffset(), true); });
    m_result->setVisible(m_model.hasTestResult());
    if (!m_model.hasTestResult())
        return;
    m_log->setLines(m_model.testOutput());
    m_logFrame->setVisible(!m_model.testOutput().isEmpty());
    const std::optional<QString> &url = m_model.testResultURL();
    if (url) {
        m_outcome->set(QStringLiteral("checkmark.circle.fill"), *url, WrappedText::Tone::link);
        return;
    }
    m_outcome->set(QStringLiteral("xmark.circle.fill"),
                   m_model.testError() ? userMessage(*m_model.testError()) : QStringLiteral("Upload failed"),
                   WrappedText::Tone::danger);
}

void CloudUploadSettingsView::resizeEvent(QResizeEvent *event) {
    QWidget::resizeEvent(event);
    m_pane->setGeometry(rect());
}

void CloudUploadSettingsView::paintEvent(QPaintEvent *) {
    QPainter(this).fillRect(rect(), themeOf(this).surface);
}

} // namespace tavrine

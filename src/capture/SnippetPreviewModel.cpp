#include "capture/SnippetPreviewModel.h"

#include "base/Time.h"

#include <QPointer>

#include <algorithm>

namespace tavrine {
namespace {

/// What binary fractions leave of 7.0 after 140 steps of 0.05: no time at all, and far less than one step.
constexpr double roundingError = 1e-9;

} // namespace

SnippetPreviewModel::SnippetPreviewModel(QImage image, Actions actions, Time &time,
                                         std::unique_ptr<UploadButton> uploadButton)
    : m_image(std::move(image)), m_actions(std::move(actions)), m_time(time), m_uploadButton(std::move(uploadButton)) {
    connect(m_uploadButton.get(), &UploadButton::changed, this, &SnippetPreviewModel::followUpload);
    connect(m_uploadButton.get(), &UploadButton::viewDismissed, this, &SnippetPreviewModel::pressDismiss);
}

SnippetPreviewModel::~SnippetPreviewModel() = default;

void SnippetPreviewModel::appear() {
    m_timer.reset();
    m_remaining = totalDuration.count();
    m_isCopied = true;
    m_timer = m_time.repeat(tickInterval, [this] { tick(); });
    Q_EMIT changed();
    Q_EMIT remainingChanged();
}

void SnippetPreviewModel::tick() {
    if (m_isHovering || m_isHoldingKeyboard || m_isDragging || m_isAside || m_uploadButton->isBusy())
        return;
    m_remaining = std::max(m_remaining - tickInterval.count(), 0.0);
    if (m_remaining < roundingError)
        m_remaining = 0;
    Q_EMIT remainingChanged();
    if (m_remaining > 0)
        return;
    // The timer goes with its own call under way, so that call must need nothing of it afterwards.
    m_timer.reset();
    pressDismiss();
}

void SnippetPreviewModel::followUpload() {
    if (m_uploadButton->state() == UploadButtonState::uploading)
        m_timer.reset();
    Q_EMIT changed();
}

void SnippetPreviewModel::stop() {
    m_isStopped = true;
    m_timer.reset();
}

void SnippetPreviewModel::pressNew() {
    if (!m_isStopped)
        m_actions.onNewSnip();
}

void SnippetPreviewModel::pressCopy() {
    if (m_isStopped || m_isCopied)
        return;
    m_actions.onCopy();
    m_isCopied = true;
    Q_EMIT changed();
}

void SnippetPreviewModel::pressSave() {
    if (m_isStopped || m_isSaved || m_isSaving)
        return;
    m_isSaving = true;
    m_actions.onSave([self = QPointer(this)](bool isSaved) {
        if (!self)
            return;
        self->m_isSaving = false;
        if (!isSaved)
            return;
        self->m_isSaved = true;
        Q_EMIT self->changed();
        self->m_time.asyncAfter(dismissalAfterSave, self, [self] { self->pressDismiss(); });
    });
}

void SnippetPreviewModel::pressEdit() {
    if (!m_isStopped)
        m_actions.onEdit();
}

void SnippetPreviewModel::pressGetText() {
    if (!m_isStopped)
        m_actions.onGetText();
}

void SnippetPreviewModel::pressUpload() {
    if (!m_isStopped)
        m_uploadButton->press();
}

void SnippetPreviewModel::pressDismiss() {
    if (!m_isStopped)
        m_actions.onDismiss();
}

QString SnippetPreviewModel::beginDragFile() {
    return m_isStopped ? QString() : m_actions.beginDragFile();
}

void SnippetPreviewModel::finishDragFile() {
    m_actions.finishDragFile();
}

} // namespace tavrine

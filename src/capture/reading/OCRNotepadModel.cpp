#include "capture/reading/OCRNotepadModel.h"

#include "capture/reading/OCRNotepadState.h"

namespace tavrine {

OCRNotepadModel::OCRNotepadModel(OCRNotepadState &state, Pasteboard &pasteboard, Time &time, QObject *parent)
    : QObject(parent), m_copy(pasteboard, time, copiedShown), m_text(state.text()), m_isLoading(state.isLoading()),
      m_errorMessage(state.errorMessage()) {
    connect(&state, &OCRNotepadState::changed, this, [this, followed = &state] { follow(*followed); });
    connect(&m_copy, &CopyAction::isCopiedChanged, this, &OCRNotepadModel::ocrCopiedChanged);
}

void OCRNotepadModel::copyAll() {
    if (!m_text.isEmpty())
        m_copy.copy(m_text);
}

void OCRNotepadModel::follow(const OCRNotepadState &state) {
    m_text = state.text();
    m_errorMessage = state.errorMessage();
    const bool hasEnded = std::exchange(m_isLoading, state.isLoading()) && !m_isLoading;
    if (hasEnded && !m_errorMessage && !m_text.isEmpty() && !m_hasAutoCopied) {
        m_hasAutoCopied = true;
        copyAll();
    }
    Q_EMIT changed();
}

} // namespace tavrine

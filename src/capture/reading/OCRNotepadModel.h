#pragma once

#include "capture/reading/CopyAction.h"

#include <QObject>
#include <QPointer>
#include <QString>

#include <optional>

namespace tavrine {

class OCRNotepadState;

/// What the notepad shows, and its copying. Belongs to the view, which outlives the state by the length of a fade: the
/// last that the state told stays. Main thread.
class OCRNotepadModel : public QObject {
    Q_OBJECT

public:
    static constexpr Seconds copiedShown{1.0};

    OCRNotepadModel(OCRNotepadState &state, Pasteboard &pasteboard, Time &time, QObject *parent = nullptr);

    [[nodiscard]] const QString &text() const { return m_text; }
    [[nodiscard]] bool isLoading() const { return m_isLoading; }
    [[nodiscard]] const std::optional<QString> &errorMessage() const { return m_errorMessage; }
    [[nodiscard]] bool ocrCopied() const { return m_copy.isCopied(); }
    [[nodiscard]] bool hasAutoCopied() const { return m_hasAutoCopied; }

    /// The button. Nothing without a text.
    void copyAll();

Q_SIGNALS:
    void changed();
    void ocrCopiedChanged();

private:
    void follow(const OCRNotepadState &state);

    CopyAction m_copy;
    QString m_text;
    bool m_isLoading = true;
    std::optional<QString> m_errorMessage;
    bool m_hasAutoCopied = false;
};

} // namespace tavrine

#pragma once

#include <QObject>
#include <QString>

#include <optional>

namespace tavrine {

/// One recognition as the notepad follows it. Belongs to the notepad that is open: with its closing the state goes, and
/// a result that comes later has nowhere to go. Main thread.
class OCRNotepadState : public QObject {
    Q_OBJECT

public:
    static constexpr auto noTextMessage = "No text found in this image.";

    using QObject::QObject;

    [[nodiscard]] const QString &text() const { return m_text; }
    [[nodiscard]] bool isLoading() const { return m_isLoading; }
    [[nodiscard]] const std::optional<QString> &errorMessage() const { return m_errorMessage; }

    void setText(const QString &text) {
        m_text = text;
        Q_EMIT changed();
    }
    void setErrorMessage(const std::optional<QString> &message) {
        m_errorMessage = message;
        Q_EMIT changed();
    }
    void setLoading(bool isLoading) {
        m_isLoading = isLoading;
        Q_EMIT changed();
    }

Q_SIGNALS:
    void changed(); ///< after each of the three

private:
    QString m_text;
    bool m_isLoading = true;
    std::optional<QString> m_errorMessage;
};

} // namespace tavrine

#pragma once

#include "base/Date.h"

#include <QObject>
#include <QString>

#include <optional>

namespace tavrine {

class Pasteboard;
class Time;

/// What a button does that copies a text and says so for a while. Belongs to the model or the view that shows it; main
/// thread.
class CopyAction : public QObject {
    Q_OBJECT

public:
    /// Without `shown` the word stays. Each copying ends the showing that is there when its time is up, and is not
    /// cancelled by the next one.
    CopyAction(Pasteboard &pasteboard, Time &time, std::optional<Seconds> shown, QObject *parent = nullptr);

    void copy(const QString &text);
    [[nodiscard]] bool isCopied() const { return m_isCopied; }

Q_SIGNALS:
    void isCopiedChanged();

private:
    void setCopied(bool isCopied);

    Pasteboard &m_pasteboard;
    Time &m_time;
    std::optional<Seconds> m_shown;
    bool m_isCopied = false;
};

} // namespace tavrine

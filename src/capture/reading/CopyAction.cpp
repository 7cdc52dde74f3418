#include "capture/reading/CopyAction.h"

#include "base/Time.h"
#include "ports/Pasteboard.h"

namespace tavrine {

CopyAction::CopyAction(Pasteboard &pasteboard, Time &time, std::optional<Seconds> shown, QObject *parent)
    : QObject(parent), m_pasteboard(pasteboard), m_time(time), m_shown(shown) {}

void CopyAction::copy(const QString &text) {
    m_pasteboard.clearContents();
    m_pasteboard.setString(text);
    setCopied(true);
    if (m_shown)
        m_time.asyncAfter(*m_shown, this, [this] { setCopied(false); });
}

void CopyAction::setCopied(bool isCopied) {
    if (std::exchange(m_isCopied, isCopied) != isCopied)
        Q_EMIT isCopiedChanged();
}

} // namespace tavrine

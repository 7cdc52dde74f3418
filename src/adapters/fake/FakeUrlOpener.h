#pragma once

#include "ports/UrlOpener.h"

#include <QList>

namespace tavrine {

/// A desktop that only notes what it was asked to open.
class FakeUrlOpener final : public UrlOpener {
public:
    void openUrl(const QUrl &url) override { m_opened.append(url); }

    [[nodiscard]] const QList<QUrl> &opened() const { return m_opened; }

private:
    QList<QUrl> m_opened;
};

} // namespace tavrine

#pragma once

#include "capture/reading/CopyAction.h"
#include "look/Control.h"

namespace tavrine {

class UrlOpener;

/// The words of one code, hanging under it over the editor's picture: a click opens an address and copies anything
/// else. Belongs to the layer over the picture; main thread.
class QRLabelBubble : public look::Control {
    Q_OBJECT

public:
    /// The ports outlive the bubble.
    QRLabelBubble(const QString &text, bool isURL, Pasteboard &pasteboard, UrlOpener &urlOpener, Time &time,
                  QWidget *parent = nullptr);

    [[nodiscard]] bool isCopied() const { return m_copy.isCopied(); }
    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paint(QPainter &painter) override;
    [[nodiscard]] qreal cornerRadius() const override { return height() / 2.0; }

private:
    [[nodiscard]] QString label() const;

    QString m_text;
    bool m_isURL;
    CopyAction m_copy;
};

} // namespace tavrine

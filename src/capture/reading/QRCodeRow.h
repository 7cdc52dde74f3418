#pragma once

#include "capture/reading/CopyAction.h"
#include "look/Control.h"

#include <QStringList>

#include <optional>

namespace tavrine {

namespace look {
class Button;
}

class UrlOpener;

/// One code of the result panel: a click copies it, and an address of the web can be opened. Belongs to the panel's
/// view; main thread.
class QRCodeRow : public look::Control {
    Q_OBJECT

public:
    /// `index` is none where there is but one row.
    QRCodeRow(const QString &code, std::optional<int> index, Pasteboard &pasteboard, UrlOpener &urlOpener, Time &time,
              QWidget *parent = nullptr);

    [[nodiscard]] bool isCopied() const { return m_copy.isCopied(); }
    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paint(QPainter &painter) override;
    [[nodiscard]] qreal cornerRadius() const override;
    void resizeEvent(QResizeEvent *event) override;

private:
    [[nodiscard]] double trailingWidth() const;

    QString m_code;
    QString m_header;
    CopyAction m_copy;
    look::Button *m_open = nullptr;
    QStringList m_lines; ///< of the code, as many as are shown
};

} // namespace tavrine

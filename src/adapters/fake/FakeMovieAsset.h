#pragma once

#include "ports/MovieAsset.h"

#include <QFileInfo>
#include <QStringList>

namespace tavrine {

/// Movies that all begin with the same frame, as long as their file is there.
class FakeMovieAsset final : public MovieAsset {
public:
    [[nodiscard]] std::optional<QImage> firstFrame(const QString &path) override {
        m_asked.append(path);
        return m_frame && QFileInfo(path).isFile() ? m_frame : std::nullopt;
    }

    /// The frame, or none as without a decoder.
    void setFrame(std::optional<QImage> frame) { m_frame = std::move(frame); }

    /// The paths that a frame was asked of.
    [[nodiscard]] const QStringList &asked() const { return m_asked; }

private:
    std::optional<QImage> m_frame;
    QStringList m_asked;
};

} // namespace tavrine

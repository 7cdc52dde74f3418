#pragma once

#include "ports/FileIcons.h"

#include <QImage>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

namespace tavrine {

/// Makes small pictures of picture files on threads of its own, the newest request first. What is in a file is hostile:
/// only plain files of a few formats are looked into, and only up to a size.
///
///  1. At most `maxReads` files are read at a time. On a file system that has gone a read never returns; files that are
///     there are read beside it as long as not all of them hang.
///  2. The threads are detached and end when there is nothing to read; one may end after this object.
class ThumbnailReader {
public:
    static constexpr int maxReads = 3;
    static constexpr qint64 maxBytes = 100'000'000;
    /// Of a picture that must be decoded whole before it is made small: 128 MB, the toolkit's own limit, for as long as
    /// that takes.
    static constexpr qint64 maxPixels = 32'000'000;

    ThumbnailReader();
    ~ThumbnailReader();
    ThumbnailReader(const ThumbnailReader &) = delete;
    ThumbnailReader &operator=(const ThumbnailReader &) = delete;

    /// Main thread; `handler` is called there in a later turn, or never.
    [[nodiscard]] FileIcons::Token read(const QString &path, int pixels, std::function<void(const QImage &)> handler);

private:
    struct State;
    std::shared_ptr<State> m_state;
};

/// What a thread does for one file.
[[nodiscard]] std::optional<QImage> thumbnailOf(const QString &path, int pixels);

} // namespace tavrine

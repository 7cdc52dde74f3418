#pragma once

#include <QImage>

#include <functional>
#include <memory>

class QString;

namespace tavrine {

/// How the desktop shows files. Lives on the main thread, as long as the process.
class FileIcons {
public:
    /// Keeps a request; releasing it ends the request, whose handler is not called then.
    using Token = std::shared_ptr<void>;

    virtual ~FileIcons() = default;

    /// The icon of the file, by its kind, of `pixels` by `pixels`, from the desktop's theme; never null. Reads no
    /// content, waits for no file system that hangs, and takes a file that is not there by its name.
    [[nodiscard]] virtual QImage iconForFile(const QString &path, int pixels) = 0;

    /// A small picture of what is in the file, at most `pixels` wide and high, in a later turn. Not called for a file
    /// that is no picture, cannot be read or is too large to be looked into.
    [[nodiscard]] virtual Token thumbnail(const QString &path, int pixels,
                                          std::function<void(const QImage &)> handler) = 0;
};

} // namespace tavrine

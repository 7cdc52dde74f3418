#pragma once

#include <QUrl>

namespace tavrine {

/// Hands addresses to the programs that the desktop has for them. Lives on the main thread.
class UrlOpener {
public:
    virtual ~UrlOpener() = default;

    /// Does not wait for the program. An "x-apple.systempreferences:" address opens the matching page of the desktop's
    /// own settings. Quiet when there is nothing that opens `url`.
    virtual void openUrl(const QUrl &url) = 0;
};

} // namespace tavrine

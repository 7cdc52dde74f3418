#pragma once

#include "ports/UrlOpener.h"

namespace tavrine {

/// Opens addresses with the desktop's own opener. Lives on the main thread.
///
/// The pages of the system's settings have no counterpart that all desktops share: those addresses open nothing yet.
class XdgUrlOpener final : public UrlOpener {
public:
    void openUrl(const QUrl &url) override;
};

} // namespace tavrine

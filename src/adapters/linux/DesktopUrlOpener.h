#pragma once

#include "ports/UrlOpener.h"

#include <QStringList>

#include <functional>
#include <optional>

namespace tavrine {

/// Opens addresses through xdg-open, which knows every desktop's own way, and "x-apple.systempreferences:" addresses
/// in the settings program of the desktop. Lives on the main thread.
class DesktopUrlOpener final : public UrlOpener {
public:
    void openUrl(const QUrl &url) override;
};

struct ProgramCall {
    QString program;
    QStringList arguments;
    bool operator==(const ProgramCall &) const = default;
};

/// The settings program that shows the page of a settings address: that of `desktop` (as XDG_CURRENT_DESKTOP has it)
/// before any other that is installed. A page that the program does not have opens the program. None without one.
[[nodiscard]] std::optional<ProgramCall> settingsCall(const QUrl &url, const QString &desktop,
                                                      const std::function<bool(const QString &)> &isInstalled);

} // namespace tavrine

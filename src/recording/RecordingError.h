#pragma once

#include <QString>

namespace tavrine {

/// Why a recording could not begin.
struct RecordingError {
    static constexpr auto domain = "Tavrine.ScreenRecorder";
    /// Of what the platform refuses there is only its reason.
    enum class Code { platform = 0, displayUnavailable = 1, videoRefused = 2 };

    Code code = Code::platform;
    QString localizedDescription;
    bool operator==(const RecordingError &) const = default;

    /// As it stands in the diagnostics.
    [[nodiscard]] QString description() const {
        if (code == Code::platform)
            return localizedDescription;
        return QStringLiteral("Error Domain=%1 Code=%2 \"%3\"")
            .arg(QLatin1String(domain))
            .arg(static_cast<int>(code))
            .arg(localizedDescription);
    }
};

} // namespace tavrine

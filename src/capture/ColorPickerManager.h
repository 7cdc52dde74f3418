#pragma once

#include "base/Preference.h"
#include "base/Time.h"

#include <QColor>
#include <QObject>
#include <QString>

#include <array>
#include <functional>
#include <memory>
#include <optional>

namespace tavrine {

class ClearedScreen;
class ColorSampler;
class ColorSamplers;
class Pasteboard;

/// How a colour is written on the pasteboard.
enum class ColorFormat { hex, rgb, swiftUI, nsColor };

/// The stored text is the label itself.
inline constexpr std::array colorFormatLabels{
    StoredText{ColorFormat::hex, "Hex (#RRGGBB)"},
    StoredText{ColorFormat::rgb, "RGB (255, 255, 255)"},
    StoredText{ColorFormat::swiftUI, "SwiftUI (Color.red)"},
    StoredText{ColorFormat::nsColor, "NSColor (sRGB)"},
};

namespace preference {
inline constexpr Preference<ColorFormat> colorPickerFormat{"colorPickerFormat", ColorFormat::hex, colorFormatLabels};
}

/// The colour, which is taken as sRGB, as text. Hex rounds each component, rgb cuts its fraction off.
[[nodiscard]] QString colorText(const QColor &colour, ColorFormat format);

/// Takes one pixel's colour from the screen, and puts it on the pasteboard as text.
///
/// One for the process, on the main thread. Either idle or picking; a pick that is not answered within 30 seconds
/// counts no longer, though its magnifier stays and its late answer is still copied, whatever pick is under way by
/// then.
class ColorPickerManager : public QObject {
    Q_OBJECT

public:
    struct Ports {
        Time &time;
        UserDefaults &defaults;
        Pasteboard &pasteboard;
        ColorSamplers &samplers;
        ClearedScreen &screen;
    };
    using ShowToast = std::function<void(const QString &message, const QString &icon)>;

    ColorPickerManager(Ports ports, ShowToast showToast, QObject *parent = nullptr);
    ~ColorPickerManager() override;

    [[nodiscard]] bool isPicking() const { return m_isPicking; }

    /// Starts a pick. Nothing when one is under way.
    void pickColor();

private:
    void showSampler();
    void onSelected(const std::weak_ptr<const bool> &pick, const std::optional<QColor> &colour);
    void copy(const QColor &colour);

    Ports m_ports;
    ShowToast m_showToast;
    std::shared_ptr<ColorSampler> m_activeSampler;
    std::shared_ptr<const bool> m_timeoutWorkItem; ///< of the pick under way; dropping it cancels the timeout
    bool m_isPicking = false;
};

} // namespace tavrine

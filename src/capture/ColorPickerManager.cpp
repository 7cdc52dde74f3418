#include "capture/ColorPickerManager.h"

#include "base/Print.h"
#include "capture/ClearedScreen.h"
#include "ports/ColorSampler.h"
#include "ports/Pasteboard.h"

#include <QPointer>

#include <cmath>

namespace tavrine {
namespace {

constexpr Seconds timeout{30.0};

QString twoDecimals(double component) {
    return QString::number(component, 'f', 2);
}

} // namespace

QString colorText(const QColor &colour, ColorFormat format) {
    // From the stored 16 bits: QColor's own components are single floats, and cutting those loses whole steps.
    const QRgba64 stored = colour.rgba64();
    const double red = stored.red() / 65535.0;
    const double green = stored.green() / 65535.0;
    const double blue = stored.blue() / 65535.0;
    switch (format) {
    case ColorFormat::rgb: {
        const auto cut = [](double component) { return QString::number(static_cast<int>(component * 255)); };
        return QStringLiteral("rgb(%1, %2, %3)").arg(cut(red), cut(green), cut(blue));
    }
    case ColorFormat::swiftUI:
        return QStringLiteral("Color(red: %1, green: %2, blue: %3)")
            .arg(twoDecimals(red), twoDecimals(green), twoDecimals(blue));
    case ColorFormat::nsColor:
        return QStringLiteral("NSColor(srgbRed: %1, green: %2, blue: %3, alpha: 1.0)")
            .arg(twoDecimals(red), twoDecimals(green), twoDecimals(blue));
    case ColorFormat::hex:
        break;
    }
    const auto rounded = [](double component) { return static_cast<int>(std::lround(component * 255)); };
    return QString::asprintf("#%02X%02X%02X", rounded(red), rounded(green), rounded(blue));
}

ColorPickerManager::ColorPickerManager(Ports ports, ShowToast showToast, QObject *parent)
    : QObject(parent), m_ports(ports), m_showToast(std::move(showToast)) {}

ColorPickerManager::~ColorPickerManager() = default;

void ColorPickerManager::pickColor() {
    if (m_isPicking) {
        printLine(QStringLiteral("DEBUG: Color picker already active, ignoring"));
        return;
    }
    m_isPicking = true;
    printLine(QStringLiteral("DEBUG: Starting color picker..."));

    m_timeoutWorkItem = std::make_shared<const bool>();
    m_ports.time.asyncAfter(timeout, this, [this, item = std::weak_ptr(m_timeoutWorkItem)] {
        if (item.expired())
            return;
        printLine(QStringLiteral("DEBUG: Color picker timeout - resetting state"));
        m_timeoutWorkItem.reset();
        m_activeSampler.reset();
        m_isPicking = false;
    });

    m_ports.screen.clearFor([self = QPointer(this)] {
        if (self)
            self->showSampler();
    });
}

void ColorPickerManager::showSampler() {
    m_activeSampler = m_ports.samplers.makeSampler();
    m_activeSampler->showSampler(
        [owner = QPointer(this), pick = std::weak_ptr(m_timeoutWorkItem)](const std::optional<QColor> &colour) {
            if (owner)
                owner->onSelected(pick, colour);
        });
}

void ColorPickerManager::onSelected(const std::weak_ptr<const bool> &pick, const std::optional<QColor> &colour) {
    printLine(QStringLiteral("DEBUG: Color sampler callback received"));
    m_ports.screen.lookEnded();
    // The late answer of a pick whose time was over finds nothing of its own: what is under way is the next one's.
    if (!pick.expired()) {
        m_timeoutWorkItem.reset();
        m_activeSampler.reset();
        m_isPicking = false;
    }
    if (!colour) {
        printLine(QStringLiteral("DEBUG: No color selected (user cancelled)"));
        return;
    }
    m_ports.time.async(this, [this, chosen = *colour] { copy(chosen); });
}

void ColorPickerManager::copy(const QColor &colour) {
    // Screens here are sRGB; what is no colour at all cannot be converted.
    const QColor converted = colour.toRgb();
    if (!converted.isValid()) {
        printLine(QStringLiteral("DEBUG: Failed to convert color to sRGB"));
        return;
    }
    const QString text = colorText(converted, preference::colorPickerFormat.get(m_ports.defaults));
    if (text.isEmpty())
        return;
    m_ports.pasteboard.clearContents();
    m_ports.pasteboard.setString(text);
    printLine(QStringLiteral("DEBUG: Copied to clipboard: ") + text);
    m_showToast(QStringLiteral("Copied: ") + text, QStringLiteral("paintbrush.fill"));
}

} // namespace tavrine

#pragma once

#include "ports/Appearance.h"

#include <QObject>

#include <memory>
#include <vector>

namespace tavrine {

class PortalAppearance;

/// The desktop's wishes for looks by whoever knows them. Colours: the portal's where one answers, else those of the
/// first of the toolkits' own settings that says any. Less motion: wherever one of them asks for it, since portals
/// answer for settings of another desktop, which nobody has set. Lives on the main thread; unsaid until the session bus
/// is open.
class DesktopLooks final : public QObject, public Appearance {
    Q_OBJECT
public:
    explicit DesktopLooks(std::vector<std::unique_ptr<Appearance>> toolkits);
    ~DesktopLooks() override;

    [[nodiscard]] DesktopAppearance settings() const override;
    void setOnChange(std::function<void()> onChange) override { m_onChange = std::move(onChange); }

private:
    void tellChange();

    std::unique_ptr<PortalAppearance> m_portal;
    std::vector<std::unique_ptr<Appearance>> m_toolkits;
    std::function<void()> m_onChange;
    DesktopAppearance m_told;
};

/// Whether a theme is a dark one by its name: themes come in variants whose names have the word as a part of its own
/// ("Adwaita-dark", "Materia-dark-compact", "Adwaita:dark").
[[nodiscard]] bool isDarkTheme(const QString &name);

} // namespace tavrine

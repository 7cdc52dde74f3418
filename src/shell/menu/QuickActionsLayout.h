#pragma once

#include <QString>
#include <QStringList>

#include <array>
#include <functional>
#include <optional>
#include <vector>

namespace tavrine {

/// What a place of the Quick Actions grid is: a card has a row for itself, a tile shares one.
enum class QuickAction { loFi, keepAwake, screenshot, screenRecord, qrScan, cleanMode, settings, editor };

/// The id is what the order is stored as. Title and subtitle are a tile's; a card has its own.
struct QuickActionText {
    QuickAction action;
    const char *id;
    bool isCard;
    const char *icon;
    const char *title;
    const char *subtitle; ///< of a toggle, while it is off
    const char *subtitleOn;
};

inline constexpr std::array<QuickActionText, 8> quickActionTexts{{
    {QuickAction::loFi, "loFi", true, "headphones", "Lo-Fi Vibe", "", ""},
    {QuickAction::keepAwake, "keepAwake", true, "cup.and.saucer.fill", "Keep Awake", "", ""},
    {QuickAction::screenshot, "screenshot", false, "camera.viewfinder", "Screenshot", "Capture & edit", ""},
    {QuickAction::screenRecord, "screenRecord", false, "video.badge.plus", "Record Screen", "Capture screen area", ""},
    {QuickAction::qrScan, "qrScan", false, "qrcode.viewfinder", "QR Scan", "Scan from screen", ""},
    {QuickAction::cleanMode, "cleanMode", false, "keyboard.fill", "Clean Mode", "Active", "Input Blocked"},
    {QuickAction::settings, "settings", false, "gearshape.fill", "Open Settings", "Configure", ""},
    {QuickAction::editor, "editor", false, "photo.badge.plus", "Tavrine Editor", "Edit photos & snips", ""},
}};

[[nodiscard]] constexpr const QuickActionText &textOf(QuickAction action) {
    return quickActionTexts[static_cast<std::size_t>(action)];
}
[[nodiscard]] std::optional<QuickAction> quickActionOf(const QString &id);

/// One row of the grid: a card, or one or two tiles.
struct LayoutRow {
    bool isCard = false;
    std::vector<QuickAction> items;
    bool operator==(const LayoutRow &) const = default;
};

/// The stored order as ids. What the person's version did not know yet is put where it belongs: the recorder behind the
/// first screenshot, else at the end, and the editor at the end. Unknown ids and doubles stay.
[[nodiscard]] QStringList orderedIds(const QString &layoutOrder);

/// Rows of the ids that are visible. A tile goes with the next visible one; a card breaks a pair. Unknown ids are
/// passed over.
[[nodiscard]] std::vector<LayoutRow> layoutRows(const QStringList &ids,
                                                const std::function<bool(QuickAction)> &isVisible);

} // namespace tavrine

#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <string_view>

namespace tavrine {

/// The pages of the settings window.
enum class SidebarItem {
    home,
    general,
    features,
    layout,
    clipboard,
    emoji,
    network,
    keepAwake,
    lofi,
    snipper,
    screenRecord,
    cloudUpload,
    privacy,
    about,
};

/// What is fixed about a page: what it is called, also by those who ask for it, and its symbol in the side bar.
struct SidebarItemText {
    SidebarItem item;
    const char *text;
    const char *symbol;
};

inline constexpr std::array<SidebarItemText, 14> sidebarItemTexts{{
    {SidebarItem::home, "Home", "house.fill"},
    {SidebarItem::general, "General", "gearshape.fill"},
    {SidebarItem::features, "Modular", "slider.horizontal.3"},
    {SidebarItem::layout, "Layout", "square.grid.2x2.fill"},
    {SidebarItem::clipboard, "Clipboard", "doc.on.clipboard"},
    {SidebarItem::emoji, "Emoji Picker", "face.smiling"},
    {SidebarItem::network, "Network Speed", "network"},
    {SidebarItem::keepAwake, "Keep Awake", "eye.fill"},
    {SidebarItem::lofi, "Lo-Fi Vibe", "headphones"},
    {SidebarItem::snipper, "Screenshot", "viewfinder.circle.fill"},
    {SidebarItem::screenRecord, "Screen Record", "record.circle.fill"},
    {SidebarItem::cloudUpload, "Cloud Upload", "icloud.and.arrow.up.fill"},
    {SidebarItem::privacy, "Privacy", "lock.shield.fill"},
    {SidebarItem::about, "About", "info.circle.fill"},
}};

[[nodiscard]] constexpr const SidebarItemText &textOf(SidebarItem item) {
    return sidebarItemTexts[static_cast<std::size_t>(item)];
}

/// The side bar's order is not the enumeration's.
struct SidebarGroup {
    const char *heading; ///< empty for none
    std::span<const SidebarItem> items;
};

inline constexpr SidebarItem sidebarFirstGroup[] = {SidebarItem::home, SidebarItem::general, SidebarItem::features,
                                                    SidebarItem::layout};
inline constexpr SidebarItem sidebarToolsGroup[] = {
    SidebarItem::snipper, SidebarItem::cloudUpload, SidebarItem::screenRecord, SidebarItem::clipboard,
    SidebarItem::emoji,   SidebarItem::network,     SidebarItem::keepAwake,    SidebarItem::lofi};
inline constexpr SidebarItem sidebarMoreGroup[] = {SidebarItem::privacy, SidebarItem::about};

inline constexpr std::array<SidebarGroup, 3> sidebarGroups{
    {{"", sidebarFirstGroup}, {"Features", sidebarToolsGroup}, {"More", sidebarMoreGroup}}};

/// A page that belongs to the one above it stands under it as a smaller row, under a title of its own.
[[nodiscard]] constexpr bool isSubRow(SidebarItem item) {
    return item == SidebarItem::cloudUpload;
}
inline constexpr auto subRowTitle = "Upload";

} // namespace tavrine

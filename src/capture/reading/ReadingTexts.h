#pragma once

/// What the views say that show recognised text and codes.
namespace tavrine::readingTexts {

inline constexpr auto extractedText = "Extracted Text";
inline constexpr auto textSymbol = "text.viewfinder";
inline constexpr auto extracting = "Extracting text…";
inline constexpr auto errorSymbol = "text.page.slash";
inline constexpr auto close = "Close (Esc)";
inline constexpr auto closeSymbol = "xmark";
inline constexpr auto escapeKey = "ESC";
inline constexpr auto copyAll = "Copy All";
inline constexpr auto copied = "Copied";
inline constexpr auto copiedSymbol = "checkmark";
inline constexpr auto copySymbol = "doc.on.doc";

inline constexpr auto tapToEdit = "Tap to edit";
inline constexpr auto cancel = "Cancel";
inline constexpr auto search = "Search";
inline constexpr auto google = "Google";
inline constexpr auto searchSymbol = "magnifyingglass";
inline constexpr auto searchToolTip = "Search text on Google";
inline constexpr auto copyText = "Copy Text";
inline constexpr auto copyTextSymbol = "doc.on.clipboard";
inline constexpr auto copiedWithMark = "Copied!";

inline constexpr auto noCode = "No QR Code Found";
inline constexpr auto noCodeNote = "Nothing detected in selection";
inline constexpr auto noCodeAdvice = "Try selecting a region that clearly contains a QR code.";
inline constexpr auto noCodeSymbol = "qrcode";
inline constexpr auto codesSymbol = "qrcode.viewfinder";
inline constexpr auto tapToCopy = "Tap a result to copy";
inline constexpr auto closeCircle = "xmark.circle.fill";
inline constexpr auto copy = "Copy";
inline constexpr auto open = "Open";
inline constexpr auto openSymbol = "safari";

inline constexpr auto linkSymbol = "link";
inline constexpr auto openInBrowser = "Open in browser";
inline constexpr auto copyToClipboard = "Copy to clipboard";

} // namespace tavrine::readingTexts

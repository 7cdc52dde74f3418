#pragma once

#include "base/Preference.h"
#include "clipboard/ClipboardExperience.h"
#include "clipboard/RetentionPeriod.h"

/// What the clipboard history keeps of the person's choices, and of its own past.
namespace tavrine::preference {

inline constexpr Preference<bool> featureClipboardHistory{"featureClipboardHistory", true};

/// One character, in lower case.
inline constexpr Preference<QString> hotkeyCharacter{"HotkeyCharacter", "v"};
inline constexpr Preference<RetentionPeriod> retentionPeriod{"RetentionPeriod", RetentionPeriod::thirtyDays,
                                                             retentionPeriodTexts};
inline constexpr Preference<bool> autoClearOnRestart{"AutoClearOnRestart", false};
inline constexpr Preference<bool> stripRichText{"StripRichTextFormatting", false};
/// A JSON array of `ExcludedApp`.
inline constexpr Preference<QByteArray> excludedApps{"ExcludedAppsV2"};
/// A folder for recordings in place of the standard one.
inline constexpr Preference<QString> customSaveDirectoryPath{"customSaveDirectoryPath"};

inline constexpr Preference<ClipboardExperience> clipboardExperience{"ClipboardExperience", ClipboardExperience::search,
                                                                     clipboardExperienceTexts};
/// Whether everyone has been switched to the search panel, which happens once.
inline constexpr Preference<bool> searchPrimaryMigration{"ClipboardSearchPrimaryMigrationV1", false};

/// The history of the versions before the database: a JSON array of items, gone once it has been taken over.
inline constexpr Preference<QByteArray> oldHistory{"ClipboardHistory"};
inline constexpr Preference<bool> databaseMigrated{"ClipboardDBMigrated", false};
inline constexpr Preference<bool> mySaveSeeded{"ClipboardMySaveSeeded", false};
inline constexpr Preference<Date> lastLaunchDate{"LastLaunchDate", Date::distantPast()};

} // namespace tavrine::preference

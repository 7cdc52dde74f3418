#pragma once

#include "base/Preference.h"
#include "utilities/emoji/PreparedEmojiTable.h"

#include <QObject>

#include <array>

namespace tavrine {

namespace preference {

inline constexpr std::array recentEmojiSeeds{u"\U0001F5A4", u"\U0001F680", u"\U0001F60E", u"\U0001F606",
                                             u"\u2318",     u"\U0001F607", u"\U0001F4AC", u"\u25E6",
                                             u"\U0001F44A", u"\U0001F91D", u"\u2705",     u"\U0001F4B0",
                                             u"\U0001F62C", u"\U0001F52B", u"\u2192",     u"\U0001F937"};
inline constexpr std::array pinnedEmojiSeeds{u"\u2764\uFE0F", u"\U0001F62C", u"\U0001F64F", u"\U0001F389"};

/// Most recent first.
inline constexpr Preference<QStringList> recentEmojis{"EmojiPickerRecentEmojis", recentEmojiSeeds};
/// In the order pinned.
inline constexpr Preference<QStringList> pinnedEmojis{"EmojiPickerPinnedEmojis", pinnedEmojiSeeds};

} // namespace preference

/// The emoji table, and what the person used and pinned of it.
///
/// One instance, made at first use, as long as the process; lives on the main thread. Recents and pins are written as
/// they change. Entries that the table does not hold stay stored: another version may know them.
class EmojiPickerStore : public QObject {
    Q_OBJECT

public:
    static constexpr qsizetype maxRecents = 24;

    /// Reads the table at `tablePath`; without one the picker is empty. A stored list replaces the seeds also when it
    /// is empty; one that is no array, or holds anything but texts, counts as not stored.
    EmojiPickerStore(UserDefaults &defaults, const QString &tablePath, QObject *parent = nullptr);

    [[nodiscard]] const std::vector<EmojiItem> &emojis() const { return m_rows.items; }
    [[nodiscard]] const EmojiSearch &search() const { return m_search; }
    [[nodiscard]] const QStringList &recentEmojis() const { return m_recentEmojis; }
    [[nodiscard]] const QStringList &pinnedEmojis() const { return m_pinnedEmojis; }

    /// The first row with that emoji, or null. Rows stay where they are as long as the store.
    [[nodiscard]] const EmojiItem *item(const QString &emoji) const { return m_search.item(emoji); }

    /// Moves the emoji to the front of the recents, of which the first `maxRecents` stay.
    void recordRecent(const EmojiItem &item);
    /// Removes a pin, or adds it behind the others.
    void togglePin(const EmojiItem &item);

Q_SIGNALS:
    void recentEmojisChanged();
    void pinnedEmojisChanged();

private:
    UserDefaults &m_defaults;
    EmojiRows m_rows;
    EmojiSearch m_search;
    QStringList m_recentEmojis;
    QStringList m_pinnedEmojis;
};

} // namespace tavrine

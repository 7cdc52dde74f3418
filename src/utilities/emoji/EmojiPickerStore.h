#pragma once

#include "utilities/emoji/PreparedEmojiTable.h"

#include <QObject>

namespace tavrine {

class UserDefaults;

/// The emoji table, and what the person used and pinned of it.
///
/// One instance, made at first use, as long as the process; lives on the main thread. Recents and pins are written as
/// they change. Entries that the table does not hold stay stored: another version may know them.
class EmojiPickerStore : public QObject {
    Q_OBJECT

public:
    static constexpr auto recentsKey = "EmojiPickerRecentEmojis";
    static constexpr auto pinnedKey = "EmojiPickerPinnedEmojis";
    static constexpr qsizetype maxRecents = 24;

    /// Reads the table at `tablePath`; without one the picker is empty. A stored list replaces the seeds also when it
    /// is empty; one that is no array, or holds anything but texts, counts as not stored.
    EmojiPickerStore(UserDefaults &defaults, const QString &tablePath, QObject *parent = nullptr);

    [[nodiscard]] static QStringList defaultRecents(); ///< 16, most recent first
    [[nodiscard]] static QStringList defaultPins();    ///< 4, in the order pinned

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
    [[nodiscard]] std::optional<QStringList> storedList(const char *key) const;
    void storeList(const char *key, const QStringList &list);

    UserDefaults &m_defaults;
    EmojiRows m_rows;
    EmojiSearch m_search;
    QStringList m_recentEmojis;
    QStringList m_pinnedEmojis;
};

} // namespace tavrine

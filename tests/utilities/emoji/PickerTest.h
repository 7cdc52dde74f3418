#pragma once

#include "adapters/fake/VirtualTime.h"
#include "base/NotificationCenter.h"
#include "base/UserDefaults.h"
#include "utilities/emoji/EmojiPickerStore.h"

#include <QFile>
#include <QTemporaryDir>

#include <gmock/gmock.h>

namespace tavrine {

/// A store over a small table: three smileys, one flag, and ten objects called o0 to o9.
class PickerTest : public testing::Test {
protected:
    PickerTest() {
        QByteArray rows = R"([{"emoji":"😀","name":"grinning","category":"Smileys & People","keywords":"face"},
{"emoji":"👍","name":"thumbs up","category":"Smileys & People","keywords":"hand"},
{"emoji":"😬","name":"grimacing","category":"Smileys & People","keywords":"face"},
{"emoji":"🏁","name":"chequered flag","category":"Flags"})";
        for (int i = 0; i < 10; ++i) {
            const QByteArray name = "o" + QByteArray::number(i);
            rows += ",\n{\"emoji\":\"" + name + R"(","name":"object )" + name + R"(","category":"Objects"})";
        }
        QFile file(tablePath());
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(rows + "]");
    }

    static QString text(const char *utf8) { return QString::fromUtf8(utf8); }
    static UserDefaults::Array array(std::initializer_list<const char *> texts) {
        UserDefaults::Array values;
        for (const char *utf8 : texts)
            values.emplace_back(text(utf8));
        return values;
    }
    void storeRecents(const UserDefaults::Array &values) {
        defaults.set(QLatin1String(preference::recentEmojis.key), values);
    }
    void storePins(const UserDefaults::Array &values) {
        defaults.set(QLatin1String(preference::pinnedEmojis.key), values);
    }
    [[nodiscard]] std::optional<UserDefaults::Array> stored(const char *key) const {
        return defaults.get<UserDefaults::Array>(QLatin1String(key));
    }
    [[nodiscard]] QString tablePath() const { return folder.filePath(QStringLiteral("emoji_data.json")); }
    [[nodiscard]] std::unique_ptr<EmojiPickerStore> makeStore() {
        return std::make_unique<EmojiPickerStore>(defaults, tablePath());
    }

    QTemporaryDir folder;
    VirtualTime time;
    NotificationCenter center;
    UserDefaults defaults{folder.filePath(QStringLiteral("defaults.plist")), time, center};
};

} // namespace tavrine

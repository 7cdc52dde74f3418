#pragma once

#include "base/Date.h"

#include <QByteArray>
#include <QObject>
#include <QString>

#include <memory>
#include <optional>
#include <utility>
#include <variant>
#include <vector>

namespace tavrine {

class NotificationCenter;
class Time;

/// The one configuration store: a property list of typed values, one key for one value.
///
/// Lives on the main thread, as long as the process. The file is an XML property list, so a Bool is not a String is
/// not an Int, and every reader says which type it means and what it falls back to.
///
///  1. A value is visible to every reader as soon as `set` returns. It is written to disk before the main queue comes
///     to rest again; many changes in one turn are written once. What cannot be written stays in memory and is tried
///     again with the next change, and by itself after a second, later ones after twice the time, a minute at most.
///  2. The file is replaced whole and durably: after a crash it holds either the old values or the new ones.
///  3. Keys that the program does not know, and values of types that it does not use, are kept as they are. How values
///     are kept that the file format has no room for stands in `PropertyList.h`. A Date is kept to the second.
///  4. A change from outside the program is noticed and read. Where both sides changed one key, ours stands. A file
///     that has gone is no change: the values stay, and the next write brings them all back.
///  5. A file that cannot be read as a property list, also when that is tried again at once, is set aside under a name
///     that says so, a line on standard output tells it, and the program starts on its defaults. Nothing is
///     overwritten. A file that becomes unreadable while the program runs may be in the middle of being written: the
///     values stay in memory, and it is set aside when we next write if it is unreadable still.
///  6. Every `set` and `remove` posts `didChangeNotification` on the centre at once, whether or not it changes the
///  value;
///     changes from outside that came together post it once. An observer that writes must therefore know when to stop.
///     Setting a value to what it is already writes no file.
class UserDefaults : public QObject {
    Q_OBJECT

public:
    static constexpr auto didChangeNotification = "NSUserDefaultsDidChangeNotification";

    struct Value;
    using Array = std::vector<Value>;
    using Storage = std::variant<bool, qint64, double, QString, Date, QByteArray, Array>;
    struct Value : Storage {
        using Storage::Storage;
        bool operator==(const Value &) const = default;
    };

    /// Reads `path`. The folder is made when the first value is written.
    UserDefaults(QString path, Time &time, NotificationCenter &center, QObject *parent = nullptr);
    /// Writes what is still unwritten.
    ~UserDefaults() override;

    /// The value under `key` when it has exactly the type `T`: bool, qint64, double, QString, Date, QByteArray, Array.
    template <class T>
    [[nodiscard]] std::optional<T> get(const QString &key) const {
        const Value *found = find(key);
        const T *typed = found ? std::get_if<T>(static_cast<const Storage *>(found)) : nullptr;
        return typed ? std::optional<T>(*typed) : std::nullopt;
    }
    template <class T>
    [[nodiscard]] T get(const QString &key, const T &fallback) const {
        return get<T>(key).value_or(fallback);
    }

    /// True when there is an object of any type under `key`.
    [[nodiscard]] bool contains(const QString &key) const;

    void set(const QString &key, bool value) { store(key, Value(std::in_place_type<bool>, value)); }
    void set(const QString &key, qint64 value) { store(key, Value(std::in_place_type<qint64>, value)); }
    void set(const QString &key, int value) { set(key, static_cast<qint64>(value)); }
    void set(const QString &key, double value) { store(key, Value(std::in_place_type<double>, value)); }
    void set(const QString &key, const QString &value) { store(key, Value(std::in_place_type<QString>, value)); }
    void set(const QString &key, Date value) { store(key, Value(std::in_place_type<Date>, value)); }
    void set(const QString &key, const QByteArray &value) { store(key, Value(std::in_place_type<QByteArray>, value)); }
    void set(const QString &key, const Array &value) { store(key, Value(std::in_place_type<Array>, value)); }
    void set(const QString &key, const char *value) = delete; // would silently be a Bool
    void remove(const QString &key);

    /// Takes in what changed outside, and writes now what is still unwritten. False when the file could not be written.
    bool synchronize();

private:
    struct Private;

    [[nodiscard]] const Value *find(const QString &key) const;
    void store(const QString &key, Value value);

    std::unique_ptr<Private> d;
};

} // namespace tavrine

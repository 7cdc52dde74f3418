#pragma once

#include "base/StoredText.h"
#include "base/UserDefaults.h"

#include <QByteArray>
#include <QLatin1String>
#include <QString>
#include <QStringList>

#include <optional>
#include <span>
#include <type_traits>
#include <variant>

namespace tavrine {

/// How a value of type T is written as a constant.
template <class T>
struct PreferenceConstant {
    using Type = T;
};
template <>
struct PreferenceConstant<QString> {
    using Type = const char *; ///< UTF-8
};
template <>
struct PreferenceConstant<QByteArray> {
    using Type = const char *;
};
template <>
struct PreferenceConstant<QStringList> {
    using Type = std::span<const char16_t *const>;
};

/// One preference: its key, its type, and what counts while nothing of that type is stored.
///
/// Each stands once, as a constant of the namespace `preference` in the header of the tool that owns it. Whoever reads
/// or writes the value goes through that constant; nobody else spells the key, and tests/house/preference-keys proves
/// it. T is a type of `UserDefaults`, QStringList for an array of texts, or an enumeration (below).
template <class T>
struct Preference {
    const char *key;
    typename PreferenceConstant<T>::Type fallback{};

    /// None when there is nothing under the key, or something of another type.
    [[nodiscard]] std::optional<T> stored(const UserDefaults &defaults) const {
        if constexpr (std::is_same_v<T, QStringList>) {
            const auto array = defaults.get<UserDefaults::Array>(QLatin1String(key));
            return array ? texts(*array) : std::nullopt;
        } else {
            return defaults.get<T>(QLatin1String(key));
        }
    }

    [[nodiscard]] T fallbackValue() const {
        if constexpr (std::is_same_v<T, QStringList>) {
            QStringList list;
            for (const char16_t *text : fallback)
                list.append(QString::fromUtf16(text));
            return list;
        } else if constexpr (std::is_same_v<T, QString>) {
            return QString::fromUtf8(fallback);
        } else {
            return T(fallback);
        }
    }

    [[nodiscard]] T get(const UserDefaults &defaults) const {
        auto value = stored(defaults);
        return value ? *std::move(value) : fallbackValue();
    }

    void set(UserDefaults &defaults, const T &value) const {
        if constexpr (std::is_same_v<T, QStringList>)
            defaults.set(QLatin1String(key), UserDefaults::Array(value.begin(), value.end()));
        else
            defaults.set(QLatin1String(key), value);
    }

    void remove(UserDefaults &defaults) const { defaults.remove(QLatin1String(key)); }

private:
    /// None when one of the values is no text.
    [[nodiscard]] static std::optional<QStringList> texts(const UserDefaults::Array &array) {
        QStringList list;
        for (const UserDefaults::Value &value : array) {
            const auto *text = std::get_if<QString>(static_cast<const UserDefaults::Storage *>(&value));
            if (!text)
                return std::nullopt;
            list.append(*text);
        }
        return list;
    }
};

/// A choice. It is stored as a text by its table, and a text that the table does not have counts as nothing.
template <class T>
requires std::is_enum_v<T>
struct Preference<T> {
    const char *key;
    T fallback;
    std::span<const StoredText<T>> table;

    [[nodiscard]] std::optional<T> stored(const UserDefaults &defaults) const {
        const auto text = defaults.get<QString>(QLatin1String(key));
        return text ? choiceOf(table, *text) : std::nullopt;
    }
    [[nodiscard]] T fallbackValue() const { return fallback; }
    [[nodiscard]] T get(const UserDefaults &defaults) const { return stored(defaults).value_or(fallback); }
    void set(UserDefaults &defaults, T value) const { defaults.set(QLatin1String(key), textOf(table, value)); }
    void remove(UserDefaults &defaults) const { defaults.remove(QLatin1String(key)); }
};

} // namespace tavrine

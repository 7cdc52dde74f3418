#pragma once

#include "base/UserDefaults.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <memory>
#include <optional>

namespace tavrine {

/// A property list whose root is a dictionary: the form in which the preferences are kept in a file.
///
/// What it was read from is kept node by node, so that keys and types that the program does not use are written as
/// they came. Two kinds of value have no faithful form in an XML property list and are written as a dictionary with a
/// single key that tells what it is:
///
///  - a String with characters that XML cannot carry (control characters, the carriage return, halves of surrogate
///    pairs) is `{"TavrineUTF16String": Data}`, its UTF-16 code units, low byte first;
///  - a Date outside 1933–2069 is `{"TavrineSecondsSince1970": Real}`, because the library keeps seconds of 32 bits.
///
/// Both read back as what they were. A Date has whole seconds there: its fraction is dropped, `asKept` says how.
class PropertyList {
public:
    using Value = UserDefaults::Value;

    /// The empty dictionary.
    PropertyList();

    /// Reads the XML or the binary form. None for anything else: a root that is not a dictionary, XML that is not
    /// well-formed, more bytes or levels than `PropertyListCheck.h` allows, keys that XML cannot carry.
    [[nodiscard]] static std::optional<PropertyList> read(const QByteArray &content);

    /// The XML form. None when it would be larger than what is read again.
    [[nodiscard]] std::optional<QByteArray> xml() const;

    [[nodiscard]] QStringList keys() const;
    [[nodiscard]] bool contains(const QString &key) const;

    /// The value under `key`; none when there is nothing, or something of a type that `Value` does not have.
    [[nodiscard]] std::optional<Value> value(const QString &key) const;
    void set(const QString &key, const Value &value);

    /// `value` as it reads back: every Date in it at the beginning of its second.
    [[nodiscard]] static Value asKept(Value value);
    void remove(const QString &key);

    /// True when both have the same, or both nothing, under `key`.
    [[nodiscard]] bool isSame(const QString &key, const PropertyList &other) const;

private:
    struct Free {
        void operator()(void *node) const;
    };
    std::unique_ptr<void, Free> m_root;
};

} // namespace tavrine

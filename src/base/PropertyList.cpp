#include "base/PropertyList.h"

#include "base/PropertyListCheck.h"

#include <QDateTime>
#include <QSet>
#include <QStringDecoder>
#include <QTimeZone>
#include <QtEndian>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>

#include <plist/plist.h>

namespace tavrine {
namespace {

using Value = UserDefaults::Value;
using Array = UserDefaults::Array;

constexpr auto stringMark = "TavrineUTF16String";
constexpr auto dateMark = "TavrineSecondsSince1970";

/// True when `text` comes back from an XML file as it went in, whoever reads and writes the file in between.
bool isWritable(const QString &text) {
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char16_t unit = text[i].unicode();
        if (QChar::isHighSurrogate(unit) && i + 1 < text.size() && text[i + 1].isLowSurrogate()) {
            ++i;
            continue;
        }
        // A parser may turn a carriage return into a line feed.
        if ((unit < 0x20 && unit != '\t' && unit != '\n') || unit == 0xfffe || unit == 0xffff ||
            QChar::isSurrogate(unit))
            return false;
    }
    return true;
}

std::optional<QString> stringFromUtf8(const char *bytes, quint64 length) {
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = decoder.decode(QByteArrayView(bytes, static_cast<qsizetype>(length)));
    return decoder.hasError() ? std::nullopt : std::optional(text);
}

std::optional<QString> stringOf(plist_t node) {
    uint64_t length = 0;
    const char *bytes = plist_get_string_ptr(node, &length);
    return bytes ? stringFromUtf8(bytes, length) : std::nullopt;
}

QByteArray dataOf(plist_t node) {
    uint64_t length = 0;
    const char *bytes = plist_get_data_ptr(node, &length);
    return bytes ? QByteArray(bytes, static_cast<qsizetype>(length)) : QByteArray();
}

QByteArray xmlOf(plist_t node) {
    char *text = nullptr;
    uint32_t length = 0;
    plist_to_xml(node, &text, &length);
    QByteArray result(text, text ? static_cast<qsizetype>(length) : 0);
    if (text)
        plist_to_xml_free(text);
    return result;
}

/// Calls `visit(key, child)` for each entry of a dictionary.
template <class Visit>
void forEachEntry(plist_t dictionary, Visit visit) {
    plist_dict_iter iterator = nullptr;
    plist_dict_new_iter(dictionary, &iterator);
    for (;;) {
        char *key = nullptr;
        plist_t child = nullptr;
        plist_dict_next_item(dictionary, iterator, &key, &child);
        if (!child) {
            std::free(key);
            break;
        }
        visit(QByteArray(key), child);
        std::free(key);
    }
    std::free(iterator);
}

std::vector<plist_t> itemsOf(plist_t array) {
    std::vector<plist_t> items;
    plist_array_iter iterator = nullptr;
    plist_array_new_iter(array, &iterator);
    for (;;) {
        plist_t item = nullptr;
        plist_array_next_item(array, iterator, &item);
        if (!item)
            break;
        items.push_back(item);
    }
    std::free(iterator);
    return items;
}

plist_t markedNode(const char *mark, plist_t content) {
    plist_t node = plist_new_dict();
    plist_dict_set_item(node, mark, content);
    return node;
}

plist_t nodeFor(const QString &text) {
    if (isWritable(text))
        return plist_new_string(text.toUtf8().constData());
    QByteArray units(text.size() * 2, Qt::Uninitialized);
    qToLittleEndian<quint16>(text.utf16(), text.size(), units.data());
    return markedNode(stringMark, plist_new_data(units.constData(), static_cast<uint64_t>(units.size())));
}

plist_t nodeFor(Date date) {
    const double seconds = std::floor(date.secondsSince1970) - Date::referenceDate;
    if (std::abs(seconds) < std::numeric_limits<int32_t>::max())
        return plist_new_date(static_cast<int32_t>(seconds), 0);
    return markedNode(dateMark, plist_new_real(std::floor(date.secondsSince1970)));
}

plist_t nodeFor(const Value &value);

struct NodeMaker {
    plist_t operator()(bool flag) const { return plist_new_bool(flag ? 1 : 0); }
    plist_t operator()(qint64 number) const { return plist_new_uint(static_cast<uint64_t>(number)); }
    plist_t operator()(double number) const { return plist_new_real(number); }
    plist_t operator()(const QString &text) const { return nodeFor(text); }
    plist_t operator()(Date date) const { return nodeFor(date); }
    plist_t operator()(const QByteArray &data) const {
        return plist_new_data(data.constData(), static_cast<uint64_t>(data.size()));
    }
    plist_t operator()(const Array &values) const {
        plist_t array = plist_new_array();
        for (const Value &value : values)
            plist_array_append_item(array, nodeFor(value));
        return array;
    }
};

plist_t nodeFor(const Value &value) {
    return std::visit(NodeMaker{}, static_cast<const UserDefaults::Storage &>(value));
}

template <class T>
std::optional<Value> valueOf(std::optional<T> value) {
    return value ? std::optional(Value(std::in_place_type<T>, std::move(*value))) : std::nullopt;
}

std::optional<qint64> integerOf(plist_t node) {
    uint64_t number = 0;
    plist_get_uint_val(node, &number);
    // The library has negative numbers and those above the signed range in the same bits; only its text tells.
    if (number > static_cast<uint64_t>(std::numeric_limits<qint64>::max()) && !xmlOf(node).contains("<integer>-"))
        return std::nullopt;
    return static_cast<qint64>(number);
}

std::optional<Date> dateOf(plist_t node) {
    int32_t seconds = 0;
    int32_t microseconds = 0;
    plist_get_date_val(node, &seconds, &microseconds);
    if (seconds != std::numeric_limits<int32_t>::min() && seconds != std::numeric_limits<int32_t>::max())
        return Date{Date::referenceDate + seconds + microseconds / 1e6};
    // Beyond 32 bits; the text still has it, the year without leading zeros.
    const QByteArray text = xmlOf(node);
    const qsizetype begin = text.indexOf("<date>") + 6;
    const QString stamp = QString::fromLatin1(text.mid(begin, text.indexOf('<', begin) - begin));
    const QDateTime moment = QDateTime::fromString(stamp.rightJustified(20, QLatin1Char('0')), Qt::ISODate);
    return moment.isValid() ? std::optional(Date{static_cast<double>(moment.toSecsSinceEpoch())}) : std::nullopt;
}

std::optional<Value> markedValue(plist_t dictionary) {
    if (plist_dict_get_size(dictionary) != 1)
        return std::nullopt;
    if (plist_t node = plist_dict_get_item(dictionary, stringMark); node && plist_get_node_type(node) == PLIST_DATA) {
        const QByteArray units = dataOf(node);
        if (units.size() % 2 != 0)
            return std::nullopt;
        QString text(units.size() / 2, Qt::Uninitialized);
        qFromLittleEndian<quint16>(units.constData(), text.size(), text.data());
        return valueOf(std::optional(text));
    }
    if (plist_t node = plist_dict_get_item(dictionary, dateMark); node && plist_get_node_type(node) == PLIST_REAL) {
        Date date;
        plist_get_real_val(node, &date.secondsSince1970);
        return valueOf(std::optional(date));
    }
    return std::nullopt;
}

std::optional<Value> valueOfNode(plist_t node) {
    switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN: {
        uint8_t flag = 0;
        plist_get_bool_val(node, &flag);
        return valueOf(std::optional(flag != 0));
    }
    case PLIST_UINT:
        return valueOf(integerOf(node));
    case PLIST_REAL: {
        double number = 0;
        plist_get_real_val(node, &number);
        return valueOf(std::optional(number));
    }
    case PLIST_STRING:
        return valueOf(stringOf(node));
    case PLIST_DATE:
        return valueOf(dateOf(node));
    case PLIST_DATA:
        return valueOf(std::optional(dataOf(node)));
    case PLIST_ARRAY: {
        Array values;
        for (plist_t item : itemsOf(node)) {
            auto value = valueOfNode(item);
            if (!value)
                return std::nullopt; // an item would be lost
            values.push_back(std::move(*value));
        }
        return valueOf(std::optional(std::move(values)));
    }
    case PLIST_DICT:
        return markedValue(node);
    default:
        return std::nullopt;
    }
}

/// What has to take the place of a single node so that XML can carry it: null when it can stay, none when nothing can.
std::optional<plist_t> replacementFor(plist_t node) {
    if (plist_get_node_type(node) == PLIST_STRING) {
        const auto text = stringOf(node);
        if (!text)
            return std::nullopt;
        return isWritable(*text) ? nullptr : nodeFor(*text);
    }
    if (plist_get_node_type(node) == PLIST_UID) {
        uint64_t number = 0;
        plist_get_uid_val(node, &number);
        return markedNode("CF$UID", plist_new_uint(number)); // as XML has it anyway
    }
    if (plist_get_node_type(node) == PLIST_DATE) {
        int32_t seconds = 0;
        int32_t microseconds = 0;
        plist_get_date_val(node, &seconds, &microseconds);
        return microseconds == 0 ? nullptr : nodeFor(*dateOf(node));
    }
    return nullptr;
}

/// Brings everything below `node` into a form that XML can carry. False when it cannot be done.
bool makeWritable(plist_t node) {
    if (plist_get_node_type(node) == PLIST_ARRAY) {
        uint32_t index = 0;
        for (plist_t item : itemsOf(node)) {
            const auto replacement = makeWritable(item) ? replacementFor(item) : std::nullopt;
            if (!replacement)
                return false;
            if (*replacement)
                plist_array_set_item(node, *replacement, index);
            ++index;
        }
    } else if (plist_get_node_type(node) == PLIST_DICT) {
        std::vector<std::pair<QByteArray, plist_t>> entries;
        forEachEntry(node, [&](const QByteArray &key, plist_t child) { entries.emplace_back(key, child); });
        QSet<QByteArray> seen;
        for (const auto &[key, child] : entries) {
            if (seen.contains(key))
                return false; // only the binary form gets this far with one key twice
            seen.insert(key);
            const auto text = stringFromUtf8(key.constData(), static_cast<quint64>(key.size()));
            if (!text || !isWritable(*text) || !makeWritable(child))
                return false;
            const auto replacement = replacementFor(child);
            if (!replacement)
                return false;
            if (*replacement)
                plist_dict_set_item(node, key.constData(), *replacement);
        }
    }
    return true;
}

} // namespace

void PropertyList::Free::operator()(void *node) const {
    plist_free(node);
}

PropertyList::PropertyList() : m_root(plist_new_dict()) {}

std::optional<PropertyList> PropertyList::read(const QByteArray &content) {
    if (!isSafePropertyList(content))
        return std::nullopt;
    plist_t root = nullptr;
    plist_from_memory(content.constData(), static_cast<uint32_t>(content.size()), &root);
    if (!root)
        return std::nullopt;
    PropertyList list;
    list.m_root.reset(root);
    if (plist_get_node_type(root) != PLIST_DICT || !makeWritable(root))
        return std::nullopt;
    return list;
}

std::optional<QByteArray> PropertyList::xml() const {
    QByteArray text = xmlOf(m_root.get());
    // The library tells no errors, and what is written must be readable again.
    return isSafePropertyList(text) ? std::optional(std::move(text)) : std::nullopt;
}

QStringList PropertyList::keys() const {
    QStringList keys;
    forEachEntry(m_root.get(), [&](const QByteArray &key, plist_t) { keys.append(QString::fromUtf8(key)); });
    return keys;
}

bool PropertyList::contains(const QString &key) const {
    return plist_dict_get_item(m_root.get(), key.toUtf8().constData()) != nullptr;
}

std::optional<Value> PropertyList::value(const QString &key) const {
    plist_t node = plist_dict_get_item(m_root.get(), key.toUtf8().constData());
    return node ? valueOfNode(node) : std::nullopt;
}

void PropertyList::set(const QString &key, const Value &value) {
    Q_ASSERT(isWritable(key));
    plist_dict_set_item(m_root.get(), key.toUtf8().constData(), nodeFor(value));
}

Value PropertyList::asKept(Value value) {
    auto &storage = static_cast<UserDefaults::Storage &>(value);
    if (auto *date = std::get_if<Date>(&storage))
        date->secondsSince1970 = std::floor(date->secondsSince1970);
    else if (auto *array = std::get_if<Array>(&storage))
        std::ranges::transform(*array, array->begin(), asKept);
    return value;
}

void PropertyList::remove(const QString &key) {
    plist_dict_remove_item(m_root.get(), key.toUtf8().constData());
}

bool PropertyList::isSame(const QString &key, const PropertyList &other) const {
    const QByteArray name = key.toUtf8();
    plist_t mine = plist_dict_get_item(m_root.get(), name.constData());
    plist_t theirs = plist_dict_get_item(other.m_root.get(), name.constData());
    if (!mine || !theirs)
        return mine == theirs;
    return plist_get_node_type(mine) == plist_get_node_type(theirs) && xmlOf(mine) == xmlOf(theirs);
}

} // namespace tavrine

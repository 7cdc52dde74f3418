#include "base/PropertyListCheck.h"

#include <QDate>
#include <QRegularExpression>
#include <QTime>
#include <QXmlStreamReader>
#include <QtEndian>

#include <cstring>
#include <optional>
#include <vector>

namespace tavrine {
namespace {

constexpr auto binaryMagic = "bplist0";

/// One that the library keeps: in place of any other it writes some date of its own.
bool isDate(const QString &text) {
    static const QRegularExpression form(
        QStringLiteral("^([0-9]{1,4})-([0-9]{2})-([0-9]{2})T([0-9]{2}):([0-9]{2}):([0-9]{2})Z\\z"));
    const auto match = form.match(text);
    const auto number = [&match](int group) { return match.capturedView(group).toInt(); };
    return match.hasMatch() && QDate::isValid(number(1), number(2), number(3)) &&
           QTime::isValid(number(4), number(5), number(6));
}

bool isSafeXml(const QByteArray &content) {
    struct Element {
        bool isDictionary = false;
        bool isKeyNext = true;
        std::optional<QString> date = std::nullopt;
    };
    std::vector<Element> open;
    QXmlStreamReader reader(content);
    while (!reader.atEnd()) {
        switch (reader.readNext()) {
        case QXmlStreamReader::StartElement:
            if (open.size() >= deepestPropertyList || (!open.empty() && open.back().date))
                return false;
            if (!open.empty() && open.back().isDictionary) {
                if ((reader.name() == QLatin1String("key")) != open.back().isKeyNext)
                    return false;
                open.back().isKeyNext = !open.back().isKeyNext;
            }
            open.push_back({.isDictionary = reader.name() == QLatin1String("dict")});
            if (reader.name() == QLatin1String("date"))
                open.back().date.emplace();
            break;
        case QXmlStreamReader::Characters:
            if (!open.empty() && open.back().date)
                *open.back().date += reader.text();
            break;
        case QXmlStreamReader::Comment:
            if (!open.empty() && open.back().date)
                return false;
            break;
        case QXmlStreamReader::EndElement:
            if (open.back().isDictionary && !open.back().isKeyNext)
                return false; // a key without a value, which the library would drop
            if (open.back().date && !isDate(*open.back().date))
                return false;
            open.pop_back();
            break;
        case QXmlStreamReader::DTD:
            // The library finds the end of a declaration by counting quotes: nothing may be in it that could be
            // counted differently.
            if (reader.text().contains(QLatin1Char('[')) || reader.text().contains(QLatin1Char('\'')))
                return false;
            break;
        case QXmlStreamReader::ProcessingInstruction:
        case QXmlStreamReader::EntityReference:
            return false;
        default:
            break;
        }
    }
    return !reader.hasError();
}

/// The binary form as a table of objects that name one another.
class BinaryList {
public:
    explicit BinaryList(const QByteArray &content) : m_bytes(content) {}

    bool isSafe() {
        if (!readTrailer())
            return false;
        m_depths.assign(m_count, 0);
        m_sizes.assign(m_count, 0);
        return measure(m_root);
    }

private:
    // A list may name one object many times and is then that much larger when it is spelled out.
    static constexpr quint64 mostObjects = 1'000'000;
    // Dates in seconds from 2001. Before the first year the library writes others; what is well beyond our days is
    // none.
    static constexpr double earliestDate = -730'485.0 * 86'400;
    static constexpr double latestDate = 1e11;
    static constexpr int beingMeasured = -1;

    struct Object {
        quint64 firstReference = 0; ///< place in the file
        quint64 references = 0;
    };
    struct Step {
        quint64 object;
        Object shape;
        quint64 next = 0;
    };

    std::optional<quint64> number(quint64 at, quint64 width) const {
        const auto size = static_cast<quint64>(m_bytes.size());
        if (width == 0 || width > 8 || at > size || width > size - at)
            return std::nullopt;
        quint64 value = 0;
        for (quint64 i = 0; i < width; ++i)
            value = value << 8U | static_cast<quint8>(m_bytes[static_cast<qsizetype>(at + i)]);
        return value;
    }

    bool readTrailer() {
        constexpr qsizetype trailerSize = 32;
        if (m_bytes.size() < trailerSize + 8)
            return false;
        const auto trailer = static_cast<quint64>(m_bytes.size() - trailerSize);
        m_offsetWidth = *number(trailer + 6, 1);
        m_referenceWidth = *number(trailer + 7, 1);
        m_count = *number(trailer + 8, 8);
        m_root = *number(trailer + 16, 8);
        m_table = *number(trailer + 24, 8);
        if (m_offsetWidth == 0 || m_offsetWidth > 8 || m_referenceWidth == 0 || m_referenceWidth > 8)
            return false;
        return m_count <= mostObjects && m_root < m_count && m_table <= trailer &&
               m_count <= (trailer - m_table) / m_offsetWidth;
    }

    std::optional<Object> read(quint64 index) const {
        if (index >= m_count)
            return std::nullopt;
        const auto offset = number(m_table + index * m_offsetWidth, m_offsetWidth);
        const auto marker = offset && *offset < m_table ? number(*offset, 1) : std::nullopt;
        if (!marker)
            return std::nullopt;
        const quint64 kind = *marker >> 4U;
        quint64 count = *marker & 0xfU;
        quint64 body = *offset + 1;
        if (kind == 0x3)
            return isDate(body, count) ? std::optional(Object{}) : std::nullopt;
        const bool isString = kind == 0x5 || kind == 0x6;
        if (!isString && kind != 0xa && kind != 0xd)
            return Object{}; // a leaf: the library checks its length against the file
        if (count == 0xf) {
            const auto lengthMarker = number(body, 1);
            if (!lengthMarker || *lengthMarker >> 4U != 1 || (*lengthMarker & 0xfU) > 3)
                return std::nullopt;
            const quint64 width = 1ULL << (*lengthMarker & 0xfU);
            const auto length = number(body + 1, width);
            if (!length)
                return std::nullopt;
            count = *length;
            body += 1 + width;
        }
        if (isString)
            return isPlainString(body, count, kind == 0x6 ? 2 : 1) ? std::optional(Object{}) : std::nullopt;
        const quint64 references = kind == 0xd ? 2 : 1; // for each entry
        if (body > m_table || count > (m_table - body) / m_referenceWidth / references)
            return std::nullopt;
        return Object{body, count * references};
    }

    /// True when the string lies in the file and has no null in it, at which the library ends the process.
    bool isPlainString(quint64 at, quint64 count, quint64 unit) const {
        if (at > m_table || count > (m_table - at) / unit)
            return false;
        for (quint64 i = 0; i < count; ++i) {
            if (*number(at + i * unit, unit) == 0)
                return false;
        }
        return true;
    }

    bool isDate(quint64 at, quint64 sizeExponent) const {
        const auto bits = sizeExponent == 3 ? number(at, 8) : std::nullopt;
        if (!bits)
            return false;
        double seconds = 0;
        std::memcpy(&seconds, &*bits, sizeof seconds);
        return seconds >= earliestDate && seconds < latestDate; // no NaN either
    }

    /// Depth and spelled-out size of everything below `root`, deepest first.
    bool measure(quint64 root) {
        std::vector<Step> way;
        const auto enter = [&](quint64 index) {
            const auto shape = read(index);
            if (!shape || way.size() >= deepestPropertyList)
                return false;
            m_depths[index] = beingMeasured;
            m_sizes[index] = 1;
            way.push_back({index, *shape});
            return true;
        };
        if (!enter(root))
            return false;
        int deepestBelow = 0; // of the object that was left last
        while (!way.empty()) {
            Step &step = way.back();
            if (step.next == step.shape.references) {
                deepestBelow = m_depths[step.object] = std::max(1, -m_depths[step.object]);
                way.pop_back();
                continue;
            }
            const auto child = number(step.shape.firstReference + step.next * m_referenceWidth, m_referenceWidth);
            if (!child || *child >= m_count)
                return false;
            int &depth = m_depths[*child];
            if (depth < 0)
                return false; // it contains itself
            if (depth == 0) {
                if (!enter(*child))
                    return false;
                continue; // and come back to the same reference when it is measured
            }
            ++step.next;
            // While an object is being measured its depth is kept negative.
            m_depths[step.object] = std::min(m_depths[step.object], -(depth + 1));
            m_sizes[step.object] += m_sizes[*child];
            if (depth >= deepestPropertyList || m_sizes[step.object] > mostObjects)
                return false;
        }
        return deepestBelow <= deepestPropertyList;
    }

    const QByteArray &m_bytes;
    quint64 m_offsetWidth = 0;
    quint64 m_referenceWidth = 0;
    quint64 m_count = 0;
    quint64 m_root = 0;
    quint64 m_table = 0;
    std::vector<int> m_depths;
    std::vector<quint64> m_sizes;
};

} // namespace

bool isSafePropertyList(const QByteArray &content) {
    if (content.isEmpty() || content.size() > largestPropertyList)
        return false;
    return content.startsWith(binaryMagic) ? BinaryList(content).isSafe() : isSafeXml(content);
}

} // namespace tavrine

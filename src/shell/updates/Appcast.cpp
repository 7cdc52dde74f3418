#include "shell/updates/Appcast.h"

#include "shell/updates/Versions.h"

#include <QStringDecoder>
#include <QXmlStreamReader>

#include <algorithm>

namespace tavrine {
namespace {

constexpr qsizetype longestAddress = 2048;
constexpr int deepest = 16;

/// The contents as text; none when they are no UTF-8. So no other encoding that a document names is believed.
std::optional<QString> textOf(const QByteArray &contents) {
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = decoder(contents);
    return decoder.hasError() ? std::nullopt : std::optional(text);
}

/// A person's name of a version goes into a message of the desktop, some of which take signs for markup.
bool isShowable(const QString &text) {
    return !text.isEmpty() && text.size() <= longestVersion && std::all_of(text.begin(), text.end(), [](QChar sign) {
        return sign.isLetterOrNumber() || QStringView(u" .+-_()").contains(sign);
    });
}

class AppcastReader {
public:
    explicit AppcastReader(const QString &text) : m_xml(text) {}

    std::optional<QList<AppcastItem>> read() {
        while (!m_xml.atEnd() && m_isSound)
            take(m_xml.readNext());
        return m_isSound && m_isFeed && !m_xml.hasError() ? std::optional(m_items) : std::nullopt;
    }

private:
    /// What is known of the item that is being read: a text that came twice is none.
    struct Fields {
        QStringList version, shortVersion, minimumSystem, url, length;
    };

    void take(QXmlStreamReader::TokenType token) {
        switch (token) {
        case QXmlStreamReader::DTD:
            m_isSound = false;
            return;
        case QXmlStreamReader::StartElement:
            m_path.append(m_xml.name().toString());
            m_isSound = m_path.size() <= deepest;
            begin();
            return;
        case QXmlStreamReader::Characters:
            m_text += m_xml.text();
            return;
        case QXmlStreamReader::EndElement:
            end();
            m_path.removeLast();
            return;
        default:
            return;
        }
    }

    [[nodiscard]] bool isAt(std::initializer_list<const char *> path) const {
        return m_path.size() == static_cast<qsizetype>(path.size()) &&
               std::equal(m_path.begin(), m_path.end(), path.begin(),
                          [](const QString &name, const char *wanted) { return name == QLatin1String(wanted); });
    }
    [[nodiscard]] bool isInItem(const char *name) const { return isAt({"rss", "channel", "item", name}); }

    void begin() {
        m_text.clear();
        if (isAt({"rss", "channel"}))
            m_isFeed = true;
        else if (isAt({"rss", "channel", "item"}))
            beginItem();
        if (isInItem("enclosure")) {
            m_fields.url.append(m_xml.attributes().value(QLatin1String("url")).toString());
            m_fields.length.append(m_xml.attributes().value(QLatin1String("length")).toString());
        }
    }

    void beginItem() {
        m_fields = {};
        m_isSound = m_isSound && ++m_itemCount <= mostAppcastItems;
    }

    void end() {
        const QString text = m_text.trimmed();
        if (isInItem("version"))
            m_fields.version.append(text);
        else if (isInItem("shortVersionString"))
            m_fields.shortVersion.append(text);
        else if (isInItem("minimumSystemVersion"))
            m_fields.minimumSystem.append(text);
        else if (isAt({"rss", "channel", "item"}))
            endItem();
    }

    void endItem() {
        const auto isOne = [](const QStringList &texts) { return texts.size() == 1; };
        const auto isOneAtMost = [](const QStringList &texts) { return texts.size() <= 1; };
        if (!isOne(m_fields.version) || !isOne(m_fields.url) || !isOneAtMost(m_fields.shortVersion) ||
            !isOneAtMost(m_fields.minimumSystem))
            return;
        AppcastItem item{.version = m_fields.version.front(),
                         .shortVersion = m_fields.shortVersion.value(0, m_fields.version.front()),
                         .minimumSystem = m_fields.minimumSystem.value(0)};
        bool isLength = false;
        item.length = m_fields.length.front().toLongLong(&isLength);
        if (m_fields.url.front().size() <= longestAddress)
            item.url = QUrl(m_fields.url.front(), QUrl::StrictMode);
        const bool isPossible = SemanticVersion::parse(item.version) && isShowable(item.shortVersion) &&
                                (item.minimumSystem.isEmpty() || SemanticVersion::parse(item.minimumSystem)) &&
                                item.url.isValid() && item.url.scheme() == QLatin1String("https") &&
                                !item.url.host().isEmpty() && item.url.userInfo().isEmpty() && isLength &&
                                item.length > 0;
        if (isPossible)
            m_items.append(item);
    }

    QXmlStreamReader m_xml;
    bool m_isSound = true;
    bool m_isFeed = false;
    QStringList m_path; ///< of the element that is being read, from the root
    QString m_text;     ///< in it so far
    Fields m_fields;
    int m_itemCount = 0; ///< of good ones and bad
    QList<AppcastItem> m_items;
};

} // namespace

std::optional<QList<AppcastItem>> itemsOfAppcast(const QByteArray &contents) {
    const auto text = textOf(contents);
    return text ? AppcastReader(*text).read() : std::nullopt;
}

} // namespace tavrine

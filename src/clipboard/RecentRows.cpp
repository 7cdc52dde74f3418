#include "clipboard/RecentRows.h"

#include <algorithm>
#include <tuple>

namespace tavrine {
namespace {

/// A copy that is recorded again leaves for a moment, and a few rows may be removed in between, before the rows that
/// were asked for last are no longer whole.
constexpr std::size_t spareRows = 32;

auto precedence(const ClipboardItem &item) {
    return std::tuple(item.isSaved, item.isPinned, item.date);
}

bool hasFile(const ClipboardItem &item) {
    return item.imageFileName.has_value();
}

} // namespace

void RecentRows::fill(const std::vector<Row> &rows, std::optional<Date> since, bool isCut, qint64 limit) {
    forget();
    const auto firstOther =
        std::find_if(rows.begin(), rows.end(), [](const Row &row) { return !row.item.isProtected(); });
    if (isCut && firstOther == rows.end())
        return; // the cut may have taken protected rows
    m_isWarm = true;
    for (auto row = rows.begin(); row != firstOther && m_isWarm; ++row) {
        if (row->isOrdinary)
            insertProtected(row->item);
        else
            forget();
    }
    if (!m_isWarm)
        return;
    m_floor = since;
    if (isCut)
        raiseFloor(rows.back().item.date);
    if (firstOther != rows.end() && !firstOther->hasPlainDate)
        return forget(); // the statement puts it before all numbers, where no floor can leave it out
    for (auto row = firstOther; row != rows.end() && isAboveFloor(row->item.date); ++row) {
        if (row->isOrdinary)
            insertUnprotected(row->item);
        else
            raiseFloor(row->item.date);
    }
    m_askedFor = std::min(static_cast<std::size_t>(limit), m_unprotected.size());
    shortenProtected();
    trim();
}

std::optional<std::vector<ClipboardItem>> RecentRows::answer(std::optional<Date> since, qint64 limit) {
    if (!m_isWarm || limit < 0)
        return std::nullopt;
    const auto tooOld = since ? std::partition_point(m_unprotected.begin(), m_unprotected.end(),
                                                     [&](const ClipboardItem &item) { return item.date > *since; })
                              : m_unprotected.end();
    const auto found = tooOld - m_unprotected.begin();
    const bool areAllFound = !m_floor || (since && *since >= *m_floor);
    if (found < limit && !areAllFound)
        return std::nullopt;
    std::vector<ClipboardItem> items;
    const auto taken = std::min<qint64>(found, limit);
    items.reserve(m_protected.size() + static_cast<std::size_t>(taken));
    items.assign(m_protected.begin(), m_protected.end());
    items.insert(items.end(), m_unprotected.begin(), m_unprotected.begin() + taken);
    m_askedFor = static_cast<std::size_t>(taken);
    return items;
}

RecentRows::Found RecentRows::search(const std::function<std::optional<bool>(const ClipboardItem &)> &matches,
                                     qint64 limit) const {
    if (!m_isWarm || limit < 0 || m_textLength > maximumTextLength)
        return {};
    const auto wanted = static_cast<std::size_t>(limit);
    std::vector<ClipboardItem> items;
    std::size_t seen = 0;
    std::size_t matching = 0;
    const auto look = [&](const ClipboardItem &item) {
        const std::optional<bool> isMatch = matches(item);
        if (!isMatch)
            return false;
        ++seen;
        matching += *isMatch ? 1U : 0U;
        if (*isMatch && items.size() < wanted)
            items.push_back(item);
        return true;
    };
    for (const ClipboardItem &item : m_protected)
        if (!look(item))
            return {};
    for (const ClipboardItem &item : m_unprotected) {
        if (items.size() == wanted)
            break;
        if (!look(item))
            return {};
    }
    Found found;
    if (seen > 0)
        found.share = static_cast<double>(matching) / static_cast<double>(seen);
    if (items.size() == wanted || !m_floor) // whatever lies below the floor comes after all of these
        found.items = std::move(items);
    return found;
}

bool RecentRows::isNothingToPrune(qint64 mediaCount, std::optional<Date> before,
                                  std::optional<qint64> keepNewest) const {
    if (!m_isWarm)
        return false;
    const auto protectedMedia = std::count_if(m_protected.begin(), m_protected.end(), hasFile);
    const auto knownMedia = std::count_if(m_unprotected.begin(), m_unprotected.end(), hasFile);
    const qint64 unprotectedMedia = mediaCount - protectedMedia;
    if (keepNewest && unprotectedMedia <= *keepNewest)
        return true;
    if (unprotectedMedia == 0)
        return true;
    if (before && m_mediaFloor && *before <= *m_mediaFloor)
        return true;
    // What is not known lies at the floor or below, and may be of any age.
    if (!before || unprotectedMedia != knownMedia)
        return false;
    return std::none_of(m_unprotected.begin(), m_unprotected.end(),
                        [&](const ClipboardItem &item) { return hasFile(item) && item.date < *before; });
}

void RecentRows::saved(const ClipboardItem &asItReadsBack) {
    if (!m_isWarm)
        return;
    takeOut(asItReadsBack.id);
    if (asItReadsBack.isProtected())
        insertProtected(asItReadsBack);
    else
        insertUnprotected(asItReadsBack);
    const bool isMedia = !asItReadsBack.isProtected() && hasFile(asItReadsBack);
    if (isMedia && m_mediaFloor && asItReadsBack.date < *m_mediaFloor)
        m_mediaFloor = asItReadsBack.date;
    shortenProtected();
    trim();
}

void RecentRows::removed(const QUuid &id) {
    takeOut(id);
    shortenProtected();
}

void RecentRows::takeOut(const QUuid &id) {
    const auto hasId = [&](const ClipboardItem &item) { return item.id == id; };
    if (const auto it = std::find_if(m_unprotected.begin(), m_unprotected.end(), hasId); it != m_unprotected.end()) {
        m_textLength -= it->content.size();
        m_unprotected.erase(it);
    } else {
        std::erase_if(m_protected, hasId);
    }
}

void RecentRows::clearedUnprotected() {
    m_unprotected.clear();
    m_textLength = 0;
    m_floor.reset(); // nothing is left below it
}

void RecentRows::foundNoMediaBefore(Date date) {
    if (m_isWarm && (!m_mediaFloor || date > *m_mediaFloor))
        m_mediaFloor = date;
}

void RecentRows::raiseFloor(Date date) {
    if (isAboveFloor(date))
        m_floor = date;
    while (!m_unprotected.empty() && !isAboveFloor(m_unprotected.back().date)) {
        m_textLength -= m_unprotected.back().content.size();
        m_unprotected.pop_back();
    }
}

void RecentRows::insertProtected(const ClipboardItem &item) {
    const auto place = std::lower_bound(m_protected.begin(), m_protected.end(), item,
                                        [](const auto &a, const auto &b) { return precedence(a) > precedence(b); });
    if (place != m_protected.end() && precedence(*place) == precedence(item))
        forget();
    else
        m_protected.insert(place, shortened(item, m_longestProtected));
}

void RecentRows::shortenProtected() {
    const std::size_t longest = longestWholeTextOf(m_protected.size());
    if (longest > m_longestProtected)
        return forget(); // the file has more of them than is here
    if (longest == m_longestProtected)
        return;
    m_longestProtected = longest;
    for (ClipboardItem &item : m_protected)
        item = shortened(std::move(item), longest);
}

void RecentRows::insertUnprotected(const ClipboardItem &item) {
    if (!isAboveFloor(item.date))
        return;
    const auto place = std::lower_bound(m_unprotected.begin(), m_unprotected.end(), item,
                                        [](const auto &a, const auto &b) { return a.date > b.date; });
    if (place != m_unprotected.end() && place->date == item.date) {
        raiseFloor(item.date);
        return;
    }
    m_textLength += item.content.size();
    m_unprotected.insert(place, item);
}

void RecentRows::trim() {
    const auto isTooMuch = [&] {
        return m_unprotected.size() > maximumRows ||
               (m_textLength > maximumTextLength && m_unprotected.size() > m_askedFor + spareRows);
    };
    while (isTooMuch())
        raiseFloor(m_unprotected.back().date);
}

} // namespace tavrine

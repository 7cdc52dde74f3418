#include "shell/menu/QuickActionsLayout.h"

#include <algorithm>

namespace tavrine {

static_assert(
    [] {
        for (std::size_t i = 0; i < quickActionTexts.size(); ++i) {
            if (quickActionTexts[i].action != static_cast<QuickAction>(i))
                return false;
        }
        return true;
    }(),
    "the table is in the order of the enumeration");

std::optional<QuickAction> quickActionOf(const QString &id) {
    for (const QuickActionText &text : quickActionTexts) {
        if (id == QLatin1String(text.id))
            return text.action;
    }
    return std::nullopt;
}

QStringList orderedIds(const QString &layoutOrder) {
    const auto idOf = [](QuickAction action) { return QString::fromLatin1(textOf(action).id); };
    QStringList ids = layoutOrder.split(u',', Qt::SkipEmptyParts);
    if (!ids.contains(idOf(QuickAction::screenRecord))) {
        const qsizetype screenshot = ids.indexOf(idOf(QuickAction::screenshot));
        ids.insert(screenshot < 0 ? ids.size() : screenshot + 1, idOf(QuickAction::screenRecord));
    }
    if (!ids.contains(idOf(QuickAction::editor)))
        ids.append(idOf(QuickAction::editor));
    return ids;
}

std::vector<LayoutRow> layoutRows(const QStringList &ids, const std::function<bool(QuickAction)> &isVisible) {
    constexpr std::size_t tilesInARow = 2;
    std::vector<LayoutRow> rows;
    LayoutRow pending;
    const auto flush = [&rows, &pending] {
        if (!pending.items.empty())
            rows.push_back(std::exchange(pending, {}));
    };
    for (const QString &id : ids) {
        const auto action = quickActionOf(id);
        if (!action || !isVisible(*action))
            continue;
        if (textOf(*action).isCard) {
            flush();
            rows.push_back({true, {*action}});
            continue;
        }
        pending.items.push_back(*action);
        if (pending.items.size() == tilesInARow)
            flush();
    }
    flush();
    return rows;
}

} // namespace tavrine

#pragma once

#include <QLatin1String>
#include <QString>

#include <algorithm>
#include <iterator>
#include <optional>

namespace tavrine {

/// A choice and the text that stands for it where it is stored. A choice has one table of these, which is read both
/// ways, so that the order of the enumeration can change and the stored text stays.
template <class Choice>
struct StoredText {
    Choice choice;
    const char *text; ///< Latin-1
};
// Said, as not every compiler that knows C++20 finds it by itself.
template <class Choice>
StoredText(Choice, const char *) -> StoredText<Choice>;

/// The text of `choice`, which the table has.
template <class Choice, class Table>
[[nodiscard]] QString textOf(const Table &table, Choice choice) {
    const auto found = std::ranges::find(table, choice, &StoredText<Choice>::choice);
    Q_ASSERT(found != std::ranges::end(table));
    return QString::fromLatin1(found->text);
}

/// The choice behind `text`. None for a text that the table does not have.
template <class Table>
[[nodiscard]] auto choiceOf(const Table &table, const QString &text) {
    const auto found = std::ranges::find_if(table, [&](const auto &row) { return text == QLatin1String(row.text); });
    return found == std::ranges::end(table) ? std::nullopt : std::optional(found->choice);
}

} // namespace tavrine

#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>

namespace tavrine {

/// The keys of a panel as a table: what each does, by its virtual key code and by whether Command is held. Only Command
/// counts: Shift and Option with these keys act the same. A key that has no row goes to the search field.
enum class Command { isUp, isHeld, either };

template <typename Action>
struct KeyRow {
    int keyCode;
    Command command;
    Action action;
};

template <typename Action, std::size_t count>
[[nodiscard]] constexpr std::optional<Action> actionOf(const std::array<KeyRow<Action>, count> &table, int keyCode,
                                                       bool isCommandHeld) {
    const auto row = std::ranges::find_if(table, [=](const KeyRow<Action> &candidate) {
        return candidate.keyCode == keyCode &&
               (candidate.command == Command::either || (candidate.command == Command::isHeld) == isCommandHeld);
    });
    return row == table.end() ? std::nullopt : std::optional(row->action);
}

} // namespace tavrine

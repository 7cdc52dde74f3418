#pragma once

#include "base/Descriptor.h"

#include <QStringList>

#include <utility>
#include <vector>

#include <sys/types.h>

namespace tavrine {

/// How a program of the house is started: with these descriptors, nothing in place of the standard ones that are not
/// among them, no signal blocked or ignored, and nothing else of ours.
struct HelperStart {
    enum class Group {
        ours,
        own ///< what a terminal sends to this program does not reach it
    };

    QString program; ///< its file
    QStringList arguments = {};
    std::vector<std::pair<int, int>> descriptors = {}; ///< of ours, `aboveHelperNumbers`, and what it becomes there
    Group group = Group::ours;
};

/// The highest number that a helper is started with.
inline constexpr int highestHelperNumber = 4;

/// 0 and `pid`, or errno's number. Any thread.
[[nodiscard]] int startHelper(pid_t &pid, const HelperStart &start);

/// The same file, with a number that no helper's descriptor overwrites before it is handed on.
[[nodiscard]] Descriptor aboveHelperNumbers(int number);

} // namespace tavrine

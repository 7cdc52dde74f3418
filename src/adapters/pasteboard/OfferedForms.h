#pragma once

#include "adapters/pasteboard/PasteboardContents.h"
#include "adapters/pasteboard/PasteboardTransfer.h"
#include "adapters/pasteboard/SelectionSiblings.h"

#include <functional>
#include <vector>

namespace tavrine {

/// One form in which other programs get what is ours: its bytes, or how they are made once somebody asks.
struct OfferedForm {
    /// Runs on another thread. Empty bytes say that there is no such form.
    using Recipe = std::function<QByteArray()>;

    QByteArray target;
    QByteArray type;              ///< what it is answered as
    std::uint32_t typeNumber = 0; ///< as `Received::type`, for what was fetched
    int format = 8;
    QByteArray bytes;
    Recipe recipe;
    bool isKept = false; ///< made once and for all: an own picture. A further form of what was fetched is made anew
};

/// What this program wrote, in every form that programs ask for.
[[nodiscard]] std::vector<OfferedForm> formsOf(const OwnContents &contents);

/// What another program left.
[[nodiscard]] std::vector<OfferedForm> formsOf(const std::vector<Received> &contents,
                                               const std::vector<selection::Sibling> &siblings, qint64 maxPixels);

} // namespace tavrine

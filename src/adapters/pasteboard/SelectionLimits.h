#pragma once

#include "ports/ImageCoder.h"

#include <QtGlobal>

#include <chrono>

namespace tavrine {

/// What a program that copies may cost us. The defaults are the product's; tests bring shorter ones.
struct SelectionLimits {
    /// How long the start may wait for the server, which another program may hold for itself.
    std::chrono::milliseconds start{500};
    /// From asking to the first answer. A program answers from its main loop, and may have to encode a picture first;
    /// whoever is silent for longer is taken as hung.
    std::chrono::milliseconds answer{4000};
    /// A program may be too busy with the copy itself to hear the first question: LibreOffice drops it. After so long
    /// it is asked again, and once more half way to the limit above. Not for what costs work: a picture would be
    /// encoded anew for every question.
    std::chrono::milliseconds askAgain{300};
    /// From one piece of a transfer to the next. The data lies ready by then, so a pause is no work but trouble.
    std::chrono::milliseconds stall{1500};
    /// An owner that would be given up by one of these has so much more, once: where the machine or the X server stood
    /// still, what it has to say is on its way.
    std::chrono::milliseconds lastChance{500};
    /// All that has to be here before the change count moves; and once more, all that is kept for later.
    std::chrono::milliseconds total{10000};
    /// One transfer: above any text that a person copies, and room for a losslessly packed 8K screen.
    qsizetype transferBytes = qsizetype{64} * 1024 * 1024;
    /// All targets of one change, equal ones counted once.
    qsizetype changeBytes = qsizetype{128} * 1024 * 1024;
    /// Pixels of a picture that is decoded.
    qint64 imagePixels = maxImagePixels;
    /// Names that are read of a program's list. Office programs list about fifty.
    int targets = 500;
    /// Files that are looked at to find a picture among those copied.
    int files = 32;
    /// Where nobody can tell a program that ends from one that is about to copy anew: what it had is offered in its
    /// place once nobody has followed for so long. Some let the clipboard go right before they take it again.
    std::chrono::milliseconds calm{100};
    /// How long the end of this program may wait for a clipboard manager to take the contents over.
    std::chrono::milliseconds handOver{1000};
    /// A program that pastes from us and takes no further piece for so long has gone or is hung.
    std::chrono::milliseconds outgoingStall{10000};
    /// Pasting programs served piecemeal at the same time; more are refused.
    int outgoingTransfers = 32;
    /// The largest answer given in one piece. Larger ones go piecemeal, as every toolkit does above this size: servers
    /// without big requests end here, and a server busy with one long request serves nobody else.
    qsizetype pieceBytes = qsizetype{256} * 1024 - 1024;
};

} // namespace tavrine

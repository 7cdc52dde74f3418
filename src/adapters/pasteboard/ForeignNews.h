#pragma once

#include "adapters/pasteboard/PasteboardReader.h"

#include <memory>
#include <utility>

namespace tavrine {

/// What a `PasteboardReader` has told of the changes that other programs make, and what it has still to tell: the same
/// whatever the desktop's clipboard is like. On the reader's thread.
class ForeignNews {
public:
    explicit ForeignNews(PasteboardReader::Publish publish) : m_publish(std::move(publish)) {}

    /// Another program has the clipboard, and its contents are still to come.
    void begin(bool isChange) {
        m_isTold = false;
        m_untoldChanges += isChange ? 1 : 0;
    }
    /// They are here, or it is certain that they will not come.
    void publish(ForeignContents contents) {
        m_told = std::make_shared<const ForeignContents>(std::move(contents));
        m_isTold = true;
        m_publish({m_ownSerial, std::exchange(m_untoldChanges, 0), m_told});
    }
    /// A change to nothing.
    void publishNothing() {
        ++m_untoldChanges;
        publish({});
    }
    /// Nothing outlives the owner. Contents that were told of before have gone with it, and that is a change.
    void ownerLeftNothing() {
        if (m_told && !m_told->types.isEmpty())
            publishNothing();
    }

    /// An own write is tried: what is told from here on belongs to it.
    void setOwnSerial(int serial) { m_ownSerial = serial; }
    /// It has replaced everything up to here.
    void wasReplaced() {
        m_told.reset();
        m_untoldChanges = 0;
    }
    /// What is not told yet is older than it, though it did not come to stand itself.
    void dropUntold() { m_untoldChanges = 0; }
    /// It came too late. What was told under the serial before is not listened to, so it is told again.
    void tellAgain() {
        if (m_isTold)
            m_publish({m_ownSerial, 1, m_told});
    }

private:
    const PasteboardReader::Publish m_publish;
    int m_ownSerial = 0;
    int m_untoldChanges = 0;
    bool m_isTold = false; ///< of the last change
    std::shared_ptr<const ForeignContents> m_told;
};

} // namespace tavrine

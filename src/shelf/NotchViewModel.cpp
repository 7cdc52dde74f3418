#include "shelf/NotchViewModel.h"

#include "base/Print.h"
#include "base/Time.h"
#include "ports/FileIcons.h"
#include "ports/SystemSounds.h"

#include <QPointer>

#include <utility>

namespace tavrine {

NotchViewModel::NotchViewModel(Ports ports, QObject *parent) : QObject(parent), m_ports(std::move(ports)) {}

void NotchViewModel::setDragTargetActive(bool isActive) {
    if (std::exchange(m_isDragTargetActive, isActive) != isActive)
        Q_EMIT isDragTargetActiveChanged(isActive);
}

void NotchViewModel::endDrag() {
    setDragTargetActive(false); // a program that has gone tells nobody that its drag left
    Q_EMIT dragEnded();
}

void NotchViewModel::setFileDragActive(bool isActive) {
    if (std::exchange(m_isFileDragActive, isActive) != isActive)
        Q_EMIT isFileDragActiveChanged(isActive);
}

void NotchViewModel::setShelfItemDragActive(bool isActive) {
    if (std::exchange(m_isShelfItemDragActive, isActive) != isActive)
        Q_EMIT isShelfItemDragActiveChanged(isActive);
}

void NotchViewModel::setHovering(bool isHovering) {
    if (std::exchange(m_isHovering, isHovering) != isHovering)
        Q_EMIT isHoveringChanged(isHovering);
}

bool NotchViewModel::shouldExpand() const {
    return m_isFileDragActive || m_isDragTargetActive || (isInteractive() && !m_items.isEmpty());
}

bool NotchViewModel::showsItems() const {
    return isInteractive() && !m_items.isEmpty() && !m_isFileDragActive && !m_isDragTargetActive;
}

bool NotchViewModel::showsDropHint() const {
    return m_isFileDragActive && m_items.isEmpty() && !m_isDragTargetActive;
}

void NotchViewModel::addFile(const QUrl &url) {
    addItem({.id = QUuid::createUuid(),
             .url = url,
             .text = {},
             .image = m_ports.icons.iconForFile(url.toLocalFile(), iconPixels),
             .type = ItemType::file});
}

void NotchViewModel::addText(const QString &text) {
    addItem({.id = QUuid::createUuid(), .url = {}, .text = text, .image = {}, .type = ItemType::text});
}

void NotchViewModel::addImage(const QImage &image) {
    addItem({.id = QUuid::createUuid(), .url = {}, .text = {}, .image = image, .type = ItemType::image});
}

/// Many that come in one turn come onto the shelf in one.
void NotchViewModel::addItem(ShelfItem item) {
    if (m_added.isEmpty())
        m_ports.time.async(this, [this] { appendAdded(); });
    m_added.append(std::move(item));
    m_ports.sounds.play(QStringLiteral("Pop"));
}

void NotchViewModel::appendAdded() {
    m_items.append(std::exchange(m_added, {}));
    Q_EMIT itemsChanged();
}

void NotchViewModel::removeItem(const QUuid &id) {
    if (m_items.removeIf([&](const ShelfItem &item) { return item.id == id; }) > 0)
        Q_EMIT itemsChanged();
}

void NotchViewModel::removeAfterMove(const ShelfItem &item, const QUrl &url, int attempts) {
    m_ports.time.asyncAfter(moveCheckInterval, this, [this, item, url, attempts] {
        m_ports.fileExists(url.toLocalFile(), [self = QPointer(this), item, url, attempts](bool exists) {
            if (self)
                self->fileWasFound(exists, item, url, attempts);
        });
    });
}

void NotchViewModel::fileWasFound(bool exists, const ShelfItem &item, const QUrl &url, int attempts) {
    if (!exists)
        removeItem(item.id);
    else if (attempts < 1)
        printLine(QStringLiteral(
            "[NotchShelf] Move was requested, but the original file still exists. Keeping item in shelf."));
    else
        removeAfterMove(item, url, attempts - 1);
}

void NotchViewModel::clearAll() {
    m_items.clear();
    Q_EMIT itemsChanged();
}

/// The shelf watches none of its files: that one has gone is noticed when it is wanted.
void NotchViewModel::openItem(const ShelfItem &item) {
    if (!item.url)
        return;
    m_ports.fileExists(item.url->toLocalFile(), [self = QPointer(this), item](bool exists) {
        if (!self)
            return;
        if (exists)
            Q_EMIT self->fileToOpen(*item.url);
        else
            Q_EMIT self->fileIsGone(displayName(item));
    });
}

} // namespace tavrine

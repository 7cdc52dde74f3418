#include "utilities/emoji/EmojiPictures.h"

#include "base/Time.h"
#include "look/EmojiText.h"
#include "look/Text.h"
#include "ports/TaskLauncher.h"

namespace tavrine {

EmojiPictures::EmojiPictures(const Ports &ports) : m_ports(ports) {}
EmojiPictures::~EmojiPictures() = default;

const look::DrawnGlyphs *EmojiPictures::ofSide(int side) {
    if (m_ports.folder.isEmpty() || look::emojiFamilies().isEmpty())
        return nullptr;
    const auto known = m_sizes.find(side);
    if (known != m_sizes.end())
        return known->second.glyphs.get();
    Size &size = m_sizes[side];
    size.glyphs = open(side);
    if (!size.glyphs) {
        m_ports.time.asyncAfter(delay, this, [this, side] { draw(side); });
    }
    return size.glyphs.get();
}

QString EmojiPictures::pathOf(int side) const {
    return QStringLiteral("%1/Emoji-%2.pictures").arg(m_ports.folder).arg(side);
}

std::unique_ptr<look::DrawnGlyphs> EmojiPictures::open(int side) const {
    return look::DrawnGlyphs::open(pathOf(side), {look::emojiFamilies().first(),
                                                  look::fontFor(look::TextRole::body).toString(), m_ports.table, side});
}

// Once in a run for each size: what failed now fails again, and the pictures are drawn as they are needed.
void EmojiPictures::draw(int side) {
    const auto task = m_ports.launcher.makeTask(
        QLatin1String(program),
        {m_ports.table, QString::number(side), look::fontFor(look::TextRole::body).toString(), pathOf(side)});
    task->setTerminationHandler([self = QPointer(this), &time = m_ports.time, side](int terminationStatus) {
        time.async([self, side, terminationStatus] {
            if (!self)
                return;
            self->m_sizes[side].drawing.reset();
            if (terminationStatus == 0)
                self->m_sizes[side].glyphs = self->open(side);
        });
    });
    m_sizes[side].drawing = task;
    if (task->launch())
        m_sizes[side].drawing.reset();
}

} // namespace tavrine

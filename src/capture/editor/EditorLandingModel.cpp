#include "capture/editor/EditorLandingModel.h"

#include "base/DesktopWords.h"
#include "base/Time.h"
#include "capture/editor/ImageOpening.h"
#include "ports/Pasteboard.h"

#include <QDateTime>
#include <QPointer>

#include <algorithm>
#include <utility>

namespace tavrine {

EditorLandingModel::EditorLandingModel(Ports ports, History history, Actions actions, QObject *parent)
    : QObject(parent), m_ports(ports), m_history(std::move(history)), m_actions(std::move(actions)) {
    historyChanged();
}

EditorLandingModel::~EditorLandingModel() = default;

void EditorLandingModel::appear() {
    // Later, since what stands on the pasteboard may take a while to decode and the window is to open at once.
    m_ports.time.async(this, [this] {
        if (m_pasteboardTimer)
            lookAtPasteboard();
    });
    m_pasteboardTimer = m_ports.time.repeat(pasteboardInterval, [this] { lookAtPasteboard(); });
}

void EditorLandingModel::disappear() {
    m_pasteboardTimer.reset();
}

void EditorLandingModel::lookAtPasteboard() {
    const int count = m_ports.pasteboard.changeCount();
    if (std::exchange(m_seenChangeCount, count) == count)
        return;
    const bool canPaste = imageOpening::fromPasteboard(m_ports.pasteboard).has_value();
    if (std::exchange(m_canPaste, canPaste) != canPaste)
        Q_EMIT canPasteChanged();
}

void EditorLandingModel::historyChanged() {
    std::vector<RecentImage> images = m_history.images();
    images.resize(std::min(images.size(), mostRecentImages));
    m_missingThumbnails.clear(); // a file may have come back
    if (images == m_recentImages)
        return;
    m_recentImages = std::move(images);
    Q_EMIT recentImagesChanged();
}

void EditorLandingModel::thumbnailArrived(const QString &fileName) {
    m_missingThumbnails.remove(fileName);
    Q_EMIT thumbnailMade(fileName);
}

std::optional<QImage> EditorLandingModel::thumbnail(const QString &fileName) {
    if (m_missingThumbnails.contains(fileName))
        return std::nullopt;
    if (std::optional<QImage> known = m_history.cachedThumbnail(fileName))
        return known;
    if (std::find(m_wantedThumbnails.begin(), m_wantedThumbnails.end(), fileName) == m_wantedThumbnails.end())
        m_wantedThumbnails.push_back(fileName);
    if (!std::exchange(m_isMakingThumbnails, true))
        m_ports.time.async(this, [this] { makeNextThumbnail(); });
    return std::nullopt;
}

void EditorLandingModel::makeNextThumbnail() {
    m_isMakingThumbnails = false;
    if (m_wantedThumbnails.empty())
        return;
    const QString fileName = m_wantedThumbnails.back();
    m_wantedThumbnails.pop_back();
    if (!m_history.makeThumbnail(fileName))
        m_missingThumbnails.insert(fileName);
    if (!m_wantedThumbnails.empty()) {
        m_isMakingThumbnails = true;
        m_ports.time.async(this, [this] { makeNextThumbnail(); });
    }
    Q_EMIT thumbnailMade(fileName);
}

void EditorLandingModel::openRecentImage(const QString &fileName) {
    select(m_history.loadImage(fileName));
}

QString EditorLandingModel::timeText(Date date) const {
    return timeText(date, m_ports.time.now(), QLocale(), QTimeZone::systemTimeZone());
}

QString EditorLandingModel::timeText(Date date, Date now, const QLocale &locale, const QTimeZone &zone) {
    const auto inZone = [&zone](Date moment) {
        return QDateTime::fromMSecsSinceEpoch(qint64(moment.secondsSince1970 * 1000), zone);
    };
    const QDateTime then = inZone(date);
    const QDate today = inZone(now).date();
    QString day = locale.toString(then.date(), QStringLiteral("MMM"));
    if (then.date() == today)
        day = inDesktopWords(QStringLiteral("today"));
    else if (then.date() == today.addDays(-1))
        day = inDesktopWords(QStringLiteral("yesterday"));
    return locale.toString(then.time(), QStringLiteral("h:mm AP")) + QStringLiteral(", ") + day;
}

void EditorLandingModel::paste() {
    select(imageOpening::fromPasteboard(m_ports.pasteboard));
}

void EditorLandingModel::chooseImageFile() {
    imageOpening::choose(m_ports.filePanels, m_ports.imageCoder, [self = QPointer(this)](const QImage &image) {
        if (self)
            self->select(image);
    });
}

void EditorLandingModel::close() {
    if (m_actions.close)
        m_actions.close(); // the model may be gone
}

bool EditorLandingModel::dragEntered(const QMimeData &data) {
    setTargeted(imageOpening::mayHoldImage(data));
    return m_isTargeted;
}

void EditorLandingModel::dragExited() {
    setTargeted(false);
}

void EditorLandingModel::drop(const QMimeData &data) {
    setTargeted(false);
    select(imageOpening::fromDrop(m_ports.imageCoder, data));
}

void EditorLandingModel::setTargeted(bool isTargeted) {
    if (std::exchange(m_isTargeted, isTargeted) != isTargeted)
        Q_EMIT isTargetedChanged();
}

void EditorLandingModel::select(const std::optional<QImage> &image) {
    const auto selectImage = m_actions.selectImage; // this one goes with the model, which it may end
    if (image && selectImage)
        selectImage(*image);
}

} // namespace tavrine

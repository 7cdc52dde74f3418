#include "recording/RecordingPreview.h"

#include "base/PrivateFiles.h"
#include "base/Time.h"
#include "base/Uuid.h"
#include "panels/Placement.h"
#include "ports/FilePanels.h"
#include "ports/Pasteboard.h"
#include "recording/RecordingTexts.h"

#include <QFile>
#include <QPointer>
#include <QUrl>

#include <utility>

namespace tavrine {
namespace {

PanelDescription previewDescription() {
    return {.title = QStringLiteral("Recording Complete"),
            .contentSize = RecordingPreview::size,
            .level = windowLevel::floating,
            .hasShadow = false};
}

std::optional<QRectF> inTheCorner(const Screens &screens, QSizeF size) {
    const auto screen = screenForTool(screens);
    return screen ? std::optional(QRectF(screen->frame.topLeft() + RecordingPreview::margin, size)) : std::nullopt;
}

} // namespace

RecordingPreview::RecordingPreview(Ports ports, Saving saving, Actions actions, View view)
    : m_ports(std::move(ports)), m_saving(std::move(saving)), m_actions(std::move(actions)), m_view(std::move(view)),
      m_panel({m_ports.windows, m_ports.screens, m_ports.time},
              {.description = previewDescription(), .placement = inTheCorner}) {
    m_panel.setOnClosed([this] { closedFromOutside(); });
}

RecordingPreview::~RecordingPreview() {
    if (m_model)
        m_model->stop();
    m_ports.corner.giveBack();
}

void RecordingPreview::show(const ShownRecording &recording) {
    if (m_model) {
        m_actions.onUnseen(shown());
        close();
    }
    m_actions.activateApplication();
    m_model = std::make_shared<ScreenRecordingPreviewModel>(
        recording.path, recording.name.isEmpty() ? recordingName(m_ports.time.now()) : recording.name, firstFolder(),
        ScreenRecordingPreviewModel::Ports{m_ports.asset, m_ports.players, m_ports.filePanels},
        modelActions(recording.path));
    m_model->setNotice(recording.notice);
    m_model->setMuted(recording.isMuted);
    m_panel.build(m_view ? m_view(m_model) : nullptr);
    m_panel.show();
    m_ports.corner.take(m_panel.frame());
    m_model->load();
}

ShownRecording RecordingPreview::shown() const {
    return {.path = m_model->filePath(),
            .name = m_model->fileName(),
            .notice = m_model->notice(),
            .isMuted = m_model->isMuted()};
}

/// Where recordings go; where that cannot be known, where they would go by rule.
QString RecordingPreview::firstFolder() const {
    if (const auto folder = m_saving.quickShotsDirectory())
        return *folder;
    if (const QString chosen = m_saving.customSaveDirectoryPath(); !chosen.isEmpty())
        return chosen;
    return m_ports.folders.home + QStringLiteral("/Documents/Tavrine QuickShots");
}

ScreenRecordingPreviewModel::Actions RecordingPreview::modelActions(const QString &path) {
    return {.onSave = [this, path](const Choice &choice) { finish(path, choice, Use::save); },
            .onCopy = [this, path](const Choice &choice) { finish(path, choice, Use::copy); },
            .onCancel =
                [this, path] {
                    close();
                    QFile::remove(path);
                    m_actions.onLeft();
                },
            .onFolderChosen = [this](const QString &folder) { m_saving.setCustomSaveDirectoryPath(folder); }};
}

void RecordingPreview::close() {
    if (const auto model = std::exchange(m_model, nullptr)) {
        model->stop();
        m_ports.time.async(this, [model] {}); // its own button may be what closes it
    }
    m_ports.corner.giveBack();
    m_panel.release(Dismissal::atOnce);
}

/// Nobody said that the recording may go.
void RecordingPreview::closedFromOutside() {
    if (m_model)
        m_actions.onPutOff(shown());
    close();
    m_actions.onLeft();
}

void RecordingPreview::finish(const QString &path, const Choice &choice, Use use) {
    close();
    if (!choice.isMuted) {
        goOn(path, path, choice, use);
        return;
    }
    makePrivateFolder(m_ports.folders.temporary);
    const QString muted =
        m_ports.folders.temporary + QStringLiteral("/tavrine-muted-") + freshUuidString() + QStringLiteral(".mp4");
    m_ports.asset.copyVideoTrack(path, muted, [this, self = QPointer(this), path, muted, choice, use](bool completed) {
        if (self)
            m_ports.time.async(this, [this, path, muted, completed, choice, use] {
                goOn(path, completed ? muted : path, choice, use);
            });
    });
}

void RecordingPreview::goOn(const QString &original, const QString &path, const Choice &choice, Use use) {
    if (!choice.targetFolder.isEmpty())
        m_saving.setCustomSaveDirectoryPath(choice.targetFolder);
    const auto isTold = std::make_shared<bool>(false);
    m_saving.saveRecording(
        path, choice.fileName,
        [this, self = QPointer(this), isTold, original, path, choice, use](const std::optional<QString> &savedPath) {
            *isTold = true;
            if (self)
                goneOn(original, path, savedPath, choice, use);
        });
    if (*isTold)
        return;
    m_ports.time.asyncAfter(untilSavingIsTold, this, [this, isTold] { // it goes to another disk
        if (!*isTold)
            m_actions.showToast(QString::fromUtf8("Saving the recording…"), QStringLiteral("square.and.arrow.down"));
    });
}

void RecordingPreview::goneOn(const QString &original, const QString &path, const std::optional<QString> &savedPath,
                              const Choice &choice, Use use) {
    if (use == Use::copy)
        copy(savedPath.value_or(path));
    if (!savedPath)
        saveFailed(original, path, choice, use);
    else if (original != path)
        QFile::remove(original);
    else if (choice.isMuted) // nobody would look for a voice in it
        warn(QStringLiteral("The recording couldn't be muted: it has its sound"));
    m_actions.onLeft();
}

void RecordingPreview::copy(const QString &path) {
    m_ports.pasteboard.clearContents();
    m_ports.pasteboard.writeFileUrls({QUrl::fromLocalFile(path)});
    m_actions.showToast(QStringLiteral("Video Copied to Clipboard!"), QStringLiteral("doc.on.doc.fill"));
}

void RecordingPreview::saveFailed(const QString &original, const QString &path, const Choice &choice, Use use) {
    if (original != path && use == Use::save) // a copy is what the pasteboard names
        QFile::remove(path);
    warn(QStringLiteral("Couldn't save the recording"));
    m_actions.onUnseen({.path = original, .name = choice.fileName, .isMuted = choice.isMuted});
}

void RecordingPreview::warn(const QString &words) {
    m_actions.showToast(words, QStringLiteral("exclamationmark.triangle.fill"));
}

} // namespace tavrine

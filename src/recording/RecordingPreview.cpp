#include "recording/RecordingPreview.h"

#include "base/PrivateFiles.h"
#include "base/Time.h"
#include "base/Uuid.h"
#include "panels/Placement.h"
#include "ports/FilePanels.h"
#include "ports/Pasteboard.h"
#include "recording/RecordingTexts.h"

#include <QFile>
#include <QFileInfo>
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

/// "clip.mp4": the extension of the movie itself.
QString fileNameOf(const QString &base, const QString &path) {
    const QString suffix = QFileInfo(path).suffix();
    return (base.isEmpty() ? QStringLiteral("recording") : base) + QLatin1Char('.') +
           (suffix.isEmpty() ? QStringLiteral("mp4") : suffix);
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
    m_panel.build(m_view ? m_view(m_model) : nullptr);
    m_panel.show();
    m_model->load();
}

ShownRecording RecordingPreview::shown() const {
    return {.path = m_model->filePath(), .name = m_model->fileName(), .notice = m_model->notice()};
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
    m_panel.release(Dismissal::atOnce);
}

/// Nobody said that the recording may go; the next start of the program shows it again.
void RecordingPreview::closedFromOutside() {
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
    const auto folder = m_saving.quickShotsDirectory();
    const QString savedPath =
        folder ? *folder + QLatin1Char('/') + fileNameOf(m_saving.baseName(choice.fileName), path) : QString();
    const bool wasTaken = folder && QFile::exists(savedPath);
    m_saving.saveRecording(path, choice.fileName);
    const bool isSaved = !QFile::exists(path);
    if (use == Use::copy)
        copy(path, isSaved ? savedPath : QString(), isSaved && wasTaken);
    if (!isSaved)
        saveFailed(original, path, choice, use);
    else if (original != path)
        QFile::remove(original);
    m_actions.onLeft();
}

/// `savedPath` is empty when it was not saved. Saving has put the file on the pasteboard already. Under a name that was
/// taken before there is another recording, which nobody asked for.
void RecordingPreview::copy(const QString &path, const QString &savedPath, bool wasTaken) {
    if (!wasTaken) {
        const bool isThere = !savedPath.isEmpty() && QFile::exists(savedPath);
        m_ports.pasteboard.clearContents();
        m_ports.pasteboard.writeFileUrls({QUrl::fromLocalFile(isThere ? savedPath : path)});
    }
    m_actions.showToast(QStringLiteral("Video Copied to Clipboard!"), QStringLiteral("doc.on.doc.fill"));
}

void RecordingPreview::saveFailed(const QString &original, const QString &path, const Choice &choice, Use use) {
    if (original != path && use == Use::save) // a copy is what the pasteboard names
        QFile::remove(path);
    m_actions.showToast(QStringLiteral("Couldn't save the recording"), QStringLiteral("exclamationmark.triangle.fill"));
    m_actions.onUnseen({.path = original, .name = choice.fileName});
}

} // namespace tavrine

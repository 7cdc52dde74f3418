// How a capture becomes a file of the person's.
#include "base/Print.h"
#include "base/Time.h"
#include "capture/SnipFlow.h"
#include "capture/SnipPreferences.h"
#include "ports/FilePanels.h"

#include <QFileInfo>
#include <QPointer>

namespace tavrine {

QString SnipFlow::snipDefaultDirectory() const {
    const QString chosen = preference::snipSaveDirectoryPath.get(m_ports.defaults);
    if (!chosen.isEmpty())
        return chosen;
    const Folders &folders = m_ports.folders;
    return (folders.documents.isEmpty() ? folders.home : folders.documents) + QStringLiteral("/tavrine");
}

QString SnipFlow::snipFileName() const {
    return tavrine::snipFileName(m_ports.time.now());
}

void SnipFlow::saveSnip(const QImage &image, const Completion &completion) {
    if (image.isNull()) {
        completion(false);
        return;
    }
    const QString directory = snipDefaultDirectory();
    const auto png = m_files.prepare(image, directory);
    if (preference::snipUseSaveDefault.get(m_ports.defaults)) {
        m_files.saveIn(directory, snipFileName(), png, [self = QPointer(this), completion](const auto &outcome) {
            if (self)
                self->tellOfFailure(outcome);
            completion(outcome.isWritten());
        });
        return;
    }
    showSnipSaveDialog(directory, {.onSaveHere =
                                       [this, png, directory, completion](bool useAsDefault) {
                                           dismissSnipSaveDialog(Dismissal::animated);
                                           saveHere(png, directory, useAsDefault, completion);
                                       },
                                   .onChooseFolder =
                                       [this, png, directory, completion](bool useAsDefault) {
                                           dismissSnipSaveDialog(Dismissal::atOnce);
                                           m_ports.time.asyncAfter(choosePanelDelay, this, [=, this] {
                                               runSavePanel(png, directory, useAsDefault, completion);
                                           });
                                       },
                                   .onCancel =
                                       [this, completion] {
                                           dismissSnipSaveDialog(Dismissal::animated);
                                           completion(false);
                                       }});
}

void SnipFlow::saveHere(const SnipFiles::Prepared &png, const QString &directory, bool useAsDefault,
                        const Completion &completion) {
    m_files.saveIn(directory, snipFileName(), png,
                   [self = QPointer(this), useAsDefault, completion](const SnipFiles::Outcome &outcome) {
                       if (outcome.isWritten() && useAsDefault && self)
                           preference::snipUseSaveDefault.set(self->m_ports.defaults, true);
                       if (self)
                           self->tellOfFailure(outcome);
                       completion(outcome.isWritten());
                   });
}

void SnipFlow::tellOfFailure(const SnipFiles::Outcome &outcome) const {
    if (!outcome.isWritten() && m_actions.showToast)
        m_actions.showToast(saveFailureMessage(outcome), QStringLiteral("exclamationmark.triangle.fill"));
}

void SnipFlow::runSavePanel(const SnipFiles::Prepared &png, const QString &directory, bool useAsDefault,
                            const Completion &completion) {
    if (m_actions.activateApplication)
        m_actions.activateApplication();
    const auto onAnswer = [self = QPointer(this), useAsDefault, completion](const SnipFiles::Outcome &outcome) {
        if (outcome.isWritten() && self) {
            preference::snipSaveDirectoryPath.set(self->m_ports.defaults, QFileInfo(outcome.path).absolutePath());
            if (useAsDefault)
                preference::snipUseSaveDefault.set(self->m_ports.defaults, true);
        }
        if (self)
            self->tellOfFailure(outcome);
        completion(outcome.isWritten());
    };
    m_ports.filePanels.runSavePanel({.title = QStringLiteral("Save Snip"),
                                     .prompt = QStringLiteral("Save"),
                                     .fileName = snipFileName(),
                                     .directory = directory,
                                     .filter = QStringLiteral("PNG (*.png)")},
                                    [files = m_files, png, onAnswer, completion](const std::optional<QString> &path) {
                                        if (path)
                                            files.saveAs(*path, png, FileRights::asUsual, onAnswer);
                                        else
                                            completion(false);
                                    });
}

void SnipFlow::autoSaveSnip(const QImage &image) {
    if (image.isNull())
        return;
    const QString directory = snipDefaultDirectory();
    m_files.saveIn(directory, snipFileName(), m_files.prepare(image, directory), [](const SnipFiles::Outcome &outcome) {
        if (outcome.isWritten())
            printLine(QStringLiteral("Auto-saved snip to: ") + outcome.path);
    });
}

void SnipFlow::showSnipSaveDialog(const QString &directory, SnipSaveDialogModel::Actions actions) {
    dismissSnipSaveDialog(Dismissal::atOnce);
    m_dialogModel = std::make_shared<SnipSaveDialogModel>(directory, std::move(actions));
    m_dialog.build(m_views.saveDialog ? m_views.saveDialog(m_dialogModel) : nullptr);
    m_dialog.show();
}

void SnipFlow::dismissSnipSaveDialog(Dismissal dismissal) {
    m_dialog.release(dismissal);
    const auto model = std::exchange(m_dialogModel, nullptr);
    if (!model)
        return;
    // Who asked is told all the same when the next question takes this one's place.
    if (dismissal == Dismissal::atOnce)
        model->cancel();
    m_ports.time.async(this, [model] {}); // its own answer may be what closes it
}

} // namespace tavrine

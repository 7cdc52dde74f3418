#pragma once

#include "ports/FilePanels.h"

#include <QObject>
#include <QPointer>

#include <functional>

class QFileDialog;
class QWidget;

namespace tavrine {

/// Panels for files as Qt's own dialogs, in the palette of the program. No panel runs an event loop of its own, and no
/// other process is asked, so none can hang.
class QtFilePanels final : public QObject, public FilePanels {
    Q_OBJECT

public:
    /// Called for each window of a panel, its questions too, before it is shown.
    using Prepare = std::function<void(QWidget &window)>;

    explicit QtFilePanels(Prepare prepare, QObject *parent = nullptr)
        : QObject(parent), m_prepare(std::move(prepare)) {}
    /// An open panel goes, and is not answered.
    ~QtFilePanels() override;

    void runSavePanel(const SavePanel &panel, Answer answer) override;
    void runOpenPanel(const OpenPanel &panel, Answer answer) override;

private:
    [[nodiscard]] bool isFree(Answer &answer);
    void run(QFileDialog *dialog, const QString &prompt, const QString &directory, Answer answer);

    Prepare m_prepare;
    QPointer<QFileDialog> m_dialog;
    QString m_lastDirectory;
};

} // namespace tavrine

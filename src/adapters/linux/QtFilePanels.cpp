#include "adapters/linux/QtFilePanels.h"

#include "base/DesktopWords.h"
#include "base/WholeFile.h"

#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QFileSystemModel>
#include <QHash>
#include <QMessageBox>
#include <QMimeDatabase>
#include <QPushButton>
#include <QRegularExpression>
#include <QSortFilterProxyModel>

namespace tavrine {
namespace {

/// "png" and "jpg" of "Images (*.png *.jpg)".
QStringList suffixesOf(const QString &filter) {
    static const QRegularExpression pattern(QStringLiteral("\\*\\.([^\\s*;()]+)"));
    QStringList suffixes;
    for (auto matches = pattern.globalMatch(filter); matches.hasNext();)
        suffixes.append(matches.next().captured(1));
    return suffixes;
}

/// The folder itself, or the nearest one above it that is there.
QString nearestFolder(const QString &path) {
    QString folder = path.isEmpty() ? QDir::homePath() : QDir::cleanPath(QFileInfo(path).absoluteFilePath());
    while (!QFileInfo(folder).isDir() && folder != QDir::rootPath())
        folder = QFileInfo(folder).absolutePath();
    return folder;
}

/// Folders, and of the files those of one kind. By the name where it tells the kind, else by the first bytes.
class OfKind final : public QSortFilterProxyModel {
public:
    OfKind(QString kind, QObject *parent) : QSortFilterProxyModel(parent), m_kind(std::move(kind)) {}

    /// Folders first, sizes and dates by what they are: the files' own model knows, and the order here is its.
    void sort(int column, Qt::SortOrder order) override { sourceModel()->sort(column, order); }

protected:
    [[nodiscard]] bool filterAcceptsRow(int row, const QModelIndex &parent) const override {
        const auto *files = qobject_cast<const QFileSystemModel *>(sourceModel());
        const QModelIndex index = files->index(row, 0, parent);
        if (files->isDir(index))
            return true;
        const QString path = files->filePath(index);
        const auto known = m_known.constFind(path);
        if (known != m_known.cend())
            return *known;
        return m_known[path] = QMimeDatabase().mimeTypeForFile(path).name().startsWith(m_kind);
    }

private:
    QString m_kind;
    mutable QHash<QString, bool> m_known; ///< each file is looked at once
};

/// Asks before it replaces a file, in a window of its own instead of an event loop of its own.
class SaveDialog final : public QFileDialog {
public:
    SaveDialog(QStringList suffixes, const QtFilePanels::Prepare &prepare)
        : m_suffixes(std::move(suffixes)), m_prepare(prepare) {}

    [[nodiscard]] const QString &path() const { return m_path; }

    void accept() override {
        const QStringList files = selectedFiles();
        QString path = files.value(0);
        const QFileInfo typed(path);
        if (path.isEmpty() || typed.isDir()) {
            QFileDialog::accept(); // goes into the folder, or stays
            return;
        }
        if (!m_suffixes.isEmpty() && !m_suffixes.contains(typed.suffix(), Qt::CaseInsensitive))
            path += QLatin1Char('.') + m_suffixes.first();
        const QFileInfo file(path);
        if (!QFileInfo(file.absolutePath()).isDir()) {
            tell(QStringLiteral("There is no folder \"%1\".").arg(file.absolutePath()), QMessageBox::Ok);
        } else if (file.isDir()) {
            tell(QStringLiteral("\"%1\" is a folder.").arg(file.fileName()), QMessageBox::Ok);
        } else if (const auto reason = whyNotWritable(QFile::encodeName(path).toStdString())) {
            tell(QStringLiteral("\"%1\" cannot be saved here: %2.")
                     .arg(file.fileName(), QString::fromStdString(*reason)),
                 QMessageBox::Ok);
        } else if (file.exists()) {
            QMessageBox *question =
                tell(QStringLiteral("\"%1\" already exists. Do you want to replace it?").arg(file.fileName()),
                     QMessageBox::Cancel);
            QPushButton *replace =
                question->addButton(inDesktopWords(QStringLiteral("Replace")), QMessageBox::AcceptRole);
            connect(replace, &QPushButton::clicked, this, [this, path] { end(path); });
        } else {
            end(path);
        }
    }

private:
    QMessageBox *tell(const QString &text, QMessageBox::StandardButton button) {
        auto *box = new QMessageBox(QMessageBox::NoIcon, windowTitle(), inDesktopWords(text), button, this);
        box->setAttribute(Qt::WA_DeleteOnClose);
        m_prepare(*box);
        box->open();
        return box;
    }
    void end(const QString &path) {
        m_path = path;
        done(Accepted);
    }

    QStringList m_suffixes;
    const QtFilePanels::Prepare &m_prepare; ///< of the panels, which outlive their dialog
    QString m_path;
};

} // namespace

QtFilePanels::~QtFilePanels() {
    delete m_dialog;
}

bool QtFilePanels::isFree(Answer &answer) {
    if (!m_dialog)
        return true;
    m_dialog->raise();
    m_dialog->activateWindow();
    QMetaObject::invokeMethod(
        this, [answer = std::move(answer)] { answer(std::nullopt); }, Qt::QueuedConnection);
    return false;
}

void QtFilePanels::runSavePanel(const SavePanel &panel, Answer answer) {
    if (!isFree(answer))
        return;
    auto *dialog = new SaveDialog(suffixesOf(panel.filter), m_prepare);
    dialog->setWindowTitle(inDesktopWords(panel.title));
    dialog->setOption(QFileDialog::DontUseNativeDialog); // before all else: it replaces the dialog's widgets
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setFileMode(QFileDialog::AnyFile);
    if (!panel.filter.isEmpty())
        dialog->setNameFilter(inDesktopWords(panel.filter));
    run(dialog, panel.prompt, panel.directory, std::move(answer));
    dialog->selectFile(panel.fileName);
}

void QtFilePanels::runOpenPanel(const OpenPanel &panel, Answer answer) {
    if (!isFree(answer))
        return;
    auto *dialog = new QFileDialog;
    dialog->setWindowTitle(inDesktopWords(panel.title));
    dialog->setOption(QFileDialog::DontUseNativeDialog);
    dialog->setAcceptMode(QFileDialog::AcceptOpen);
    dialog->setFileMode(panel.choosesDirectories ? QFileDialog::Directory : QFileDialog::ExistingFile);
    dialog->setOption(QFileDialog::ShowDirsOnly, panel.choosesDirectories);
    if (!panel.choosesDirectories && !panel.filter.isEmpty())
        dialog->setNameFilter(inDesktopWords(panel.filter));
    if (!panel.choosesDirectories && !panel.kind.isEmpty()) {
        dialog->setOption(QFileDialog::HideNameFilterDetails); // the filter lets all names through
        dialog->setProxyModel(new OfKind(panel.kind, dialog));
    }
    run(dialog, panel.prompt, panel.directory.isEmpty() ? m_lastDirectory : panel.directory, std::move(answer));
}

void QtFilePanels::run(QFileDialog *dialog, const QString &prompt, const QString &directory, Answer answer) {
    m_dialog = dialog;
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setDirectory(nearestFolder(directory));
    if (!prompt.isEmpty())
        dialog->setLabelText(QFileDialog::Accept, inDesktopWords(prompt));
    connect(dialog, &QDialog::finished, this, [this, dialog, answer = std::move(answer)](int result) {
        std::optional<QString> path;
        if (result == QDialog::Accepted) {
            const auto *save = dynamic_cast<SaveDialog *>(dialog);
            path = QDir::cleanPath(save ? save->path() : dialog->selectedFiles().value(0));
            m_lastDirectory = dialog->directory().absolutePath();
        }
        m_dialog = nullptr; // the next panel may be asked for within the answer
        // In a turn of its own: the dialog is still busy with the key or the click that ended it.
        QMetaObject::invokeMethod(
            this, [answer, path] { answer(path); }, Qt::QueuedConnection);
    });
    m_prepare(*dialog);
    dialog->show();
    dialog->raise();
    dialog->activateWindow();
}

} // namespace tavrine

#pragma once

#include <QWidget>

namespace tavrine::look {
class Button;

/// A row that shows a folder in full, as far as it has room, with the buttons that choose another one and go back to
/// the standard one. Main thread.
class FolderRow final : public QWidget {
    Q_OBJECT

public:
    explicit FolderRow(const QString &title, QWidget *parent = nullptr);

    /// `canReset`: whether there is something to go back from.
    void setFolder(const QString &folder, bool canReset);

Q_SIGNALS:
    void changePressed();
    void resetPressed();

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QString m_title;
    QString m_folder;
    Button *m_reset;
};

} // namespace tavrine::look

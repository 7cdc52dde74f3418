#pragma once

#include "ports/LoginItem.h"

#include <QByteArray>
#include <QHash>
#include <QString>

#include <optional>

namespace tavrine {

/// The login item as an entry in the desktop's autostart folder. Lives on the main thread. The entry is read at each
/// question, since the desktop's own settings change it as well.
class XdgAutostart final : public LoginItem {
public:
    /// `folder` is made when the item is registered; `program` is the absolute path of the executable.
    XdgAutostart(QString folder, QString program);

    /// $XDG_CONFIG_HOME/autostart.
    [[nodiscard]] static QString userFolder();

    /// An entry that starts a program which is not there any more is written for this one: the person has moved the
    /// program, or has another copy of it, and wants it started all the same. What starts a program that is there, and
    /// what is switched off, stays.
    void followProgram();

    [[nodiscard]] bool isEnabled() const override;
    [[nodiscard]] bool registerItem() override;
    [[nodiscard]] bool unregisterItem() override;

    /// The entry's text for a program at that path.
    [[nodiscard]] static QByteArray entryFor(const QString &program);

private:
    /// None where there is no file that can be read.
    [[nodiscard]] std::optional<QHash<QByteArray, QByteArray>> entry() const;

    QString m_folder;
    QString m_file;
    QString m_program;
};

} // namespace tavrine

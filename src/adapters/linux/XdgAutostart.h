#pragma once

#include "ports/LoginItem.h"

#include <QString>

namespace tavrine {

/// The login item as an entry in the desktop's autostart folder. Lives on the main thread. The entry is read at each
/// question, since the desktop's own settings change it as well.
class XdgAutostart final : public LoginItem {
public:
    /// `folder` is made when the item is registered; `program` is the absolute path of the executable.
    XdgAutostart(QString folder, QString program);

    /// $XDG_CONFIG_HOME/autostart.
    [[nodiscard]] static QString userFolder();

    [[nodiscard]] bool isEnabled() const override;
    [[nodiscard]] bool registerItem() override;
    [[nodiscard]] bool unregisterItem() override;

    /// The entry's text for a program at that path.
    [[nodiscard]] static QByteArray entryFor(const QString &program);

private:
    QString m_folder;
    QString m_file;
    QString m_program;
};

} // namespace tavrine

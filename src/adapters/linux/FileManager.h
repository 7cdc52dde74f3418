#pragma once

#include <QList>
#include <QUrl>

namespace tavrine {

/// Shows local files in the desktop's file manager, selected. Where no file manager can be asked over D-Bus, the
/// folders of the files are opened instead. Returns at once; quiet when neither is there. Main thread.
void showInFileManager(const QList<QUrl> &urls);

} // namespace tavrine

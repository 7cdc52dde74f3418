#pragma once

#include <QStringList>

namespace tavrine::reading {

/// The recogniser's languages for a desktop: those of the desktop that are installed, in its order, and English, which
/// is on every screen, last. `desktop` as QLocale tells it ("de-CH", "de"); `installed` by the recogniser's own names
/// ("deu"). Empty only when none of them is installed.
[[nodiscard]] QStringList recognitionLanguages(const QStringList &desktop, const QStringList &installed);

/// The recogniser's name of one language of the desktop; empty when it has none.
[[nodiscard]] QString recognizerName(const QString &language);

} // namespace tavrine::reading

#pragma once

class QString;

namespace tavrine {

class Time;

/// Removes from the temporary folder what captures of an earlier run left there when it was ended: pictures that were
/// not fetched, files that were not finished, and drags. A drag that has not had its time yet goes when it has.
///
/// For the launch, before the first capture: the files of a capture under way would go as well.
void removeCaptureLeftovers(const QString &temporaryFolder, Time &time);

} // namespace tavrine

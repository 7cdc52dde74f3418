#pragma once

namespace tavrine {

/// The whole worker: reads one input record from standard input, runs its script, and writes one output record to
/// standard output. The exit status says nothing; the record does.
///
/// It is two processes, split before either has read anything. The one that was started has the network and the pipes
/// and never sees the script; the other has the script and nothing else. They speak in frames over a socket pair. The
/// first writes the record even when the second dies.
int runUploadWorker();

} // namespace tavrine

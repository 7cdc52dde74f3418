#include "adapters/x11/X11Pasteboard.h"

#include "adapters/x11/SelectionThread.h"

namespace tavrine {

X11Pasteboard::X11Pasteboard(const SelectionLimits &limits)
    : ReaderPasteboard(limits, [&limits](ImageFileReader &files, PasteboardReader::Publish publish) {
          return std::make_unique<SelectionThread>(limits, files, std::move(publish));
      }) {}

} // namespace tavrine

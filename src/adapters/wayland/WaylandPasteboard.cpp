#include "adapters/wayland/WaylandPasteboard.h"

#include "adapters/wayland/DataControlThread.h"

namespace tavrine {

WaylandPasteboard::WaylandPasteboard(std::function<void(const std::string &reason)> onLost,
                                     const SelectionLimits &limits)
    : ReaderPasteboard(limits, [&](ImageFileReader &files, PasteboardReader::Publish publish) {
          return std::make_unique<DataControlThread>(limits, files, std::move(publish), std::move(onLost));
      }) {}

} // namespace tavrine

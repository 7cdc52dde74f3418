#pragma once

namespace tavrine {

class Dragging;
class FileIcons;
class Pasteboard;
class Time;
class UrlOpener;

/// What the views of the shelf use of the desktop. All outlive the views.
struct ShelfPorts {
    Time &time;
    FileIcons &icons;
    Dragging &dragging;
    Pasteboard &pasteboard;
    UrlOpener &urls;
};

} // namespace tavrine

#pragma once

#include <QString>

#include <functional>
#include <optional>

namespace tavrine {

/// A question for the name and the place of a new file.
struct SavePanel {
    QString title;
    QString prompt;    ///< the words on the button that takes the answer; empty: the desktop's own
    QString fileName;  ///< offered
    QString directory; ///< where the panel starts
    QString filter;    ///< "PNG (*.png)"; the first suffix is added to a name that ends in none of them
    bool operator==(const SavePanel &) const = default;
};

/// A question for one file, or one folder, that exists.
struct OpenPanel {
    QString title;
    QString prompt;
    QString directory;               ///< empty: where the person was last
    QString filter;                  ///< "Sounds (*.mp3 *.ogg)"; unused for folders
    QString kind = {};               ///< "image/": only files of such a kind, by their names or by how they begin
    bool choosesDirectories = false; ///< a folder instead of a file; the person can make one
    bool operator==(const OpenPanel &) const = default;
};

/// The desktop's panels for files. Lives on the main thread. The answer comes in a later turn and once: an absolute
/// path, or none when the person cancelled. At most one panel is open: one that is asked for meanwhile is not shown,
/// and its answer is none.
class FilePanels {
public:
    using Answer = std::function<void(std::optional<QString> path)>;

    virtual ~FilePanels() = default;
    virtual void runSavePanel(const SavePanel &panel, Answer answer) = 0;
    virtual void runOpenPanel(const OpenPanel &panel, Answer answer) = 0;
};

} // namespace tavrine

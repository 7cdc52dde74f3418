#pragma once

#include "look/DrawnGlyphs.h"

#include <QObject>
#include <QPointer>
#include <QString>

#include <chrono>
#include <map>
#include <memory>

namespace tavrine {

class Task;
class TaskLauncher;
class Time;

/// The pictures of all emojis, one file for each size that they are shown in. A size without one, or with one made of
/// another font or table, has it drawn by a process of its own, which takes the font's memory with it when it ends;
/// until then the pictures are drawn as they are needed. Lives on the main thread.
class EmojiPictures : public QObject {
    Q_OBJECT

public:
    /// The drawing waits this long after the first need of it: a person is looking at the picker then.
    static constexpr std::chrono::seconds delay{2};
    static constexpr auto program = "TavrineGlyphs";

    struct Ports {
        TaskLauncher &launcher;
        Time &time;
        QString folder; ///< for the files; none are made without one
        QString table;  ///< lists the emojis
    };
    explicit EmojiPictures(const Ports &ports);
    ~EmojiPictures() override;

    /// Those of `side` pixels an edge; null while there are none.
    [[nodiscard]] const look::DrawnGlyphs *ofSide(int side);

private:
    struct Size {
        std::unique_ptr<look::DrawnGlyphs> glyphs;
        std::shared_ptr<Task> drawing;
    };

    [[nodiscard]] QString pathOf(int side) const;
    [[nodiscard]] std::unique_ptr<look::DrawnGlyphs> open(int side) const;
    void draw(int side);

    Ports m_ports;
    std::map<int, Size> m_sizes; ///< asked for so far
};

} // namespace tavrine

#pragma once

#include <QRect>
#include <QSize>

#include <cstdint>
#include <functional>
#include <memory>

namespace tavrine::test {

/// A compositor's cast, played: a node of PipeWire that gives the pictures that a test says, in memory and with words
/// about it as the test says. On a thread of its own.
class CastNode {
public:
    enum class Colours { blueFirst, redFirst };
    enum class Memory {
        mapped,   ///< what every program can read
        graphics, ///< the graphics card's alone
        both      ///< as the reader likes, the card's first
    };
    struct Offer {
        QSize size{64, 48};
        Colours colours = Colours::blueFirst;
        Memory memory = Memory::mapped;
        int stillFrom = 0;         ///< gives one picture by itself whenever somebody begins to look, from that time on
        bool repeatsFirst = false; ///< a first picture that comes before PipeWire runs on both sides is lost
        int memoryBytes = -1;      ///< that much memory is really there in all buffers but the first; all for -1
        bool isSealed = true;      ///< none of it can be taken away again
    };
    /// What is told of where a picture lies. Its size in bytes and its lines are right unless told otherwise.
    struct Said {
        std::uint32_t offset = 0;
        int stride = 0; ///< 0 for the right one
        bool isEmpty = false;
        bool isCorrupted = false;
    };

    explicit CastNode(const Offer &offer);
    ~CastNode();
    CastNode(const CastNode &) = delete;
    CastNode &operator=(const CastNode &) = delete;

    /// Its number at PipeWire; waited for.
    [[nodiscard]] std::uint32_t number() const;
    /// Somebody looks, and the two have agreed.
    [[nodiscard]] bool isSeen() const;
    /// Paints in 0xffrrggbb and gives the picture, as soon as a buffer is free for it.
    void paint(const QRect &area, std::uint32_t colour);
    void paint(std::uint32_t colour);
    /// Paints all of it without giving it.
    void hide(std::uint32_t colour);
    /// Gives the picture at once with other words about it. False when all buffers are with who looks, or nobody does.
    [[nodiscard]] bool give(const Said &said);
    /// Takes all memory away from the pictures, those that were given too. False when it is sealed.
    [[nodiscard]] bool takeMemoryAway();
    /// From now on pictures are of that size.
    void resize(QSize size);

private:
    struct Parts;
    std::unique_ptr<Parts> m_parts;
};

} // namespace tavrine::test

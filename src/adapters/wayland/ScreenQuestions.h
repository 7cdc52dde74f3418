#pragma once

#include <QPointF>
#include <QString>
#include <Qt>

#include <chrono>
#include <memory>
#include <optional>

namespace tavrine {

class WaylandConnection;

/// What a compositor tells only a window of the program that asks: each question shows one that nobody sees for as long
/// as the answer takes, a few milliseconds. One thread; a tenth of a second at most where nothing else is said.
class ScreenQuestions {
public:
    /// Over that connection; null for one of its own, which comes with the first question.
    explicit ScreenQuestions(std::shared_ptr<WaylandConnection> connection = nullptr);
    ~ScreenQuestions();
    ScreenQuestions(const ScreenQuestions &) = delete;
    ScreenQuestions &operator=(const ScreenQuestions &) = delete;

    /// Where the pointer is, in the compositor's plane. A clear surface over all of each output is told when the
    /// pointer is on it. None where there is no pointer. While a button is held nobody is told where the pointer is:
    /// `patience` is for who can wait until it is let go.
    [[nodiscard]] std::optional<QPointF> pointer(std::chrono::milliseconds patience = std::chrono::milliseconds(100));

    /// The name of the output on which the compositor would put a new window: that of the window with the keyboard.
    /// Empty where it does not say.
    [[nodiscard]] QString output();

    /// What is held of Control, Shift and the like; a second at most. Takes the keyboard for as long; none where no
    /// window of another program may be without it.
    [[nodiscard]] Qt::KeyboardModifiers modifiers();

private:
    class Question;
    struct Tools;

    [[nodiscard]] Tools &tools(std::chrono::milliseconds patience);

    const std::shared_ptr<WaylandConnection> m_connection;
    std::unique_ptr<Tools> m_tools; ///< null until the first question
};

} // namespace tavrine

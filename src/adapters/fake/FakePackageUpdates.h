#pragma once

#include "base/Time.h"
#include "ports/PackageUpdates.h"

#include <QList>
#include <QObject>
#include <QPointer>

#include <utility>

namespace tavrine {

/// A package system that says what a test tells it to. It runs, and this program is none of its packages.
class FakePackageUpdates final : public PackageUpdates {
public:
    explicit FakePackageUpdates(Time &time) : m_time(time) {}

    [[nodiscard]] std::unique_ptr<Question> ask(Start start, std::function<void(const Answer &)> answered) override {
        m_asked.append(start);
        auto question = std::make_unique<Asked>(start, std::move(answered));
        m_question = question.get();
        if (!m_isHanging)
            answer();
        return question;
    }

    /// From now on.
    void setAnswer(Answer answer) { m_answer = std::move(answer); }
    void setAsleep(bool isAsleep) { m_isAsleep = isAsleep; }
    void setHanging(bool isHanging) { m_isHanging = isHanging; }
    /// Of a question that hangs.
    void answer() {
        m_time.async([question = m_question, answer = m_answer, isAsleep = m_isAsleep] {
            if (question)
                question->answer(isAsleep && question->start == Start::never ? Answer{} : answer);
        });
    }

    /// All so far.
    [[nodiscard]] const QList<Start> &asked() const { return m_asked; }
    /// Whether the last one still waits for its answer.
    [[nodiscard]] bool isAsked() const { return m_question != nullptr && m_question->answered; }

private:
    class Asked final : public QObject, public Question {
    public:
        Asked(Start given, std::function<void(const Answer &)> handler) : start(given), answered(std::move(handler)) {}
        void answer(const Answer &answer) {
            if (const auto handler = std::exchange(answered, nullptr))
                handler(answer);
        }
        Start start;
        std::function<void(const Answer &)> answered;
    };

    Time &m_time;
    QPointer<Asked> m_question;
    Answer m_answer{.kind = Answer::Kind::unavailable};
    bool m_isAsleep = false;
    bool m_isHanging = false;
    QList<Start> m_asked;
};

} // namespace tavrine

#pragma once

#include "base/Time.h"
#include "ports/UpdateFeed.h"

#include <QObject>
#include <QPointer>

#include <utility>

namespace tavrine {

/// A feed that says what a test tells it to; at first nothing can be fetched.
class FakeUpdateFeed final : public UpdateFeed {
public:
    explicit FakeUpdateFeed(Time &time) : m_time(time) {}

    [[nodiscard]] std::unique_ptr<Question> fetch(std::function<void(const Answer &)> answered) override {
        ++m_fetches;
        auto question = std::make_unique<Asked>(std::move(answered));
        m_question = question.get();
        if (!m_isHanging)
            answer();
        return question;
    }
    [[nodiscard]] QString systemVersion() const override { return m_systemVersion; }

    /// From now on.
    void setContents(const QByteArray &contents) {
        m_answer = contents.size() > mostBytes ? Answer{} : Answer{Answer::Kind::contents, contents};
    }
    void setRefused() { m_answer = {Answer::Kind::refused}; }
    void setUnreachable() { m_answer = {}; }
    void setHanging(bool isHanging) { m_isHanging = isHanging; }
    void setSystemVersion(const QString &version) { m_systemVersion = version; }
    /// Of a question that hangs.
    void answer() {
        m_time.async([question = m_question, answer = m_answer] {
            if (question)
                question->answer(answer);
        });
    }

    [[nodiscard]] int fetches() const { return m_fetches; }

private:
    class Asked final : public QObject, public Question {
    public:
        explicit Asked(std::function<void(const Answer &)> handler) : answered(std::move(handler)) {}
        void answer(const Answer &answer) {
            if (const auto handler = std::exchange(answered, nullptr))
                handler(answer);
        }
        std::function<void(const Answer &)> answered;
    };

    Time &m_time;
    QPointer<Asked> m_question;
    Answer m_answer;
    bool m_isHanging = false;
    QString m_systemVersion = QStringLiteral("2.36");
    int m_fetches = 0;
};

} // namespace tavrine

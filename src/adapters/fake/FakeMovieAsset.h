#pragma once

#include "ports/MovieAsset.h"

#include <QFile>
#include <QFileInfo>
#include <QList>
#include <QStringList>

#include <algorithm>
#include <utility>

namespace tavrine {

/// Movies that all begin with the same frame, as long as their file is there. Answers come when the test says so.
class FakeMovieAsset final : public MovieAsset {
public:
    struct Copy {
        QString source;
        QString target;
        bool operator==(const Copy &) const = default;
    };

    void firstFrame(const QString &path, int longestEdge, FrameAnswer answer) override {
        m_asked.append(path);
        std::optional<QImage> frame = m_frame && QFileInfo(path).isFile() ? m_frame : std::nullopt;
        if (frame && std::max(frame->width(), frame->height()) > longestEdge)
            frame = frame->scaled(longestEdge, longestEdge, Qt::KeepAspectRatio);
        m_answers.append([frame, answer = std::move(answer)] { answer(frame); });
    }

    void facts(const QString &path, FactsAnswer answer) override {
        const std::optional<MovieFacts> facts = QFileInfo(path).isFile() ? m_facts : std::nullopt;
        m_answers.append([facts, answer = std::move(answer)] { answer(facts); });
    }

    void copyVideoTrack(const QString &source, const QString &target, CopyAnswer answer) override {
        m_copies.append({source, target});
        m_answers.append([this, source, target, answer = std::move(answer)] {
            answer(m_copiesSucceed && QFile::copy(source, target) && markSilent(target));
        });
    }

    static constexpr auto silence = "(silent)"; ///< the last of a copy without sound

    /// The frame, or none as without a decoder.
    void setFrame(std::optional<QImage> frame) { m_frame = std::move(frame); }
    void setFacts(std::optional<MovieFacts> facts) { m_facts = facts; }
    void setCopiesSucceed(bool succeed) { m_copiesSucceed = succeed; }

    /// Gives the answers that are due, in the order of the questions.
    void answer() {
        for (const std::function<void()> &due : std::exchange(m_answers, {}))
            due();
    }
    /// And those to the questions that follow from them.
    void answerAll() {
        while (!m_answers.isEmpty())
            answer();
    }

    /// The paths that a frame was asked of.
    [[nodiscard]] const QStringList &asked() const { return m_asked; }
    [[nodiscard]] const QList<Copy> &copies() const { return m_copies; }

private:
    [[nodiscard]] static bool markSilent(const QString &path) {
        QFile copy(path);
        return copy.open(QIODevice::Append) && copy.write(silence) > 0;
    }

    std::optional<QImage> m_frame;
    std::optional<MovieFacts> m_facts;
    bool m_copiesSucceed = true;
    QStringList m_asked;
    QList<Copy> m_copies;
    QList<std::function<void()>> m_answers;
};

} // namespace tavrine

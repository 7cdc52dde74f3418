#pragma once

#include "base/Time.h"
#include "ports/MoviePlayer.h"

#include <QString>

#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace tavrine {

/// Movies that are written down instead of shown. They can be told to fail, at once or while they play.
class FakeMoviePlayers final : public MoviePlayers {
public:
    explicit FakeMoviePlayers(Time &time) : m_time(time) {}

    /// What became of one player; stays when its owner has dropped it.
    struct Movie {
        QString path;
        WId window = 0;
        bool isPlaying = false;
        bool isMuted = false;
        bool hasFailed = false;
        bool isDropped = false;
        std::function<void(const QString &reason)> onFailure = {};

        [[nodiscard]] bool isHeard() const { return isPlaying && !isMuted; }
    };

    [[nodiscard]] std::unique_ptr<MoviePlayer> makePlayer(const QString &path, WId window) override {
        m_movies.push_back(std::make_shared<Movie>(Movie{.path = path, .window = window}));
        if (const auto reason = std::exchange(m_nextFailure, std::nullopt))
            failLater(m_movies.back(), *reason);
        return std::make_unique<Player>(m_movies.back());
    }

    /// The next movie cannot be shown.
    void failNext(const QString &reason) { m_nextFailure = reason; }
    /// What is shown now cannot be shown any more.
    void fail(const QString &reason) {
        for (const auto &movie : m_movies)
            failLater(movie, reason);
    }

    /// All that were made, the oldest first.
    [[nodiscard]] const std::vector<std::shared_ptr<Movie>> &movies() const { return m_movies; }

private:
    class Player final : public MoviePlayer {
    public:
        explicit Player(std::shared_ptr<Movie> movie) : m_movie(std::move(movie)) {}
        ~Player() override {
            m_movie->isPlaying = false;
            m_movie->isDropped = true;
            m_movie->onFailure = nullptr;
        }
        void play() override { m_movie->isPlaying = !m_movie->hasFailed; }
        void pause() override { m_movie->isPlaying = false; }
        void setMuted(bool muted) override { m_movie->isMuted = muted; }
        void setOnFailure(std::function<void(const QString &reason)> handler) override {
            m_movie->onFailure = std::move(handler);
        }

    private:
        std::shared_ptr<Movie> m_movie;
    };

    void failLater(const std::shared_ptr<Movie> &movie, const QString &reason) {
        m_time.async([movie, reason] {
            if (movie->isDropped || std::exchange(movie->hasFailed, true))
                return;
            movie->isPlaying = false;
            if (const auto handler = std::exchange(movie->onFailure, nullptr))
                handler(reason);
        });
    }

    Time &m_time;
    std::optional<QString> m_nextFailure;
    std::vector<std::shared_ptr<Movie>> m_movies;
};

} // namespace tavrine

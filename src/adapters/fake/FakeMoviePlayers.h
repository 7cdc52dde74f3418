#pragma once

#include "base/Time.h"
#include "ports/MoviePlayer.h"

#include <QImage>
#include <QString>

#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace tavrine {

/// Movies of one colour, which are written down. They can be told to fail, at once or while they play.
class FakeMoviePlayers final : public MoviePlayers {
public:
    explicit FakeMoviePlayers(Time &time) : m_time(time) {}

    /// What became of one player; stays when its owner has dropped it.
    struct Movie {
        QString path;
        QSize pictureSize = {}; ///< empty until one is asked for
        bool isPlaying = false;
        bool isMuted = false;
        bool hasFailed = false;
        bool isDropped = false;
        std::function<void(const QImage &picture)> onPicture = {};
        std::function<void(const QString &reason)> onFailure = {};

        [[nodiscard]] bool isHeard() const { return isPlaying && !isMuted; }
    };

    [[nodiscard]] std::unique_ptr<MoviePlayer> makePlayer(const QString &path) override {
        m_movies.push_back(std::make_shared<Movie>(Movie{.path = path}));
        if (const auto reason = std::exchange(m_nextFailure, std::nullopt))
            failLater(m_movies.back(), *reason);
        return std::make_unique<Player>(*this, m_movies.back());
    }

    void setColor(QRgb color) { m_color = color; }

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
        Player(FakeMoviePlayers &owner, std::shared_ptr<Movie> movie) : m_owner(owner), m_movie(std::move(movie)) {}
        ~Player() override {
            m_movie->isPlaying = false;
            m_movie->isDropped = true;
            m_movie->onPicture = nullptr;
            m_movie->onFailure = nullptr;
        }
        void play() override { m_movie->isPlaying = !m_movie->hasFailed; }
        void pause() override { m_movie->isPlaying = false; }
        void setMuted(bool muted) override { m_movie->isMuted = muted; }
        void setPictureSize(QSize pixels) override {
            m_movie->pictureSize = pixels;
            m_owner.showLater(m_movie);
        }
        void setOnPicture(std::function<void(const QImage &picture)> handler) override {
            m_movie->onPicture = std::move(handler);
        }
        void setOnFailure(std::function<void(const QString &reason)> handler) override {
            m_movie->onFailure = std::move(handler);
        }

    private:
        FakeMoviePlayers &m_owner;
        std::shared_ptr<Movie> m_movie;
    };

    void showLater(const std::shared_ptr<Movie> &movie) {
        m_time.async([movie, color = m_color] {
            const auto handler = movie->onPicture;
            if (movie->isDropped || movie->hasFailed || !handler)
                return;
            QImage picture(movie->pictureSize, QImage::Format_RGB32);
            picture.fill(color);
            handler(picture);
        });
    }

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
    QRgb m_color = qRgb(0, 255, 0);
    std::optional<QString> m_nextFailure;
    std::vector<std::shared_ptr<Movie>> m_movies;
};

} // namespace tavrine

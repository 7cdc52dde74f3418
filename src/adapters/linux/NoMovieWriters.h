#pragma once

#include "ports/MovieWriter.h"

namespace tavrine {

/// Stands where no encoder is installed: a recording ends before it begins, with a reason.
class NoMovieWriters final : public MovieWriters {
public:
    [[nodiscard]] std::variant<QString, std::unique_ptr<MovieWriter>> makeWriter(const QString &path) override {
        static_cast<void>(path);
        return QStringLiteral("no encoder is installed");
    }
};

} // namespace tavrine

#pragma once

#include "ports/UpdateFeed.h"

#include <QStringList>
#include <QUrl>

namespace tavrine {

class Downloads;

/// The feed at an address that the build names, over https. It is fetched by the downloader and looked at by
/// TavrineFeedVerifier, so that neither the network's libraries nor those of signatures come into this process. Main
/// thread.
class AppcastFeed final : public UpdateFeed {
public:
    struct Parts {
        Downloads &downloads; ///< outlives the feed
        QString temporary;    ///< a folder of ours; made where it is not there
        QString programs;     ///< where this program's own file stands
        QUrl address;
        QStringList keys; ///< of the makers, as TAVRINE_UPDATE_KEYS has them; any of them counts
    };
    explicit AppcastFeed(Parts parts) : m_parts(std::move(parts)) {}

    [[nodiscard]] std::unique_ptr<Question> fetch(std::function<void(const Answer &)> answered) override;
    /// Of the C library, by which programs for Linux tell systems apart: "2.36".
    [[nodiscard]] QString systemVersion() const override;

private:
    Parts m_parts;
};

} // namespace tavrine

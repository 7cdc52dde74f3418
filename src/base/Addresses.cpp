#include "base/Addresses.h"

#include <array>
#include <cstddef>

namespace tavrine {
namespace {

struct Place {
    Address address;
    const char *named; ///< by the build; empty for none
    const char *page;  ///< below the folder "pages", with a part behind "#"
};

constexpr std::array places{
    Place{Address::privacy, TAVRINE_ADDRESS_PRIVACY, "privacy.html"},
    Place{Address::changelog, TAVRINE_ADDRESS_CHANGELOG, "changelog.html"},
    Place{Address::support, TAVRINE_ADDRESS_SUPPORT, "support.html"},
    Place{Address::community, TAVRINE_ADDRESS_COMMUNITY, "support.html#others"},
    Place{Address::website, TAVRINE_ADDRESS_WEBSITE, "features.html"},
    Place{Address::features, TAVRINE_ADDRESS_FEATURES, "features.html"},
    Place{Address::uploadScripts, TAVRINE_ADDRESS_UPLOAD_SCRIPTS, "upload-scripts.html"},
};

static_assert(
    [] {
        for (std::size_t i = 0; i < places.size(); ++i) {
            if (places.at(i).address != static_cast<Address>(i))
                return false;
        }
        return true;
    }(),
    "the table is in the order of the enumeration");

} // namespace

QUrl addressOf(Address address, const QString &resources) {
    const Place &place = places.at(static_cast<std::size_t>(address));
    if (*place.named)
        return QUrl(QString::fromUtf8(place.named));
    const QStringList parts = QString::fromLatin1(place.page).split(u'#');
    QUrl url = QUrl::fromLocalFile(resources + QStringLiteral("/pages/") + parts.front());
    if (parts.size() > 1)
        url.setFragment(parts.back());
    return url;
}

} // namespace tavrine

#pragma once

#include <QString>
#include <QUrl>

namespace tavrine {

/// The pages of the product that a link in the program leads to.
enum class Address { privacy, changelog, support, community, website, features, uploadScripts };

/// Where a link leads. The address that the build names (TAVRINE_ADDRESS_…), or a page that comes with the program:
/// no link leads nowhere. `resources` is the folder of what came with the program.
[[nodiscard]] QUrl addressOf(Address address, const QString &resources);

} // namespace tavrine

#include "adapters/linux/Netlink.h"

#include <QList>

#include <cstddef>

#include <gmock/gmock.h>
#include <linux/rtnetlink.h>

namespace tavrine {
namespace {

using testing::ElementsAre;

TEST(NetlinkAttributes, endWithTheMessageAlsoWithoutTheLastOnesPadding) {
    struct {
        nlmsghdr header;
        ifinfomsg body;
        rtattr first;
        char value[4];
        rtattr last;
        char letter;
        char padding[3];
        rtattr behind; // of nobody's message
        char other[4];
    } bytes{};
    bytes.header.nlmsg_len = static_cast<unsigned>(offsetof(decltype(bytes), padding));
    bytes.first = {.rta_len = RTA_LENGTH(4), .rta_type = 1};
    bytes.last = {.rta_len = RTA_LENGTH(1), .rta_type = 2};
    bytes.behind = {.rta_len = RTA_LENGTH(4), .rta_type = 3};
    QList<int> types;
    forEachAttribute(bytes.header, sizeof(ifinfomsg), [&](int type, const void *, std::size_t) { types.append(type); });
    EXPECT_THAT(types, ElementsAre(1, 2));
}

} // namespace
} // namespace tavrine

#pragma once

#include "ports/Keychain.h"

#include <gtest/gtest.h>

namespace tavrine::test {

/// What every key ring keeps. `Session` has: Keychain &keychain() with an unlocked, empty key ring; void endService();
/// void hold() leaves every call unanswered from now on.
template <class Session>
class KeychainContract : public testing::Test {
public:
    Keychain &keychain() { return session.keychain(); }
    QByteArray stored(const KeychainItem &which) {
        const Keychain::Data found = keychain().copyMatching(which);
        const auto *data = std::get_if<QByteArray>(&found);
        return data ? *data : QByteArray();
    }
    KeychainStatus readStatus(const KeychainItem &which) {
        const Keychain::Data found = keychain().copyMatching(which);
        const auto *status = std::get_if<KeychainStatus>(&found);
        return status ? *status : KeychainStatus::success;
    }

    Session session;
    KeychainItem item{QStringLiteral("org.example.Test"), QStringLiteral("script")};
    KeychainItem other{QStringLiteral("org.example.Test"), QStringLiteral("other")};
};

TYPED_TEST_SUITE_P(KeychainContract);

TYPED_TEST_P(KeychainContract, anItemThatWasNeverMadeIsNotFound) {
    EXPECT_EQ(this->readStatus(this->item), KeychainStatus::itemNotFound);
    EXPECT_EQ(this->keychain().update(this->item, "data"), KeychainStatus::itemNotFound);
    EXPECT_EQ(this->keychain().remove(this->item), KeychainStatus::itemNotFound);
    EXPECT_EQ(this->readStatus(this->item), KeychainStatus::itemNotFound); // the update made none
}

TYPED_TEST_P(KeychainContract, anAddedItemIsReadByteForByte) {
    const QByteArray data = QStringLiteral("\ufeff// häßlich 🙂\r\n\tlet a = \"\\u0000\";\n\n ").toUtf8();
    ASSERT_EQ(this->keychain().add(this->item, data), KeychainStatus::success);
    EXPECT_EQ(this->stored(this->item), data);
}

TYPED_TEST_P(KeychainContract, aLargeItemIsKeptWhole) {
    QByteArray data;
    while (data.size() < 1'000'000)
        data += "const line = 'a script may be long';\n";
    ASSERT_EQ(this->keychain().add(this->item, data), KeychainStatus::success);
    EXPECT_EQ(this->stored(this->item), data);
}

TYPED_TEST_P(KeychainContract, anUpdateReplacesTheData) {
    ASSERT_EQ(this->keychain().add(this->item, "a longer first text"), KeychainStatus::success);
    ASSERT_EQ(this->keychain().update(this->item, "second"), KeychainStatus::success);
    EXPECT_EQ(this->stored(this->item), "second");
    ASSERT_EQ(this->keychain().update(this->item, "second"), KeychainStatus::success);
    EXPECT_EQ(this->stored(this->item), "second");
}

TYPED_TEST_P(KeychainContract, addingWhatIsThereFailsAndChangesNothing) {
    ASSERT_EQ(this->keychain().add(this->item, "first"), KeychainStatus::success);
    EXPECT_EQ(this->keychain().add(this->item, "second"), KeychainStatus::failure);
    EXPECT_EQ(this->stored(this->item), "first");
}

TYPED_TEST_P(KeychainContract, aRemovedItemIsNotFoundAndCanBeMadeAgain) {
    ASSERT_EQ(this->keychain().add(this->item, "first"), KeychainStatus::success);
    EXPECT_EQ(this->keychain().remove(this->item), KeychainStatus::success);
    EXPECT_EQ(this->readStatus(this->item), KeychainStatus::itemNotFound);
    EXPECT_EQ(this->keychain().remove(this->item), KeychainStatus::itemNotFound);
    ASSERT_EQ(this->keychain().add(this->item, "again"), KeychainStatus::success);
    EXPECT_EQ(this->stored(this->item), "again");
}

TYPED_TEST_P(KeychainContract, itemsStandApartByAccountAndByService) {
    const KeychainItem elsewhere{QStringLiteral("org.example.Elsewhere"), this->item.account};
    ASSERT_EQ(this->keychain().add(this->item, "one"), KeychainStatus::success);
    ASSERT_EQ(this->keychain().add(this->other, "two"), KeychainStatus::success);
    EXPECT_EQ(this->readStatus(elsewhere), KeychainStatus::itemNotFound);
    ASSERT_EQ(this->keychain().remove(this->other), KeychainStatus::success);
    EXPECT_EQ(this->stored(this->item), "one");
}

TYPED_TEST_P(KeychainContract, whatIsNoTextIsRefusedAndChangesNothing) {
    ASSERT_EQ(this->keychain().add(this->item, "first"), KeychainStatus::success);
    for (const QByteArray &data : {QByteArray(), QByteArray("a\0b", 3), QByteArray("\xff\xfe")}) {
        EXPECT_EQ(this->keychain().update(this->item, data), KeychainStatus::failure);
        EXPECT_EQ(this->keychain().add(this->other, data), KeychainStatus::failure);
    }
    EXPECT_EQ(this->stored(this->item), "first");
    EXPECT_EQ(this->readStatus(this->other), KeychainStatus::itemNotFound);
}

TYPED_TEST_P(KeychainContract, anAbsentServiceIsAFailureAndNotAnAbsentItem) {
    this->session.endService();
    EXPECT_EQ(this->readStatus(this->item), KeychainStatus::failure);
    EXPECT_EQ(this->keychain().update(this->item, "data"), KeychainStatus::failure);
    EXPECT_EQ(this->keychain().add(this->item, "data"), KeychainStatus::failure);
    EXPECT_EQ(this->keychain().remove(this->item), KeychainStatus::failure);
}

TYPED_TEST_P(KeychainContract, afterACancelEveryCallFailsAtOnce) {
    ASSERT_EQ(this->keychain().add(this->item, "first"), KeychainStatus::success);
    this->session.hold();
    this->keychain().cancel();
    EXPECT_EQ(this->readStatus(this->item), KeychainStatus::failure);
    EXPECT_EQ(this->keychain().update(this->item, "second"), KeychainStatus::failure);
    EXPECT_EQ(this->keychain().remove(this->item), KeychainStatus::failure);
}

REGISTER_TYPED_TEST_SUITE_P(KeychainContract, anItemThatWasNeverMadeIsNotFound, anAddedItemIsReadByteForByte,
                            aLargeItemIsKeptWhole, anUpdateReplacesTheData, addingWhatIsThereFailsAndChangesNothing,
                            aRemovedItemIsNotFoundAndCanBeMadeAgain, itemsStandApartByAccountAndByService,
                            whatIsNoTextIsRefusedAndChangesNothing, anAbsentServiceIsAFailureAndNotAnAbsentItem,
                            afterACancelEveryCallFailsAtOnce);

} // namespace tavrine::test

// Plasma's service and the portal of global shortcuts, as keepers of hot keys where no program may take any for itself.
#include "HotKeysContract.h"
#include "adapters/linux/DesktopHotKeys.h"
#include "adapters/linux/KGlobalAccelHotKeys.h"
#include "adapters/linux/PortalHotKeys.h"
#include "support/PlasmaKeys.h"
#include "support/ShortcutsPortal.h"

#include <map>

namespace tavrine {
namespace {

using test::eventually;
using ::testing::Pair;
using ::testing::UnorderedElementsAre;

/// What a keeper in another process has said of each registration.
class Held {
public:
    explicit Held(HotKeys &hotKeys) : m_hotKeys(hotKeys) {
        hotKeys.setOnHeld([this](HotKeyRef ref, bool isHeld) { m_told[ref] = isHeld; });
    }
    ~Held() { m_hotKeys.setOnHeld({}); }
    [[nodiscard]] bool isTold(HotKeyRef ref, bool isHeld) const {
        return eventually([&] { return m_told.contains(ref) && m_told.at(ref) == isHeld; });
    }
    bool holds(HotKeyRef ref) const {
        static_cast<void>(eventually([&] { return m_told.contains(ref); }));
        return m_told.contains(ref) && m_told.at(ref);
    }

private:
    HotKeys &m_hotKeys;
    std::map<HotKeyRef, bool> m_told;
};

int plasmaKey(int keyCode, quint32 modifiers) {
    return (modifiers & hotKeyModifier::command ? int(Qt::META) : 0) |
           (modifiers & hotKeyModifier::shift ? int(Qt::SHIFT) : 0) | (keyCode == keyV ? Qt::Key_V : Qt::Key_B);
}

class PlasmaUnderTest final : public HotKeysUnderTest {
public:
    HotKeys &hotKeys() override { return m_hotKeys; }
    void press(int keyCode, quint32 modifiers) override {
        EXPECT_TRUE(eventually([this] { return m_hotKeys.isSettled(); }));
        std::vector<int> keys;
        if (modifiers & hotKeyModifier::command)
            keys.push_back(testing::PlasmaKeys::commandKey);
        if (modifiers & hotKeyModifier::shift)
            keys.push_back(testing::PlasmaKeys::shiftKey);
        if (modifiers & hotKeyModifier::control)
            keys.push_back(testing::PlasmaKeys::controlKey);
        keys.push_back(keyCode);
        m_plasma.press(keys);
        EXPECT_EQ(m_plasma.failures(), 0);
    }
    bool takeElsewhere(int keyCode, quint32 modifiers) override {
        return m_plasma.take(QStringLiteral("taken"), plasmaKey(keyCode, modifiers));
    }
    void freeElsewhere(int, quint32) override { m_plasma.free(QStringLiteral("taken")); }
    bool holds(HotKeyRef ref) override { return m_held.holds(ref); }

private:
    testing::PlasmaKeys m_plasma;
    KGlobalAccelHotKeys m_hotKeys;
    Held m_held{m_hotKeys};
};

QString portalTrigger(int keyCode, quint32 modifiers) {
    QString trigger;
    if (modifiers & hotKeyModifier::control)
        trigger += QStringLiteral("CTRL+");
    if (modifiers & hotKeyModifier::shift)
        trigger += QStringLiteral("SHIFT+");
    if (modifiers & hotKeyModifier::command)
        trigger += QStringLiteral("LOGO+");
    return trigger + (keyCode == keyV ? u'v' : u'b');
}

class PortalUnderTest final : public HotKeysUnderTest {
public:
    HotKeys &hotKeys() override { return m_hotKeys; }
    void press(int keyCode, quint32 modifiers) override {
        EXPECT_TRUE(eventually([this] { return m_hotKeys.isSettled(); }));
        m_portal.call("Press", {portalTrigger(keyCode, modifiers)});
    }
    bool takeElsewhere(int keyCode, quint32 modifiers) override {
        m_portal.call("Refuse", {portalTrigger(keyCode, modifiers), true});
        return true;
    }
    void freeElsewhere(int keyCode, quint32 modifiers) override {
        m_portal.call("Refuse", {portalTrigger(keyCode, modifiers), false});
        // What was refused and is wished for again in the same turn is not asked for again.
        EXPECT_TRUE(eventually([this] { return m_hotKeys.isSettled(); }));
    }
    bool holds(HotKeyRef ref) override { return m_held.holds(ref); }

private:
    testing::ShortcutsPortal m_portal;
    PortalHotKeys m_hotKeys;
    Held m_held{m_hotKeys};
};

bool isKWinsSession() {
    return qEnvironmentVariableIsSet("WAYLAND_DISPLAY");
}

/// Where somebody can press keys.
std::vector<std::unique_ptr<HotKeysUnderTest> (*)()> plasmas() {
    std::vector<std::unique_ptr<HotKeysUnderTest> (*)()> makers;
    if (isKWinsSession())
        makers.push_back(&make<PlasmaUnderTest>);
    return makers;
}

INSTANTIATE_TEST_SUITE_P(Plasma, HotKeysContract, ::testing::ValuesIn(plasmas()));
INSTANTIATE_TEST_SUITE_P(Portal, HotKeysContract, ::testing::Values(&make<PortalUnderTest>));

// Plasma's service alone.

TEST(KGlobalAccelHotKeysTest, theySayWhichPromisesTheyCannotKeep) {
    const HotKeyTraits traits = KGlobalAccelHotKeys().traits();
    EXPECT_EQ(traits.availability, HotKeyAvailability::there);
    EXPECT_FALSE(traits.areByPosition || traits.isKnownAtOnce || traits.keepsKeyboard || traits.isAskedOfPerson);
}

TEST(KGlobalAccelHotKeysTest, theyStandInPlasmasSettingsUnderTheProgramsName) {
    const testing::PlasmaKeys plasma;
    KGlobalAccelHotKeys hotKeys;
    const Held held(hotKeys);
    hotKeys.setTitle({1, 7}, QStringLiteral("Search the Clipboard"));
    const auto ref = hotKeys.registerHotKey(keyV, commandShift, {1, 7});
    ASSERT_TRUE(ref && held.holds(*ref));
    const QDBusMessage holder = plasma.call(QStringLiteral("action"), {plasmaKey(keyV, commandShift)});
    EXPECT_EQ(holder.arguments().value(0).toStringList(),
              QStringList({QStringLiteral("com.veltrane.Tavrine"), QStringLiteral("hotkey-7"),
                           QStringLiteral("Tavrine"), QStringLiteral("Search the Clipboard")}));
}

TEST(KGlobalAccelHotKeysTest, keysThatThePersonSetThereHoldUntilTheProgramWantsOthers) {
    testing::PlasmaKeys plasma;
    const QStringList action{QStringLiteral("com.veltrane.Tavrine"), QStringLiteral("hotkey-9"),
                             QStringLiteral("Tavrine"), QStringLiteral("hotkey-9")};
    const int persons = int(Qt::META) | Qt::Key_F7;
    const auto keys = [&] {
        return qdbus_cast<QList<int>>(plasma.call(QStringLiteral("shortcut"), {action}).arguments().value(0));
    };
    KGlobalAccelHotKeys hotKeys;
    const Held held(hotKeys);
    auto ref = hotKeys.registerHotKey(keyV, commandShift, {1, 9});
    ASSERT_TRUE(ref && held.holds(*ref));
    plasma.call(QStringLiteral("setForeignShortcut"), {action, QVariant::fromValue(QList<int>{persons})});
    hotKeys.unregisterHotKey(*ref);
    ref = hotKeys.registerHotKey(keyV, commandShift, {1, 9});
    ASSERT_TRUE(ref && held.holds(*ref));
    EXPECT_EQ(keys(), QList<int>{persons});
    hotKeys.unregisterHotKey(*ref);
    ref = hotKeys.registerHotKey(keyB, commandShift, {1, 9});
    ASSERT_TRUE(ref && held.holds(*ref));
    EXPECT_EQ(keys(), QList<int>{plasmaKey(keyB, commandShift)});
    plasma.call(QStringLiteral("unregister"), {action.first(), action.at(1)});
}

TEST(KGlobalAccelHotKeysTest, aServiceThatGoesIsToldAndOneThatComesIsAskedAgain) {
    testing::PlasmaKeys plasma;
    if (!plasma.isOwnProcess())
        return; // the compositor is the service: this session ends with it
    KGlobalAccelHotKeys hotKeys;
    const Held held(hotKeys);
    int presses = 0;
    hotKeys.installHandler([&](HotKeyId) {
        ++presses;
        return KeyboardNext::asBefore;
    });
    const auto ref = hotKeys.registerHotKey(keyV, commandShift, {1, 7});
    ASSERT_TRUE(ref && held.holds(*ref));
    plasma.end();
    ASSERT_TRUE(held.isTold(*ref, false));
    plasma.start();
    ASSERT_TRUE(held.isTold(*ref, true));
    plasma.invoke(QStringLiteral("com_veltrane_Tavrine"), QStringLiteral("hotkey-7"));
    EXPECT_TRUE(eventually([&] { return presses == 1; }));
}

// The portal alone.

class PortalHotKeysTest : public ::testing::Test {
protected:
    PortalHotKeysTest() {
        hotKeys.installHandler([this](HotKeyId id) {
            pressed.push_back(id.id);
            return KeyboardNext::asBefore;
        });
    }
    testing::ShortcutsPortal portal;
    PortalHotKeys hotKeys;
    Held held{hotKeys};
    std::vector<quint32> pressed;
};

TEST_F(PortalHotKeysTest, allThatIsRegisteredInATurnIsBoundOnceUnderItsTitle) {
    hotKeys.setTitle({1, 7}, QStringLiteral("Search the Clipboard"));
    const auto first = hotKeys.registerHotKey(keyV, commandShift, {1, 7});
    const auto second = hotKeys.registerHotKey(keyB, commandShift, {1, 8});
    EXPECT_EQ(hotKeys.traits().availability, HotKeyAvailability::asking);
    ASSERT_TRUE(held.holds(*first) && held.holds(*second));
    EXPECT_EQ(hotKeys.traits().availability, HotKeyAvailability::there);
    EXPECT_EQ(portal.bindings(), 1);
    EXPECT_EQ(portal.titles().value(QStringLiteral("SHIFT+LOGO+v")), QStringLiteral("Search the Clipboard"));
}

TEST_F(PortalHotKeysTest, whatIsRegisteredAnewAsBeforeIsNotAskedForAgain) {
    const auto first = hotKeys.registerHotKey(keyV, commandShift, {1, 7});
    ASSERT_TRUE(held.holds(*first));
    hotKeys.unregisterHotKey(*first);
    const auto again = hotKeys.registerHotKey(keyV, commandShift, {1, 7});
    ASSERT_TRUE(held.holds(*again));
    EXPECT_EQ(portal.bindings(), 1);
    hotKeys.unregisterHotKey(*again);
    const auto other = hotKeys.registerHotKey(keyB, commandShift, {1, 7});
    ASSERT_TRUE(held.holds(*other));
    EXPECT_EQ(portal.bindings(), 2);
    EXPECT_EQ(portal.openSessions(), 1);
}

TEST_F(PortalHotKeysTest, aPersonWhoSaysNoLeavesNone) {
    portal.call("Answer", {QStringLiteral("no")});
    const auto ref = hotKeys.registerHotKey(keyV, commandShift, {1, 7});
    EXPECT_TRUE(held.isTold(*ref, false));
    EXPECT_EQ(hotKeys.traits().availability, HotKeyAvailability::none);
}

TEST_F(PortalHotKeysTest, anAnswerOfAnotherTypeHoldsNone) {
    portal.call("Answer", {QStringLiteral("strange")});
    const auto ref = hotKeys.registerHotKey(keyV, commandShift, {1, 7});
    EXPECT_TRUE(held.isTold(*ref, false));
}

TEST_F(PortalHotKeysTest, aDialogThatStaysOpenHoldsNothingUp) {
    portal.call("Answer", {QStringLiteral("never")});
    const auto ref = hotKeys.registerHotKey(keyV, commandShift, {1, 7});
    ASSERT_TRUE(eventually([this] { return portal.openSessions() == 1; }));
    EXPECT_EQ(hotKeys.traits().availability, HotKeyAvailability::asking);
    hotKeys.unregisterHotKey(*ref);
    portal.call("Answer", {QStringLiteral("yes")});
    const auto other = hotKeys.registerHotKey(keyB, commandShift, {1, 8});
    EXPECT_TRUE(held.holds(*other));
}

TEST_F(PortalHotKeysTest, pressesOfOtherSessionsAndNamesAreNotOurs) {
    const auto ref = hotKeys.registerHotKey(keyV, commandShift, {1, 7});
    ASSERT_TRUE(held.holds(*ref));
    for (const char *name : {"hotkey-8", "hotkey-", "hotkey--7", "", "other"})
        portal.call("Activate", {QString(), QLatin1String(name)});
    portal.call("Activate", {QStringLiteral("/another/session"), QStringLiteral("hotkey-7")});
    portal.call("Activate", {QString(), QStringLiteral("hotkey-7")});
    EXPECT_THAT(pressed, ElementsAre(7));
}

TEST_F(PortalHotKeysTest, aSessionThatIsClosedOverThereIsTold) {
    const auto ref = hotKeys.registerHotKey(keyV, commandShift, {1, 7});
    ASSERT_TRUE(held.holds(*ref));
    portal.call("CloseSession");
    EXPECT_TRUE(held.isTold(*ref, false));
    EXPECT_EQ(hotKeys.traits().availability, HotKeyAvailability::none);
}

TEST_F(PortalHotKeysTest, aPortalThatGoesIsToldAndOneThatComesIsAskedAgain) {
    const auto ref = hotKeys.registerHotKey(keyV, commandShift, {1, 7});
    ASSERT_TRUE(held.holds(*ref));
    portal.end();
    ASSERT_TRUE(held.isTold(*ref, false));
    portal.start();
    ASSERT_TRUE(held.isTold(*ref, true));
    portal.call("Press", {QStringLiteral("SHIFT+LOGO+v")});
    EXPECT_THAT(pressed, ElementsAre(7));
}

// The choice between them.

TEST(DesktopHotKeysTest, whereTheCompositorKeepsPlasmasServiceItIsAskedElseThePortal) {
    const testing::PlasmaKeys plasma;
    const testing::ShortcutsPortal portal;
    DesktopHotKeys hotKeys;
    const Held held(hotKeys);
    EXPECT_EQ(hotKeys.traits().availability, HotKeyAvailability::asking);
    const auto ref = hotKeys.registerHotKey(keyV, commandShift, {1, 7});
    ASSERT_TRUE(ref && held.holds(*ref));
    EXPECT_EQ(portal.bindings(), plasma.isOwnProcess() ? 1 : 0);
    EXPECT_EQ(hotKeys.traits().isAskedOfPerson, plasma.isOwnProcess());
    hotKeys.unregisterHotKey(*ref);
    EXPECT_FALSE(hotKeys.registerHotKey(4711, commandShift, {1, 7}));
    const auto again = hotKeys.registerHotKey(keyB, commandShift, {1, 7});
    EXPECT_TRUE(again && held.holds(*again));
}

TEST(DesktopHotKeysTest, whereNobodyKeepsAnyThatIsTold) {
    DesktopHotKeys hotKeys;
    const Held held(hotKeys);
    if (isKWinsSession())
        return; // KWin does
    const auto ref = hotKeys.registerHotKey(keyV, commandShift, {1, 7});
    ASSERT_TRUE(ref);
    EXPECT_TRUE(held.isTold(*ref, false));
    EXPECT_EQ(hotKeys.traits().availability, HotKeyAvailability::none);
}

} // namespace
} // namespace tavrine

// The menu as trays that draw menus themselves see it, read and pressed by gdbus.

#include "adapters/linux/DBusMenu.h"

#include "support/Eventually.h"

#include <QProcess>

#include <gmock/gmock.h>

namespace tavrine::test {
namespace {

using testing::ElementsAre;

class DBusMenuTest : public testing::Test {
protected:
    DBusMenuTest() { menu.exportOn(bus, QStringLiteral("/MenuBar")); }
    ~DBusMenuTest() override { QDBusConnection::disconnectFromBus(QStringLiteral("menu")); }

    /// The answer in gdbus's own notation, with this program answering meanwhile.
    QString call(const char *method, const QStringList &arguments) {
        QProcess client;
        client.start(QStringLiteral("gdbus"),
                     QStringList{QStringLiteral("call"), QStringLiteral("--session"), QStringLiteral("--dest"),
                                 bus.baseService(), QStringLiteral("--object-path"), QStringLiteral("/MenuBar"),
                                 QStringLiteral("--method"),
                                 QStringLiteral("com.canonical.dbusmenu.") + QLatin1String(method),
                                 QStringLiteral("--")} +
                         arguments);
        EXPECT_TRUE(eventually([&] { return client.state() == QProcess::NotRunning; }));
        return QString::fromUtf8(client.readAllStandardOutput() + client.readAllStandardError()).trimmed();
    }
    QString layout() { return call("GetLayout", {QStringLiteral("0"), QStringLiteral("-1"), QStringLiteral("[]")}); }

    QDBusConnection bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("menu"));
    std::vector<StatusMenuLine> lines{{.id = 3, .label = QStringLiteral("Clean_Mode"), .isOn = true},
                                      {},
                                      {.id = 9, .label = QStringLiteral("Quit"), .isEnabled = false, .isOn = {}}};
    std::vector<int> chosen;
    DBusMenu menu{{.lines = [this] { return lines; }, .onChosen = [this](int id) { chosen.push_back(id); }}};
};

TEST_F(DBusMenuTest, theLinesAreToldWithTheirStates) {
    EXPECT_EQ(layout(), QStringLiteral("(uint32 1, (0, {'children-display': <'submenu'>}, [<(3, {'label': "
                                       "<'Clean__Mode'>, 'toggle-state': <1>, 'toggle-type': <'checkmark'>}, @av "
                                       "[])>, <(10000, {'type': <'separator'>}, @av [])>, <(9, {'enabled': <false>, "
                                       "'label': <'Quit'>}, @av [])>]))"));
}

TEST_F(DBusMenuTest, aChangeIsToldAndTheNextLayoutHasIt) {
    lines = {{.id = 4, .label = QStringLiteral("New"), .isOn = {}}};
    menu.changed();
    EXPECT_EQ(layout(), QStringLiteral("(uint32 2, (0, {'children-display': <'submenu'>}, [<(4, {'label': <'New'>}, "
                                       "@av [])>]))"));
}

TEST_F(DBusMenuTest, theKeysOfALineAreItsShortcut) {
    lines = {{.id = 4,
              .label = QStringLiteral("Find"),
              .isOn = {},
              .keys = {QStringLiteral("Super"), QStringLiteral("Shift"), QStringLiteral("V")}}};
    EXPECT_EQ(layout(), QStringLiteral("(uint32 1, (0, {'children-display': <'submenu'>}, [<(4, {'label': <'Find'>, "
                                       "'shortcut': <[['Super', 'Shift', 'V']]>}, @av [])>]))"));
}

TEST_F(DBusMenuTest, onlyAClickOnALineThatIsThereAndEnabledChoosesIt) {
    const auto event = [this](int id, const char *kind) {
        call("Event", {QString::number(id), QLatin1String(kind), QStringLiteral("<0>"), QStringLiteral("0")});
    };
    event(3, "hovered");
    event(9, "clicked");
    event(77, "clicked");
    event(10000, "clicked");
    event(0, "opened");
    event(-5, "clicked");
    EXPECT_TRUE(chosen.empty());
    event(3, "clicked");
    EXPECT_THAT(chosen, ElementsAre(3));
}

TEST_F(DBusMenuTest, whatIsNotThereIsAnsweredWithNothing) {
    EXPECT_EQ(call("GetLayout", {QStringLiteral("55"), QStringLiteral("-1"), QStringLiteral("[]")}),
              QStringLiteral("(uint32 1, (0, @a{sv} {}, @av []))"));
    EXPECT_EQ(call("GetProperty", {QStringLiteral("3"), QStringLiteral("colour")}), QStringLiteral("(<''>,)"));
    EXPECT_EQ(call("GetGroupProperties", {QStringLiteral("[3]"), QStringLiteral("['label']")}),
              QStringLiteral("([(3, {'label': <'Clean__Mode'>})],)"));
    EXPECT_EQ(call("EventGroup", {QStringLiteral("[(88, 'clicked', <0>, 0), (3, 'clicked', <0>, 0)]")}),
              QStringLiteral("([88],)"));
    EXPECT_THAT(chosen, ElementsAre(3));
}

} // namespace
} // namespace tavrine::test

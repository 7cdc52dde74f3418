// The workspace over a real X server and window manager, with xterm as the other program.

#include "adapters/x11/X11Workspace.h"
#include "contracts/WorkspaceContract.h"
#include "support/Program.h"

#include <map>

namespace tavrine::test {
namespace {

struct XtermDesk {
    Workspace &workspace() { return real; }
    static quint32 windowOf(const QString &program) {
        return outputOf(QStringLiteral("xdotool"),
                        {QStringLiteral("search"), QStringLiteral("--onlyvisible"), QStringLiteral("--class"), program})
            .section(u'\n', 0, 0)
            .toUInt();
    }
    void open(const QString &program) {
        programs.try_emplace(program, QStringLiteral("xterm"), QStringList{QStringLiteral("-class"), program});
        ASSERT_TRUE(eventually([&] { return windowOf(program) != 0; }));
    }
    void activate(const QString &program) {
        static_cast<void>(outputOf(QStringLiteral("wmctrl"),
                                   {QStringLiteral("-i"), QStringLiteral("-a"), QString::number(windowOf(program))}));
    }
    /// A process with one window cannot have a second one from outside, so another one of its class stands for it, with
    /// the window marked as a dialogue of the first.
    void openSecondWindow(const QString &program) {
        const quint32 first = windowOf(program);
        dialog.emplace(QStringLiteral("xterm"),
                       QStringList{QStringLiteral("-class"), QStringLiteral("Dialogue"), QStringLiteral("-iconic")});
        QString found;
        ASSERT_TRUE(eventually([&] {
            found = outputOf(QStringLiteral("xdotool"),
                             {QStringLiteral("search"), QStringLiteral("--class"), QStringLiteral("Dialogue")});
            return !found.isEmpty();
        }));
        const QString window = found.section(u'\n', 0, 0);
        static_cast<void>(outputOf(QStringLiteral("xprop"),
                                   {QStringLiteral("-id"), window, QStringLiteral("-f"),
                                    QStringLiteral("WM_TRANSIENT_FOR"), QStringLiteral("32x"), QStringLiteral("-set"),
                                    QStringLiteral("WM_TRANSIENT_FOR"), QString::number(first)}));
        static_cast<void>(outputOf(QStringLiteral("wmctrl"), {QStringLiteral("-i"), QStringLiteral("-a"), window}));
    }
    void close(const QString &program) { programs.erase(program); }

    X11Workspace real;
    std::map<QString, Program> programs;
    std::optional<Program> dialog;
};

} // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(X11, WorkspaceContract, XtermDesk);

} // namespace tavrine::test

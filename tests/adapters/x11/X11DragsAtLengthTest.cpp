// Drags between this program and those that a person has: file managers, a browser, an editor, a terminal, a text
// field. A longer run: with-desktop x11_drops_test --gtest_filter=*AtLength*
#include "adapters/pasteboard/TestPictures.h"
#include "adapters/x11/DragFixture.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>

#include <cstdio>

#include <gmock/gmock.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;

constexpr auto page = R"(<title>page</title><body style="margin:0;font:20px sans-serif">
<div style="height:60px"><a href="https://example.org/a?b=c">a link</a></div>
<div style="height:60px" id=t>sometext</div>
<img style="display:block" width=60 height=60 src="data:image/png;base64,%1">
<div id=d style="height:120px;background:#ddd">drop</div>
<script>
d.ondragover = e => { e.preventDefault(); e.dataTransfer.dropEffect = 'copy'; };
d.ondrop = e => { e.preventDefault(); const all = e.dataTransfer;
  document.title = all.files.length ? 'file ' + [...all.files].map(f => f.name + ' ' + f.type + ' ' + f.size).join()
                                    : 'text ' + all.getData('text/plain'); };
getSelection().selectAllChildren(t);
</script>)";

class DragsAtLength : public X11DragPrograms {
protected:
    DragsAtLength() {
        EXPECT_TRUE(QDir(folder.path()).mkdir(QStringLiteral("there")));
        QFile made(here());
        EXPECT_TRUE(made.open(QIODevice::WriteOnly) && made.write("hi\n") == 3);
    }
    [[nodiscard]] QString here() const { return folder.filePath(QStringLiteral("a file.txt")); }
    [[nodiscard]] QString there() const { return folder.filePath(QStringLiteral("there")); }
    [[nodiscard]] QString inThere() const { return there() + QStringLiteral("/a file.txt"); }

    /// Starts a program whose window has a title that ends so, and puts it where it has room.
    std::unique_ptr<ForeignDrag> open(const QString &command, const QStringList &arguments, const char *titleEnd) {
        auto program = std::make_unique<ForeignDrag>(command, arguments);
        const QString end = QString::fromUtf8(titleEnd);
        const auto found = [this, end] {
            return desktop.windowsMatching([&](const QString &title) { return title.endsWith(end); });
        };
        EXPECT_TRUE(waitUntil([&] { return !found().empty(); }, 30s)) << titleEnd;
        shown = found().empty() ? 0 : found().front();
        const QString id = QString::number(shown);
        const auto settled = [this] { return desktop.geometry(shown).size() == QSize(500, 400); };
        EXPECT_TRUE(waitUntil([&] {
            QProcess::execute(QStringLiteral("wmctrl"), {QStringLiteral("-i"), QStringLiteral("-r"), id,
                                                         QStringLiteral("-e"), QStringLiteral("0,60,300,500,400")});
            return settled() || desktop.geometry(shown).y() > 290;
        }));
        desktop.activate(shown);
        (void)waitUntil([] { return false; }, 1500ms); // it lays itself out
        return program;
    }
    [[nodiscard]] QPoint at(int x, int y) const { return desktop.geometry(shown).topLeft() + QPoint(x, y); }

    [[nodiscard]] bool dragFrom(QPoint from) {
        desktop.keyboard.movePointer(from.x(), from.y());
        desktop.keyboard.press(1);
        isPressed = true;
        (void)waitUntil([] { return false; }, 100ms);
        movePointer(desktop, from, from + QPoint(30, -20), 6);
        (void)waitUntil([] { return false; }, 300ms);
        movePointer(desktop, from + QPoint(30, -20), atEdge, 20);
        const bool isOver = waitUntil([&] {
            desktop.keyboard.movePointer(atEdge.x() + (nudge ^= 1), atEdge.y());
            return view->entered > 0;
        });
        (void)waitUntil([] { return false; }, 150ms);
        release();
        return isOver && waitUntil([this] { return view->content.has_value(); });
    }
    void tell(const char *what) {
        std::printf("%s: %.2f ms, within the event: %s; %s\n", what, view->blockedMs,
                    view->isWithinEvent ? "yes" : "no",
                    view->content->types.join(QLatin1Char(' ')).toUtf8().constData());
    }
    std::unique_ptr<ForeignDrag> openPage() {
        QFile file(folder.filePath(QStringLiteral("page.html")));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(QString::fromUtf8(page).arg(QString::fromLatin1(pngOf(coloured(10, 10)).toBase64())).toUtf8());
        file.close();
        return open(QStringLiteral("chromium"),
                    {QStringLiteral("--no-sandbox"), QStringLiteral("--test-type"), QStringLiteral("--no-first-run"),
                     QStringLiteral("--disable-gpu"), QStringLiteral("--password-store=basic"),
                     QStringLiteral("--user-data-dir=") + folder.filePath(QStringLiteral("profile")),
                     QStringLiteral("--app=file://") + file.fileName()},
                    "page");
    }
    [[nodiscard]] bool hasTitle(const QString &title) {
        return waitUntil([&] { return desktop.title(shown) == title; }) ||
               (std::printf("title: %s\n", desktop.title(shown).toUtf8().constData()), false);
    }

    quint32 shown = 0;
};

TEST_F(DragsAtLength, aFileComesOutOfThunarAndGoesIntoIt) {
    const auto program = open(QStringLiteral("thunar"), {folder.path()}, "Thunar");
    // The folder comes first in it, the file after it.
    ASSERT_TRUE(dragFrom(at(311, 146)));
    tell("Thunar");
    EXPECT_THAT(view->content->fileUrls, ::testing::ElementsAre(QUrl::fromLocalFile(here())));
}

TEST_F(DragsAtLength, aFileThatIsDraggedIntoThunarIsCopiedAndWithTheKeyMoved) {
    const auto program = open(QStringLiteral("thunar"), {there()}, "Thunar");
    dragOut(file(here()), at(330, 280));
    EXPECT_TRUE(waitUntil([this] { return QFile::exists(inThere()); }));
    (void)waitUntil([] { return false; }, 300ms);
    EXPECT_TRUE(QFile::exists(here())) << "copied";
    EXPECT_EQ(view->done, dragOperation::copy);
    QFile::remove(inThere());
    view->mask = [] { return dragOperation::move; };
    dragOut(file(here()), at(330, 280), Qt::MoveAction);
    EXPECT_TRUE(waitUntil([this] { return QFile::exists(inThere()) && !QFile::exists(here()); }));
    EXPECT_EQ(view->done, dragOperation::move);
}

TEST_F(DragsAtLength, aFileComesOutOfPcmanfm) {
    const auto program =
        open(QStringLiteral("pcmanfm"), {folder.path()}, qPrintable(QFileInfo(folder.path()).fileName()));
    ASSERT_TRUE(dragFrom(at(300, 98)));
    tell("pcmanfm");
    EXPECT_EQ(view->content->fileUrls.size(), 1);
}

TEST_F(DragsAtLength, aFileThatIsDraggedIntoPcmanfmIsCopiedAndWithTheKeyMoved) {
    const auto program = open(QStringLiteral("pcmanfm"), {there()}, "there");
    dragOut(file(here()), at(330, 250));
    EXPECT_TRUE(waitUntil([this] { return QFile::exists(inThere()); }));
    (void)waitUntil([] { return false; }, 300ms);
    EXPECT_TRUE(QFile::exists(here())) << "copied";
    QFile::remove(inThere());
    view->mask = [] { return dragOperation::move; };
    dragOut(file(here()), at(330, 250), Qt::MoveAction);
    EXPECT_TRUE(waitUntil([this] { return QFile::exists(inThere()) && !QFile::exists(here()); }));
}

TEST_F(DragsAtLength, aPageGivesLinksTextAndPicturesAndTakesFilesTextAndPictures) {
    const auto program = openPage();
    ASSERT_TRUE(dragFrom(at(20, 14)));
    tell("Chromium, link");
    EXPECT_EQ(view->content->string, QStringLiteral("https://example.org/a?b=c"));
    EXPECT_TRUE(view->content->fileUrls.isEmpty());
    view->entered = 0;
    view->content.reset();
    ASSERT_TRUE(dragFrom(at(40, 72)));
    tell("Chromium, text");
    EXPECT_EQ(view->content->string, QStringLiteral("sometext"));
    view->entered = 0;
    view->content.reset();
    ASSERT_TRUE(dragFrom(at(30, 150)));
    tell("Chromium, picture");
    EXPECT_EQ(view->content->images.size(), 1);

    dragOut(file(here()), at(200, 240));
    EXPECT_TRUE(hasTitle(QStringLiteral("file a file.txt text/plain 3")));
    DraggedItem item;
    item.string = QStringLiteral("café");
    dragOut(item, at(200, 240));
    EXPECT_TRUE(hasTitle(QStringLiteral("text café")));
}

TEST_F(DragsAtLength, anEditorOpensTheFile) {
    const auto program = open(QStringLiteral("mousepad"), {}, "Mousepad");
    dragOut(file(here()), at(200, 200));
    EXPECT_TRUE(waitUntil([this] { return desktop.title(shown).contains(QLatin1String("a file.txt")); }))
        << desktop.title(shown).toStdString();
}

TEST_F(DragsAtLength, aTerminalGetsTheQuotedPath) {
    const QString typed = folder.filePath(QStringLiteral("typed"));
    const auto program =
        open(QStringLiteral("xfce4-terminal"),
             {QStringLiteral("--disable-server"), QStringLiteral("--title=a terminal"), QStringLiteral("-x"),
              QStringLiteral("sh"), QStringLiteral("-c"), QStringLiteral("cat > '%1'").arg(typed)},
             "a terminal");
    dragOut(file(here()), at(200, 200));
    (void)waitUntil([] { return false; }, 500ms);
    desktop.activate(shown);
    (void)waitUntil([] { return false; }, 300ms);
    desktop.pressReturn();
    const auto read = [&] {
        QFile got(typed);
        return got.open(QIODevice::ReadOnly) ? QString::fromUtf8(got.readAll()).trimmed() : QString();
    };
    EXPECT_TRUE(waitUntil([&] { return !read().isEmpty(); }));
    EXPECT_EQ(read(), QStringLiteral("'%1'").arg(here()));
}

TEST_F(DragsAtLength, aTextFieldGetsTheText) {
    const auto program = open(QStringLiteral(TAVRINE_CLIENTS) + QStringLiteral("/gtk-entry"), {}, "A foreign line");
    DraggedItem item;
    item.string = QStringLiteral("café");
    dragOut(item, at(200, 20));
    EXPECT_TRUE(program->says(QStringLiteral("text café"))) << program->said().join(QLatin1Char('|')).toStdString();
    dragOut(file(here()), at(200, 20));
    EXPECT_TRUE(program->says(QStringLiteral("text café") + here()))
        << program->said().join(QLatin1Char('|')).toStdString();
}

} // namespace
} // namespace tavrine

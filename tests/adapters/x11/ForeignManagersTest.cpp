#include "adapters/x11/ForeignPrograms.h"
#include "ports/Pasteboard.h"

#include <gmock/gmock.h>

namespace tavrine {
namespace {

using testing::Contains;

/// A file manager that gives up what it was asked for, driven as a person drives it.
class FileManager : public ForeignPrograms {
protected:
    static void press(const char *keys) {
        QProcess::execute(QStringLiteral("xdotool"), {QStringLiteral("key"), QString::fromLatin1(keys)});
    }
    /// Shows the folder in a window of its own and gives it the keyboard.
    [[nodiscard]] std::unique_ptr<QProcess> show(const QString &folder) {
        auto process = launch(QStringLiteral("pcmanfm"), {folder});
        const QString window = u'^' + folder.section(u'/', -1) + u'$';
        // Its search ends with an error where any window goes while it looks at it; it is begun anew then.
        EXPECT_TRUE(waitUntil(
            [&] {
                return QProcess::execute(QStringLiteral("timeout"),
                                         {QStringLiteral("5"), QStringLiteral("xdotool"), QStringLiteral("search"),
                                          QStringLiteral("--onlyvisible"), QStringLiteral("--name"), window,
                                          QStringLiteral("windowfocus"), QStringLiteral("--sync")}) == 0;
            },
            20000));
        return process;
    }
    /// Presses the keys until they have had their effect: the window may not listen at once.
    [[nodiscard]] static bool pressUntil(const std::function<void()> &pressKeys, const std::function<bool()> &isDone) {
        for (int i = 0; i < 10; ++i) {
            pressKeys();
            if (waitUntil(isDone, 1000))
                return true;
        }
        return false;
    }
    void makeFolders() {
        for (const char *folder : {"from", "to"})
            ASSERT_TRUE(QDir(m_folder.path()).mkdir(QString::fromLatin1(folder)));
        ASSERT_TRUE(coloured(12, 11).save(m_folder.filePath(QStringLiteral("from/picture.png"))));
    }
    [[nodiscard]] bool exists(const char *path) const {
        return QFile::exists(m_folder.filePath(QString::fromLatin1(path)));
    }
    void copyWith(const char *keys) {
        const int count = pasteboard().changeCount();
        ASSERT_TRUE(pressUntil(
            [&] {
                press("ctrl+a");
                press(keys);
            },
            [&] { return pasteboard().changeCount() > count; }));
        ASSERT_TRUE(waitUntil([&] { return pasteboard().image().has_value(); }));
        EXPECT_EQ(pasteboard().image()->size(), QSize(12, 11));
        ASSERT_TRUE(waitUntil([&] { return !changed(0) && settles(); })) << "keys that were pressed twice copy twice";
    }
};

TEST_F(FileManager, movesTheFilesThatWereCutAsWithoutUs) {
    makeFolders();
    const auto from = show(m_folder.filePath(QStringLiteral("from")));
    copyWith("ctrl+x");
    const auto to = show(m_folder.filePath(QStringLiteral("to")));
    EXPECT_TRUE(pressUntil([] { press("ctrl+v"); }, [&] { return exists("to/picture.png"); }));
    EXPECT_TRUE(waitUntil([&] { return !exists("from/picture.png"); }));
    for (QProcess *process : {from.get(), to.get()}) {
        process->terminate();
        process->waitForFinished();
    }
}

TEST_F(FileManager, copiesTheFilesThatWereCopiedAlsoWhenItHasEnded) {
    makeFolders();
    {
        const auto from = show(m_folder.filePath(QStringLiteral("from")));
        copyWith("ctrl+c");
        killAndWait(*from);
    }
    const auto to = show(m_folder.filePath(QStringLiteral("to")));
    EXPECT_TRUE(pressUntil([] { press("ctrl+v"); }, [&] { return exists("to/picture.png"); }));
    EXPECT_TRUE(exists("from/picture.png"));
    to->terminate();
    to->waitForFinished();
}

/// Another clipboard manager beside us.
class Parcellite : public ForeignPrograms {
protected:
    Parcellite() {
        m_parcellite = launch(QStringLiteral("parcellite"), {QStringLiteral("--no-icon")});
        // It is there once it fills what is empty.
        const auto xclip = xclipCopies("first");
        EXPECT_TRUE(changed());
        EXPECT_TRUE(waitUntil([&] { return pasteboard().string() == QStringLiteral("first"); }));
        xclip->kill();
        xclip->waitForFinished();
        EXPECT_FALSE(changed(1000) && changed(1000) && changed(1000));
    }
    ~Parcellite() override {
        m_parcellite->terminate();
        m_parcellite->waitForFinished();
    }
    std::unique_ptr<QProcess> m_parcellite;
};

TEST_F(Parcellite, andWeDoNotFightOverTheClipboard) {
    const int before = pasteboard().changeCount();
    const auto xclip = xclipCopies("kept by somebody");
    ASSERT_TRUE(changed());
    killAndWait(*xclip);
    static_cast<void>(waitUntil([&] { return pasteboard().changeCount() > before + 2; }, 3000));
    EXPECT_LE(pasteboard().changeCount() - before, 2) << "the copy, and at most one claim for it";
    EXPECT_EQ(xclipPastes(), "kept by somebody");
}

TEST_F(Parcellite, takesASecretOverAndItStaysOne) {
    bool isTaken = false;
    for (int tries = 0; tries < 10 && !isTaken; ++tries) { // it looks twice a second, and later on a busy machine
        m_count = pasteboard().changeCount();
        const auto qt = launch(QStringLiteral(QT_COPIER), {QStringLiteral("secret")});
        ASSERT_TRUE(waitForReady(*qt));
        ASSERT_TRUE(changed());
        ASSERT_TRUE(settles());
        // It reads what is copied and claims nothing; but it may have come to what was empty before this copy.
        const bool isClaimed = changed(1500);
        qt->kill();
        qt->waitForFinished();
        if (isClaimed)
            continue;
        isTaken = waitUntil([&] { return requestor.owner() != 0; }, 3000);
    }
    ASSERT_TRUE(isTaken) << "it owns the text now";
    ASSERT_EQ(requestor.targets().contains("x-kde-passwordManagerHint"), false);
    EXPECT_EQ(xclipPastes(), QStringLiteral("Qt: Grüße 🌍").toUtf8());
    ASSERT_TRUE(waitUntil([&] {
        return pasteboard().types() && pasteboard().types()->contains(QLatin1String(pasteboardType::concealed));
    }));
    EXPECT_FALSE(pasteboard().string());
}

} // namespace
} // namespace tavrine

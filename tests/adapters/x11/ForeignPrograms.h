#pragma once

#include "adapters/pasteboard/SelectionSiblings.h"
#include "adapters/x11/X11PasteboardFixture.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <csignal>

namespace tavrine {

/// Programs that people use, on the other side of the clipboard.
class ForeignPrograms : public X11PasteboardFixture {
protected:
    ForeignPrograms() { start({}); }

    /// Starts a program that copies and stays.
    [[nodiscard]] std::unique_ptr<QProcess> launch(const QString &program, const QStringList &arguments,
                                                   const QByteArray &input = {}) {
        auto process = std::make_unique<QProcess>();
        process->setProcessChannelMode(QProcess::SeparateChannels);
        if (!input.isNull()) { // through files: pipes would make us measure our own loop
            const QString path = m_folder.filePath(QStringLiteral("input%1").arg(++m_files));
            QFile file(path);
            EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(input) == input.size());
            process->setStandardInputFile(path);
        }
        process->start(program, arguments);
        EXPECT_TRUE(process->waitForStarted());
        return process;
    }
    [[nodiscard]] std::unique_ptr<QProcess> xclipCopies(const QByteArray &input, const QStringList &more = {}) {
        return launch(QStringLiteral("xclip"),
                      QStringList{QStringLiteral("-selection"), QStringLiteral("clipboard"), QStringLiteral("-quiet"),
                                  QStringLiteral("-i")} +
                          more,
                      input);
    }
    /// What a program that pastes writes to its output.
    [[nodiscard]] QByteArray output(const QString &program, const QStringList &arguments) {
        const QString path = m_folder.filePath(QStringLiteral("output%1").arg(++m_files));
        QProcess process;
        process.setStandardOutputFile(path);
        process.start(program, arguments);
        process.closeWriteChannel();
        EXPECT_TRUE(waitUntil([&] { return process.state() == QProcess::NotRunning; }, 20000));
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return file.readAll();
    }
    [[nodiscard]] QByteArray xclipPastes(const QString &target = {}) {
        QStringList arguments{QStringLiteral("-selection"), QStringLiteral("clipboard"), QStringLiteral("-o")};
        if (!target.isEmpty())
            arguments += {QStringLiteral("-t"), target};
        return output(QStringLiteral("xclip"), arguments);
    }
    /// Kills it as nothing can be caught, and waits until its contents are ours.
    void killAndWait(QProcess &process) {
        const xcb_window_t before = requestor.owner();
        ::kill(static_cast<pid_t>(process.processId()), SIGKILL);
        ASSERT_TRUE(waitUntil([&] { return requestor.hasOwnerOtherThan(before); }));
        process.waitForFinished();
    }
    static bool waitForReady(QProcess &process) {
        return waitUntil([&] { return process.canReadLine() && process.readLine().trimmed() == "ready"; }, 15000);
    }
    /// All targets of the present owner with what they hold, as another program sees them.
    [[nodiscard]] std::map<QByteArray, TestRequestor::Value> everything() {
        std::map<QByteArray, TestRequestor::Value> all;
        for (const QByteArray &target : requestor.targets()) {
            if (target == "TARGETS" || target == "MULTIPLE" || target == "TIMESTAMP" || target == "SAVE_TARGETS" ||
                target == "PIXMAP") // by its name a thing of the server that ends with the owner
                continue;
            const auto value = requestor.paste(target);
            if (!value || value->bytes.isEmpty())
                continue;
            all[target] = *value;
        }
        return all;
    }
    /// As it came; or, of the forms that are made here, the same text or picture.
    [[nodiscard]] bool isSame(const QByteArray &target, const TestRequestor::Value &theirs,
                              const TestRequestor::Value &ours) {
        if (ours.bytes == theirs.bytes && ours.type == theirs.type && ours.format == theirs.format)
            return true;
        if (selection::isTextForm(target)) {
            const QString text = pasteboard().string().value_or(QString());
            return target == "STRING" ? ours.bytes == text.toLatin1() : ours.bytes.contains(text.toUtf8());
        }
        const QImage theirImage = QImage::fromData(theirs.bytes);
        const QImage ourImage = QImage::fromData(ours.bytes);
        if (!target.startsWith("image/") && !selection::isPictureForm(target))
            return false;
        // The toolkits' own pictures leave some bytes to chance, and forms with loss differ by a little.
        const QPoint middle(theirImage.width() / 2, theirImage.height() / 2);
        return !theirImage.isNull() && ourImage.size() == theirImage.size() && ours.type == theirs.type &&
               std::abs(ourImage.pixelColor(middle).blue() - theirImage.pixelColor(middle).blue()) <= 4;
    }
    /// The contents of the living owner and, after it was killed, ours: the same for every target.
    void expectTheSameAfterTheKill(QProcess &process) {
        const auto before = everything();
        EXPECT_FALSE(before.empty());
        ASSERT_TRUE(settles());
        killAndWait(process);
        const auto after = everything();
        EXPECT_EQ(after.size(), before.size());
        for (const auto &[target, value] : before) {
            ASSERT_TRUE(after.count(target)) << target.constData();
            EXPECT_TRUE(isSame(target, value, after.at(target))) << target.constData();
        }
        EXPECT_FALSE(changed(200)) << "keeping alive is no change";
    }

    QTemporaryDir m_folder;
    int m_files = 0;
    TestRequestor requestor;
};

/// Megabytes of this process that lie in memory.
inline double residentMegabytes() {
    QFile file(QStringLiteral("/proc/self/statm"));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    return file.readAll().split(' ').value(1).toDouble() * 4096 / 1048576;
}

} // namespace tavrine

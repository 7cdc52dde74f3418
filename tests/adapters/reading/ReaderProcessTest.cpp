#include "adapters/linux/ReaderProcess.h"

#include "adapters/linux/ReaderProtocol.h"
#include "support/Eventually.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <cstring>
#include <thread>

#include <gtest/gtest.h>

namespace tavrine {
namespace {

using namespace readerProtocol;

QString words(const char *utf8) {
    return QString::fromUtf8(utf8);
}

QImage picture() {
    QImage image(40, 30, QImage::Format_RGB32);
    image.fill(Qt::white);
    return image;
}

/// A reader that a test writes in a few lines of shell.
class ReaderProcessTest : public testing::Test {
protected:
    void writeReader(const char *script) {
        QFile file(folder.filePath(words("TavrineReader")));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("#!/bin/sh\n");
        file.write(script);
        file.close();
        ASSERT_TRUE(file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    }
    [[nodiscard]] QString failure(std::chrono::milliseconds patience = std::chrono::seconds(20)) {
        const auto result = ProcessRecognizer(folder.path(), patience).recognize(picture());
        const auto *failed = std::get_if<Recognizer::Failure>(&result);
        return failed ? failed->reason : QString();
    }
    QTemporaryDir folder;
};

TEST_F(ReaderProcessTest, theAnswerIsWhatTheReaderSays) {
    writeReader("echo '{\"lines\":[\"a\",\"b\"]}'");
    const auto result = ProcessRecognizer(folder.path()).recognize(picture());
    EXPECT_EQ(std::get<QStringList>(result), (QStringList{words("a"), words("b")}));
}

TEST_F(ReaderProcessTest, aMissingReaderIsAFailure) {
    EXPECT_FALSE(failure().isEmpty());
}

TEST_F(ReaderProcessTest, aReaderThatCrashesIsAFailure) {
    writeReader("kill -SEGV $$");
    EXPECT_FALSE(failure().isEmpty());
}

TEST_F(ReaderProcessTest, aReaderThatCrashesAfterItsAnswerIsAFailure) {
    writeReader("echo '{\"lines\":[\"a\"]}'; exit 1");
    EXPECT_FALSE(failure().isEmpty());
}

TEST_F(ReaderProcessTest, aReaderThatHangsIsEnded) {
    writeReader("exec sleep 600");
    QElapsedTimer timer;
    timer.start();
    EXPECT_EQ(failure(std::chrono::milliseconds(200)), words("the reader gave no answer in time"));
    EXPECT_LT(timer.elapsed(), 10'000);
}

TEST_F(ReaderProcessTest, cancellingEndsTheReaderThatIsWaitedForAndEveryLaterOne) {
    writeReader("exec sleep 600");
    ProcessRecognizer recognizer(folder.path());
    Recognizer::Result result;
    QElapsedTimer timer;
    std::thread caller([&] { result = recognizer.recognize(picture()); });
    std::this_thread::sleep_for(std::chrono::milliseconds(100)); // it waits by now, or finds the word when it begins
    timer.start();
    recognizer.cancel();
    caller.join();
    EXPECT_LT(timer.elapsed(), 2000);
    EXPECT_TRUE(std::holds_alternative<Recognizer::Failure>(result));
    EXPECT_TRUE(std::holds_alternative<Recognizer::Failure>(recognizer.recognize(picture())));
    EXPECT_LT(timer.elapsed(), 4000);
}

TEST_F(ReaderProcessTest, nonsenseIsAFailure) {
    for (const char *answer : {"", "hello", "[]", "{}", "{\"lines\":7}", "{\"lines\":[7]}", "{\"codes\":[]}"}) {
        writeReader((std::string("cat <<'END'\n") + answer + "\nEND\n").c_str());
        EXPECT_FALSE(failure().isEmpty()) << answer;
    }
}

TEST_F(ReaderProcessTest, anAnswerWithoutEndIsCutOff) {
    writeReader("exec cat /dev/zero");
    EXPECT_FALSE(failure().isEmpty());
}

TEST_F(ReaderProcessTest, theReadersOwnFailureIsPassedOn) {
    writeReader("echo '{\"failure\":\"no language\"}'");
    EXPECT_EQ(failure(), words("no language"));
}

TEST_F(ReaderProcessTest, aReaderThatFailsSaysNothingAboutTheCodes) {
    for (const char *script : {"exit 1", "echo '{\"failure\":\"no memory\"}'", "echo '{\"lines\":[]}'"}) {
        writeReader(script);
        const auto result = ProcessCodeDetector(folder.path(), ProcessCodeDetector::screenPlugin).detect(picture());
        EXPECT_TRUE(std::holds_alternative<CodeDetector::Failure>(result)) << script;
    }
}

TEST_F(ReaderProcessTest, aReadingThatIsStoppedEndsItsReaderAndNoOther) {
    writeReader("test -e \"$0.go\" && echo '{\"lines\":[]}' && exit; touch \"$0.begun\"; exec sleep 600");
    const QString begun = folder.filePath(words("TavrineReader.begun"));
    ProcessRecognizer recognizer(folder.path());
    std::stop_source unwanted;
    QElapsedTimer timer;
    timer.start();
    std::thread stopper([&] {
        EXPECT_TRUE(test::eventually([&] { return QFile::exists(begun); }));
        unwanted.request_stop();
    });
    const auto result = recognizer.recognize(picture(), unwanted.get_token());
    stopper.join();
    EXPECT_TRUE(std::holds_alternative<Recognizer::Failure>(result));
    EXPECT_LT(timer.elapsed(), 20'000); // and not a minute
    EXPECT_TRUE(std::holds_alternative<Recognizer::Failure>(recognizer.recognize(picture(), unwanted.get_token())));
    ASSERT_TRUE(QFile(folder.filePath(words("TavrineReader.go"))).open(QIODevice::WriteOnly));
    EXPECT_TRUE(std::holds_alternative<QStringList>(recognizer.recognize(picture())));
}

TEST_F(ReaderProcessTest, aLookForCodesThatIsStoppedEndsItsReader) {
    writeReader("touch \"$0.begun\"; exec sleep 600");
    const QString begun = folder.filePath(words("TavrineReader.begun"));
    ProcessCodeDetector detector(folder.path(), ProcessCodeDetector::screenPlugin, std::chrono::minutes(5));
    std::stop_source unwanted;
    std::thread stopper([&] {
        EXPECT_TRUE(test::eventually([&] { return QFile::exists(begun); }));
        unwanted.request_stop();
    });
    QElapsedTimer timer;
    timer.start();
    const auto result = detector.detect(picture(), unwanted.get_token());
    stopper.join();
    EXPECT_TRUE(std::holds_alternative<CodeDetector::Failure>(result));
    EXPECT_LT(timer.elapsed(), 60'000); // and not five minutes
}

TEST_F(ReaderProcessTest, picturesAreReadSideBySide) {
    writeReader("touch \"$0.in.$$\"; while [ $(ls \"$0\".in.* | wc -l) -lt 2 ]; do sleep 0.02; done; "
                "echo '{\"lines\":[]}'");
    ProcessRecognizer recognizer(folder.path());
    Recognizer::Result other;
    std::thread caller([&] { other = recognizer.recognize(picture()); });
    const auto result = recognizer.recognize(picture());
    caller.join();
    EXPECT_TRUE(std::holds_alternative<QStringList>(result)) << "neither ends before the other has begun";
    EXPECT_TRUE(std::holds_alternative<QStringList>(other));
}

TEST_F(ReaderProcessTest, theReaderHasOneThreadForItsLoopsAndNoFilesOfOurs) {
    writeReader("printf '{\"lines\":[\"%s\",\"%s\"]}' \"$OMP_THREAD_LIMIT\" \"$(ls /proc/self/fd | tr '\\n' ' ')\"");
    QFile open(folder.filePath(words("ours")));
    ASSERT_TRUE(open.open(QIODevice::WriteOnly));
    const auto result = ProcessRecognizer(folder.path()).recognize(picture());
    const QStringList lines = std::get<QStringList>(result);
    EXPECT_EQ(lines.at(0), words("1"));
    EXPECT_EQ(lines.at(1).trimmed(), words("0 1 2 3")) << "3 is the folder that ls reads";
}

TEST_F(ReaderProcessTest, anUnknownPluginIsAFailure) {
    const ReaderProcess reader(QCoreApplication::applicationDirPath() + words("/TavrineReader"),
                               words("no_such_plugin"), std::chrono::seconds(20));
    EXPECT_TRUE(std::holds_alternative<ReaderProcess::Failure>(reader.read(picture())));
}

// The walls.

class ReaderWallsTest : public ReaderProcessTest {
protected:
    [[nodiscard]] static QString program() { return QCoreApplication::applicationDirPath() + words("/TavrineReader"); }
    /// What the real reader answers with `plugin` where the system call fails.
    [[nodiscard]] std::variant<ReaderProcess::Failure, QByteArray> readWithout(const char *call, const char *plugin) {
        writeReader(("exec " WITHOUT_CALL " " + std::string(call) + " " + program().toStdString() + " \"$1\"").c_str());
        return ReaderProcess(folder.filePath(words("TavrineReader")), words(plugin), std::chrono::seconds(20))
            .read(picture());
    }
};

TEST_F(ReaderWallsTest, whatAPictureTakesOverHasNothing) {
    const auto answer = ReaderProcess(program(), words("trying_recognizer"), std::chrono::seconds(20)).read(picture());
    ASSERT_TRUE(std::holds_alternative<QByteArray>(answer)) << qPrintable(std::get<0>(answer).reason);
    const QStringList outcomes = std::get<QStringList>(*textIn(std::get<QByteArray>(answer)));
    EXPECT_EQ(outcomes.mid(0, 9), (QStringList{words("read: done"), words("write: done"), words("internet: done"),
                                               words("session: done"), words("process: done"), words("code: done"),
                                               words("5 GiB: done"), words("1 GiB: done"), words("thread: done")}))
        << "or the walls prove nothing";
    EXPECT_EQ(outcomes.mid(9), (QStringList{words("read: EPERM"), words("write: EPERM"), words("internet: EPERM"),
                                            words("session: EPERM"), words("process: EPERM"), words("code: EPERM"),
                                            words("5 GiB: ENOMEM"), words("1 GiB: done"), words("thread: done")}));
}

TEST_F(ReaderWallsTest, withoutOneOfItsWallsTheReaderReadsNothing) {
    for (const char *call : {"prctl", "seccomp", "prlimit64", "landlock_create_ruleset"}) {
        const auto answer = readWithout(call, "trying_recognizer");
        ASSERT_TRUE(std::holds_alternative<QByteArray>(answer)) << call;
        const auto result = textIn(std::get<QByteArray>(answer));
        ASSERT_TRUE(result && std::holds_alternative<Recognizer::Failure>(*result)) << call;
        EXPECT_TRUE(std::get<Recognizer::Failure>(*result).reason.startsWith(words("the reader is not locked in: ")))
            << call << qPrintable(std::get<Recognizer::Failure>(*result).reason);
    }
    // The same call, failing after the walls, is no matter.
    EXPECT_TRUE(
        std::holds_alternative<QStringList>(*textIn(std::get<QByteArray>(readWithout("getcwd", "trying_recognizer")))));
}

// The protocol.

QByteArray transfer(const Header &header, qsizetype pixels) {
    QByteArray bytes(reinterpret_cast<const char *>(&header), sizeof(header));
    return bytes.append(pixels, '\xff');
}

QImage read(const QByteArray &bytes) {
    return pictureIn(reinterpret_cast<const uchar *>(bytes.constData()), bytes.size());
}

TEST(ReaderProtocolTest, aPictureArrivesAsItWas) {
    QImage image(7, 5, QImage::Format_ARGB32);
    image.fill(QColor(10, 20, 30, 40));
    const QImage sent = transferable(image);
    QByteArray bytes = transfer({.width = 7, .height = 5, .bytesPerLine = 28, .hasAlpha = 1}, 0);
    bytes.append(reinterpret_cast<const char *>(sent.constBits()), sent.sizeInBytes());
    EXPECT_EQ(read(bytes), image);
}

TEST(ReaderProtocolTest, aPieceOfAPictureIsNone) {
    const Header header{.width = 4, .height = 2, .bytesPerLine = 16};
    EXPECT_FALSE(read(transfer(header, 32)).isNull());
    EXPECT_TRUE(read(transfer(header, 31)).isNull());
    EXPECT_TRUE(read(transfer(header, 0).left(sizeof(Header) - 1)).isNull());
    EXPECT_TRUE(read({}).isNull());
}

TEST(ReaderProtocolTest, headersThatLieAreRefused) {
    const Header good{.width = 4, .height = 2, .bytesPerLine = 16};
    const auto with = [&](auto change) {
        Header header = good;
        change(header);
        return read(transfer(header, 64));
    };
    EXPECT_TRUE(with([](Header &h) { h.magic = 1; }).isNull());
    EXPECT_TRUE(with([](Header &h) { h.width = 0; }).isNull());
    EXPECT_TRUE(with([](Header &h) { h.height = 0; }).isNull());
    EXPECT_TRUE(with([](Header &h) { h.width = 5; }).isNull()) << "wider than its lines";
    EXPECT_TRUE(with([](Header &h) { h.bytesPerLine = 17; }).isNull());
    EXPECT_TRUE(with([](Header &h) { h.hasAlpha = 2; }).isNull());
    EXPECT_TRUE(with([](Header &h) { h.width = h.height = 0xFFFFFFFF; }).isNull());
    EXPECT_TRUE(with([](Header &h) { h.width = 0x40000001; }).isNull()) << "four times that is 4";
}

TEST(ReaderProtocolTest, codesArriveAsTheyWere) {
    const QList<DetectedCode> codes{{words("Grüße\n\"x\""), {0.1, 0.2, 0.3, 0.4}}, {QString(), {0, 0, 1, 1}}};
    EXPECT_EQ(std::get<QList<DetectedCode>>(*codesIn(answerOf(codes))), codes);
    EXPECT_EQ(std::get<QList<DetectedCode>>(*codesIn(answerOf(QList<DetectedCode>()))), QList<DetectedCode>());
}

TEST(ReaderProtocolTest, boxesOutsideOfThePictureAreRefused) {
    for (const char *box : {"[-0.1,0,1,1]", "[0,0,1.1,1]", "[0.5,0,0.6,1]", "[0,0,1]", "\"all\"", "[\"0\",0,1,1]"})
        EXPECT_FALSE(codesIn(QByteArray("{\"codes\":[{\"payload\":\"a\",\"box\":") + box + "}]}")) << box;
    EXPECT_TRUE(codesIn("{\"codes\":[{\"payload\":\"a\",\"box\":[0,0,1,1]}]}"));
}

} // namespace
} // namespace tavrine

#include "adapters/fake/FakeCodeDetector.h"
#include "adapters/fake/FakeRecognizer.h"
#include "adapters/linux/ReaderProcess.h"

#include <QCoreApplication>
#include <QPainter>
#include <QProcess>

#include <functional>
#include <memory>

#include <gtest/gtest.h>

namespace tavrine {
namespace {

using namespace std::chrono_literals;

QString words(const char *utf8) {
    return QString::fromUtf8(utf8);
}

QImage blank(int width, int height, QImage::Format format = QImage::Format_RGB32) {
    QImage image(width, height, format);
    image.fill(Qt::white);
    return image;
}

/// Two lines as a window shows them.
QImage writing(const QColor &ground, const QColor &ink, QImage::Format format = QImage::Format_RGB32) {
    QImage image(420, 90, format);
    image.fill(ground);
    QPainter painter(&image);
    QFont font(words("DejaVu Sans"));
    font.setPixelSize(16);
    painter.setFont(font);
    painter.setPen(ink);
    painter.drawText(16, 34, words("The quick brown fox"));
    painter.drawText(16, 66, words("jumps over the lazy dog"));
    return image;
}
const QStringList writtenLines{words("The quick brown fox"), words("jumps over the lazy dog")};

/// A code of the given words: black on white, three pixels a module, four modules of quiet round it.
QImage codeOfBytes(const QByteArray &bytes) {
    QProcess program;
    program.start(words("qrencode"), {words("-8"), words("-o"), words("-"), words("-s"), words("3")});
    program.write(bytes);
    program.closeWriteChannel();
    if (!program.waitForFinished() || program.exitCode() != 0)
        return {};
    return QImage::fromData(program.readAllStandardOutput()).convertToFormat(QImage::Format_RGB32);
}

QImage code(const QString &payload) {
    QProcess program;
    program.start(words("qrencode"), {words("-o"), words("-"), words("-s"), words("3"), payload});
    if (!program.waitForFinished() || program.exitCode() != 0)
        return {};
    return QImage::fromData(program.readAllStandardOutput()).convertToFormat(QImage::Format_RGB32);
}

/// What a test makes of the port: the fake is told what stands in the pictures, the real one has to see it.
struct RecognizerUnderTest {
    const char *name;
    std::function<std::unique_ptr<Recognizer>()> make;
};

std::unique_ptr<Recognizer> fakeRecognizer() {
    auto fake = std::make_unique<FakeRecognizer>();
    fake->setLines(writtenLines);
    return fake;
}

class RecognizerContract : public testing::TestWithParam<RecognizerUnderTest> {
protected:
    [[nodiscard]] QStringList linesOf(const QImage &image) {
        const auto result = recognizer->recognize(image);
        const auto *lines = std::get_if<QStringList>(&result);
        EXPECT_NE(lines, nullptr);
        return lines ? *lines : QStringList();
    }
    [[nodiscard]] bool fails(const QImage &image) {
        return std::holds_alternative<Recognizer::Failure>(recognizer->recognize(image));
    }

    std::unique_ptr<Recognizer> recognizer = GetParam().make();
};

TEST_P(RecognizerContract, linesComeInReadingOrder) {
    EXPECT_EQ(linesOf(writing(Qt::white, Qt::black)), writtenLines);
}

TEST_P(RecognizerContract, theSamePictureReadsTheSameAgain) {
    const QImage image = writing(Qt::white, Qt::black);
    EXPECT_EQ(linesOf(image), linesOf(image));
}

TEST_P(RecognizerContract, aPictureOfOnePixelHasNoText) {
    EXPECT_TRUE(linesOf(blank(1, 1)).isEmpty());
}

TEST_P(RecognizerContract, aPictureWithoutPixelsIsAFailure) {
    EXPECT_TRUE(fails(QImage()));
}

TEST_P(RecognizerContract, afterACancelEveryPictureIsAFailure) {
    recognizer->cancel();
    EXPECT_TRUE(fails(writing(Qt::white, Qt::black)));
}

TEST_P(RecognizerContract, transparencyIsNoObstacle) {
    EXPECT_EQ(linesOf(writing(Qt::transparent, Qt::black, QImage::Format_ARGB32_Premultiplied)), writtenLines);
}

INSTANTIATE_TEST_SUITE_P(All, RecognizerContract,
                         testing::Values(RecognizerUnderTest{"Fake", fakeRecognizer},
                                         RecognizerUnderTest{"Tesseract",
                                                             [] {
                                                                 return std::make_unique<ProcessRecognizer>(
                                                                     QCoreApplication::applicationDirPath());
                                                             }}),
                         [](const auto &tested) { return tested.param.name; });

class TextOnScreens : public testing::Test {
protected:
    [[nodiscard]] QStringList linesOf(const QImage &image) {
        const auto result = recognizer.recognize(image);
        return std::holds_alternative<QStringList>(result) ? std::get<QStringList>(result)
                                                           : QStringList{words("failed")};
    }
    ProcessRecognizer recognizer{QCoreApplication::applicationDirPath()};
};

TEST_F(TextOnScreens, lightOnDarkIsRead) {
    EXPECT_EQ(linesOf(writing(QColor(0x1E, 0x1E, 0x1E), QColor(0xD4, 0xD4, 0xD4))), writtenLines);
}

TEST_F(TextOnScreens, aDarkWindowOnALightDesktopIsReadWithIt) {
    QImage both(420, 180, QImage::Format_RGB32);
    QPainter painter(&both);
    painter.drawImage(0, 0, writing(Qt::white, Qt::black));
    painter.drawImage(0, 90, writing(QColor(0x1E, 0x1E, 0x1E), Qt::white));
    painter.end();
    EXPECT_EQ(linesOf(both), writtenLines + writtenLines);
}

TEST_F(TextOnScreens, everyFormatIsRead) {
    for (const QImage::Format format : {QImage::Format_Grayscale8, QImage::Format_Indexed8, QImage::Format_RGB16,
                                        QImage::Format_RGBA64, QImage::Format_Mono})
        EXPECT_EQ(linesOf(writing(Qt::white, Qt::black).convertToFormat(format)), writtenLines) << format;
}

TEST_F(TextOnScreens, anEmptyScreenHasNoText) {
    EXPECT_TRUE(linesOf(blank(1920, 1080)).isEmpty());
}

TEST_F(TextOnScreens, stripsOfOnePixelHaveNoText) {
    EXPECT_TRUE(linesOf(blank(3000, 1)).isEmpty());
    EXPECT_TRUE(linesOf(blank(1, 3000)).isEmpty());
}

TEST_F(TextOnScreens, aPictureLargerThanCanBeReadIsReadSmaller) {
    QImage huge = blank(40'000, 100);
    QPainter painter(&huge);
    QFont font(words("DejaVu Sans"));
    font.setPixelSize(60);
    painter.setFont(font);
    painter.drawText(100, 70, words("Hello there"));
    painter.end();
    EXPECT_EQ(linesOf(huge), QStringList{words("Hello there")});
}

// Codes.

QList<DetectedCode> codesIn(const CodeDetector::Result &result) {
    const auto *failure = std::get_if<CodeDetector::Failure>(&result);
    EXPECT_FALSE(failure) << qPrintable(failure->reason);
    return failure ? QList<DetectedCode>() : std::get<QList<DetectedCode>>(result);
}

struct DetectorUnderTest {
    const char *name;
    const char *plugin; ///< null for the fake
};

class CodeDetectorContract : public testing::TestWithParam<DetectorUnderTest> {
protected:
    CodeDetectorContract() {
        if (GetParam().plugin) {
            detector = std::make_unique<ProcessCodeDetector>(QCoreApplication::applicationDirPath(), GetParam().plugin);
        } else {
            auto fake = std::make_unique<FakeCodeDetector>();
            fake->setCodes({{words("hello"), {0.25, 0.25, 0.5, 0.5}}});
            detector = std::move(fake);
        }
    }
    std::unique_ptr<CodeDetector> detector;
};

TEST_P(CodeDetectorContract, aCodeIsFoundWithItsWords) {
    const auto codes = codesIn(detector->detect(code(words("hello"))));
    ASSERT_EQ(codes.size(), 1);
    EXPECT_EQ(codes.first().payload, words("hello"));
}

TEST_P(CodeDetectorContract, theBoxLiesWithinThePicture) {
    const auto codes = codesIn(detector->detect(code(words("hello"))));
    ASSERT_EQ(codes.size(), 1);
    const QRectF &box = codes.first().boundingBox;
    EXPECT_GE(box.x(), 0);
    EXPECT_GE(box.y(), 0);
    EXPECT_LE(box.x() + box.width(), 1);
    EXPECT_LE(box.y() + box.height(), 1);
    EXPECT_GT(box.width(), 0.4);
    EXPECT_GT(box.height(), 0.4);
}

TEST_P(CodeDetectorContract, aPictureOfOnePixelHasNoCode) {
    EXPECT_TRUE(codesIn(detector->detect(blank(1, 1))).isEmpty());
}

TEST_P(CodeDetectorContract, aPictureWithoutPixelsCannotBeLookedAt) {
    EXPECT_TRUE(std::holds_alternative<CodeDetector::Failure>(detector->detect(QImage())));
}

TEST_P(CodeDetectorContract, afterACancelNothingIsLookedAt) {
    detector->cancel();
    EXPECT_TRUE(std::holds_alternative<CodeDetector::Failure>(detector->detect(code(words("words")))));
}

INSTANTIATE_TEST_SUITE_P(All, CodeDetectorContract,
                         testing::Values(DetectorUnderTest{"Fake", nullptr},
                                         DetectorUnderTest{"ZBar", ProcessCodeDetector::screenPlugin},
                                         DetectorUnderTest{"ZXing", ProcessCodeDetector::picturePlugin}),
                         [](const auto &tested) { return tested.param.name; });

class CodesOnScreens : public testing::TestWithParam<const char *> {
protected:
    [[nodiscard]] QStringList payloads(const QImage &image) { return payloads(image, detector); }
    [[nodiscard]] static QStringList payloads(const QImage &image, ProcessCodeDetector &reader) {
        QStringList all;
        for (const DetectedCode &found : codesIn(reader.detect(image)))
            all.append(found.payload);
        return all;
    }
    ProcessCodeDetector detector{QCoreApplication::applicationDirPath(), GetParam()};
};

TEST_P(CodesOnScreens, theOriginIsAtTheBottomLeft) {
    QImage page = blank(400, 400);
    const QImage small = code(words("low left"));
    QPainter(&page).drawImage(0, 400 - small.height(), small);
    const auto codes = codesIn(detector.detect(page));
    ASSERT_EQ(codes.size(), 1);
    const QPointF centre = codes.first().boundingBox.center();
    EXPECT_NEAR(centre.x() * 400, small.width() / 2.0, 6);
    EXPECT_NEAR(centre.y() * 400, small.height() / 2.0, 6);
}

TEST_P(CodesOnScreens, wordsInOlderCharacterSetsAreRead) {
    const std::pair<QByteArray, QString> all[] = {{"Gr\xfc\xdf"
                                                   "e",
                                                   words("Grüße")},
                                                  {"\x93\xfa\x96\x7b\x8c\xea", words("日本語")}};
    for (const auto &[bytes, text] : all)
        EXPECT_EQ(payloads(codeOfBytes(bytes)), QStringList{text});
}

TEST_P(CodesOnScreens, equalCodesAtTwoPlacesAreTwo) {
    QImage page = blank(400, 200);
    QPainter painter(&page);
    painter.drawImage(20, 20, code(words("same")));
    painter.drawImage(220, 60, code(words("same")));
    painter.end();
    EXPECT_EQ(payloads(page), (QStringList{words("same"), words("same")}));
}

TEST_P(CodesOnScreens, anInvertedCodeIsFoundOnce) {
    QImage page = code(words("negative"));
    page.invertPixels();
    EXPECT_EQ(payloads(page), QStringList{words("negative")});
}

TEST_P(CodesOnScreens, aTransparentGroundIsNoObstacle) {
    QImage page = code(words("clear")).convertToFormat(QImage::Format_ARGB32);
    for (int y = 0; y < page.height(); ++y)
        for (int x = 0; x < page.width(); ++x)
            if (qGray(page.pixel(x, y)) > 128)
                page.setPixel(x, y, qRgba(0, 0, 0, 0));
    EXPECT_EQ(payloads(page), QStringList{words("clear")});
}

TEST_P(CodesOnScreens, wordsOfOtherScriptsArrive) {
    EXPECT_EQ(payloads(code(words("Grüße, 你好"))), QStringList{words("Grüße, 你好")});
}

TEST_P(CodesOnScreens, aPageWithoutCodesHasNone) {
    EXPECT_TRUE(payloads(blank(1920, 1080)).isEmpty());
    EXPECT_TRUE(payloads(writing(Qt::white, Qt::black)).isEmpty());
}

TEST_P(CodesOnScreens, aHugePictureIsLookedThrough) {
    QImage page = blank(9000, 7000);
    const QImage small = code(words("needle")).scaled(900, 900);
    QPainter(&page).drawImage(4000, 3000, small);
    // The program's own patience is for a machine that does nothing else.
    ProcessCodeDetector patient{QCoreApplication::applicationDirPath(), GetParam(), 2min};
    EXPECT_EQ(payloads(page, patient), QStringList{words("needle")});
}

INSTANTIATE_TEST_SUITE_P(Real, CodesOnScreens,
                         testing::Values(ProcessCodeDetector::screenPlugin, ProcessCodeDetector::picturePlugin),
                         [](const auto &tested) { return std::string(tested.param); });

} // namespace
} // namespace tavrine

#include "upload/Uploads.h"

#include "adapters/fake/FakePasteboard.h"
#include "upload/FakeWorker.h"
#include "upload/UploadFixture.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <gmock/gmock.h>

namespace tavrine::test {
namespace {

using namespace std::chrono_literals;
using AfterLink = UploadButton::AfterLink;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

const QString key = QStringLiteral("cloudUploadEnabled");
const QString scriptOfUploads = QStringLiteral("function uploadImage() {}");
const QString link = QStringLiteral("https://i.example/1");
constexpr auto succeeds = R"(cat > "$(dirname $0)/input"; echo '{"url":"https://i.example/1","logs":[]}')";
constexpr auto hangs = R"(echo $$ > "$(dirname $0)/pid"; exec sleep 600)";

class UploadsTest : public UploadFixture {
protected:
    void make(const char *workerLines = succeeds) {
        worker.emplace(workerLines);
        uploads =
            std::make_unique<Uploads>(Uploads::Ports{.time = time,
                                                     .defaults = defaults,
                                                     .center = center,
                                                     .keychain = keychain,
                                                     .pasteboard = pasteboard,
                                                     .workerPath = worker->path(),
                                                     .pngData = [](const QImage &image) -> std::optional<QByteArray> {
                                                         return QByteArray::number(image.width());
                                                     }});
        uploads->setShowToast([this](const QString &message, const QString &) { toasts.append(message); });
        QObject::connect(uploads.get(), &Uploads::isButtonShownChanged,
                         [this] { news.append(uploads->isButtonShown()); });
    }
    void makeEnabled(const char *workerLines = succeeds) {
        keychain.store(item, scriptOfUploads.toUtf8());
        defaults.set(key, true);
        make(workerLines);
        EXPECT_TRUE(happens([&] { return uploads->isButtonShown(); }));
    }
    [[nodiscard]] std::unique_ptr<UploadButton> makeButton() {
        return uploads->makeButton([this] { return QImage(width, 1, QImage::Format_RGB32); }, AfterLink::returnToIdle);
    }
    [[nodiscard]] QByteArray uploadedPicture() const {
        const QJsonObject record = QJsonDocument::fromJson(worker->contents("input")).object();
        return QByteArray::fromBase64(record.value(QStringLiteral("imageBase64")).toString().toLatin1());
    }

    FakePasteboard pasteboard;
    std::optional<FakeWorker> worker;
    std::unique_ptr<Uploads> uploads;
    QStringList toasts;
    QList<bool> news;
    int width = 7;
};

TEST_F(UploadsTest, whileTheSwitchIsOffNobodyAsksTheKeyRing) {
    keychain.store(item, scriptOfUploads.toUtf8());
    make();
    const auto button = makeButton();
    EXPECT_FALSE(uploads->isButtonShown());
    EXPECT_FALSE(button->isShown());
    button->press();
    defaults.set(QStringLiteral("anotherKey"), true);
    time.advance(1min);
    EXPECT_THAT(keychain.calls(), IsEmpty());
}

TEST_F(UploadsTest, theFirstQuestionHasTheScriptReadAndTheButtonComesWithIt) {
    keychain.store(item, scriptOfUploads.toUtf8());
    defaults.set(key, true);
    make();
    time.runPending();
    EXPECT_THAT(keychain.calls(), IsEmpty()); // nobody has asked
    EXPECT_FALSE(uploads->isButtonShown());
    ASSERT_TRUE(happens([&] { return !news.isEmpty(); }));
    EXPECT_THAT(news, ElementsAre(true));
    EXPECT_THAT(keychain.calls(), ElementsAre(QStringLiteral("read")));
}

TEST_F(UploadsTest, aButtonThatWasMadeBeforeTheSwitchWasTurnedOnFollowsIt) {
    keychain.store(item, scriptOfUploads.toUtf8());
    make();
    const auto button = makeButton();
    int changes = 0;
    QObject::connect(button.get(), &UploadButton::changed, [&changes] { ++changes; });
    uploads->manager().setEnabled(true);
    ASSERT_TRUE(happens([&] { return changes > 0; }));
    EXPECT_TRUE(button->isShown());
    uploads->manager().setEnabled(false);
    EXPECT_FALSE(button->isShown());
    EXPECT_EQ(changes, 2);
}

TEST_F(UploadsTest, aSwitchThatIsTurnedFromOutsideIsFollowedBothWays) {
    keychain.store(item, scriptOfUploads.toUtf8());
    make();
    defaults.set(key, true);
    ASSERT_TRUE(happens([&] { return uploads->isButtonShown(); }));
    defaults.set(key, false);
    EXPECT_FALSE(uploads->isButtonShown());
    EXPECT_FALSE(uploads->manager().isEnabled());
    EXPECT_THAT(news, ElementsAre(true, false));
    EXPECT_EQ(uploads->manager().savedScript(), scriptOfUploads);
}

TEST_F(UploadsTest, aSavedScriptBringsTheButtonAndARemovedOneTakesIt) {
    defaults.set(key, true);
    make();
    EXPECT_FALSE(uploads->isButtonShown());
    uploads->manager().setScript(scriptOfUploads);
    uploads->manager().setScript(scriptOfUploads + scriptOfUploads); // no news: it is there
    uploads->manager().setScript(QStringLiteral(" \n"));
    EXPECT_THAT(news, ElementsAre(true, false));
}

TEST_F(UploadsTest, aPressUploadsThePictureAsItIsThen) {
    makeEnabled();
    const auto button = makeButton();
    width = 8;
    button->press();
    width = 9;
    ASSERT_TRUE(happens([&] { return !toasts.isEmpty(); }));
    EXPECT_EQ(uploadedPicture(), "8");
    EXPECT_EQ(pasteboard.string(), link);
    EXPECT_EQ(button->state(), UploadButtonState::done);
}

TEST_F(UploadsTest, twoButtonsDoNotWaitForEachOther) {
    makeEnabled(hangs);
    const auto first = makeButton();
    const auto second = makeButton();
    first->press();
    second->press();
    EXPECT_TRUE(happens([&] {
        return first->state() == UploadButtonState::uploading && second->state() == UploadButtonState::uploading;
    }));
}

TEST_F(UploadsTest, theSettingsPagesRunnerRunsWhatItIsGiven) {
    make();
    std::optional<UploadScriptRunResult> result;
    uploads->runner()(QStringLiteral("draft"), QStringLiteral("AA=="), uploads->uploadFileName(), Seconds(30),
                      [&](const UploadScriptRunResult &found) { result = found; });
    EXPECT_FALSE(result);
    ASSERT_TRUE(happens([&] { return result.has_value(); }));
    EXPECT_EQ(result->url, link);
    const QJsonObject record = QJsonDocument::fromJson(worker->contents("input")).object();
    EXPECT_EQ(record.value(QStringLiteral("script")).toString(), QStringLiteral("draft"));
    EXPECT_EQ(record.value(QStringLiteral("fileName")).toString(), QStringLiteral("screenshot-20260131-120000.png"));
}

TEST_F(UploadsTest, aRunEndsAtTheLimitThatItWasGiven) {
    make(hangs);
    std::vector<UploadScriptRunResult> results;
    uploads->runner()(QStringLiteral("draft"), QStringLiteral("AA=="), uploads->uploadFileName(), Seconds(0.3),
                      [&](const UploadScriptRunResult &found) { results.push_back(found); });
    ASSERT_TRUE(happens([&] { return !results.empty(); }));
    EXPECT_THAT(results, ElementsAre(UploadScriptRunResult{.error = UploadScriptError::timeout(0.3)}));
}

TEST_F(UploadsTest, theEndDoesNotWaitForARunAndWhatOutlivesItDoesNothing) {
    makeEnabled(hangs);
    const auto button = makeButton();
    const UploadRunner runner = uploads->runner();
    button->press();
    ASSERT_TRUE(happens([&] { return !worker->contents("pid").isEmpty(); }));
    const auto start = std::chrono::steady_clock::now();
    uploads.reset();
    EXPECT_LT(std::chrono::steady_clock::now() - start, 10s);
    EXPECT_FALSE(button->isShown());
    button->press();
    runner(scriptOfUploads, QString(), QString(), Seconds(30), [](const auto &) { ADD_FAILURE(); });
    time.advance(1min);
}

} // namespace
} // namespace tavrine::test

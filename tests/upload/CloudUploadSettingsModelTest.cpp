#include "upload/CloudUploadSettingsModel.h"

#include "adapters/fake/FakeScriptSyntax.h"
#include "adapters/fake/FakeUrlOpener.h"
#include "upload/UploadFixture.h"

#include <QSignalSpy>

namespace tavrine::test {
namespace {

using namespace std::chrono_literals;

const QString defaultScript = QStringLiteral("function uploadImage() { throw 1; } // the default");
const QString imgbbTemplate = QStringLiteral("function uploadImage() { return imgbb; }");
const QString stored = QStringLiteral("function uploadImage() { return 'stored'; }");
const QString typed = QStringLiteral("function uploadImage() { return 'typed'; }");
const QString missing = QStringLiteral("Your script must define a function named uploadImage(imageBase64, fileName).");

class SettingsPage : public UploadFixture {
protected:
    FakeScriptSyntax syntax;
    FakeUrlOpener urls;
    std::unique_ptr<CloudUploadSettingsModel> model;

    CloudUploadSettingsModel &makeModel() {
        if (!manager)
            makeManager();
        model = std::make_unique<CloudUploadSettingsModel>(
            CloudUploadSettingsModel::Ports{.uploadManager = *manager,
                                            .time = time,
                                            .urlOpener = urls,
                                            .syntax = [this] { return &syntax; },
                                            .run = runner(),
                                            .uploadFileName = [] { return QStringLiteral("name.png"); }},
            CloudUploadSettingsModel::Texts{defaultScript, imgbbTemplate});
        model->appear();
        return *model;
    }
    /// A page that was opened before the key ring answers, and the answer.
    void openTooEarly() {
        keychain.store(item, stored.toUtf8());
        keychain.hold();
        makeModel();
    }
    void answer() {
        keychain.release();
        ASSERT_TRUE(happens([&] { return manager->savedScript() == stored; }));
    }
};

TEST_F(SettingsPage, showsTheStoredScript) {
    makeManagerWith(stored);
    EXPECT_EQ(makeModel().draftScript(), stored);
}

TEST_F(SettingsPage, showsTheDefaultScriptWhileNothingIsStored) {
    EXPECT_EQ(makeModel().draftScript(), defaultScript);
}

TEST_F(SettingsPage, openedBeforeTheKeyRingAnswersShowsTheStoredScriptAsSoonAsItArrives) {
    openTooEarly();
    EXPECT_EQ(model->draftScript(), defaultScript);
    QSignalSpy replaced(model.get(), &CloudUploadSettingsModel::draftReplaced);
    answer();
    EXPECT_EQ(model->draftScript(), stored);
    EXPECT_EQ(replaced.count(), 1);
}

TEST_F(SettingsPage, whatWasTypedIsNotOverwrittenByTheStoredScript) {
    openTooEarly();
    model->setDraftScript(typed);
    answer();
    EXPECT_EQ(model->draftScript(), typed);
}

TEST_F(SettingsPage, aDraftThatWasClearedTakesTheStoredScript) {
    openTooEarly();
    model->setDraftScript(QString());
    answer();
    EXPECT_EQ(model->draftScript(), stored);
}

TEST_F(SettingsPage, aDraftOfOneSpaceIsAnEdit) {
    openTooEarly();
    model->setDraftScript(QStringLiteral(" "));
    answer();
    EXPECT_EQ(model->draftScript(), QStringLiteral(" "));
}

TEST_F(SettingsPage, aTemplateThatWasChosenIsNotOverwritten) {
    openTooEarly();
    model->useImgbbTemplate();
    answer();
    EXPECT_EQ(model->draftScript(), imgbbTemplate);
}

TEST_F(SettingsPage, aClearedDraftTakesTheDefaultScriptWhenTheStoredOneGoes) {
    makeManagerWith(stored);
    makeModel().setDraftScript(QString());
    manager->setScript(QString());
    EXPECT_EQ(model->draftScript(), defaultScript);
}

TEST_F(SettingsPage, theSwitchAloneLeavesAClearedDraftCleared) {
    makeManagerWith(stored);
    makeModel().setDraftScript(QString());
    model->setEnabled(false);
    EXPECT_FALSE(manager->isEnabled());
    EXPECT_FALSE(model->isEnabled());
    EXPECT_EQ(model->draftScript(), QString());
}

TEST_F(SettingsPage, asksAKeyRingAgainThatCouldNotBeAsked) {
    keychain.store(item, stored.toUtf8());
    keychain.failNext();
    QSignalSpy changed(&makeManager(), &CustomUploadManager::changed);
    ASSERT_TRUE(happens([&] { return changed.count() == 1; }));
    EXPECT_EQ(makeModel().draftScript(), defaultScript);
    EXPECT_TRUE(happens([&] { return model->draftScript() == stored; }));
}

TEST_F(SettingsPage, theTemplateReplacesTheDraftAndClearsTheError) {
    makeModel();
    syntax.setError(QStringLiteral("SyntaxError: no"), 3);
    model->save();
    ASSERT_TRUE(model->syntaxError());
    model->useImgbbTemplate();
    EXPECT_EQ(model->draftScript(), imgbbTemplate);
    EXPECT_FALSE(model->syntaxError());
    EXPECT_FALSE(model->syntaxErrorLine());
    EXPECT_TRUE(manager->savedScript().isEmpty()); // nothing is stored by it
}

TEST_F(SettingsPage, savingStoresTheDraftAndConfirmsIt) {
    makeModel().setDraftScript(typed);
    EXPECT_TRUE(manager->savedScript().isEmpty()); // not on typing
    model->save();
    EXPECT_EQ(syntax.checked(), QStringList{typed});
    EXPECT_EQ(manager->savedScript(), typed);
    EXPECT_TRUE(model->saveConfirmation());
    EXPECT_TRUE(happens([&] { return keychain.stored(item) == typed.toUtf8(); }));
}

TEST_F(SettingsPage, theConfirmationGoesAfterOnePointSixSeconds) {
    makeModel().setDraftScript(typed);
    model->save();
    time.advance(1599ms);
    EXPECT_TRUE(model->saveConfirmation());
    time.advance(1ms);
    EXPECT_FALSE(model->saveConfirmation());
}

TEST_F(SettingsPage, aScriptWithASyntaxErrorStoresNothing) {
    makeManagerWith(stored);
    makeModel().setDraftScript(QStringLiteral("function uploadImage( {"));
    syntax.setError(QStringLiteral("SyntaxError: Unexpected token '{'"), 1);
    model->save();
    EXPECT_EQ(model->syntaxError(), QStringLiteral("SyntaxError: Unexpected token '{'"));
    EXPECT_EQ(model->syntaxErrorLine(), 1);
    EXPECT_FALSE(model->saveConfirmation());
    EXPECT_EQ(manager->savedScript(), stored);
    manager.reset();
    EXPECT_EQ(keychain.calls(), QStringList{QStringLiteral("read")});
}

TEST_F(SettingsPage, theSyntaxIsToldBeforeTheMissingName) {
    makeModel().setDraftScript(QStringLiteral("let ("));
    syntax.setError(QStringLiteral("SyntaxError"));
    model->save();
    EXPECT_EQ(model->syntaxError(), QStringLiteral("SyntaxError"));
}

TEST_F(SettingsPage, aScriptWithoutTheNameStoresNothing) {
    makeModel();
    for (const QString &text : {QStringLiteral("let a = 1;"), QStringLiteral("function uploadimage() {}"), QString()}) {
        model->setDraftScript(text);
        model->save();
        EXPECT_EQ(model->syntaxError(), missing);
        EXPECT_FALSE(model->saveConfirmation());
    }
    EXPECT_TRUE(manager->savedScript().isEmpty());
}

TEST_F(SettingsPage, aCommentHoldingTheNamePassesAndTheWorkerTells) {
    const QString comment = QStringLiteral("// uploadImage");
    makeModel().setDraftScript(comment);
    model->save();
    EXPECT_EQ(manager->savedScript(), comment);
    EXPECT_FALSE(model->syntaxError());
    model->testScript();
    runs.back().completion({.error = UploadScriptError::missingFunction()});
    EXPECT_EQ(model->testError(), UploadScriptError::missingFunction());
}

TEST_F(SettingsPage, aSaveThatPassesClearsTheErrorBefore) {
    makeModel().setDraftScript(typed);
    syntax.setError(QStringLiteral("SyntaxError"));
    model->save();
    syntax.setError(std::nullopt);
    model->save();
    EXPECT_FALSE(model->syntaxError());
    EXPECT_EQ(manager->savedScript(), typed);
}

TEST_F(SettingsPage, everyCheckHasAContextOfItsOwn) {
    makeModel().setDraftScript(typed);
    model->save();
    model->testScript();
    EXPECT_EQ(syntax.contextCount(), 2);
}

TEST_F(SettingsPage, withoutAnEngineNeitherSavesNorTests) {
    makeModel().setDraftScript(typed);
    syntax.setBroken(true);
    model->save();
    EXPECT_EQ(model->syntaxError(), QStringLiteral("Could not create a JavaScript engine."));
    model->useImgbbTemplate();
    model->testScript();
    EXPECT_EQ(model->syntaxError(), QStringLiteral("Could not create a JavaScript engine."));
    EXPECT_FALSE(model->isTesting());
    EXPECT_TRUE(runs.empty());
    EXPECT_TRUE(manager->savedScript().isEmpty());
}

TEST_F(SettingsPage, typingKeepsTheErrorsWordsButNotItsLine) {
    makeModel().setDraftScript(typed);
    syntax.setError(QStringLiteral("SyntaxError"), 4);
    model->save();
    model->setDraftScript(typed + QLatin1Char('\n'));
    EXPECT_TRUE(model->syntaxError());
    EXPECT_FALSE(model->syntaxErrorLine());
}

TEST_F(SettingsPage, aTestRunsTheDraftOnOnePixel) {
    makeManagerWith(stored);
    makeModel().setDraftScript(typed);
    model->testScript();
    ASSERT_EQ(runs.size(), 1U);
    EXPECT_EQ(runs[0].script, typed);
    EXPECT_EQ(runs[0].imageBase64, QStringLiteral("iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAQAAAC1HAwCAAAAC0lEQVR42mNk+A8AAQUB"
                                                  "AScY42YAAAAASUVORK5CYII="));
    EXPECT_EQ(runs[0].imageBase64.size(), 92);
    EXPECT_EQ(runs[0].fileName, QStringLiteral("name.png"));
    EXPECT_EQ(runs[0].timeout, Seconds(30.0));
    EXPECT_TRUE(model->isTesting());
    EXPECT_EQ(manager->savedScript(), stored); // a test stores nothing
}

TEST_F(SettingsPage, aTestNeedsNoFunctionName) {
    makeModel().setDraftScript(QStringLiteral("let a = 1;"));
    model->testScript();
    EXPECT_EQ(runs.size(), 1U);
    EXPECT_FALSE(model->syntaxError());
}

TEST_F(SettingsPage, aSyntaxErrorStopsTheTestAndKeepsTheLastOutcome) {
    makeModel().testScript();
    runs[0].completion({.url = QStringLiteral("https://a.b/c")});
    syntax.setError(QStringLiteral("SyntaxError"), 2);
    model->testScript();
    EXPECT_EQ(runs.size(), 1U);
    EXPECT_EQ(model->syntaxError(), QStringLiteral("SyntaxError"));
    EXPECT_EQ(model->syntaxErrorLine(), 2);
    EXPECT_FALSE(model->isTesting());
    EXPECT_TRUE(model->testResultURL());
}

TEST_F(SettingsPage, aSecondTestDuringATestDoesNothing) {
    makeModel().testScript();
    model->testScript();
    EXPECT_EQ(runs.size(), 1U);
}

TEST_F(SettingsPage, anOutcomeIsShownAndForgottenByTheNextTest) {
    makeModel().testScript();
    EXPECT_FALSE(model->hasTestResult());
    runs[0].completion(
        {.url = QStringLiteral("https://a.b/c"), .logs = {QStringLiteral("one"), QStringLiteral("two")}});
    EXPECT_FALSE(model->isTesting());
    EXPECT_TRUE(model->hasTestResult());
    EXPECT_EQ(model->testOutput(), QStringList({QStringLiteral("one"), QStringLiteral("two")}));
    EXPECT_EQ(model->testResultURL(), QStringLiteral("https://a.b/c"));
    EXPECT_FALSE(model->testError());
    model->testScript();
    EXPECT_TRUE(model->isTesting());
    EXPECT_FALSE(model->hasTestResult());
    EXPECT_TRUE(model->testOutput().isEmpty());
    EXPECT_FALSE(model->testResultURL());
    runs[1].completion({.logs = {QStringLiteral("three")}, .error = UploadScriptError::timeout(30)});
    EXPECT_EQ(model->testOutput(), QStringList{QStringLiteral("three")});
    EXPECT_EQ(model->testError(), UploadScriptError::timeout(30));
    model->testScript();
    EXPECT_FALSE(model->testError());
}

TEST_F(SettingsPage, anOutcomeAfterThePageIsDropped) {
    makeModel().testScript();
    model.reset();
    runs[0].completion({.url = QStringLiteral("https://a.b/c")});
}

TEST_F(SettingsPage, onlyAWebAddressIsOpened) {
    makeModel().openResult();
    for (const char *link : {"https://a.b/c", "http://a.b", "file:///etc/passwd", "javascript:alert(1)", "nonsense",
                             "https://", "https://[broken"}) {
        model->testScript();
        runs.back().completion({.url = QString::fromLatin1(link)});
        model->openResult();
    }
    EXPECT_EQ(urls.opened(), QList<QUrl>({QUrl(QStringLiteral("https://a.b/c")), QUrl(QStringLiteral("http://a.b"))}));
}

TEST_F(SettingsPage, theDocumentationIsAPageThatComesWithTheProgram) {
    makeModel().openDocs();
    ASSERT_EQ(urls.opened().size(), 1);
    EXPECT_TRUE(urls.opened()[0].path().endsWith(QStringLiteral("/pages/upload-scripts.html")));
}

} // namespace
} // namespace tavrine::test

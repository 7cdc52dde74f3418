#include "upload/UploadScriptResult.h"

#include <gtest/gtest.h>

namespace tavrine {
namespace {

using Error = UploadScriptError;

QString told(const QString &thrown) {
    return userMessage(Error::runtimeError(thrown));
}

TEST(UploadScriptError, aSyntaxErrorIsToldWithoutTheEnginesWords) {
    EXPECT_EQ(userMessage(Error::syntaxError(QStringLiteral("SyntaxError: Unexpected token"))),
              QStringLiteral("Your script has a syntax error."));
}

TEST(UploadScriptError, aRuntimeErrorIsToldInTheScriptsWords) {
    EXPECT_EQ(told(QStringLiteral("Network down")), QStringLiteral("Your script threw an error: Network down"));
    EXPECT_EQ(told(QString()), QStringLiteral("Your script threw an error: "));
}

TEST(UploadScriptError, theWordErrorIsNotToldTwice) {
    EXPECT_EQ(told(QStringLiteral("Error: boom")), QStringLiteral("Your script threw an error: boom"));
    EXPECT_EQ(told(QStringLiteral("ERROR:boom")), QStringLiteral("Your script threw an error: boom"));
    EXPECT_EQ(told(QStringLiteral("error:")), QStringLiteral("Your script threw an error: "));
    EXPECT_EQ(told(QStringLiteral("Error: error: boom")), QStringLiteral("Your script threw an error: error: boom"));
}

TEST(UploadScriptError, onlyAMessageThatBeginsWithTheWordLosesIt) {
    EXPECT_EQ(told(QStringLiteral("TypeError: boom")), QStringLiteral("Your script threw an error: TypeError: boom"));
    EXPECT_EQ(told(QStringLiteral(" Error: boom")), QStringLiteral("Your script threw an error:  Error: boom"));
    EXPECT_EQ(told(QStringLiteral("Error boom")), QStringLiteral("Your script threw an error: Error boom"));
    EXPECT_EQ(told(QStringLiteral("erro")), QStringLiteral("Your script threw an error: erro"));
}

TEST(UploadScriptError, onlySpacesAreTrimmedAndOnlyBehindTheWord) {
    EXPECT_EQ(told(QStringLiteral("Error: \t boom \t")), QStringLiteral("Your script threw an error: boom"));
    EXPECT_EQ(told(QStringLiteral("Error: boom\n")), QStringLiteral("Your script threw an error: boom\n"));
    EXPECT_EQ(told(QStringLiteral("boom ")), QStringLiteral("Your script threw an error: boom "));
    EXPECT_EQ(told(QStringLiteral("Error:   ")), QStringLiteral("Your script threw an error: "));
}

TEST(UploadScriptError, aTimeOutIsToldInWholeSeconds) {
    EXPECT_EQ(userMessage(Error::timeout(30.0)), QStringLiteral("Script execution timed out after 30 seconds."));
    EXPECT_EQ(userMessage(Error::timeout(1000000.0)),
              QStringLiteral("Script execution timed out after 1000000 seconds."));
}

TEST(UploadScriptError, theScriptsContractIsToldWhenItIsBroken) {
    EXPECT_EQ(userMessage(Error::missingFunction()),
              QStringLiteral("Your script must define a function named uploadImage(imageBase64, fileName)."));
    EXPECT_EQ(userMessage(Error::invalidReturnValue()),
              QStringLiteral("uploadImage() must return a URL string, or a Promise that resolves to one."));
}

TEST(UploadScriptError, errorsAreEqualWithTheSameCaseAndTheSamePayload) {
    EXPECT_EQ(Error::timeout(30), Error::timeout(30));
    EXPECT_NE(Error::timeout(30), Error::timeout(31));
    EXPECT_NE(Error::syntaxError(QStringLiteral("a")), Error::runtimeError(QStringLiteral("a")));
    EXPECT_NE(Error::runtimeError(QStringLiteral("a")), Error::runtimeError(QStringLiteral("b")));
    EXPECT_NE(Error::missingFunction(), Error::invalidReturnValue());
}

} // namespace
} // namespace tavrine

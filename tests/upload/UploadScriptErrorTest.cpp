#include "upload/UploadScriptError.h"

#include <gtest/gtest.h>

namespace tavrine {
namespace {

QString messageOf(const char *payload) {
    return userMessage(UploadScriptError::runtimeError(QString::fromUtf8(payload)));
}
QString told(const char *text) {
    return QStringLiteral("Your script threw an error: ") + QString::fromUtf8(text);
}

TEST(UploadScriptError, eachKindHasItsMessage) {
    EXPECT_EQ(userMessage(UploadScriptError::syntaxError(QStringLiteral("SyntaxError: x"))),
              QStringLiteral("Your script has a syntax error."));
    EXPECT_EQ(userMessage(UploadScriptError::missingFunction()),
              QStringLiteral("Your script must define a function named uploadImage(imageBase64, fileName)."));
    EXPECT_EQ(userMessage(UploadScriptError::invalidReturnValue()),
              QStringLiteral("uploadImage() must return a URL string, or a Promise that resolves to one."));
}

TEST(UploadScriptError, aTimeOutNamesWholeSeconds) {
    EXPECT_EQ(userMessage(UploadScriptError::timeout(30.0)),
              QStringLiteral("Script execution timed out after 30 seconds."));
    EXPECT_EQ(userMessage(UploadScriptError::timeout(0.9)),
              QStringLiteral("Script execution timed out after 0 seconds."));
}

TEST(UploadScriptError, anErrorPrefixIsDroppedInAnyCase) {
    EXPECT_EQ(messageOf("Error: boom"), told("boom"));
    EXPECT_EQ(messageOf("ERROR:boom"), told("boom"));
    EXPECT_EQ(messageOf("error:   boom  "), told("boom"));
    EXPECT_EQ(messageOf("error:"), told(""));
}

TEST(UploadScriptError, aMessageWithoutThatPrefixStaysWhole) {
    EXPECT_EQ(messageOf("TypeError: boom"), told("TypeError: boom"));
    EXPECT_EQ(messageOf(" Error: boom "), told(" Error: boom "));
    EXPECT_EQ(messageOf("Error boom"), told("Error boom"));
    EXPECT_EQ(messageOf("The upload worker exited without a result."),
              told("The upload worker exited without a result."));
}

TEST(UploadScriptError, errorsAreComparedWithTheirPayload) {
    EXPECT_EQ(UploadScriptError::timeout(30), UploadScriptError::timeout(30));
    EXPECT_NE(UploadScriptError::timeout(30), UploadScriptError::timeout(31));
    EXPECT_NE(UploadScriptError::syntaxError(QStringLiteral("a")),
              UploadScriptError::runtimeError(QStringLiteral("a")));
    EXPECT_NE(UploadScriptError::runtimeError(QStringLiteral("a")),
              UploadScriptError::runtimeError(QStringLiteral("b")));
}

} // namespace
} // namespace tavrine

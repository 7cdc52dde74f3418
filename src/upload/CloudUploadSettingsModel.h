#pragma once

#include "base/Date.h"
#include "upload/UploadRunner.h"

#include <QObject>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <optional>

namespace tavrine {

class CustomUploadManager;
class ScriptContext;
class ScriptSyntax;
class Time;
class UrlOpener;

/// The page on which the upload script is edited, checked, saved and tried out: all of it but the drawing. Belongs to
/// its view; main thread.
///
///  1. What the person has typed is never overwritten by what arrives from the key ring.
///  2. Nothing is stored but by `save`, and only a script that can be parsed.
class CloudUploadSettingsModel final : public QObject {
    Q_OBJECT

public:
    static constexpr Seconds confirmationTime{1.6};
    /// A picture of one by one points: what a test uploads.
    static constexpr auto probe =
        "iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAQAAAC1HAwCAAAAC0lEQVR42mNk+A8AAQUBAScY42YAAAAASUVORK5CYII=";

    struct Texts {
        QString defaultScript;
        QString imgbbTemplate;
    };
    /// All outlive the model.
    struct Ports {
        CustomUploadManager &uploadManager;
        Time &time;
        UrlOpener &urlOpener;
        std::function<ScriptSyntax *()> syntax; ///< null where there is no engine; asked at each check
        UploadRunner run;
        std::function<QString()> uploadFileName;
        QString resources = {}; ///< the folder of what came with the program
    };

    CloudUploadSettingsModel(Ports ports, Texts texts, QObject *parent = nullptr);
    ~CloudUploadSettingsModel() override;

    [[nodiscard]] bool isEnabled() const;
    [[nodiscard]] const QString &draftScript() const { return m_draftScript; }
    /// Whether something would be lost with the page.
    [[nodiscard]] bool isUnsaved() const;
    [[nodiscard]] const std::optional<QString> &syntaxError() const { return m_syntaxError; }
    /// The line of the syntax error, from 1; none when it has none, or when the draft is another since.
    [[nodiscard]] std::optional<int> syntaxErrorLine() const { return m_syntaxErrorLine; }
    [[nodiscard]] bool saveConfirmation() const { return m_saveConfirmation; }
    [[nodiscard]] bool isTesting() const { return m_isTesting; }
    /// Whether there is an outcome of a test to show.
    [[nodiscard]] bool hasTestResult() const { return m_hasTestResult; }
    [[nodiscard]] const QStringList &testOutput() const { return m_testOutput; }
    [[nodiscard]] const std::optional<QString> &testResultURL() const { return m_testResultURL; }
    [[nodiscard]] const std::optional<UploadScriptError> &testError() const { return m_testError; }

    /// The page comes into sight.
    void appear();
    void setEnabled(bool isEnabled);
    /// The person types.
    void setDraftScript(const QString &script);
    void useImgbbTemplate();
    /// False when the script cannot be saved, which the syntax error tells.
    bool save();
    void testScript();
    void openDocs();
    void openResult();

Q_SIGNALS:
    void changed();
    /// The draft is another, and not because the person typed.
    void draftReplaced();

private:
    /// Tells the syntax error when there is one.
    [[nodiscard]] bool passesSyntaxCheck();
    void fail(const QString &syntaxError, std::optional<int> line = std::nullopt);
    void takeSavedScript();
    void replaceDraft(const QString &script);
    void finishTest(const UploadScriptRunResult &result);

    Ports m_ports;
    Texts m_texts;
    QString m_seenScript;
    QString m_draftScript;
    std::optional<QString> m_syntaxError;
    std::optional<int> m_syntaxErrorLine;
    bool m_saveConfirmation = false;
    bool m_isTesting = false;
    bool m_hasTestResult = false;
    QStringList m_testOutput;
    std::optional<QString> m_testResultURL;
    std::optional<UploadScriptError> m_testError;
};

} // namespace tavrine

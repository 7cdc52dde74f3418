// Shows the page of the upload script to people, as pictures in a folder, and how fast its editor is:
// upload_pictures FOLDER.
#include "adapters/fake/FakeAppearance.h"
#include "adapters/fake/FakeKeychain.h"
#include "adapters/fake/FakeScriptSyntax.h"
#include "adapters/fake/FakeUrlOpener.h"
#include "adapters/fake/VirtualTime.h"
#include "base/NotificationCenter.h"
#include "base/UserDefaults.h"
#include "look/Button.h"
#include "look/Look.h"
#include "upload/CloudUploadSettingsView.h"
#include "upload/CustomUploadManager.h"
#include "upload/ScriptEditorView.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTest>
#include <QTextBlock>

#include <cstdio>

using namespace tavrine;

namespace {

const char *const sample = R"js(// Write your own upload logic here, using your own API keys/credentials.
/* Several
   lines of a comment */
async function uploadImage(imageBase64, fileName) {
  const url = `https://example.org/${encodeURIComponent(fileName)}?at=${Date.now() / 1000}`;
  const clean = imageBase64.replace(/^data:image\/\w+;base64,/g, "");
  if (clean.length > 0x1000 && !url.includes('"')) {
    console.log("a long picture", clean.length, null, true);
  }
  return new Promise((resolve, reject) => {
    nativeHTTPRequest(url, "POST", { "Content-Type": "application/json" }, clean,
      function (error, statusCode, responseBody) {
        if (error) { reject("Network error: " + error); return; }
        resolve(JSON.parse(responseBody).url);
      });
  });
}
)js";

class Pictures {
public:
    explicit Pictures(const QString &folder) : m_folder(folder) {}

    void take(bool isDark) {
        m_suffix = isDark ? QStringLiteral("-dark.png") : QStringLiteral("-light.png");
        FakeAppearance appearance;
        appearance.set({.colorScheme = isDark ? ColorScheme::dark : ColorScheme::light});
        look::Look look(m_time, &appearance);
        CustomUploadManager manager({m_defaults, m_keychain, m_time});
        manager.setEnabled(false);
        const UploadRunner run = [this](const auto &, const auto &, const auto &, Seconds, const auto &completion) {
            m_completion = completion;
        };
        CloudUploadSettingsView view(
            {manager, m_time, m_urls, [this] { return &m_syntax; }, run, [] { return QString(); }},
            {QString::fromUtf8(sample), QStringLiteral("function uploadImage() {}")});
        view.resize(700, 600);
        view.show();
        static_cast<void>(QTest::qWaitForWindowActive(&view, 500));
        save(view, "disabled");
        manager.setEnabled(true);
        save(view, "editing-at-rest");
        auto *editor = view.findChild<ScriptEditorView *>();
        editor->setFocus();
        QTextCursor cursor = editor->textCursor();
        cursor.setPosition(int(editor->toPlainText().indexOf(QLatin1String("{\n  const"))));
        editor->setTextCursor(cursor);
        save(view, "editing");
        m_syntax.setError(
            QStringLiteral("SyntaxError: Unexpected token '}'. Expected a closing ')' after an argument list."), 9);
        click(view, QStringLiteral("Save"));
        save(view, "syntax-error");
        m_syntax.setError(std::nullopt);
        click(view, QStringLiteral("Save"));
        save(view, "saved");
        m_time.advance(std::chrono::seconds(2));
        click(view, QStringLiteral("Test Script"));
        save(view, "testing");
        m_completion({.url = QStringLiteral("https://i.example.org/2026/01/screenshot-20260131-120000.png"),
                      .logs = {QStringLiteral("uploading 68 bytes"), QStringLiteral("status 200")}});
        view.resize(700, 760);
        save(view, "success");
        click(view, QStringLiteral("Test Script"));
        m_completion({.logs = {QStringLiteral("uploading 68 bytes"), QStringLiteral("status 403")},
                      .error = UploadScriptError::runtimeError(QStringLiteral("Error: Upload failed: HTTP 403"))});
        save(view, "failure");
        click(view, QStringLiteral("Test Script"));
        QStringList logs;
        for (int i = 0; i < 5000; ++i)
            logs << QStringLiteral("line %1: ").arg(i) + QString(i % 7 == 0 ? 300 : 12, QLatin1Char('x'));
        m_completion({.logs = logs, .error = UploadScriptError::timeout(30)});
        save(view, "long-logs");
        view.resize(520, 520);
        save(view, "small");
    }

    void measure() {
        look::Look look(m_time);
        QString text;
        while (text.count(QLatin1Char('\n')) < 10'000)
            text += QString::fromUtf8(sample);
        ScriptEditorView editor;
        editor.resize(640, 300);
        editor.show();
        QElapsedTimer timer;
        timer.start();
        editor.replaceText(text);
        editor.grab();
        printf("%d lines: opened in %.1f ms\n", editor.blockCount(), double(timer.nsecsElapsed()) / 1e6);
        for (const int place : {0, 5000, 9990}) {
            QTextCursor cursor(editor.document()->findBlockByNumber(place));
            editor.setTextCursor(cursor);
            double worst = 0;
            for (const char key : {'a', '{', '`', '`', '}', '/', '*'}) {
                timer.restart();
                QTest::keyClick(&editor, key);
                static_cast<void>(editor.script());
                editor.grab();
                worst = std::max(worst, double(timer.nsecsElapsed()) / 1e6);
            }
            printf("line %d: worst key to repaint %.1f ms\n", place, worst);
        }
    }

private:
    void save(QWidget &view, const char *name) {
        m_time.advance(std::chrono::milliseconds(300));
        for (int i = 0; i < 5; ++i)
            QCoreApplication::processEvents();
        m_time.advance(std::chrono::milliseconds(500));
        view.grab().save(m_folder + QLatin1Char('/') + QLatin1String(name) + m_suffix);
    }
    static void click(QWidget &view, const QString &text) {
        for (auto *button : view.findChildren<look::Button *>()) {
            if (button->text() == text)
                button->click();
        }
    }

    QString m_folder;
    QString m_suffix;
    QTemporaryDir m_home;
    VirtualTime m_time;
    NotificationCenter m_center;
    UserDefaults m_defaults{m_home.filePath(QStringLiteral("d.plist")), m_time, m_center};
    FakeKeychain m_keychain;
    FakeScriptSyntax m_syntax;
    FakeUrlOpener m_urls;
    std::function<void(const UploadScriptRunResult &)> m_completion;
};

} // namespace

int main(int argc, char **argv) {
    QApplication application(argc, argv);
    Pictures pictures(application.arguments().value(1));
    pictures.take(false);
    pictures.take(true);
    pictures.measure();
}

#pragma once

#include "adapters/fake/FakePasteboard.h"
#include "adapters/fake/VirtualTime.h"
#include "base/SerialQueue.h"
#include "upload/UploadButton.h"

#include <utility>
#include <vector>

namespace tavrine::test {

/// Upload buttons whose store and engine are played by the test.
struct PlayedUpload {
    struct Run {
        QString script;
        QString imageBase64;
        QString fileName;
        Seconds timeout;
        std::function<void(const UploadScriptRunResult &)> completion;
    };
    using Toast = std::pair<QString, QString>;

    VirtualTime &time;
    FakePasteboard &pasteboard;
    QString script = QStringLiteral("function uploadImage() {}");
    bool isShown = true;
    std::optional<QByteArray> png = QByteArray("\x89PNG\r\n\x1a\n and the rest of a picture");
    std::vector<Run> runs{};
    std::vector<Toast> toasts{};
    SerialQueue pictureQueue{QStringLiteral("com.tavrine.upload")};

    [[nodiscard]] UploadRunner runner() {
        return [this](const QString &source, const QString &image, const QString &name, Seconds timeout,
                      const std::function<void(const UploadScriptRunResult &)> &completion) {
            runs.push_back({source, image, name, timeout, completion});
        };
    }
    [[nodiscard]] UploadButton::Actions actions() {
        return {
            .isShown = [this] { return isShown; },
            .script = [this] { return script; },
            .picture = [this]() -> UploadButton::PngMaker { return [taken = png] { return taken; }; },
            .run = runner(),
            .uploadFileName = [] { return QStringLiteral("screenshot-20260131-120000.png"); },
            .showToast = [this](const QString &message, const QString &icon) { toasts.emplace_back(message, icon); }};
    }
    [[nodiscard]] std::unique_ptr<UploadButton> makeButton(UploadButton::Actions actions,
                                                           UploadButton::AfterLink afterLink) {
        return std::make_unique<UploadButton>(UploadButton::Ports{pasteboard, time, pictureQueue}, std::move(actions),
                                              afterLink);
    }
    [[nodiscard]] std::unique_ptr<UploadButton> makeButton(UploadButton::AfterLink afterLink) {
        return makeButton(actions(), afterLink);
    }
    /// Lets the pictures become PNGs and the news come.
    void prepare() {
        pictureQueue.sync([] {});
        time.runPending();
    }
    void succeed(const QString &url = QStringLiteral("https://example.org/1")) { runs.back().completion({.url = url}); }
    void fail(const std::optional<UploadScriptError> &error = std::nullopt) {
        runs.back().completion({.error = error});
    }
};

} // namespace tavrine::test

#pragma once

#include "adapters/fake/FakeFilePanels.h"
#include "adapters/fake/FakeImageCoder.h"
#include "adapters/fake/FakePasteboard.h"
#include "adapters/fake/VirtualTime.h"
#include "base/NotificationCenter.h"
#include "base/SerialQueue.h"
#include "capture/editor/EditorModel.h"
#include "upload/PlayedUpload.h"

#include <QDir>
#include <QTemporaryDir>

#include <mutex>

#include <gmock/gmock.h>

namespace tavrine {

using namespace std::chrono_literals;
using testing::HasSubstr;

inline QString str(const char *text) {
    return QString::fromUtf8(text);
}

inline QImage picture(int width, int height, const QColor &color = Qt::darkGreen) {
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(color);
    return image;
}

inline DrawingPath annotation(DrawingKind kind = DrawingKind::path) {
    DrawingPath path;
    path.id = freshUuidString();
    path.kind = kind;
    path.points = {{0.1, 0.1}, {0.9, 0.1}};
    path.color = Qt::red;
    if (kind == DrawingKind::number)
        path.number = 1;
    return path;
}

class EditorModelTest : public testing::Test {
protected:
    EditorModelTest() { make(picture(400, 200)); }

    void make(const QImage &image) {
        model = std::make_unique<EditorModel>(
            image, EditorModel::Ports{time, pasteboard, panels, coder, center, documents, files},
            EditorModel::Actions{.openNewImage = [this](const QImage &opened) { openedImages.push_back(opened); },
                                 .close = [this] { ++closes; },
                                 .extractText = [this] { ++extracts; },
                                 .scanQr = [this] { ++scans; }});
    }
    void draw(DrawingKind kind = DrawingKind::path) {
        std::vector<DrawingPath> drawings = model->drawings();
        drawings.push_back(annotation(kind));
        model->setDrawings(drawings);
    }
    void select(double left, double top, double right, double bottom) {
        if (!model->isCropping())
            model->toggleCropping();
        model->dragCrop({left, top}, {right, bottom}, {1, 1});
    }
    std::string outputOf(const std::function<void()> &work) {
        testing::internal::CaptureStdout();
        work();
        return testing::internal::GetCapturedStdout();
    }
    /// What is said until the file that was asked for is written, or is not.
    std::string outputOfTheSave() {
        return outputOf([this] {
            time.advance(0ms);
            files.sync([] {});
            time.advance(0ms);
        });
    }

    QTemporaryDir home;
    QString documents = home.filePath(str("Documents"));
    VirtualTime time;
    FakePasteboard pasteboard;
    test::PlayedUpload played{time, pasteboard};
    FakeFilePanels panels{time};
    FakeImageCoder coder;
    NotificationCenter center;
    SerialQueue files{str("com.tavrine.snip")};
    std::vector<QImage> openedImages;
    int closes = 0;
    int extracts = 0;
    int scans = 0;
    std::unique_ptr<EditorModel> model;
};

} // namespace tavrine

#pragma once

#include "base/Date.h"

#include <QImage>
#include <QObject>
#include <QRectF>
#include <QString>

#include <functional>
#include <optional>

namespace tavrine {

class Application;
class Screens;
class Time;

/// Opens the editor's one window: over a single picture, or with the page from which a picture is chosen. A window that
/// is open goes without a question. Belongs to the shell; lives on the main thread.
class EditorFlow : public QObject {
    Q_OBJECT

public:
    static constexpr Seconds frontDelay{0.12};

    struct Window {
        QString title;
        QRectF frame; ///< in points with the origin at the bottom left, as `Screens` tells them; within its screen
        std::optional<QImage> image;
        bool hasLanding = false; ///< other pictures can be opened in it; without a picture it shows the landing page
    };
    /// What is done to windows. At most one stands.
    struct Windows {
        std::function<bool()> hasWindow;
        std::function<void()> closeWindow;
        std::function<void(const Window &)> makeWindow; ///< not yet shown
        std::function<void()> bringWindowForward;       ///< shown, key and front
        std::function<void()> activateApplication;
        std::function<std::optional<QImage>(const QString &fileName)> loadImage; ///< of the history
    };
    /// All outlive the flow.
    struct Ports {
        Time &time;
        Application &application;
        std::function<Screens &()> screens;
    };

    EditorFlow(Ports ports, Windows windows, QObject *parent = nullptr);

    void openEditorDirectly(const QImage &image);
    /// A file of the history by its bare name. Nothing, and no window closes, for one that cannot be read.
    void openEditorForItem(const QString &fileName);
    void openTavrineEditor(const std::optional<QImage> &image);

private:
    void closeWindow();
    void openSingle(const QImage &image);
    [[nodiscard]] QRectF centredFrame(double width, double height, bool isUnderMouse) const;

    Ports m_ports;
    Windows m_windows;
};

} // namespace tavrine

#pragma once

#include "adapters/frozen/FrozenScreen.h"
#include "adapters/x11/frozen/OverlayKeys.h"
#include "adapters/x11/frozen/ScreenMap.h"
#include "adapters/x11/frozen/ScreenTurn.h"
#include "adapters/x11/frozen/SharedPixels.h"

#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tavrine {

/// The frozen screen of an X server. One overlay at a time stands on it, over all programs of ours (`ScreenTurn`).
class OverlaySession final : public FrozenScreen {
public:
    /// Null without a server, and when the screen cannot be read. Waits for its turn, half a second at most. `picture`
    /// is a file with the picture (see `PictureFile`) where the server has none of all programs; empty for none.
    [[nodiscard]] static std::unique_ptr<OverlaySession> open(const std::string &picture = {});

    /// The same in two steps, for a thread that must not wait: `freeze` takes the picture when `timeToWait` says that
    /// the turn has come. Null without a server; `freeze` is false when the screen cannot be read.
    [[nodiscard]] static std::unique_ptr<OverlaySession> begin(const std::string &picture = {});
    [[nodiscard]] std::chrono::milliseconds timeToWait() { return m_turn->timeToWait(); }
    [[nodiscard]] bool freeze();

    ~OverlaySession() override;
    OverlaySession(const OverlaySession &) = delete;
    OverlaySession &operator=(const OverlaySession &) = delete;

    [[nodiscard]] PixelsToRead picture() const override { return m_picture->pixels(); }
    [[nodiscard]] PixelsToPaint canvas() const override { return m_canvas->pixels(); }
    [[nodiscard]] QRect rect() const override { return screenRect(m_link); }
    [[nodiscard]] const std::vector<OverlayMonitor> &monitors() const override { return m_monitors; }
    [[nodiscard]] bool isOnePlane() const override { return !m_file || m_file->isOnePlane(); }
    [[nodiscard]] PictureCut cut(const QRect &area) const override {
        return m_file ? m_file->cut(area) : FrozenScreen::cut(area);
    }
    [[nodiscard]] std::optional<QPoint> firstPointer() const override { return m_firstPointer; }
    void show() override;
    void put(const std::vector<QRect> &areas) override;
    void hide() override;
    void tryGrabs() override;
    [[nodiscard]] bool hasPointer() const override { return m_hasPointer; }
    [[nodiscard]] bool hasBoth() const override { return m_hasPointer && m_hasKeyboard; }
    [[nodiscard]] std::vector<QRect> windows() override { return readWindows(m_link, m_window); }
    [[nodiscard]] std::optional<OverlayEvent> nextEvent() override;
    [[nodiscard]] int fileDescriptor() const override { return xcb_get_file_descriptor(m_link.connection()); }
    void movePointer(QPoint place) override;

private:
    /// A server that is in another program's hands for longer keeps its screen.
    static constexpr XcbLink::Wait longestWait{2000};

    OverlaySession();
    [[nodiscard]] bool freezeFile();
    void createWindow();
    void takeHeldButton();
    [[nodiscard]] std::optional<OverlayEvent> translated(const xcb_generic_event_t &event);

    XcbLink m_link{longestWait};
    std::optional<ScreenTurn> m_turn;
    std::unique_ptr<SharedPixels> m_picture;
    std::unique_ptr<SharedPixels> m_canvas;
    std::vector<OverlayMonitor> m_monitors;
    OverlayKeys m_keys;
    QPoint m_firstPointer;
    std::string m_pictureFile;
    std::unique_ptr<PictureFile> m_file; ///< that the picture came from
    xcb_window_t m_window = 0;
    xcb_gcontext_t m_context = 0;
    xcb_cursor_t m_cursor = 0;
    bool m_hasPointer = false;
    bool m_hasKeyboard = false;
    bool m_isFirstTry = true;
    int m_raises = 0;
    quint8 m_releasedKey = 0; ///< the key that was released last, and when
    xcb_timestamp_t m_releasedAt = 0;
    std::deque<OverlayEvent> m_pending;
};

} // namespace tavrine

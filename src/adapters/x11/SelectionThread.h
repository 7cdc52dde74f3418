#pragma once

#include "adapters/pasteboard/ForeignNews.h"
#include "adapters/pasteboard/ImageFileReader.h"
#include "adapters/pasteboard/Mailbox.h"
#include "adapters/pasteboard/PasteboardReader.h"
#include "adapters/pasteboard/ReclaimBrake.h"
#include "adapters/pasteboard/SelectionLimits.h"
#include "adapters/x11/SelectionFetch.h"
#include "adapters/x11/SelectionOwner.h"
#include "adapters/x11/XConnection.h"

#include <QThreadPool>

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <variant>
#include <vector>

namespace tavrine {

/// Follows the clipboard of an X server. It sleeps until the server, the main thread or a deadline has something for
/// it.
///
///  1. Notices that are older than an own claim tell nothing: the claim has replaced what they tell of.
///  2. When an owner ends and nobody follows, what it had is claimed for it, as of its own time, so that a claim by a
///     person's later action is never refused. A living owner is never replaced: the look and the claim are one step
///     for the server. Contents that were cleared on purpose stay cleared.
///  3. An own write counts from when it was made, however late the claim goes out: the server refuses it where another
///     program was here since.
///  4. A `ReclaimBrake` ends quarrels over 2.
///  5. A lost connection ends the thread quietly.
class SelectionThread final : public PasteboardReader {
public:
    /// `publish` is called on the reader's thread. With no usable server nothing is ever published. `files` reads
    /// copied files; it must outlive this object.
    SelectionThread(const SelectionLimits &limits, ImageFileReader &files, Publish publish);
    /// Offers what is ours to a clipboard manager, if there is one, and serves it meanwhile; the limits say how long.
    ~SelectionThread() override;
    SelectionThread(const SelectionThread &) = delete;
    SelectionThread &operator=(const SelectionThread &) = delete;

    void claim(OwnContents contents, int serial, TimePoint writtenAt) override;

private:
    struct Claim {
        OwnContents contents;
        int serial;
        TimePoint writtenAt;
    };
    struct Made {
        SelectionOwner::Order order;
        QByteArray bytes;
    };
    struct ImageFile {
        int fetch;
        std::optional<QByteArray> bytes;
    };
    struct Stop {};
    using Message = std::variant<Claim, Made, ImageFile, Stop>;

    void open();
    void run();
    bool work();
    void wait();
    void handle(const xcb_generic_event_t &event);
    void receive(Message message);
    void expire();

    void onSelectionNotice(const xcb_generic_event_t &event);
    void startFetch(xcb_timestamp_t time);
    void dropForeign();
    void ownerEnded(xcb_timestamp_t ownerTime, xcb_timestamp_t now);
    void reclaim();
    void claimNow(const Claim &claim);
    void yieldTo(xcb_timestamp_t time);
    [[nodiscard]] xcb_timestamp_t serverTimeOf(TimePoint moment);
    void startHandOver();

    const SelectionLimits m_limits;
    ImageFileReader &m_files;
    XConnection m_connection;
    std::shared_ptr<Mailbox<Message>> m_mailbox; ///< shared with readers of files, which may be stuck when we end
    QThreadPool m_maker;

    // The reader's own from here.
    ForeignNews m_news;
    SecretDigests m_secrets;
    SelectionOwner m_owner;
    std::unique_ptr<SelectionFetch> m_fetch;
    int m_fetchNumber = 0;
    std::optional<unsigned> m_claimSequence;      ///< until the first notice that is newer than our claim
    xcb_timestamp_t m_foreignTime = 0;            ///< of the last change that another program made
    std::optional<xcb_timestamp_t> m_reclaimTime; ///< set while nobody owns what we hold
    ReclaimBrake m_brake;
    bool m_isStopping = false;
    std::optional<TimePoint> m_handOverEnd;

    std::thread m_thread;
};

} // namespace tavrine

#pragma once

#include "adapters/pasteboard/ForeignNews.h"
#include "adapters/pasteboard/ImageFileReader.h"
#include "adapters/pasteboard/Mailbox.h"
#include "adapters/pasteboard/PasteboardReader.h"
#include "adapters/pasteboard/ReclaimBrake.h"
#include "adapters/wayland/OfferFetch.h"
#include "adapters/wayland/OfferedSource.h"

#include <QThreadPool>

#include <thread>
#include <variant>

namespace tavrine {

/// Follows the clipboard of a Wayland compositor. It sleeps until the compositor, a pipe, the main thread or a deadline
/// has something for it.
///
///  1. While what we offer was not replaced, every notice tells of that or of what was before it.
///  2. When an owner ends, what it had is offered in its place. The compositor does not tell an owner that ends from
///     one that empties the clipboard on purpose, so this holds for both; what we offer ourselves another program may
///     empty. An offer runs over whoever has taken the clipboard while it was on its way, and what they copied is lost.
///     So it waits for a calm, asks the compositor who has followed, and waits anew when the answer comes so late that
///     somebody may be on the way too. KWin looks once more itself.
///  3. An own write counts from when it was made. The compositor knows no times: a notice that is heard a moment after
///     the write tells of something later, and the write goes out no more.
///  4. A `ReclaimBrake` ends quarrels over 2.
///  5. A lost connection ends the thread; `onLost` is called on it, with the reason.
class DataControlThread final : public PasteboardReader {
public:
    /// With no usable compositor nothing is ever published. `files` reads copied files; it must outlive this object.
    DataControlThread(const SelectionLimits &limits, ImageFileReader &files, Publish publish,
                      std::function<void(const std::string &reason)> onLost);
    ~DataControlThread() override;
    DataControlThread(const DataControlThread &) = delete;
    DataControlThread &operator=(const DataControlThread &) = delete;

    void claim(OwnContents contents, int serial, TimePoint writtenAt) override;

private:
    struct Claim {
        OwnContents contents;
        int serial;
        TimePoint writtenAt;
    };
    struct Made {
        int source;
        QByteArray target;
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
    void receive(Message message);
    void expire();
    [[nodiscard]] WaylandLink::Wait untilDue() const;

    void onSelection(std::unique_ptr<DataOffer> offer);
    void onReplaced();
    void startFetch(std::unique_ptr<DataOffer> offer);
    void dropForeign();
    void ownerEnded();
    [[nodiscard]] std::optional<TimePoint> reclaimTime() const;
    void askWhoFollowed();
    void reclaim();
    void claimNow(const Claim &claim);
    [[nodiscard]] std::unique_ptr<OfferedSource> offer(std::vector<OfferedForm> forms,
                                                       std::function<void()> onReplaced);

    const SelectionLimits m_limits;
    ImageFileReader &m_files;
    const std::function<void(const std::string &reason)> m_onLost;
    const std::shared_ptr<Mailbox<Message>> m_mailbox; ///< shared with readers of files, which may be stuck when we end
    QThreadPool m_maker;

    std::atomic<bool> m_isEnding = false; ///< the main thread waits for the end: no compositor is waited for

    // The reader's own from here.
    ForeignNews m_news;
    const DescriptorSet m_descriptors;
    std::optional<WaylandLink> m_link;
    std::optional<DataControl> m_control;
    OutgoingPipes m_pipes;
    SecretDigests m_secrets;
    std::unique_ptr<OfferFetch> m_fetch;
    int m_fetchNumber = 0;
    std::unique_ptr<OfferedSource> m_offered; ///< until somebody replaces it
    bool m_wasReplaced = false;               ///< and nobody has been told of yet
    int m_sourceNumber = 0;
    int m_offeredNumber = 0;
    bool m_isOpening = true;                   ///< what stood before is no change
    TimePoint m_foreignTime;                   ///< when the last change of another program was heard of
    std::optional<TimePoint> m_calmEnd;        ///< before it nothing is offered in an owner's place
    std::unique_ptr<WaylandBarrier> m_barrier; ///< after it
    bool m_hasNobodyFollowed = false;
    ReclaimBrake m_brake;
    bool m_isStopping = false;

    std::thread m_thread;
};

} // namespace tavrine

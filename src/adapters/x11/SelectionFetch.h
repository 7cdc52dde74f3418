#pragma once

#include "adapters/pasteboard/PasteboardContents.h"
#include "adapters/pasteboard/SecretDigests.h"
#include "adapters/pasteboard/SelectionLimits.h"
#include "adapters/pasteboard/SelectionSiblings.h"
#include "adapters/x11/SelectionTransfer.h"

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace tavrine {

/// Everything that one owner of the clipboard has, brought here. Lives on the selection thread; one for each change.
///
///  1. First what can be read: the list of targets, the text, and the best picture. Then `onReadable` is called, once.
///  2. Then, until `isRunning` is false, all that is left, to be kept for when the owner ends.
///  3. An owner that misses a deadline is asked for nothing more. What was complete by then stands. Before that it is
///     asked again for its list and for what costs it no work: some programs do not hear a question that comes right
///     after the copy.
///  4. Of one text, and of one picture without loss, one form is fetched; the others are made from it.
///  5. Of concealed contents a short text is asked for, after the change was told of, and nothing of it stays but a
///     digest: a secret must not outlive the program that guards it. What has the digest of a concealed text counts as
///     concealed, whoever owns it.
///  6. A list of files that wait to be moved is left to the program that moves them: some owners take whoever asks for
///     it for that program, and give the clipboard up.
///
/// An owner that hangs, lies or sends without end costs at most the limits. Destroying a fetch abandons it.
class SelectionFetch {
public:
    using TimePoint = SelectionTransfer::TimePoint;

    struct Hooks {
        std::function<void(ForeignContents)> onReadable;
        /// Reads the first picture among the files elsewhere, and leads to `onImageFile` if this fetch still stands.
        std::function<void(QList<QByteArray>)> readImageFile;
    };

    /// `time` is the server's time of the notice that told of the change.
    SelectionFetch(XConnection &connection, const SelectionLimits &limits, SecretDigests &secrets, xcb_timestamp_t time,
                   Hooks hooks);
    ~SelectionFetch();
    SelectionFetch(const SelectionFetch &) = delete;
    SelectionFetch &operator=(const SelectionFetch &) = delete;

    void onSelectionNotify(const xcb_selection_notify_event_t &event);
    void onPropertyNotify(const xcb_property_notify_event_t &event);
    void onImageFile(std::optional<QByteArray> bytes);

    /// The owner has ended. What is complete stands, and nothing else exists any more but a copied file that is being
    /// read: for that the fetch goes on running.
    void ownerEnded();

    /// When `expire` has to be called at the latest; none when nothing is awaited.
    [[nodiscard]] std::optional<TimePoint> deadline() const;
    void expire(TimePoint now);

    [[nodiscard]] bool isRunning() const { return m_stage != Stage::finished; }
    /// What was fetched whole.
    [[nodiscard]] const std::vector<Received> &received() const { return m_received; }
    /// What was not fetched because it can be made of that.
    [[nodiscard]] const std::vector<selection::Sibling> &siblings() const { return m_siblings; }

private:
    enum class Stage { targets, secret, text, image, files, imageFile, rest, finished };

    void afterTransfer();
    void takeTargets(const PropertyValue &value);
    void takeContents(PropertyValue value);
    void takeSecret(PropertyValue value);
    void makeOthersFrom(const Received &best, bool (*isForm)(const QByteArray &));
    void conceal();
    void advance();
    void advanceText();
    void advanceImage();
    void advanceFiles();
    void advanceRest();
    void ask(const QByteArray &target, qsizetype maxBytes);
    void ask(const QByteArray &target);
    [[nodiscard]] bool mayBeAskedAgain() const;
    void publish();
    void giveUp();
    [[nodiscard]] std::optional<QByteArray> nextWanted(const QList<QByteArray> &candidates) const;
    [[nodiscard]] const Received *find(const QByteArray &target) const;

    XConnection &m_connection;
    const SelectionLimits &m_limits;
    SecretDigests &m_secrets;
    xcb_timestamp_t m_time;
    Hooks m_hooks;
    xcb_window_t m_window;
    Stage m_stage = Stage::targets;
    TimePoint m_phaseStart;
    bool m_isPublished = false;
    bool m_hasOwnerEnded = false;
    bool m_hasOpenTransfer = false; ///< some owner may still write to our window

    QList<QByteArray> m_targets;
    QHash<QByteArray, xcb_atom_t> m_atoms;
    QList<QByteArray> m_asked;
    QByteArray m_current;
    std::unique_ptr<SelectionTransfer> m_transfer;
    std::vector<Received> m_received;
    std::vector<selection::Sibling> m_siblings;
    qsizetype m_receivedBytes = 0;
    ForeignContents m_contents;
};

} // namespace tavrine

#pragma once

#include "adapters/pasteboard/OfferedForms.h"
#include "adapters/pasteboard/PasteboardTransfer.h"
#include "adapters/pasteboard/SecretDigests.h"
#include "adapters/pasteboard/SelectionLimits.h"

#include <QSet>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace tavrine {

/// The program that owns the contents, as its desktop lets it be asked.
class PasteboardOwner {
public:
    virtual ~PasteboardOwner() = default;

    /// Asks for the list of targets. Null when the desktop has told them already.
    [[nodiscard]] virtual std::unique_ptr<PasteboardTransfer> askForTargets() = 0;
    /// The list, once its transfer has ended.
    [[nodiscard]] virtual QList<QByteArray> targets(PasteboardTransfer *ended) = 0;
    /// Asks for one of them. More than `maxBytes` are not taken.
    [[nodiscard]] virtual std::unique_ptr<PasteboardTransfer> ask(const QByteArray &target, qsizetype maxBytes) = 0;
    /// What such a transfer brought; called once, at its end. None when it brought nothing.
    [[nodiscard]] virtual std::optional<Received> received(const QByteArray &target, PasteboardTransfer &ended) = 0;
    /// How bytes are to be read as text; none when they are no text that is read.
    [[nodiscard]] virtual std::optional<selection::TextEncoding> encodingOf(const Received &received) = 0;
};

/// Everything that one owner of the clipboard has, brought here. Lives on the reader's thread; one for each change.
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
class PasteboardFetch {
public:
    using TimePoint = PasteboardTransfer::TimePoint;

    struct Hooks {
        std::function<void(ForeignContents)> onReadable;
        /// Reads the first picture among the files elsewhere, and leads to `onImageFile` if this fetch still stands.
        std::function<void(QList<QByteArray>)> readImageFile;
    };

    PasteboardFetch(PasteboardOwner &owner, const SelectionLimits &limits, SecretDigests &secrets, Hooks hooks);
    ~PasteboardFetch();
    PasteboardFetch(const PasteboardFetch &) = delete;
    PasteboardFetch &operator=(const PasteboardFetch &) = delete;

    /// Asks the first question; for what is known by itself, `onReadable` may be called within.
    void start();
    /// The transfer that is under way has gone on, and may have ended.
    void proceed();
    void onImageFile(std::optional<QByteArray> bytes);

    /// The owner has ended. What is complete stands, and nothing else exists any more but a copied file that is being
    /// read: for that the fetch goes on running.
    void ownerEnded();

    /// When `expire` has to be called at the latest; none when nothing is awaited.
    [[nodiscard]] std::optional<TimePoint> deadline() const;
    void expire(TimePoint now);

    [[nodiscard]] bool isRunning() const { return m_stage != Stage::finished; }
    /// Something was fetched whole, so that it can outlive its owner.
    [[nodiscard]] bool hasReceived() const { return !m_received.empty(); }
    /// What was fetched whole, and what was not because it can be made of that.
    [[nodiscard]] std::vector<OfferedForm> receivedForms() const {
        return formsOf(m_received, m_siblings, m_limits.imagePixels);
    }

private:
    enum class Stage { targets, secret, text, image, files, imageFile, rest, finished };

    void takeTargets(const QList<QByteArray> &targets);
    void takeContents(Received received);
    void takeSecret(Received received);
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
    /// As the limits say; `deadline` adds the last chance to it.
    [[nodiscard]] TimePoint patienceEnd() const;
    void publish();
    [[nodiscard]] QStringList receivedTypes() const;
    void giveUp();
    [[nodiscard]] std::optional<QByteArray> nextWanted(const QList<QByteArray> &candidates) const;
    [[nodiscard]] const Received *find(const QByteArray &target) const;

    PasteboardOwner &m_owner;
    const SelectionLimits &m_limits;
    SecretDigests &m_secrets;
    Hooks m_hooks;
    Stage m_stage = Stage::targets;
    TimePoint m_phaseStart;
    std::optional<TimePoint> m_lastChance; ///< until then; what came since makes it a thing of the past
    bool m_isPublished = false;
    bool m_hasOwnerEnded = false;
    bool m_isConcealed = false; ///< known again as a secret

    QList<QByteArray> m_targets;
    QSet<QByteArray> m_listed; ///< the same
    QSet<QByteArray> m_asked;
    QByteArray m_current;
    std::unique_ptr<PasteboardTransfer> m_transfer;
    std::vector<Received> m_received;
    std::vector<selection::Sibling> m_siblings;
    qsizetype m_receivedBytes = 0;
    ForeignContents m_contents;
};

} // namespace tavrine

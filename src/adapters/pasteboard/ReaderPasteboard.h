#pragma once

#include "adapters/pasteboard/ImageFileReader.h"
#include "adapters/pasteboard/PasteboardReader.h"
#include "adapters/pasteboard/SelectionLimits.h"
#include "ports/Pasteboard.h"

#include <QObject>

#include <memory>
#include <variant>

namespace tavrine {

/// A clipboard that a `PasteboardReader` follows. Lives on the main thread, and needs its event loop: what other
/// programs do is told there, so that the contents never change between two reads of one turn.
///
///  1. What stood on the clipboard before this object is there to be read soon after, and is no change.
///  2. The writes of one turn reach the other programs at its end in one step: none of them ever finds the clipboard
///     empty in between. They can be read back at once. What another program copies after the last `clearContents` of
///     the turn has replaced them, though it comes before that end.
///  3. One transfer brings at most 64 MiB, one change 128 MiB; a picture has at most 128 megapixels. What is larger is
///     absent. A silent owner is waited for 4 s, a stalled transfer 1.5 s, all together 10 s; a newer owner ends the
///     waiting at once. See `SelectionLimits`.
///  4. COMPOUND_TEXT is kept for other programs, but not read: nobody offers it alone any more.
///  5. Of contents marked as concealed a digest is kept and nothing else, and they end with the program that put them
///     there. What has one of those digests is told of as concealed, whoever owns it.
///  6. Without a desktop the clipboard works within this program alone.
///  7. No file is read on the main thread, as a file system that has gone never answers. The picture in a file that
///     this program itself wrote here is absent at first, and is there in a later turn, once the file has been read;
///     the count, which moved with the write, does not move again for it. It comes only while that write still stands.
class ReaderPasteboard : public Pasteboard {
public:
    using MakeReader =
        std::function<std::unique_ptr<PasteboardReader>(ImageFileReader &files, PasteboardReader::Publish publish)>;

    ReaderPasteboard(const SelectionLimits &limits, const MakeReader &makeReader);
    ~ReaderPasteboard() override;
    ReaderPasteboard(const ReaderPasteboard &) = delete;
    ReaderPasteboard &operator=(const ReaderPasteboard &) = delete;

    [[nodiscard]] int changeCount() const override { return m_changeCount; }
    void setOnForeignChange(std::function<void()> onChange) override { m_onForeignChange = std::move(onChange); }
    [[nodiscard]] std::optional<QStringList> types() const override;
    [[nodiscard]] std::optional<QImage> image() const override;
    [[nodiscard]] std::optional<QString> string() const override;
    [[nodiscard]] Reading reading() const override;
    int clearContents() override;
    void setString(const QString &text) override;
    void writeImage(const QImage &image) override;
    void writeFileUrls(const QList<QUrl> &urls) override;

protected:
    [[nodiscard]] PasteboardReader &reader() { return *m_reader; }

private:
    using Foreign = std::shared_ptr<const ForeignContents>;

    /// Where the readers of files hand over what they read, and whether anybody is there still.
    struct Counter;

    /// The image while it is still encoded, in its forms.
    [[nodiscard]] QList<QByteArray> encodedImages() const;
    void receive(const Publication &publication);
    void readOwnFiles(const OwnContents &own);
    [[nodiscard]] OwnContents *ownContents();
    void scheduleClaim();
    void claim();

    const SelectionLimits m_limits;
    int m_changeCount = 0;
    int m_ownSerial = 0;
    std::function<void()> m_onForeignChange;
    bool m_isClaimScheduled = false;
    std::chrono::steady_clock::time_point m_writtenAt; ///< when what is to be claimed was begun
    std::variant<Foreign, OwnContents> m_contents;
    QByteArray m_ownImageFile; ///< the first picture among the own files, once it was read
    std::shared_ptr<Counter> m_counter;
    ImageFileReader m_files;
    QObject m_mainThread; ///< events posted by the reader reach us there; after our end they reach nobody
    std::unique_ptr<PasteboardReader> m_reader;
};

} // namespace tavrine

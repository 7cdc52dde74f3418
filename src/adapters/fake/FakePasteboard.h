#pragma once

#include "ports/Pasteboard.h"

#include <atomic>

namespace tavrine {

/// A clipboard in memory, with the other programs played by the test. Lives on the test's thread.
///
/// What an owner does wrong over there arrives here as it arrives from the real adapter: as contents that are absent.
class FakePasteboard final : public Pasteboard {
public:
    [[nodiscard]] int changeCount() const override { return m_changeCount; }
    void setOnForeignChange(std::function<void()> onChange) override { m_onForeignChange = std::move(onChange); }
    [[nodiscard]] std::optional<QStringList> types() const override { return m_types; }
    [[nodiscard]] std::optional<QImage> image() const override;
    [[nodiscard]] std::optional<QString> string() const override;
    [[nodiscard]] Reading reading() const override;
    int clearContents() override;
    void setString(const QString &text) override;
    void writeImage(const QImage &image) override;
    void writeFileUrls(const QList<QUrl> &urls) override;

    /// Whether this desktop tells of changes; it does not at first.
    void setTellsChanges(bool tells) { m_tellsChanges = tells; }

    /// Another program copies: one change. `types` are named as in `pasteboardType`. All stands as it is given, also an
    /// image of no size, to see who relies on the promise that there is none.
    void setContentsFromOutside(const QStringList &types, const std::optional<QString> &text = {},
                                const std::optional<QImage> &image = {});
    /// Another program copies plain text, an image, or both, under the types that go with them.
    void copyFromOutside(const QString &text);
    void copyFromOutside(const QImage &image, const std::optional<QString> &text = {});
    /// The owner empties the clipboard on purpose: one change.
    void clearFromOutside();
    /// A program claims the clipboard and never answers: one change, to nothing.
    void claimFromOutsideWithoutAnswer();
    /// The program that copied ends. Its contents stay, and nothing is counted.
    void endOwner() {}

    /// Until further notice no image (no text) can be read, though its type is there: it was too large or broken.
    void setImageUnreadable(bool isUnreadable) { m_isImageUnreadable = isUnreadable; }
    void setStringUnreadable(bool isUnreadable) { m_isStringUnreadable = isUnreadable; }

    /// How often contents were asked for, to prove what was left alone.
    [[nodiscard]] int imageReadCount() const { return m_imageReads; }
    [[nodiscard]] int stringReadCount() const { return m_stringReads; }
    /// How often this program cleared.
    [[nodiscard]] int clearCount() const { return m_clears; }
    /// The file URLs that this program wrote last.
    [[nodiscard]] const QList<QUrl> &writtenFileUrls() const { return m_urls; }

private:
    void addType(const char *type);
    void empty();
    void tellForeignChange() const;
    [[nodiscard]] std::optional<QImage> presentImage() const;
    [[nodiscard]] std::optional<QString> presentString() const;

    int m_changeCount = 0;
    bool m_tellsChanges = false;
    std::function<void()> m_onForeignChange;
    std::optional<QStringList> m_types;
    std::optional<QString> m_text;
    std::optional<QImage> m_image;
    QList<QUrl> m_urls;
    bool m_isImageUnreadable = false;
    bool m_isStringUnreadable = false;
    mutable std::atomic<int> m_imageReads = 0; ///< readings are used on other threads
    mutable std::atomic<int> m_stringReads = 0;
    int m_clears = 0;
};

} // namespace tavrine

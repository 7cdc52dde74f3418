// What other programs hand over the clipboard, through every function that takes it apart, and through the fetch that
// asks for it: an owner may answer anything, at any time, or not at all.

#include "FuzzTarget.h"
#include "adapters/pasteboard/DroppedForms.h"
#include "adapters/pasteboard/PasteboardFetch.h"
#include "adapters/pasteboard/SelectionParser.h"

#include <QUrl>

namespace tavrine::fuzz {
namespace {

using namespace selection;

void parseLists(QByteArrayView bytes) {
    for (const int limit : {0, 1, 256}) {
        const auto atoms = parseAtoms(bytes, limit);
        require(atoms.size() <= limit && atoms.size() * 4 <= bytes.size() && !atoms.contains(0u));
        const auto pairs = parseAtomPairs(bytes, limit);
        require(pairs.size() <= limit && pairs.size() * 8 <= bytes.size());
    }
}

void parseTexts(QByteArrayView bytes) {
    for (const TextEncoding encoding : {TextEncoding::utf8, TextEncoding::latin1, TextEncoding::unmarked}) {
        const auto text = decodeText(bytes, encoding);
        require(text.has_value() == !withoutTerminators(bytes).isEmpty());
        require(!text || (!text->isEmpty() && text->size() <= bytes.size()));
    }
    const qsizetype half = bytes.size() / 2;
    static_cast<void>(textEncoding(bytes.first(half).toByteArray(), bytes.sliced(half).toByteArray()));
}

void parseFiles(QByteArrayView bytes) {
    for (const int limit : {0, 1, 32}) {
        const auto paths = parseLocalPaths(bytes, "host", limit);
        require(paths.size() <= limit);
        for (const QByteArray &path : paths)
            require(path.startsWith('/') && !path.contains('\0') && path.size() < bytes.size());
    }
}

void readSelection(Bytes input) {
    const QByteArrayView bytes(input.data(), static_cast<qsizetype>(input.size()));
    parseLists(bytes);
    parseTexts(bytes);
    parseFiles(bytes);
}

QByteArray bytesOf(Bytes text) {
    return {text.data(), static_cast<qsizetype>(text.size())};
}

/// A question that the owner answers as the bytes say: at once, later, or never.
class Answer final : public PasteboardTransfer {
public:
    explicit Answer(unsigned char mood) : m_mood(mood) {}

    [[nodiscard]] bool isRunning() const override { return m_mood % 4 == 0; }
    [[nodiscard]] bool hasBegun() const override { return m_mood % 4 != 1; }
    [[nodiscard]] TimePoint lastProgress() const override { return {}; }
    [[nodiscard]] bool mayBeAskedAgain() const override { return m_mood % 8 < 4; }
    [[nodiscard]] int questions() const override { return 1 + m_mood % 3; }
    void ownerEnded() override { m_mood = 2; }

private:
    unsigned char m_mood;
};

/// First the list of targets, a line each up to an empty one; then an answer a line, its mood in front.
class Owner final : public PasteboardOwner {
public:
    explicit Owner(Bytes input) : m_values(input) {}

    std::unique_ptr<PasteboardTransfer> askForTargets() override { return transfer(); }
    QList<QByteArray> targets(PasteboardTransfer *) override {
        QList<QByteArray> targets;
        for (Bytes line = m_values.text(); !line.empty(); line = m_values.text())
            targets.append(bytesOf(line));
        return targets;
    }
    std::unique_ptr<PasteboardTransfer> ask(const QByteArray &, qsizetype) override { return transfer(); }
    std::optional<Received> received(const QByteArray &target, PasteboardTransfer &) override {
        const int format = 8 << m_values.number<unsigned char>() % 3;
        const Bytes line = m_values.text();
        if (line == "no")
            return std::nullopt;
        return Received{target, bytesOf(line), 0, format};
    }
    std::optional<TextEncoding> encodingOf(const Received &received) override {
        return textEncoding(received.target, received.bytes);
    }
    [[nodiscard]] bool isAtEnd() const { return m_values.isAtEnd(); }

private:
    std::unique_ptr<PasteboardTransfer> transfer() {
        return std::make_unique<Answer>(m_values.number<unsigned char>());
    }

    Values m_values;
};

void fetchSelection(Bytes input) {
    static SecretDigests secrets;
    const SelectionLimits limits;
    Owner owner(input);
    int told = 0;
    PasteboardFetch fetch(owner, limits, secrets,
                          {.onReadable = [&told](const ForeignContents &) { ++told; },
                           .readImageFile = [](const QList<QByteArray> &paths) { require(!paths.isEmpty()); }});
    fetch.start();
    for (int turns = 0; fetch.isRunning(); ++turns) {
        require(turns < 4096); // whatever the owner says, the fetch comes to an end
        fetch.proceed();
        if (fetch.isRunning() && owner.isAtEnd())
            fetch.ownerEnded();
        if (fetch.isRunning() && turns % 3 == 2)
            fetch.expire(fetch.deadline().value());
        if (fetch.isRunning() && turns % 5 == 4)
            fetch.onImageFile(std::nullopt);
    }
    require(told <= 1);
    static_cast<void>(fetch.receivedForms());
}

/// What is dropped: a line of a target, then its bytes up to a NUL.
void readDrop(Bytes input) {
    QList<QByteArray> targets;
    QList<QByteArray> contents;
    for (Values values(input); !values.isAtEnd();) {
        targets.append(bytesOf(values.text()));
        contents.append(bytesOf(values.text('\0')));
    }
    const DropLimits limits{.files = 32, .imagePixels = 1 << 16};
    const DroppedContent content = readDroppedForms(targets, limits, [&](const QByteArray &target) {
        const qsizetype place = targets.indexOf(target);
        return place < 0 ? std::nullopt : std::optional(DroppedForm{target, contents.at(place)});
    });
    require(content.fileUrls.size() <= limits.files);
    for (const QUrl &file : content.fileUrls)
        require(file.isLocalFile());
}

const Target selectionTarget("selection", &readSelection, [] {
    return std::vector<std::string>{
        "\x01\x02\x03\x01\x02\x01\x01\x01\x03\x01\x01\x01",
        "\xEF\xBB\xBFGr\xC3\xBC\xC3\x9F"
        "e \xF0\x9F\x8C\x8D",
        "# comment\r\nfile:///home/a%20b/%C3%BC.png\r\nfile://localhost/two\r\nfile://host/x#y?z\r\n",
        "copy\nfile:///a%2\nfile:///%zz%00", "UTF8_STRINGCOMPOUND_TEXT"};
});

const Target fetchTarget("selection-fetch", &fetchSelection, [] {
    return std::vector<std::string>{"\2UTF8_STRING\ntext/plain\nimage/png\n\n\2\3words\n\2\3\x89PNG\n",
                                    "\2text/uri-list\nx-special/gnome-copied-files\n\n\2\3file:///a.png\n\2\3copy\n",
                                    "\2UTF8_STRING\nx-kde-passwordManagerHint\n\n\2\3secret\n",
                                    "\1\2TEXT\nTARGETS\n\n\1no\n"};
});

const Target dropTarget("drop", &readDrop, [] {
    return std::vector<std::string>{
        std::string("text/uri-list\nfile:///a%20b\r\nhttp://a.b/c\r\n\0text/plain\nwords", 58),
        std::string("text/html\n<img src=\"a\">b&amp;c\0image/png\n\x89PNG\r\n", 47), "text/x-moz-url\nh\0t\0t\0p\0"};
});

} // namespace
} // namespace tavrine::fuzz

// What other programs hand over the clipboard, through every function that takes it apart.

#include "adapters/pasteboard/SelectionParser.h"

#include <cstdint>
#include <cstdlib>

using namespace tavrine::selection;

namespace {

/// A broken promise ends the run, in every build.
void require(bool isTrue) {
    if (!isTrue)
        std::abort();
}

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

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    const QByteArrayView bytes(data, static_cast<qsizetype>(size));
    parseLists(bytes);
    parseTexts(bytes);
    parseFiles(bytes);
    return 0;
}

extern "C" const char *const fuzzSeeds[] = {
    "\x01\x02\x03\x01\x02\x01\x01\x01\x03\x01\x01\x01",
    "\xEF\xBB\xBFGr\xC3\xBC\xC3\x9F"
    "e \xF0\x9F\x8C\x8D",
    "# comment\r\nfile:///home/a%20b/%C3%BC.png\r\nfile://localhost/two\r\nfile://host/x#y?z\r\n",
    "copy\nfile:///a%2\nfile:///%zz%00",
    "UTF8_STRINGCOMPOUND_TEXT",
    nullptr};

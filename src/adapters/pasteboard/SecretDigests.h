#pragma once

#include "adapters/pasteboard/SelectionParser.h"

#include <QByteArray>
#include <QByteArrayView>

#include <deque>

namespace tavrine {

/// Knows the last concealed texts again without having them. Lives on the selection thread.
///
/// Another clipboard manager may own a concealed text once its program has let it go, without the mark that said so.
/// What is kept of a text is a digest, keyed with a number that this process drew and that nothing outside it has seen.
/// White space at the ends does not count: some managers trim. Nothing is ever written down.
class SecretDigests {
public:
    /// What is longer is no password, and not looked at.
    static constexpr qsizetype longestBytes = qsizetype{64} * 1024;
    static constexpr size_t remembered = 32;

    SecretDigests();

    void remember(QByteArrayView text, selection::TextEncoding encoding);
    [[nodiscard]] bool contains(QByteArrayView text, selection::TextEncoding encoding) const;

private:
    [[nodiscard]] QByteArray digest(QByteArrayView text, selection::TextEncoding encoding) const;

    QByteArray m_key;
    std::deque<QByteArray> m_digests;
};

/// Overwrites what nobody is to find in freed memory. Nobody else may share the bytes.
void wipe(QByteArray &bytes);

} // namespace tavrine

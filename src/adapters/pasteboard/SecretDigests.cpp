#include "adapters/pasteboard/SecretDigests.h"

#include <QMessageAuthenticationCode>
#include <QRandomGenerator>

#include <algorithm>
#include <cstring>

namespace tavrine {

SecretDigests::SecretDigests() : m_key(32, '\0') {
    QRandomGenerator::system()->generate(reinterpret_cast<quint32 *>(m_key.begin()),
                                         reinterpret_cast<quint32 *>(m_key.end()));
}

QByteArray SecretDigests::digest(QByteArrayView text, selection::TextEncoding encoding) const {
    text = selection::withoutTerminators(text).trimmed();
    if (text.isEmpty() || text.size() > longestBytes)
        return {};
    QMessageAuthenticationCode code(QCryptographicHash::Sha256, m_key);
    const bool isUtf8 = encoding == selection::TextEncoding::utf8 ||
                        (encoding == selection::TextEncoding::unmarked && text.isValidUtf8());
    if (isUtf8) {
        code.addData(text.data(), text.size());
        return code.result();
    }
    for (const char c : text) { // Latin-1 as UTF-8, so that one text has one digest
        const auto byte = static_cast<unsigned char>(c);
        const char pair[] = {static_cast<char>(0xC0 | (byte >> 6)), static_cast<char>(0x80 | (byte & 0x3F))};
        if (byte < 0x80)
            code.addData(&c, 1);
        else
            code.addData(pair, 2);
    }
    return code.result();
}

void SecretDigests::remember(QByteArrayView text, selection::TextEncoding encoding) {
    QByteArray value = digest(text, encoding);
    if (value.isEmpty())
        return;
    std::erase(m_digests, value);
    m_digests.push_back(std::move(value));
    if (m_digests.size() > remembered)
        m_digests.pop_front();
}

bool SecretDigests::contains(QByteArrayView text, selection::TextEncoding encoding) const {
    if (m_digests.empty())
        return false;
    const QByteArray value = digest(text, encoding);
    return !value.isEmpty() && std::find(m_digests.begin(), m_digests.end(), value) != m_digests.end();
}

void wipe(QByteArray &bytes) {
    ::explicit_bzero(bytes.data(), static_cast<size_t>(bytes.size()));
    bytes.clear();
}

} // namespace tavrine

// TavrineFeedVerifier KEY…: says whether the feed that it was given open was signed, as it is, by one of the keys. It
// reads its first byte behind walls, and ends with its one line.
#include "adapters/linux/FeedProtocol.h"
#include "walls/LockDown.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include <sodium.h>
#include <sys/prctl.h>
#include <unistd.h>

using namespace tavrine;

namespace {

constexpr std::size_t mostMemory = std::size_t(16) << 20;
constexpr std::size_t mostBytes = std::size_t(2) << 20; // twice what is ever handed over

using Key = std::array<unsigned char, crypto_sign_PUBLICKEYBYTES>;
using Signature = std::array<unsigned char, crypto_sign_BYTES>;

/// Whether `text` is the bytes in base64, all of them and nothing else.
template <class Bytes>
bool decode(Bytes &bytes, std::string_view text) {
    std::size_t count = 0;
    const char *end = nullptr;
    return sodium_base642bin(bytes.data(), bytes.size(), text.data(), text.size(), nullptr, &count, &end,
                             sodium_base64_VARIANT_ORIGINAL) == 0 &&
           count == bytes.size() && end == text.data() + text.size();
}

/// What is open, to its end; nothing when that is too far, or it cannot be read.
std::string contents() {
    std::string read;
    std::array<char, 65536> piece{};
    for (;;) {
        const ssize_t count = ::read(feedProtocol::file, piece.data(), piece.size());
        if (count < 0 && errno == EINTR)
            continue;
        if (count == 0)
            return read;
        if (count < 0 || read.size() + static_cast<std::size_t>(count) > mostBytes)
            return {};
        read.append(piece.data(), static_cast<std::size_t>(count));
    }
}

bool isSigned(std::string_view feed, const std::vector<Key> &keys) {
    using feedProtocol::afterSignature;
    using feedProtocol::beforeSignature;
    constexpr std::size_t encoded = sodium_base64_ENCODED_LEN(crypto_sign_BYTES, sodium_base64_VARIANT_ORIGINAL) - 1;
    constexpr std::size_t line = beforeSignature.size() + encoded + afterSignature.size();
    if (feed.size() < line)
        return false;
    const std::string_view last = feed.substr(feed.size() - line);
    const std::string_view message = feed.substr(0, feed.size() - line);
    Signature signature{};
    if (!last.starts_with(beforeSignature) || !last.ends_with(afterSignature) ||
        !decode(signature, last.substr(beforeSignature.size(), encoded)))
        return false;
    for (const Key &key : keys) {
        if (crypto_sign_verify_detached(signature.data(), reinterpret_cast<const unsigned char *>(message.data()),
                                        message.size(), key.data()) == 0)
            return true;
    }
    return false;
}

void say(std::string_view word) {
    const std::string line = std::string(word) + '\n';
    static_cast<void>(::write(STDOUT_FILENO, line.data(), line.size()));
}

} // namespace

int main(int count, char **arguments) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    std::vector<Key> keys;
    for (int i = 1; i < count; ++i) {
        if (!decode(keys.emplace_back(), arguments[i]))
            return EXIT_FAILURE;
    }
    if (sodium_init() < 0 || lockComputingProcess(mostMemory, Threads::one))
        return EXIT_FAILURE;
    say(isSigned(contents(), keys) ? feedProtocol::good : feedProtocol::refused);
    std::_Exit(EXIT_SUCCESS);
}

#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace tavrine::fuzz {

using Bytes = std::string_view;

/// One reader of what comes from outside. Each source of a fuzz program has one or a few as globals, which the
/// program's driver finds by their names.
struct Target {
    using Run = void (*)(Bytes bytes);
    using Seeds = std::vector<std::string> (*)();

    /// `run` ends the process where a promise is broken; `seeds` is called once, before the first run.
    Target(const char *name, Run run, Seeds seeds);

    const char *name;
    Run run;
    Seeds seeds;
};

/// A broken promise ends the run, in every build.
inline void require(bool isTrue) {
    if (!isTrue)
        std::abort();
}

/// Takes values off the front of the bytes; zeros and empty texts when they have run out.
class Values {
public:
    explicit Values(Bytes bytes) : m_bytes(bytes) {}

    [[nodiscard]] bool isAtEnd() const { return m_bytes.empty(); }
    template <class Number>
    [[nodiscard]] Number number() {
        static_assert(std::is_arithmetic_v<Number>);
        Number number{};
        const std::size_t size = m_bytes.size() < sizeof number ? m_bytes.size() : sizeof number;
        if (size > 0)
            std::memcpy(&number, m_bytes.data(), size);
        m_bytes.remove_prefix(size);
        return number;
    }
    /// Up to the next of `end`, which goes too.
    [[nodiscard]] Bytes text(char end = '\n') {
        const std::size_t place = m_bytes.find(end);
        const Bytes text = m_bytes.substr(0, place);
        m_bytes.remove_prefix(place == Bytes::npos ? m_bytes.size() : place + 1);
        return text;
    }
    [[nodiscard]] Bytes rest() { return std::exchange(m_bytes, {}); }

private:
    Bytes m_bytes;
};

} // namespace tavrine::fuzz

#pragma once

#include <memory>
#include <utility>

namespace tavrine {

/// A part that is made when it is first asked for, and then stays.
template <class T>
class MadeOnce {
public:
    /// What `make` gives, at the first call; the same part ever after.
    template <class Make>
    T &get(Make &&make) {
        if (!m_part)
            m_part = std::forward<Make>(make)();
        return *m_part;
    }

    /// Null until the first call of `get`.
    [[nodiscard]] T *ifMade() const { return m_part.get(); }

private:
    std::unique_ptr<T> m_part;
};

} // namespace tavrine

#pragma once

#include <utility>

#include <unistd.h>

namespace tavrine {

/// A file descriptor with an owner, which closes it.
class Descriptor {
public:
    Descriptor() = default;
    explicit Descriptor(int number) : m_number(number) {}
    Descriptor(Descriptor &&other) noexcept : m_number(other.release()) {}
    Descriptor &operator=(Descriptor &&other) noexcept {
        if (this != &other) {
            close();
            m_number = other.release();
        }
        return *this;
    }
    ~Descriptor() { close(); }

    [[nodiscard]] int number() const { return m_number; }
    [[nodiscard]] bool isOpen() const { return m_number >= 0; }
    int release() { return std::exchange(m_number, -1); }
    void close() {
        if (m_number >= 0)
            ::close(release());
    }

private:
    int m_number = -1;
};

} // namespace tavrine

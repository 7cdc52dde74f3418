#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tavrine {

/// Bytes of an MPEG-4 file: numbers with the high byte first, and boxes, whose length stands before their contents.
class BoxWriter {
public:
    void u8(std::uint64_t value) { number(value, 1); }
    void u16(std::uint64_t value) { number(value, 2); }
    void u32(std::uint64_t value) { number(value, 4); }
    void u64(std::uint64_t value) { number(value, 8); }
    void bytes(std::string_view bytes) { m_bytes.append(bytes); }
    void zeros(std::size_t count) { m_bytes.append(count, '\0'); }

    /// A box of `type` around what `contents` writes.
    template <class Contents>
    void box(std::string_view type, Contents contents) {
        const std::size_t start = m_bytes.size();
        u32(0);
        bytes(type);
        contents();
        const std::uint64_t length = m_bytes.size() - start;
        for (std::size_t i = 0; i < sizeof(std::uint32_t); ++i)
            m_bytes[start + i] = static_cast<char>(length >> (24 - 8 * i));
    }
    /// One that begins with its version and its flags.
    template <class Contents>
    void fullBox(std::string_view type, unsigned version, std::uint32_t flags, Contents contents) {
        box(type, [&] {
            u32(std::uint64_t(version) << 24 | flags);
            contents();
        });
    }
    /// Overwrites the four bytes at `position`.
    void patch(std::size_t position, std::uint32_t value) {
        for (std::size_t i = 0; i < sizeof value; ++i)
            m_bytes[position + i] = static_cast<char>(value >> (24 - 8 * i));
    }

    [[nodiscard]] std::size_t size() const { return m_bytes.size(); }
    [[nodiscard]] std::string take() { return std::move(m_bytes); }

private:
    void number(std::uint64_t value, int length) {
        for (int i = length - 1; i >= 0; --i)
            m_bytes.push_back(static_cast<char>(value >> (8 * i)));
    }

    std::string m_bytes;
};

} // namespace tavrine

#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tavrine {

/// What programs of the house and the resident one tell each other: lines of text, each a word and what belongs to it.
/// Takes bytes as they come and gives whole lines without their ends. Without Qt, for programs that start in
/// milliseconds.
class HelperLines {
public:
    static constexpr std::size_t longest = 512; ///< of a line; nobody of ours says more in one

    /// The lines that are whole now.
    [[nodiscard]] std::vector<std::string> take(std::string_view bytes) {
        std::vector<std::string> lines;
        for (const char byte : bytes) {
            if (byte == '\n')
                lines.push_back(std::exchange(m_begun, {}));
            else if (m_begun.size() < longest)
                m_begun.push_back(byte);
            else
                m_isBroken = true;
        }
        return lines;
    }
    /// A line was too long: what said it is none of ours, or out of its mind.
    [[nodiscard]] bool isBroken() const { return m_isBroken; }

    /// `words` as they may stand in a line: on one, and no longer than there is room for.
    [[nodiscard]] static std::string words(std::string_view words) {
        constexpr std::size_t room = 300;
        std::string result(words.substr(0, room));
        for (char &byte : result)
            if (static_cast<unsigned char>(byte) < ' ')
                byte = ' ';
        return result;
    }

private:
    std::string m_begun;
    bool m_isBroken = false;
};

} // namespace tavrine

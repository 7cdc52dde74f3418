// What programs beside the resident one say in lines and messages, what the kernel says of interfaces and routes, and
// the tables of keys, which any number and any name may be looked up in.

#include "FuzzTarget.h"
#include "adapters/linux/DownloadProtocol.h"
#include "adapters/linux/HelperLines.h"
#include "adapters/linux/HotKeyLetters.h"
#include "adapters/linux/MovieProtocol.h"
#include "adapters/linux/Netlink.h"
#include "adapters/linux/PasteChord.h"
#include "adapters/linux/PlayerProtocol.h"
#include "adapters/linux/RecorderProtocol.h"
#include "base/VirtualKeys.h"

#include <linux/rtnetlink.h>

namespace tavrine::fuzz {
namespace {

void readLines(Bytes input) {
    HelperLines lines;
    for (const std::string &line : lines.take(input)) {
        require(line.size() <= HelperLines::longest);
        if (const auto report = movieProtocol::reportIn(line))
            require(movieProtocol::reportIn(Values(movieProtocol::lineOf(*report)).text()) == *report);
        if (const auto report = downloadProtocol::reportIn(line))
            require(downloadProtocol::reportIn(Values(downloadProtocol::lineOf(*report)).text()).has_value());
        if (const auto report = playerProtocol::reportIn(line))
            require(playerProtocol::reportIn(Values(playerProtocol::lineOf(*report)).text()).has_value());
        static_cast<void>(playerProtocol::loopsIn(line));
        static_cast<void>(playerProtocol::movieCommandIn(line));
        if (const auto size = playerProtocol::sizeIn(line))
            require(size->width >= 1 && size->width <= playerProtocol::longestEdge && size->height >= 1 &&
                    size->height <= playerProtocol::longestEdge);
        static_cast<void>(movieProtocol::jobIn(line));
        const auto edge = movieProtocol::longestEdgeIn(line);
        require(!edge || (*edge > 0 && *edge <= movieProtocol::mostPixels));
    }
    const std::string words = HelperLines::words(input);
    require(words.find('\n') == std::string::npos && words.size() < HelperLines::longest);
}

void readRecorder(Bytes message) {
    namespace protocol = recorderProtocol;
    static_cast<void>(protocol::kindOf(message));
    static_cast<void>(protocol::startIn(message));
    static_cast<void>(protocol::sessionIn(message));
    static_cast<void>(protocol::pictureIn(message));
    for (const int channels : {1, 2})
        if (const auto sound = protocol::soundIn(message, channels))
            require(sound->samples.size() * sizeof(float) <= message.size());
    static_cast<void>(protocol::finishIn(message));
    static_cast<void>(protocol::reportIn(message));
}

/// A row as it lies in the buffer that was read into, which is as large as the row says at most.
void readNetlink(Bytes input) {
    if (input.size() < sizeof(nlmsghdr))
        return;
    std::vector<char> buffer(input.begin(), input.end());
    nlmsghdr header{};
    std::memcpy(&header, buffer.data(), sizeof header);
    if (header.nlmsg_len < sizeof header || header.nlmsg_len > buffer.size())
        return; // NLMSG_OK passes over it
    const auto &message = *reinterpret_cast<const nlmsghdr *>(buffer.data());
    const auto each = [&](int, const void *bytes, std::size_t size) {
        const auto *begin = static_cast<const char *>(bytes);
        require(begin >= buffer.data() && begin + size <= buffer.data() + buffer.size());
    };
    if (bodyOf<ifinfomsg>(message))
        forEachAttribute(message, sizeof(ifinfomsg), each);
    if (bodyOf<rtmsg>(message))
        forEachAttribute(message, sizeof(rtmsg), each);
}

void readKeys(Bytes input) {
    Values values(input);
    const int number = values.number<int>();
    for (const int code : {number, number % 256}) {
        const auto evdev = evdevPosition(code);
        require(!evdev || (virtualKeyAt(*evdev) == code && xKeycode(code) == *evdev + xKeycodeOffset));
        const auto key = virtualKeyOfXKeycode(code);
        require(code < xKeycodeOffset ? !key : key == virtualKeyAt(code - xKeycodeOffset));
        const auto letter = letterOf(code);
        require(!letter || (*letter >= 'A' && *letter <= 'Z') || (*letter >= '0' && *letter <= '9'));
    }
    const Bytes instance = values.text();
    const Bytes name = values.rest();
    const QByteArray first(instance.data(), static_cast<qsizetype>(instance.size()));
    const QByteArray second(name.data(), static_cast<qsizetype>(name.size()));
    const PasteChord chord = pasteChordFor(first, second);
    require(chord == pasteChordFor(first.toUpper(), second.toUpper()) && (chord.hasControl || chord.hasShift));
}

std::string row(unsigned short type, std::string body,
                std::initializer_list<std::pair<unsigned short, std::string>> attributes) {
    for (const auto &[kind, bytes] : attributes) {
        const rtattr head{static_cast<unsigned short>(RTA_LENGTH(bytes.size())), kind};
        body.append(reinterpret_cast<const char *>(&head), sizeof head).append(bytes);
        body.resize(RTA_ALIGN(body.size()));
    }
    const nlmsghdr header{static_cast<std::uint32_t>(NLMSG_LENGTH(body.size())), type, 0, 1, 0};
    return std::string(reinterpret_cast<const char *>(&header), sizeof header) + body;
}

const Target lineTarget("helper-lines", &readLines, [] {
    std::vector<std::string> seeds{"facts 640 480 1 2000\n", "progress 12 100\nfailed no room\n",
                                   "at 1.5\nplay 3\nsize 320 180\n", "0x1400003\n1080\n"};
    seeds.push_back(movieProtocol::lineOf({.kind = movieProtocol::Report::Kind::frame, .width = 640, .height = 480}));
    seeds.push_back(downloadProtocol::lineOf({}));
    seeds.push_back(playerProtocol::lineOf(playerProtocol::Report{}));
    seeds.push_back(playerProtocol::lineOf({.kind = playerProtocol::Report::Kind::picture, .size = {320, 180}}));
    return seeds;
});
const Target recorderTarget("recorder-messages", &readRecorder, [] {
    namespace protocol = recorderProtocol;
    const float samples[] = {0.5F, -0.5F};
    return std::vector<std::string>{protocol::messageOf(protocol::Start{}),   protocol::messageOf(protocol::Session{}),
                                    protocol::messageOf(protocol::Picture{}), protocol::messageOf(0, samples, 2),
                                    protocol::messageOf(protocol::Finish{}),  protocol::messageOf(protocol::Report{})};
});
const Target netlinkTarget("netlink", &readNetlink, [] {
    return std::vector<std::string>{
        row(RTM_NEWLINK, std::string(sizeof(ifinfomsg), '\1'), {{3, "eth0"}, {7, std::string(96, '\2')}}),
        row(RTM_NEWROUTE, std::string(sizeof(rtmsg), '\0'), {{9, std::string(16, '\1')}, {4, "abcd"}})};
});
const Target keyTarget("keys", &readKeys, [] {
    return std::vector<std::string>{
        {"\x09\0\0\0xterm\nXTerm", 15}, {"\x7E\0\0\0gnome-terminal-server\nGnome-terminal", 40}, "\xFF\xFF\xFF\x7F"};
});

} // namespace
} // namespace tavrine::fuzz

// screen_scene NAME [TIMES]: paints one of the scenes of bench/screen-stream on the display, sixty times a second or as
// often as told, until it is killed. Its first line is the number of a bar that lies over the middle.
#include "support/ScreenClient.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>

int main(int argc, char **argv) {
    using tavrine::testing::ScreenClient;
    const std::string scene = argc > 1 ? argv[1] : "unchanged";
    const int times = argc > 2 ? std::atoi(argv[2]) : 60; // in a second
    ScreenClient client;
    const QRect whole = client.wholeScreen();
    const auto board = client.add(whole, 0x305070);
    const auto window = client.add(QRect(100, 100, 500, 350), 0xc0c0c0);
    const auto bar = client.add(QRect(800, 500, 260, 48), 0x202020);
    client.setPointer(board, QSize(24, 24), QPoint(2, 2), 0xffffffff);
    std::printf("%u\n", bar);
    std::fflush(stdout);
    auto next = std::chrono::steady_clock::now();
    for (int i = 0;; ++i) {
        const auto colour = static_cast<std::uint32_t>(i) * 2654435U & 0xffffff;
        if (scene == "small") {
            client.paintOften(board, QRect(900, 510, 220, 40), colour);
        } else if (scene == "moving") {
            client.move(window, QRect(100 + i * 7 % 1200, 100 + i * 3 % 600, 500, 350));
            for (int line = 0; line < 20; ++line)
                client.paintOften(board, QRect(1300, 40 + line * 20, 120 + (i * 13 + line * 37) % 400, 14), colour);
        } else if (scene == "whole") {
            client.paintOften(board, whole, colour);
        } else if (scene == "pointer") {
            client.warpPointer(QPoint(200 + i * 5 % 1500, 300));
        }
        next += std::chrono::microseconds(1'000'000 / times);
        std::this_thread::sleep_until(next);
    }
}

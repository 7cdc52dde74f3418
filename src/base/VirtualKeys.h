#pragma once

#include <array>
#include <optional>

namespace tavrine {

/// Keys by their position on an ANSI keyboard, whatever is printed on them or mapped to them. The numbers are those in
/// which shortcuts and key events are told throughout the program.
namespace virtualKey {
inline constexpr int a = 0;
inline constexpr int v = 9;
inline constexpr int two = 19;
inline constexpr int p = 35;
inline constexpr int enter = 36; ///< Return
inline constexpr int tab = 48;
inline constexpr int space = 49;
inline constexpr int backspace = 51;
inline constexpr int escape = 53;
inline constexpr int keypadEnter = 76;
inline constexpr int insert = 114;
inline constexpr int left = 123;
inline constexpr int right = 124;
inline constexpr int down = 125;
inline constexpr int up = 126;
} // namespace virtualKey

/// One key under its virtual key code and under the number that the kernel's input events give it.
struct KeyPosition {
    int virtualKey;
    int evdev;
};

/// All keys that have both. Sorted by neither.
inline constexpr auto keyPositions = std::to_array<KeyPosition>({
    {0, 30},    {1, 31},    {2, 32},    {3, 33},    {4, 35},    {5, 34},    {6, 44},    {7, 45},   {8, 46},
    {9, 47},    {10, 86},   {11, 48},   {12, 16},   {13, 17},   {14, 18},   {15, 19},   {16, 21},  {17, 20},
    {18, 2},    {19, 3},    {20, 4},    {21, 5},    {22, 7},    {23, 6},    {24, 13},   {25, 10},  {26, 8},
    {27, 12},   {28, 9},    {29, 11},   {30, 27},   {31, 24},   {32, 22},   {33, 26},   {34, 23},  {35, 25},
    {36, 28},   {37, 38},   {38, 36},   {39, 40},   {40, 37},   {41, 39},   {42, 43},   {43, 51},  {44, 53},
    {45, 49},   {46, 50},   {47, 52},   {48, 15},   {49, 57},   {50, 41},   {51, 14},   {53, 1},   {54, 126},
    {55, 125},  {56, 42},   {57, 58},   {58, 56},   {59, 29},   {60, 54},   {61, 100},  {62, 97},  {64, 187},
    {65, 83},   {67, 55},   {69, 78},   {71, 69},   {72, 115},  {73, 114},  {74, 113},  {75, 98},  {76, 96},
    {78, 74},   {79, 188},  {80, 189},  {81, 117},  {82, 82},   {83, 79},   {84, 80},   {85, 81},  {86, 75},
    {87, 76},   {88, 77},   {89, 71},   {90, 190},  {91, 72},   {92, 73},   {96, 63},   {97, 64},  {98, 65},
    {99, 61},   {100, 66},  {101, 67},  {103, 87},  {105, 183}, {106, 186}, {107, 184}, {109, 68}, {111, 88},
    {113, 185}, {114, 110}, {115, 102}, {116, 104}, {117, 111}, {118, 62},  {119, 107}, {120, 60}, {121, 109},
    {122, 59},  {123, 105}, {124, 106}, {125, 108}, {126, 103},
});

[[nodiscard]] constexpr std::optional<int> evdevPosition(int virtualKeyCode) {
    for (const auto &position : keyPositions)
        if (position.virtualKey == virtualKeyCode)
            return position.evdev;
    return std::nullopt;
}

[[nodiscard]] constexpr std::optional<int> virtualKeyAt(int evdev) {
    for (const auto &position : keyPositions)
        if (position.evdev == evdev)
            return position.virtualKey;
    return std::nullopt;
}

/// An X server numbers its keys eight above the kernel.
inline constexpr int xKeycodeOffset = 8;

[[nodiscard]] constexpr std::optional<int> xKeycode(int virtualKeyCode) {
    const auto position = evdevPosition(virtualKeyCode);
    return position ? std::optional<int>(*position + xKeycodeOffset) : std::nullopt;
}

/// Any number may be asked for: what a toolkit tells of a key comes from a server.
[[nodiscard]] constexpr std::optional<int> virtualKeyOfXKeycode(int keycode) {
    return keycode < xKeycodeOffset ? std::nullopt : virtualKeyAt(keycode - xKeycodeOffset);
}

} // namespace tavrine

#include "adapters/x11/PressedPointers.h"

#include <algorithm>

#include <xcb/xinput.h>

namespace tavrine {
namespace {

constexpr std::uint32_t wheelButtons = 0xF0; // 4 to 7
constexpr std::uint16_t coreButtons = XCB_BUTTON_MASK_1 | XCB_BUTTON_MASK_2 | XCB_BUTTON_MASK_3;

} // namespace

std::vector<std::uint16_t> masterPointers(XcbLink &link) {
    std::vector<std::uint16_t> found;
    const auto devices = link.reply<xcb_input_xi_query_device_reply_t>(
        xcb_input_xi_query_device(link.connection(), XCB_INPUT_DEVICE_ALL_MASTER));
    if (!devices)
        return found;
    for (auto device = xcb_input_xi_query_device_infos_iterator(devices.get()); device.rem > 0;
         xcb_input_xi_device_info_next(&device))
        if (device.data->type == XCB_INPUT_DEVICE_TYPE_MASTER_POINTER)
            found.push_back(device.data->deviceid);
    return found;
}

PressedPointers pressedPointers(XcbLink &link) {
    const auto core = xcb_query_pointer(link.connection(), link.root());
    std::map<std::uint16_t, xcb_input_xi_query_pointer_cookie_t> asked; // all at once: one round trip
    for (const std::uint16_t device : masterPointers(link))
        asked[device] = xcb_input_xi_query_pointer(link.connection(), link.root(), device);
    PressedPointers pressed;
    if (const auto answer = link.reply<xcb_query_pointer_reply_t>(core); answer && (answer->mask & coreButtons))
        pressed[0] = answer->mask & coreButtons;
    for (const auto &[device, cookie] : asked) {
        const auto answer = link.reply<xcb_input_xi_query_pointer_reply_t>(cookie);
        if (!answer || answer->buttons_len == 0)
            continue;
        if (const auto buttons = *xcb_input_xi_query_pointer_buttons(answer.get()) & ~wheelButtons)
            pressed[device] = buttons;
    }
    return pressed;
}

bool isAnyReleased(const PressedPointers &before, const PressedPointers &now) {
    return std::any_of(before.begin(), before.end(), [&](const auto &pointer) { return !now.contains(pointer.first); });
}

} // namespace tavrine

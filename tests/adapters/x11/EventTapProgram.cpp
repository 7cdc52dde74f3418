// Drops all keys until it is killed: says so, and then sleeps.

#include "adapters/x11/X11EventTap.h"

#include <QGuiApplication>

#include <cstdio>

int main(int argc, char **argv) {
    const QGuiApplication application(argc, argv);
    tavrine::X11EventTaps taps(std::make_shared<tavrine::KeyboardSilence>());
    const auto tap = taps.create([] {});
    std::puts(tap && tap->state() == tavrine::EventTap::State::dropping ? "dropping" : "refused");
    std::fflush(stdout);
    return QGuiApplication::exec();
}

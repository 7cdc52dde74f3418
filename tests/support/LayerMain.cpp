// For tests of what floats: the toolkit has to be told how before it starts.
#include "adapters/wayland/LayerShell.h"

#include <QApplication>

#include <gmock/gmock.h>

int main(int argc, char **argv) {
    tavrine::LayerShell::prepareToolkit();
    QApplication application(argc, argv);
    ::testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}

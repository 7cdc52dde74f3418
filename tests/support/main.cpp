#include <QGuiApplication>

#include <gmock/gmock.h>

int main(int argc, char **argv) {
    testing::InitGoogleMock(&argc, argv);
    if (GTEST_FLAG_GET(list_tests))
        return RUN_ALL_TESTS(); // ctest asks for the names outside the environment that it gives the tests
    QGuiApplication application(argc, argv);
    return RUN_ALL_TESTS();
}

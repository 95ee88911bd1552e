// The application object of the UI tests: widgets work under the offscreen platform, and
// in-process servers get their event loop from the tests' waits.
#include <QApplication>
#include <gmock/gmock.h>

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    ::testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}

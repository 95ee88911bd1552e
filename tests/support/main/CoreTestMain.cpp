// The application object of the tests below the UI: an event loop without widgets, so these
// rooms prove they need no Qt Widgets, waiting as the server without windows waits.
#include "net/EventDispatcher.h"

#include <QCoreApplication>
#include <gmock/gmock.h>

int main(int argc, char** argv) {
    if (QAbstractEventDispatcher* dispatcher = createEventDispatcher())
        QCoreApplication::setEventDispatcher(dispatcher);
    QCoreApplication app(argc, argv);
    ::testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}

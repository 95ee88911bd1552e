#pragma once
// The event loop's wait. On Linux a server without windows waits with epoll, which reports only
// the connections that have something for it: Qt's own dispatchers poll() every socket on every
// turn of the loop, and with a squadron connected that costs a tenth of the relay's time.
// Elsewhere, and with windows up, Qt's own dispatcher serves.
class QAbstractEventDispatcher;

// A dispatcher to install with QCoreApplication::setEventDispatcher() before the application
// object is made, or null where Qt's own serves.
QAbstractEventDispatcher* createEventDispatcher();

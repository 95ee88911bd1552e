#pragma once
// A peer whose machine vanished (power cut, cable pulled) sends no close. The keep-alive
// messages the server sends every 10 seconds then go unacknowledged, and an idle connection
// gets the system's keep-alive probes; either way the system gives up after about a minute
// instead of a quarter of an hour, and the connection ends through its error event like any
// other failed connection.
#include <QtGlobal>

inline constexpr int kPeerSilenceLimitSeconds = 60;

void watchPeerLiveness(qintptr descriptor);

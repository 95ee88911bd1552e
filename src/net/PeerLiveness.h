#pragma once
// A peer whose machine vanished (power cut, cable pulled) sends no close. The keep-alive
// messages the server sends every 10 seconds then go unacknowledged, and an idle connection
// gets the system's keep-alive probes; either way the system gives up after the silence limit
// (about a minute, "[access] silence-limit") instead of a quarter of an hour, and the
// connection ends through its error event like any other failed connection.
#include <QtGlobal>

inline constexpr int kPeerSilenceLimitSeconds = 60;

// A third of the limit idle before the first probe, then a probe every sixth of it; the
// connection is given up once nothing came back for the whole limit.
void watchPeerLiveness(qintptr descriptor, int silenceLimitSeconds = kPeerSilenceLimitSeconds);

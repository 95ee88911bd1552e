#pragma once
// What the status window shows, as text for the operator's command line: each listed player with
// its mark and setup, the AWACS and SIM counters, the AI Spy link; and beyond the window, each
// connection's address, how long it has been connected, what it has queued and how many messages
// the output cap dropped.
#include <QString>

class Server;

QString statusReport(Server& server);

#pragma once
// Command-line options of the squadron simulator.
#include <cstdint>
#include <optional>
#include <string>

struct Options {
    std::string host = "127.0.0.1";
    // Honest peers come from this many loopback addresses from 127.0.1.1 on (0: all from the
    // host's); the hostile peer from --attack-source.
    int sources = 64;
    std::string attackSource = "127.0.0.66";
    int playerPort = 5555, awacsPort = 5556, simPort = 5557, aiPort = 5554;
    double duration = 60; // seconds of traffic, after everyone has joined
    double drain = 3;     // seconds to let the last messages arrive
    int players = 36, awacs = 44, sims = 4;
    int simPlaces = 4, simPlanes = 2;
    double simHz = 10;
    double f4HzMin = 10, f4HzMax = 50;
    int payload = 40; // bytes of each position text (at least the stamp)
    bool aiSpy = true;
    double aiHz = 5;
    int aiAircraft = 4;
    double churnPerMin = 6; // players and AWACS clients leaving (and coming back) per minute
    double downMin = 1, downMax = 3;
    double simChurnS = 120, aiChurnS = 0, planeChurnS = 30, revalidateS = 40;
    std::string rogues = "all"; // all, safe (nothing that ends a logging server), none
    double rogueEvery = 20;
    int stalled = 0;       // AWACS clients that register and then stop reading
    double stallAfter = 0; // seconds of traffic before they stop
    int serverPid = 0;
    double sampleEvery = 1, reportEvery = 10;
    double measureAfter = 0; // latency histogram starts this long into the traffic
    double warmUp = -1;      // server memory "after warm-up" is read here (default min(150, duration/2))
    double marginMs = 300;
    double replyTimeout = 5;
    int playerSetups = 0;        // players pick among the first N setups (0: all of them)
    std::string attack = "none"; // one hostile peer (see Attack.h), or none
    double attackRate = 1;       // scales the attack's batches
    double attackStart = 4;      // seconds into the run, once everyone has joined
    double newcomerEvery = 0;    // a fresh AWACS client tries to join this often (0: never)
    bool stopServer = false;     // SIGTERM the server at the end while every peer is connected
    double stopWait = 15;        // seconds to wait for it to exit
    uint64_t seed = 1;
    bool quiet = false;
    bool verbose = false;
};

// Parses argv; on error or --help prints usage and returns nothing.
std::optional<Options> parseOptions(int argc, char** argv);

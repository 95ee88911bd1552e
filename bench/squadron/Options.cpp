#include "Options.h"

#include "Attack.h"

#include <arpa/inet.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <map>

namespace {

void usage() {
    std::fprintf(stderr,
                 "usage: squadron [options]   (a squadron's evening against a server on loopback)\n"
                 "  --host 127.0.0.1 --player-port 5555 --awacs-port 5556 --sim-port 5557 --ai-port 5554\n"
                 "  --duration S (60)   seconds of traffic after joining; the run stops by itself\n"
                 "  --drain S (3)       wait for the last messages before counting\n"
                 "  --players N (36) --awacs N (44) --sims N (4) --sim-places N (4) --sim-planes N (2)\n"
                 "  --f4-hz MIN,MAX (10,50)  F4LOCA rate of each player, drawn per connection\n"
                 "  --sim-hz R (10) --payload BYTES (40) --ai-hz R (5) --ai-aircraft N (4) --no-ai\n"
                 "  --churn-per-min R (6)  players/AWACS clients leaving and coming back, per minute\n"
                 "  --down MIN,MAX (1,3)   seconds a churned peer stays away\n"
                 "  --sim-churn-s S (120) --plane-churn-s S (30) --ai-churn-s S (0) --revalidate-s S (40)\n"
                 "                      0 switches the churn off\n"
                 "  --rogues all|safe|none (all)  misbehaving peers; 'safe' leaves out lone NULs and\n"
                 "                      random bytes with NULs, which end a server that logs\n"
                 "  --rogue-every S (20) --stalled N (0) --stall-after S (0)\n"
                 "  --server-pid PID    sample the server's memory and descriptors\n"
                 "  --sample-every S (1) --report-every S (10) --measure-after S (0) --margin-ms MS (300)\n"
                 "  --warm-up S         when the server's memory counts as warmed up (min(150, duration/2))\n"
                 "  --reply-timeout S (5) --seed N (1) --quiet --verbose\n"
                 "  --player-setups N (0)  players fetch only the first N setups (0: any)\n"
                 "  --attack NAME (none)  one hostile peer for the whole traffic period: %s\n"
                 "  --attack-rate X (1) --attack-start S (4)  scales its batches; when it starts\n"
                 "  --sources N (64)    honest peers come from N loopback addresses from 127.0.1.1 on\n"
                 "                      (0: all from the host's); --attack-source ADDR (127.0.0.66)\n"
                 "  --newcomer-every S (0)  a fresh AWACS client must get its picture within 3 s\n"
                 "  --stop-server       SIGTERM the server (--server-pid) at the end, with every peer still\n"
                 "                      connected, and count the DISCON they get\n"
                 "  --stop-wait S (15)  how long to wait for it to exit\n",
                 attackNamesText().c_str());
}

bool pair(const char* text, double& a, double& b) {
    return std::sscanf(text, "%lf,%lf", &a, &b) == 2 && a <= b;
}

} // namespace

std::optional<Options> parseOptions(int argc, char** argv) {
    Options o;
    std::map<std::string, std::function<bool(const char*)>> withValue = {
        {"--host",
         [&](const char* v) {
             o.host = v;
             return true;
         }},
        {"--player-port",
         [&](const char* v) {
             o.playerPort = std::atoi(v);
             return o.playerPort > 0;
         }},
        {"--awacs-port",
         [&](const char* v) {
             o.awacsPort = std::atoi(v);
             return o.awacsPort > 0;
         }},
        {"--sim-port",
         [&](const char* v) {
             o.simPort = std::atoi(v);
             return o.simPort > 0;
         }},
        {"--ai-port",
         [&](const char* v) {
             o.aiPort = std::atoi(v);
             return o.aiPort > 0;
         }},
        {"--duration",
         [&](const char* v) {
             o.duration = std::atof(v);
             return o.duration > 0;
         }},
        {"--drain",
         [&](const char* v) {
             o.drain = std::atof(v);
             return o.drain >= 0;
         }},
        {"--players",
         [&](const char* v) {
             o.players = std::atoi(v);
             return o.players >= 0 && o.players <= 48;
         }},
        {"--awacs",
         [&](const char* v) {
             o.awacs = std::atoi(v);
             return o.awacs >= 0 && o.awacs <= 48;
         }},
        {"--sims",
         [&](const char* v) {
             o.sims = std::atoi(v);
             return o.sims >= 0 && o.sims <= 48;
         }},
        {"--sim-places",
         [&](const char* v) {
             o.simPlaces = std::atoi(v);
             return o.simPlaces >= 1;
         }},
        {"--sim-planes",
         [&](const char* v) {
             o.simPlanes = std::atoi(v);
             return o.simPlanes >= 0;
         }},
        {"--f4-hz", [&](const char* v) { return pair(v, o.f4HzMin, o.f4HzMax) && o.f4HzMin >= 0; }},
        {"--sim-hz",
         [&](const char* v) {
             o.simHz = std::atof(v);
             return o.simHz >= 0;
         }},
        {"--payload",
         [&](const char* v) {
             o.payload = std::atoi(v);
             return o.payload >= 0 && o.payload < 60000;
         }},
        {"--ai-hz",
         [&](const char* v) {
             o.aiHz = std::atof(v);
             return o.aiHz > 0;
         }},
        {"--ai-aircraft",
         [&](const char* v) {
             o.aiAircraft = std::atoi(v);
             return o.aiAircraft >= 1 && o.aiAircraft <= 99;
         }},
        {"--churn-per-min",
         [&](const char* v) {
             o.churnPerMin = std::atof(v);
             return o.churnPerMin >= 0;
         }},
        {"--down", [&](const char* v) { return pair(v, o.downMin, o.downMax) && o.downMin >= 0; }},
        {"--sim-churn-s",
         [&](const char* v) {
             o.simChurnS = std::atof(v);
             return o.simChurnS >= 0;
         }},
        {"--plane-churn-s",
         [&](const char* v) {
             o.planeChurnS = std::atof(v);
             return o.planeChurnS >= 0;
         }},
        {"--ai-churn-s",
         [&](const char* v) {
             o.aiChurnS = std::atof(v);
             return o.aiChurnS >= 0;
         }},
        {"--revalidate-s",
         [&](const char* v) {
             o.revalidateS = std::atof(v);
             return o.revalidateS >= 0;
         }},
        {"--rogues",
         [&](const char* v) {
             o.rogues = v;
             return o.rogues == "all" || o.rogues == "safe" || o.rogues == "none";
         }},
        {"--rogue-every",
         [&](const char* v) {
             o.rogueEvery = std::atof(v);
             return o.rogueEvery > 0;
         }},
        {"--stalled",
         [&](const char* v) {
             o.stalled = std::atoi(v);
             return o.stalled >= 0;
         }},
        {"--stall-after",
         [&](const char* v) {
             o.stallAfter = std::atof(v);
             return o.stallAfter >= 0;
         }},
        {"--server-pid",
         [&](const char* v) {
             o.serverPid = std::atoi(v);
             return o.serverPid > 0;
         }},
        {"--sample-every",
         [&](const char* v) {
             o.sampleEvery = std::atof(v);
             return o.sampleEvery > 0;
         }},
        {"--report-every",
         [&](const char* v) {
             o.reportEvery = std::atof(v);
             return o.reportEvery > 0;
         }},
        {"--measure-after",
         [&](const char* v) {
             o.measureAfter = std::atof(v);
             return o.measureAfter >= 0;
         }},
        {"--warm-up",
         [&](const char* v) {
             o.warmUp = std::atof(v);
             return o.warmUp >= 0;
         }},
        {"--margin-ms",
         [&](const char* v) {
             o.marginMs = std::atof(v);
             return o.marginMs >= 0;
         }},
        {"--reply-timeout",
         [&](const char* v) {
             o.replyTimeout = std::atof(v);
             return o.replyTimeout > 0;
         }},
        {"--player-setups",
         [&](const char* v) {
             o.playerSetups = std::atoi(v);
             return o.playerSetups >= 0;
         }},
        {"--attack",
         [&](const char* v) {
             o.attack = v;
             return o.attack == "none" || isAttackName(o.attack);
         }},
        {"--attack-rate",
         [&](const char* v) {
             o.attackRate = std::atof(v);
             return o.attackRate > 0 && o.attackRate <= 100;
         }},
        {"--attack-start",
         [&](const char* v) {
             o.attackStart = std::atof(v);
             return o.attackStart >= 0;
         }},
        {"--sources",
         [&](const char* v) {
             o.sources = std::atoi(v);
             return o.sources >= 0 && o.sources <= 250;
         }},
        {"--attack-source",
         [&](const char* v) {
             o.attackSource = v;
             return !o.attackSource.empty();
         }},
        {"--newcomer-every",
         [&](const char* v) {
             o.newcomerEvery = std::atof(v);
             return o.newcomerEvery >= 0;
         }},
        {"--stop-wait",
         [&](const char* v) {
             o.stopWait = std::atof(v);
             return o.stopWait > 0;
         }},
        {"--seed",
         [&](const char* v) {
             o.seed = std::strtoull(v, nullptr, 10);
             return true;
         }},
    };
    for (int i = 1; i < argc; ++i) {
        std::string arg = argv[i];
        if (arg == "--no-ai")
            o.aiSpy = false;
        else if (arg == "--quiet")
            o.quiet = true;
        else if (arg == "--verbose")
            o.verbose = true;
        else if (arg == "--stop-server")
            o.stopServer = true;
        else if (arg == "--help" || arg == "-h") {
            usage();
            return std::nullopt;
        } else if (auto it = withValue.find(arg); it != withValue.end() && i + 1 < argc) {
            if (!it->second(argv[++i])) {
                std::fprintf(stderr, "squadron: bad value for %s: %s\n", arg.c_str(), argv[i]);
                return std::nullopt;
            }
        } else {
            std::fprintf(stderr, "squadron: unknown option %s\n", arg.c_str());
            usage();
            return std::nullopt;
        }
    }
    if (o.stopServer && o.serverPid <= 0) {
        std::fprintf(stderr, "squadron: --stop-server needs --server-pid\n");
        return std::nullopt;
    }
    in_addr a{};
    if (inet_pton(AF_INET, o.host.c_str(), &a) != 1 || (ntohl(a.s_addr) >> 24) != 127) {
        std::fprintf(stderr, "squadron: --host must be a loopback address (127.x.y.z)\n");
        return std::nullopt;
    }
    return o;
}

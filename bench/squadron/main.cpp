// squadron: a squadron's evening of peers against a server on loopback, for soak and load runs.
#include "Options.h"
#include "Squadron.h"

#include <csignal>
#include <cstdio>

int main(int argc, char** argv) {
    auto options = parseOptions(argc, argv);
    if (!options) return 2;
    std::signal(SIGPIPE, SIG_IGN);
    Squadron squadron(*options);
    return squadron.run();
}

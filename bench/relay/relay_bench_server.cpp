// relay_bench_server PLAYERS_PORT AWACS_PORT [SIM_PORT AI_SPY_PORT]
// The server as the product runs it headless, on other ports and in the current directory,
// for the load generator's --ports option and for perf/callgrind. Ends on SIGTERM/SIGINT.
#include "net/EventDispatcher.h"
#include "server/ConsoleDisplay.h"
#include "server/Server.h"

#include <QCoreApplication>
#include <QDir>
#include <QSocketNotifier>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <sys/socket.h>
#include <unistd.h>

namespace {
int signalPipe[2];
void onSignal(int) {
    (void)!::write(signalPipe[1], "x", 1);
}
} // namespace

int main(int argc, char* argv[]) {
    if (argc != 3 && argc != 5) {
        std::fprintf(stderr, "usage: relay_bench_server PLAYERS_PORT AWACS_PORT [SIM_PORT AI_SPY_PORT]\n");
        return 2;
    }
    if (QAbstractEventDispatcher* dispatcher = createEventDispatcher())
        QCoreApplication::setEventDispatcher(dispatcher);
    QCoreApplication app(argc, argv);
    Ports ports;
    ports.players = static_cast<quint16>(std::atoi(argv[1]));
    ports.awacs = static_cast<quint16>(std::atoi(argv[2]));
    ports.sims = argc == 5 ? static_cast<quint16>(std::atoi(argv[3])) : 0;
    ports.aiSpy = argc == 5 ? static_cast<quint16>(std::atoi(argv[4])) : 0;

    ConsoleDisplay display;
    Server server(display, QDir::currentPath() + "/", ports);
    server.start();

    ::socketpair(AF_UNIX, SOCK_STREAM, 0, signalPipe);
    std::signal(SIGTERM, onSignal);
    std::signal(SIGINT, onSignal);
    QSocketNotifier notifier(signalPipe[0], QSocketNotifier::Read);
    QObject::connect(&notifier, &QSocketNotifier::activated, [&] { server.exit(); });
    QObject::connect(&server, &Server::finished, &app, &QCoreApplication::quit, Qt::QueuedConnection);
    return app.exec();
}

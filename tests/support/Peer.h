#pragma once
// A scripted peer over real loopback TCP: sends framed messages and collects what the
// in-process server sends back, pumping the event loop while it waits.
#include <QByteArray>
#include <QTcpSocket>

#include <chrono>
#include <string>
#include <vector>

using namespace std::chrono_literals;

// One message as a peer received it: "COMMAND" + data (the NUL removed).
struct Received {
    std::string command, data;
    std::string text() const { return command + data; }
    bool operator==(const Received&) const = default;
};

class Peer {
  public:
    // Connects to 127.0.0.1:port and waits until the server has accepted.
    explicit Peer(quint16 port);
    ~Peer();

    void send(const std::string& command, const std::string& data = {});
    void sendRaw(const QByteArray& bytes);
    // Waits until at least count messages arrived in all (since the start or the last take()).
    bool waitFor(size_t count, std::chrono::milliseconds timeout = 3000ms);
    // Waits for count messages and removes them from the inbox; fewer if the time runs out.
    std::vector<Received> take(size_t count, std::chrono::milliseconds timeout = 3000ms);
    // take(), as "COMMANDdata" texts.
    std::vector<std::string> takeTexts(size_t count, std::chrono::milliseconds timeout = 3000ms);
    // Everything received so far, as "COMMANDdata" texts; the inbox is emptied.
    std::vector<std::string> takeAllTexts();
    // Lets the event loop run for a while and returns the texts received meanwhile.
    std::vector<std::string> settle(std::chrono::milliseconds wait = 150ms);
    const std::vector<Received>& inbox() const { return inbox_; }
    bool isConnected() const;
    // Waits until the server closed the connection.
    bool waitForDisconnect(std::chrono::milliseconds timeout = 3000ms);
    void close();
    QTcpSocket& socket() { return socket_; }

  private:
    void drain();
    QTcpSocket socket_;
    QByteArray pending_;
    std::vector<Received> inbox_;
};

// Ends a connection with a reset instead of a close, as a client that crashes or aborts does.
void resetConnection(QTcpSocket& socket);

// "COMMAND|data" for each message, so a failed comparison shows where the data begins.
std::vector<std::string> texts(const std::vector<Received>& messages);
// Waits for as many messages as expected and checks them in order; anything extra shows up in
// a later check.
void expectNext(Peer& peer, const std::vector<std::string>& expected);

// Pumps the event loop until the predicate holds or the time runs out.
template <typename Predicate> bool pumpUntil(Predicate predicate, std::chrono::milliseconds timeout = 3000ms);
// Pumps the event loop for the given time.
void pumpFor(std::chrono::milliseconds wait);

#include <QCoreApplication>
#include <QElapsedTimer>

template <typename Predicate> bool pumpUntil(Predicate predicate, std::chrono::milliseconds timeout) {
    QElapsedTimer clock;
    clock.start();
    while (!predicate()) {
        if (clock.elapsed() > timeout.count()) return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    }
    return true;
}

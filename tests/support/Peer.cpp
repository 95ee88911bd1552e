#include "support/Peer.h"

#include <gmock/gmock.h>

#if defined(_WIN32)
#include <winsock2.h>
#else
#include <sys/socket.h>
#endif

Peer::Peer(quint16 port) {
    QObject::connect(&socket_, &QTcpSocket::readyRead, [this] { drain(); });
    socket_.connectToHost(QHostAddress::LocalHost, port);
    // A refused connection ends the wait at once instead of running out the clock.
    pumpUntil([this] {
        auto state = socket_.state();
        return state == QAbstractSocket::ConnectedState || state == QAbstractSocket::UnconnectedState;
    });
    // Let the server handle the connection request before the test goes on.
    pumpFor(20ms);
}

Peer::~Peer() {
    socket_.abort();
}

void Peer::send(const std::string& command, const std::string& data) {
    QByteArray bytes = QByteArray::fromStdString(command + data);
    bytes.append('\0');
    sendRaw(bytes);
}

void Peer::sendRaw(const QByteArray& bytes) {
    socket_.write(bytes);
    socket_.flush();
}

void Peer::drain() {
    pending_.append(socket_.readAll());
    qsizetype start = 0;
    for (qsizetype nul = pending_.indexOf('\0'); nul >= 0; nul = pending_.indexOf('\0', start)) {
        std::string message = pending_.mid(start, nul - start).toStdString();
        inbox_.push_back({message.substr(0, 6), message.size() > 6 ? message.substr(6) : std::string()});
        start = nul + 1;
    }
    pending_.remove(0, start);
}

bool Peer::waitFor(size_t count, std::chrono::milliseconds timeout) {
    return pumpUntil([&] { return inbox_.size() >= count; }, timeout);
}

std::vector<Received> Peer::take(size_t count, std::chrono::milliseconds timeout) {
    waitFor(count, timeout);
    size_t n = std::min(count, inbox_.size());
    std::vector<Received> taken(inbox_.begin(), inbox_.begin() + static_cast<long>(n));
    inbox_.erase(inbox_.begin(), inbox_.begin() + static_cast<long>(n));
    return taken;
}

std::vector<std::string> Peer::takeTexts(size_t count, std::chrono::milliseconds timeout) {
    std::vector<std::string> out;
    for (const Received& m : take(count, timeout))
        out.push_back(m.text());
    return out;
}

std::vector<std::string> Peer::takeAllTexts() {
    std::vector<std::string> texts;
    for (const Received& m : inbox_)
        texts.push_back(m.text());
    inbox_.clear();
    return texts;
}

std::vector<std::string> Peer::settle(std::chrono::milliseconds wait) {
    pumpFor(wait);
    return takeAllTexts();
}

bool Peer::isConnected() const {
    return socket_.state() == QAbstractSocket::ConnectedState;
}

bool Peer::waitForDisconnect(std::chrono::milliseconds timeout) {
    return pumpUntil([this] { return socket_.state() == QAbstractSocket::UnconnectedState; }, timeout);
}

void Peer::close() {
    socket_.disconnectFromHost();
    pumpFor(20ms);
}

// No time to linger: the system answers the close with a reset.
void resetConnection(QTcpSocket& socket) {
    linger none{};
    none.l_onoff = 1;
    none.l_linger = 0;
#if defined(_WIN32)
    setsockopt(static_cast<SOCKET>(socket.socketDescriptor()), SOL_SOCKET, SO_LINGER,
               reinterpret_cast<const char*>(&none), sizeof none);
#else
    setsockopt(static_cast<int>(socket.socketDescriptor()), SOL_SOCKET, SO_LINGER, &none, sizeof none);
#endif
    socket.abort();
}

void pumpFor(std::chrono::milliseconds wait) {
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < wait.count())
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
}

std::vector<std::string> texts(const std::vector<Received>& messages) {
    std::vector<std::string> out;
    for (const Received& m : messages)
        out.push_back(m.command + "|" + m.data);
    return out;
}

void expectNext(Peer& peer, const std::vector<std::string>& expected) {
    EXPECT_THAT(texts(peer.take(expected.size())), ::testing::ElementsAreArray(expected));
}

#pragma once
// Peers that misbehave on purpose, and what the tests of the server's limits share.
#include "support/Peer.h"

#include <QTcpSocket>

#include <string>
#include <vector>

// Messages as one write: each followed by its NUL.
inline QByteArray batch(const std::vector<std::string>& messages) {
    QByteArray bytes;
    for (const std::string& m : messages) {
        bytes.append(m.data(), static_cast<qsizetype>(m.size()));
        bytes.append('\0');
    }
    return bytes;
}

// The same message n times, as one write.
inline QByteArray repeated(const std::string& message, int n) {
    return batch(std::vector<std::string>(static_cast<size_t>(n), message));
}

// A connection that writes and never reads: its side of the stream stops taking bytes once a
// byte is waiting, so whatever the server sends it piles up at the server.
class NonReader {
  public:
    explicit NonReader(quint16 port) {
        socket_.setReadBufferSize(1);
        // A small window, so the system takes little of what the server sends off its hands.
        socket_.setSocketOption(QAbstractSocket::ReceiveBufferSizeSocketOption, 4096);
        socket_.connectToHost(QHostAddress::LocalHost, port);
        pumpUntil([this] { return socket_.state() == QAbstractSocket::ConnectedState; });
        pumpFor(20ms);
    }
    void send(const QByteArray& bytes) {
        socket_.write(bytes);
        pumpUntil([this] { return socket_.bytesToWrite() == 0; });
    }
    QTcpSocket& socket() { return socket_; }

  private:
    QTcpSocket socket_;
};

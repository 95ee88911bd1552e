#pragma once
// Connections the server has closed while they still held output for their peers. Each goes
// on writing on its own until its queue is empty, the peer goes, or kLingerMs pass. A peer
// that asks for output and then leaves it unread must not pile these up: past kMaxCount
// connections or kMaxBytes of output in all, the oldest is cut off at once.
#include <QObject>

#include <deque>

class QTcpSocket;

class ClosedConnections : public QObject {
  public:
    static constexpr int kLingerMs = 10000;
    static constexpr int kMaxCount = 64;
    static constexpr qint64 kMaxBytes = 16 * 1024 * 1024;

    static ClosedConnections& instance();

    // Takes over a connection that no element owns any more.
    void adopt(QTcpSocket* socket);
    int count() const { return static_cast<int>(sockets_.size()); }
    // Hands what they hold to the system as far as it takes it now, without waiting; returns
    // whether some is still held. Nothing is raised to the server (used before the process ends).
    bool writeOut();

  private:
    void forget(QTcpSocket* socket);
    void enforceLimits();
    std::deque<QTcpSocket*> sockets_; // oldest first
};

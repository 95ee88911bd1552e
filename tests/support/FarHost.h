#pragma once
// A second host for the tests (Linux): this process moves into a network namespace of its own,
// and a second namespace is joined to it by a veth pair, this end 10.203.0.1, the far end
// 10.203.0.2, both inside namespaces the test made. Connections made from the far host are
// ordinary TCP connections until its link is cut: from then on nothing passes either way, no
// FIN and no reset, as when a peer's machine loses power or its cable is pulled.
//
// Make it before anything listens: the server's sockets must be made in this process's new
// namespace. Needs the right to make network namespaces (root); without it, ready() is false
// and error() says why.
#include <QByteArray>
#include <QString>

#include <vector>

class FarHost {
  public:
    static constexpr const char* kNearAddress = "10.203.0.1";

    FarHost();
    ~FarHost();
    FarHost(const FarHost&) = delete;
    FarHost& operator=(const FarHost&) = delete;

    bool ready() const { return error_.isEmpty(); }
    const QString& error() const { return error_; }

    // A TCP connection from the far host to the port here, connected (the server's system has
    // accepted it); -1 when it could not be made.
    int connect(quint16 port);
    // Writes the bytes on a connection made by connect(); false when they did not all go.
    static bool send(int connection, const QByteArray& bytes);
    // The far end's link goes down.
    void cut();

  private:
    bool run(const QStringList& command, bool far);
    int nearNamespace_ = -1;
    int farNamespace_ = -1;
    QString error_;
    std::vector<int> connections_;
};

#include "net/Listener.h"

#include "basics/OperatorLog.h"
#include "basics/RuntimeError.h"
#include "net/DescriptorLimit.h"

#include <QElapsedTimer>
#include <QTcpSocket>

#include <algorithm>
#include <vector>

namespace {
// How long accepting rests when the process is out of descriptors.
constexpr int kPauseMs = 250;
constexpr int kAcceptsPerTurn = 30; // Qt's default maximum of pending connections
// A host out of descriptors stays so for a while: told once a minute, not at every rest.
constexpr qint64 kTellPauseEveryMs = 60'000;
std::vector<Listener*> listeners;
} // namespace

Listener::Listener(QObject* parent) : QObject(parent), server_(*this) {
    listeners.push_back(this);
    resume_.setSingleShot(true);
    resume_.setInterval(kPauseMs);
    // Resuming while still out of descriptors would have the system offer the same connection
    // over and over, every attempt failing: rest again instead.
    // A failed accept (out of descriptors after all, or a connection aborted before it was
    // taken) has the listener stop accepting for good: it rests like the others and resumes.
    connect(&server_, &QTcpServer::acceptError, this, [this] { pauseAll(server_.errorString()); });
    connect(&resume_, &QTimer::timeout, this, [this] {
        if (!server_.isListening()) return;
        if (descriptors::roomToAccept()) {
            server_.setMaxPendingConnections(kAcceptsPerTurn);
            server_.resumeAccepting();
        } else
            resume_.start();
    });
}

Listener::~Listener() {
    std::erase(listeners, this);
}

void Listener::listen(const QHostAddress& address, quint16 port, std::string_view peerKind) {
    if (server_.listen(address, port)) {
        qCInfo(lcRun, "listening for %s connections on %s port %u", std::string(peerKind).c_str(),
               qUtf8Printable(address == QHostAddress::Any ? QString("every address") : address.toString()),
               static_cast<unsigned>(server_.serverPort()));
        return;
    }
    const QString where =
        QString("port %1 on %2")
            .arg(port)
            .arg(address == QHostAddress::Any ? QString("every address") : address.toString());
    RuntimeError error(10048, "Address in use");
    QString why;
    switch (server_.serverError()) {
    case QAbstractSocket::AddressInUseError:
        why = "another program holds it (is a Tessark Server already running as another user or a service?)";
        break;
    case QAbstractSocket::SocketAccessError:
        why = "this user may not listen there (ports below 1024 need privileges)";
        error = RuntimeError(10013, "Permission denied");
        break;
    case QAbstractSocket::SocketAddressNotAvailableError:
        why = "that address is not one of this machine's";
        error = RuntimeError(10049, "Address not available");
        break;
    default:
        why = server_.errorString();
        break;
    }
    qCCritical(lcRun, "cannot listen for %s connections on %s: %s", std::string(peerKind).c_str(),
               qUtf8Printable(where), qUtf8Printable(why));
    throw error;
}

void Listener::close() {
    resume_.stop();
    server_.close();
}

void Listener::take(qintptr requestId) {
    if (requestId == raising_) raising_ = -1;
}

// Every port shares the process's descriptors: when one runs short, all of them rest.
void Listener::pauseAll(const QString& why) {
    static QElapsedTimer told;
    if (!told.isValid() || told.elapsed() >= kTellPauseEveryMs) {
        told.start();
        qCWarning(lcAccess, "no connection is taken for %d ms: %s", kPauseMs, qUtf8Printable(why));
    }
    for (Listener* listener : listeners) {
        if (!listener->server_.isListening()) continue;
        // Qt accepts in a loop until the system has no more connections waiting, pause or not;
        // it stops when its pending connections reach the maximum, so that maximum is made 0 (this
        // listener keeps none pending: each is taken or refused as it comes).
        listener->server_.setMaxPendingConnections(0);
        listener->server_.pauseAccepting();
        listener->resume_.start();
    }
}

void Listener::raise(qintptr handle) {
    if (descriptors::nearLimit(handle))
        pauseAll("the server has nearly all the files and connections the system lets it hold open");
    raising_ = handle;
    emit connectionRequest(handle);
    if (raising_ == handle) {
        // Nobody took it (all slots in use, or the AI Spy link is busy): refuse it.
        QTcpSocket refused;
        if (refused.setSocketDescriptor(handle)) refused.abort();
    }
    raising_ = -1;
}

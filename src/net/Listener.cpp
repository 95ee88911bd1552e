#include "net/Listener.h"

#include "server/RuntimeError.h"

#include <QTcpSocket>

Listener::Listener(QObject* parent) : QObject(parent), server_(*this) {}

void Listener::listen(quint16 port) {
    if (!server_.listen(QHostAddress::Any, port)) throw RuntimeError(10048, "Address in use");
}

void Listener::close() { server_.close(); }

void Listener::take(qintptr requestId) {
    if (requestId == raising_) raising_ = -1;
}

void Listener::raise(qintptr handle) {
    raising_ = handle;
    emit connectionRequest(handle);
    if (raising_ == handle) {
        // Nobody took it (all slots in use, or the AI Spy link is busy): refuse it.
        QTcpSocket refused;
        if (refused.setSocketDescriptor(handle)) refused.abort();
    }
    raising_ = -1;
}

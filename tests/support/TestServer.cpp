#include "support/TestServer.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>

TestServer::TestServer(const std::string& iniText, bool startNow) {
    dirPath_ = tmp_.path() + QDir::separator();
    if (!iniText.empty()) writeFile("tessark.ini", iniText);
    server_ = std::make_unique<Server>(display_, dirPath_, Ports::anyFree(), [this] { ++ended_; });
    if (startNow) start();
}

TestServer::~TestServer() {
    server_.reset();
    // Sockets closed by the server finish their close in the event loop.
    QCoreApplication::processEvents();
}

void TestServer::start() {
    server_->start();
}

void TestServer::writeFile(const QString& name, const std::string& content) const {
    QFile f(dirPath_ + name);
    f.open(QIODevice::WriteOnly | QIODevice::Truncate);
    f.write(content.data(), static_cast<qint64>(content.size()));
}

std::string TestServer::readFile(const QString& name) const {
    QFile f(dirPath_ + name);
    if (!f.open(QIODevice::ReadOnly)) return {};
    return f.readAll().toStdString();
}

#include "support/TestServer.h"

#include "setups/SetupCatalogue.h"
#include "support/Files.h"

#include <QCoreApplication>

TestServer::TestServer(const std::string& iniText, bool startNow, const std::string& settingsText) {
    dirPath_ = tmp_.path() + QDir::separator();
    if (!iniText.empty()) writeFile("tessark.ini", iniText);
    server_ = std::make_unique<Server>(display_, dirPath_, Ports::anyFree(), [this] { ++ended_; });
    if (!settingsText.empty()) {
        writeFile(kSettingsFileName, settingsText);
        const QString settings = path(kSettingsFileName);
        server_->useSettings(settings, true, readServerSettings(settings, true, dirPath_));
    }
    if (startNow) start();
}

TestServer::~TestServer() {
    server_.reset();
    // Sockets closed by the server finish their close in the event loop.
    QCoreApplication::processEvents();
}

void TestServer::start() {
    server_->start();
    started_ = true;
}

void TestServer::writeFile(const QString& name, const std::string& content) const {
    ::writeFile(dirPath_ + name, content);
}

std::string TestServer::readFile(const QString& name) const {
    return ::readFile(dirPath_ + name).toStdString();
}

std::string setupListIni(const QStringList& paths) {
    std::string ini = "[SETUPLIST]\r\nNUM=" + std::to_string(paths.size()) + "\r\n";
    for (qsizetype i = 0; i < paths.size(); ++i)
        ini += "[SETUPLIST" + std::to_string(i + 1) + "]\r\nFNAME=" + paths[i].toStdString() + "\r\n";
    return ini;
}

std::string TestServer::setupList(const std::vector<QString>& names) const {
    QStringList paths;
    for (const QString& name : names)
        paths.push_back(path(name));
    return setupListIni(paths);
}

void TestServer::catalogue(const std::vector<std::pair<QString, std::string>>& setups,
                           const std::string& more) {
    std::vector<QString> names;
    for (const auto& [name, text] : setups) {
        writeFile(name, text);
        names.push_back(name);
    }
    writeFile("tessark.ini", setupList(names) + more);
    if (started_) server_->setups().reload();
}

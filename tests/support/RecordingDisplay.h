#pragma once
#include "basics/StatusDisplay.h"

#include <QStringList>

// A display that remembers what the server showed.
class RecordingDisplay : public StatusDisplay {
  public:
    std::vector<PlayerRow> rows;
    QString awacsCount, simCount;
    bool aiSpyConnected = false;
    QStringList messageBoxes; // "title|text"
    QStringList trayEvents;   // "add:<tip>", "remove"
    int unloadOtherFormsCalls = 0;

    void showPlayers(const std::vector<PlayerRow>& r) override { rows = r; }
    void showAwacsCount(const QString& t) override { awacsCount = t; }
    void showSimCount(const QString& t) override { simCount = t; }
    void showAiSpyState(bool c) override { aiSpyConnected = c; }
    void messageBox(const QString& text, const QString& title, MessageIcon) override {
        messageBoxes << title + "|" + text;
    }
    void addTrayIcon(const QString& tip) override { trayEvents << "add:" + tip; }
    void removeTrayIcon() override { trayEvents << "remove"; }
    void unloadOtherForms() override { ++unloadOtherFormsCalls; }
};

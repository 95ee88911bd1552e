#pragma once
#include "basics/StatusDisplay.h"

// Headless: no windows; every message box becomes one line on standard error holding its text,
// and the server goes on as if it had been dismissed.
class ConsoleDisplay : public StatusDisplay {
  public:
    void showPlayers(const std::vector<PlayerRow>&) override {}
    void showAwacsCount(const QString&) override {}
    void showSimCount(const QString&) override {}
    void showAiSpyState(bool) override {}
    void messageBox(const QString& text, const QString& title, MessageIcon icon) override;
    void addTrayIcon(const QString&) override {}
    void removeTrayIcon() override {}
    void unloadOtherForms() override {}
};

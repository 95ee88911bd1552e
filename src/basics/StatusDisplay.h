#pragma once
// How the server shows itself. Logic never touches widgets: the status window implements this
// with its controls, headless mode writes message boxes to standard error, and tests record.
#include <QString>

#include <vector>

struct PlayerRow {
    QString text; // Name & " (" & PlayerSetupName & ")"
    int image;    // 1 verified, 2 failed, 3 not yet verified, 0 none
    int slot = 0; // the slot of the player's connection (not shown; the window's menu acts on it)
};

enum class MessageIcon { None, Critical, Information };

class StatusDisplay {
  public:
    virtual ~StatusDisplay() = default;
    virtual void showPlayers(const std::vector<PlayerRow>& rows) = 0; // TreeView1
    virtual void showAwacsCount(const QString& text) = 0;             // Text1
    virtual void showSimCount(const QString& text) = 0;               // Text2
    virtual void showAiSpyState(bool connected) = 0;                  // Label4
    // A modal message box; returns once it was dismissed.
    virtual void messageBox(const QString& text, const QString& title, MessageIcon icon) = 0;
    virtual void addTrayIcon(const QString& tip) = 0;
    virtual void removeTrayIcon() = 0;
    // Closes every window of the program other than the status window.
    virtual void unloadOtherForms() = 0;
};

#pragma once
// What Windows does to a running program, done by the test to a server it started: the end of
// the session told to each of the program's top-level windows, a close request to one window,
// Ctrl+C on the console the program shares with the test.
#include <QString>
#include <QtGlobal>

#ifdef Q_OS_WIN
#include <windows.h>

#include <vector>

namespace windows_session {

inline std::vector<HWND> topLevelWindows(qint64 processId) {
    struct Search {
        DWORD processId;
        std::vector<HWND> found;
    } search{static_cast<DWORD>(processId), {}};
    EnumWindows(
        [](HWND window, LPARAM data) -> BOOL {
            auto* s = reinterpret_cast<Search*>(data);
            DWORD owner = 0;
            GetWindowThreadProcessId(window, &owner);
            if (owner == s->processId) s->found.push_back(window);
            return TRUE;
        },
        reinterpret_cast<LPARAM>(&search));
    return search.found;
}

inline QString title(HWND window) {
    wchar_t text[256] = {};
    GetWindowTextW(window, text, 256);
    return QString::fromWCharArray(text);
}

// The process's visible top-level window with that title, or null.
inline HWND visibleWindow(qint64 processId, const QString& wanted) {
    for (HWND window : topLevelWindows(processId))
        if (IsWindowVisible(window) && title(window) == wanted) return window;
    return nullptr;
}

// As Windows logs the user off: every top-level window is asked whether the session may end,
// then told that it ends. Returns whether every window agreed.
inline bool endSession(qint64 processId) {
    const std::vector<HWND> windows = topLevelWindows(processId);
    bool agreed = !windows.empty();
    for (HWND window : windows) {
        DWORD_PTR answer = 0;
        if (!SendMessageTimeoutW(window, WM_QUERYENDSESSION, 0, ENDSESSION_LOGOFF, SMTO_ABORTIFHUNG, 5000,
                                 &answer) ||
            !answer)
            agreed = false;
    }
    for (HWND window : windows) {
        DWORD_PTR ignored = 0;
        SendMessageTimeoutW(window, WM_ENDSESSION, TRUE, ENDSESSION_LOGOFF, SMTO_ABORTIFHUNG, 10000,
                            &ignored);
    }
    return agreed;
}

// A console of this process's own, for a server started afterwards to join. (Run from a pipe,
// the test has none, or under Wine one without a window that takes no Ctrl+C.)
inline void haveConsole() {
    if (GetConsoleWindow()) return;
    FreeConsole();
    AllocConsole();
}

// Ctrl+C on this process's console, which the server joined; the test itself ignores it.
inline bool pressCtrlC() {
    SetConsoleCtrlHandler(nullptr, TRUE);
    return GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0);
}

} // namespace windows_session
#endif

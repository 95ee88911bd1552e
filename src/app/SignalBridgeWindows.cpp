// Windows has no SIGTERM: what asks a running program to stop is the end of the Windows
// session, told to every top-level window, and the console's Ctrl+C, Ctrl+Break and close.
#include "app/SignalBridge.h"

#ifdef Q_OS_WIN
#include <QMetaObject>

#include <windows.h>

namespace {
SignalBridge* bridge = nullptr;
bool requested = false;
// Set once the bridge goes, which is after the server has shut down: a closing console waits
// for it, since the process ends as soon as its handler returns.
HANDLE shutDown = nullptr;
constexpr wchar_t kSessionWindowClass[] = L"TessarkServerSession";

void request(const QString& why) {
    if (requested || !bridge) return;
    requested = true;
    emit bridge->terminationRequested(why);
}

// A hidden top-level window of its own hears the session end whatever Qt shows (or does not
// show, as under the offscreen platform), and is never closed by anything but the process.
LRESULT CALLBACK sessionWindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_QUERYENDSESSION:
        return TRUE; // never in the way of a log off or shut down
    case WM_ENDSESSION:
        // Windows may end the process as soon as this returns: shut down now, inside the
        // message, so every peer has its "DISCON" before then.
        if (wParam) request("the end of the Windows session");
        return 0;
    default:
        return DefWindowProcW(window, message, wParam, lParam);
    }
}

// Called on a thread Windows starts for the console event.
BOOL WINAPI onConsoleEvent(DWORD event) {
    switch (event) {
    case CTRL_C_EVENT:
    case CTRL_BREAK_EVENT:
    case CTRL_CLOSE_EVENT:
        if (bridge)
            QMetaObject::invokeMethod(
                bridge,
                [event] {
                    request(event == CTRL_CLOSE_EVENT ? "the console's close" : "Ctrl+C in the console");
                },
                Qt::QueuedConnection);
        if (event == CTRL_CLOSE_EVENT && shutDown) WaitForSingleObject(shutDown, 4000);
        return TRUE;
    default:
        return FALSE;
    }
}
} // namespace

void ignoreSignalsThatMustNotEndTheServer() {}

SignalBridge::SignalBridge(QObject* parent) : QObject(parent) {
    bridge = this;
    requested = false;
    shutDown = CreateEventW(nullptr, TRUE, FALSE, nullptr);

    HINSTANCE instance = GetModuleHandleW(nullptr);
    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = sessionWindowProc;
    windowClass.hInstance = instance;
    windowClass.lpszClassName = kSessionWindowClass;
    RegisterClassW(&windowClass);
    sessionWindow_ = CreateWindowExW(0, kSessionWindowClass, L"Tessark Server", WS_OVERLAPPED, 0, 0, 0, 0,
                                     nullptr, nullptr, instance, nullptr);

    // A program for the desktop gets no console of its own; started from one, it joins it,
    // so that Ctrl+C there reaches it.
    AttachConsole(ATTACH_PARENT_PROCESS);
    SetConsoleCtrlHandler(onConsoleEvent, TRUE);
}

SignalBridge::~SignalBridge() {
    if (sessionWindow_) DestroyWindow(static_cast<HWND>(sessionWindow_));
    bridge = nullptr;
    if (shutDown) SetEvent(shutDown);
}
#endif

#pragma once
// The machine-wide registry of a Windows test run: keys written and removed with Wine's own
// reg.exe (what `wine reg add` runs) in the run's throw-away Wine prefix. On a real Windows
// machine these tests would rewrite its Falcon 4 key, so they run under Wine only.
#include <QtGlobal>

#ifdef Q_OS_WIN
#include <QProcess>
#include <QStringList>

#include <windows.h>

namespace windows_registry {

inline bool underWine() {
    HMODULE ntdll = GetModuleHandleW(L"ntdll.dll");
    return ntdll && GetProcAddress(ntdll, "wine_get_version");
}

// reg.exe with these arguments; true when it succeeded.
inline bool reg(const QStringList& arguments) {
    QProcess process;
    process.start("reg", arguments);
    return process.waitForFinished(30000) && process.exitStatus() == QProcess::NormalExit &&
           process.exitCode() == 0;
}

inline const QString kFalconKey = "HKLM\\SOFTWARE\\Microprose\\Falcon\\4.0";

// A value of the Falcon key in one view: "/reg:32" (where the 32-bit installer writes) or "/reg:64".
inline bool setFalconValue(const QString& view, const QString& name, const QString& type,
                           const QString& data) {
    return reg({"add", kFalconKey, "/v", name, "/t", type, "/d", data, "/f", view});
}

inline void deleteFalconKey() {
    for (const char* view : {"/reg:32", "/reg:64"})
        reg({"delete", kFalconKey, "/f", view});
}

} // namespace windows_registry
#endif

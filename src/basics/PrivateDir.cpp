#include "basics/PrivateDir.h"

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

#ifndef Q_OS_WIN
#include <cerrno>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>
#endif

#ifdef Q_OS_WIN
QString privateRuntimeDir(QString* error) {
    const QString dir =
        QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + "/Tessark Server";
    if (!QDir().mkpath(dir)) {
        if (error) *error = "cannot make " + QDir::toNativeSeparators(dir);
        return {};
    }
    return dir;
}

bool isOwnPrivateDir(const QString&) {
    return false;
}

long ownerOf(const QString&) {
    return -1;
}

long effectiveUser() {
    return -1;
}
#else
namespace {

// Made with mode 0700 if missing; then it must be a real directory of ours that nobody else
// may write to.
bool ensurePrivate(const QString& dir, QString* error) {
    const QByteArray path = QFile::encodeName(dir);
    if (::mkdir(path.constData(), 0700) != 0 && errno != EEXIST) {
        if (error) *error = QString("cannot make %1: %2").arg(dir, std::strerror(errno));
        return false;
    }
    struct stat st {};
    if (::lstat(path.constData(), &st) != 0 || !S_ISDIR(st.st_mode) || st.st_uid != ::geteuid() ||
        (st.st_mode & 077) != 0) {
        if (error) *error = QString("%1 is not a directory of this user's own (mode 0700)").arg(dir);
        return false;
    }
    return true;
}

} // namespace

// The session's runtime directory; else one of ours in the temporary directory; and when
// another user made that one first, one in our home, where nobody else can.
QString privateRuntimeDir(QString* error) {
    const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    if (!runtime.isEmpty() && QFileInfo(runtime).isDir()) {
        const QString dir = runtime + "/tessark-server";
        if (ensurePrivate(dir, error)) return dir;
        return {};
    }
    const QString temporary = QDir::tempPath() + "/tessark-server-" + QString::number(::geteuid());
    if (ensurePrivate(temporary, error)) return temporary;
    const QString home = QDir::homePath();
    if (home.isEmpty() || home == "/" || ownerOf(home) != effectiveUser()) return {};
    const QString cache = home + "/.cache";
    QDir().mkpath(cache);
    const QString dir = cache + "/tessark-server";
    if (ensurePrivate(dir, error)) return dir;
    return {};
}

bool isOwnPrivateDir(const QString& dir) {
    struct stat st {};
    if (::stat(QFile::encodeName(dir).constData(), &st) != 0) return false;
    return S_ISDIR(st.st_mode) && st.st_uid == ::geteuid() && (st.st_mode & 022) == 0;
}

long ownerOf(const QString& path) {
    struct stat st {};
    if (::stat(QFile::encodeName(path).constData(), &st) != 0) return -1;
    return static_cast<long>(st.st_uid);
}

long effectiveUser() {
    return static_cast<long>(::geteuid());
}
#endif

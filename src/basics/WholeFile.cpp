#include "basics/WholeFile.h"

#include "basics/RuntimeError.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryFile>

#include <cerrno>

#ifdef Q_OS_WIN
#include <windows.h>
#else
#include <fcntl.h>
#include <unistd.h>
#endif

namespace {

// The system's own number for the last failure, read at once after the failing call.
int lastSystemError() {
#ifdef Q_OS_WIN
    return static_cast<int>(GetLastError());
#else
    return errno;
#endif
}

RuntimeError classicFailure(int systemError) {
#ifdef Q_OS_WIN
    constexpr int kQuotaExceeded = 1295; // ERROR_DISK_QUOTA_EXCEEDED, which MinGW's headers lack
    const bool full = systemError == ERROR_DISK_FULL || systemError == ERROR_HANDLE_DISK_FULL ||
                      systemError == kQuotaExceeded;
    const bool device = systemError == ERROR_CRC || systemError == ERROR_IO_DEVICE ||
                        systemError == ERROR_WRITE_FAULT || systemError == ERROR_GEN_FAILURE;
#else
    const bool full = systemError == ENOSPC || systemError == EDQUOT || systemError == EFBIG;
    const bool device = systemError == EIO;
#endif
    if (full) return {61, "Disk full"};
    if (device) return {57, "Device I/O error"};
    return {75, "Path/File access error"};
}

// "Disk full: /srv/tessark/tessark.ini was not written (No space left on device); the file
// there is as it was": what failed, where, why, and that nothing was lost.
[[noreturn]] void fail(const QString& path, int systemError, const QString& reason) {
    const RuntimeError classic = classicFailure(systemError);
    const bool existed = QFileInfo::exists(path);
    throw RuntimeError(classic.number, classic.description() + ": " +
                                           QDir::toNativeSeparators(path).toStdString() +
                                           " was not written (" + reason.toStdString() + ")" +
                                           (existed ? "; the file there is as it was" : ""));
}

QString systemReason(int systemError, const QString& fallback) {
    return systemError != 0 ? qt_error_string(systemError) : fallback;
}

#ifndef Q_OS_WIN
// The rename itself is made durable too, so that after a power cut the name holds the old file
// or the new one. A directory that cannot be synced costs only that.
void syncDirectory(const QString& dir) {
    const int fd = ::open(QFile::encodeName(dir).constData(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return;
    ::fsync(fd);
    ::close(fd);
}
#endif

} // namespace

WholeFileWriter::WholeFileWriter(const QString& path) : path_(QFileInfo(path).absoluteFilePath()) {
    const QFileInfo target(path_);
    if (target.isSymLink())
        fail(path_, 0, "it is a symbolic link, and the server writes through none it did not make");
    // A directory, a device, a pipe: the name is not a file's, and a rename would replace it.
    if (target.exists() && !target.isFile()) fail(path_, 0, "something other than a file has that name");
    // Named after the target and hidden, so a left-over (a crash part-way) says what it was and
    // is never taken for a setup.
    file_ = std::make_unique<QTemporaryFile>(target.absolutePath() + "/." + target.fileName() + ".XXXXXX");
    if (!file_->open()) {
        const int error = lastSystemError();
        fail(path_, error, "no file can be made in its directory: " + file_->errorString());
    }
}

WholeFileWriter::~WholeFileWriter() = default;

void WholeFileWriter::write(std::string_view bytes) {
    const auto size = static_cast<qint64>(bytes.size());
    if (file_->write(bytes.data(), size) != size) {
        const int error = lastSystemError();
        fail(path_, error, systemReason(error, file_->errorString()));
    }
}

void WholeFileWriter::commit() {
    if (!file_->flush() || file_->error() != QFileDevice::NoError) {
        const int error = lastSystemError();
        fail(path_, error, systemReason(error, file_->errorString()));
    }
#ifndef Q_OS_WIN
    // Some file systems tell a full disk only here (NFS, delayed allocation under quota).
    if (::fsync(file_->handle()) != 0) {
        const int error = lastSystemError();
        fail(path_, error, systemReason(error, "it could not be synced to the disk"));
    }
#endif
    file_->setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ReadGroup |
                          QFileDevice::ReadOther);
    const QString temporary = file_->fileName();
#ifdef Q_OS_WIN
    // Windows renames no open file, and a temporary file's close() keeps its handle open for a
    // reopening: only its end lets the file go. An existing file is replaced only when asked.
    file_->setAutoRemove(false);
    file_.reset();
    const bool renamed =
        MoveFileExW(reinterpret_cast<const wchar_t*>(QDir::toNativeSeparators(temporary).utf16()),
                    reinterpret_cast<const wchar_t*>(QDir::toNativeSeparators(path_).utf16()),
                    MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0;
    if (!renamed) {
        const int error = lastSystemError();
        QFile::remove(temporary);
        fail(path_, error, systemReason(error, "the new file could not take its name"));
    }
#else
    // rename() replaces whatever entry has the name, a link planted since the check included,
    // and never follows it.
    if (::rename(QFile::encodeName(temporary).constData(), QFile::encodeName(path_).constData()) != 0) {
        const int error = lastSystemError();
        fail(path_, error, systemReason(error, "the new file could not take its name"));
    }
    file_->setAutoRemove(false);
    file_.reset();
#endif
#ifndef Q_OS_WIN
    syncDirectory(QFileInfo(path_).absolutePath());
#endif
}

void writeWholeFile(const QString& path, std::string_view bytes) {
    WholeFileWriter file(path);
    file.write(bytes);
    file.commit();
}

#pragma once
// Whole files as the tests write and read them.
#include <QByteArray>
#include <QByteArrayView>
#include <QDir>
#include <QFile>
#include <QFileInfo>

// Writes the bytes, creating the folders on the way; returns the path.
inline QString writeFile(const QString& path, QByteArrayView bytes) {
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    if (file.open(QIODevice::WriteOnly | QIODevice::Truncate)) file.write(bytes.data(), bytes.size());
    return path;
}

// The file's bytes; empty when it cannot be read.
inline QByteArray readFile(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

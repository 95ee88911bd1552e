#pragma once
// The ban file on disk: read robustly (a missing file is no bans, a damaged one yields the lines
// that read), written whole or not at all, and never through a link that someone else put in its
// place.
#include "net/BanList.h"

#include <QString>

// Larger than any list of kMaxBans lines: more is damage, and only this much is read.
inline constexpr qint64 kMaxBanFileBytes = 256 * 1024;

struct BanFileReading {
    BanText text;
    QString error; // the file exists but could not be read
};
BanFileReading readBanFile(const QString& path);

// Writes the bans; on failure returns why (and the file is as it was).
QString writeBanFile(const QString& path, const QList<Ban>& bans);

#pragma once
// The largest files the server reads whole. No real setup or tessark.ini comes near them; a
// file beyond them is refused with a clear error rather than read.
#include <QtGlobal>

struct FileLimits {
    qint64 setupFileBytes = 4 * 1024 * 1024;
    qint64 iniFileBytes = 4 * 1024 * 1024;
};

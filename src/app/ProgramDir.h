#pragma once
#include <QString>

// The program directory with a trailing separator; a drive root ("C:\") stays as it is.
QString programDirWithSeparator(const QString& directory);

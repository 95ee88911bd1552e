#include "server/ConsoleDisplay.h"

#include <cstdio>

void ConsoleDisplay::messageBox(const QString& text, const QString&, MessageIcon) {
    std::fprintf(stderr, "%s\n", text.toLocal8Bit().constData());
    std::fflush(stderr);
}

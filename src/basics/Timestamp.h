#pragma once
#include <string>

// "mm/dd/yyyy - hh:mm:ss" in local time: the prefix of every traffic and error log line.
std::string logTimestamp();

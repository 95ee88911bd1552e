#pragma once
#include "server/VbList.h"

#include <string>

// One received message: the first 6 characters and the rest, without the NUL.
struct CommandRec {
    std::string Command;
    std::string Data;
};

// The commands of one arrival, elements 1..ubound() in arrival order.
using CommandList = VbList<CommandRec>;

#pragma once
#include "server/VbList.h"

#include <string_view>

// One received message: the first 6 characters and the rest, without the NUL. Both view the
// bytes of the arrival they came from, which outlive the message's handling.
struct CommandRec {
    std::string_view Command;
    std::string_view Data;
};

// The commands of one arrival, elements 1..ubound() in arrival order.
using CommandList = VbList<CommandRec>;

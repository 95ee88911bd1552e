#pragma once
#include "basics/VbList.h"

#include <string_view>

// One received message: the first 6 characters and the rest, without the NUL. Both view the
// bytes of the arrival they came from, which outlive the message's handling.
struct Message {
    std::string_view command;
    std::string_view data;
};

// The commands of one arrival, elements 1..ubound() in arrival order.
using MessageList = VbList<Message>;

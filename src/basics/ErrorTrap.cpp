#include "basics/ErrorTrap.h"

void ErrorTrap::settle(std::string_view suffix) {
    if (!pending_) return;
    RuntimeError e = *pending_;
    pending_.reset();
    if (!log_.enabled()) return;
    log_.write("TskSrvForm1::" + std::string(routine_) + " - Error: " + std::to_string(e.number) + " - " +
               e.description() + std::string(suffix));
}

#include "basics/ErrorTrap.h"

void ErrorTrap::settle(std::string_view suffix) {
    if (!pending_) return;
    RuntimeError e = *pending_;
    pending_.reset();
    log_.trapped(routine_, e, suffix);
}

#include "net/DescriptorLimit.h"

#if defined(Q_OS_UNIX)
#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>
#endif

namespace {
// Left for what the server opens itself: logs, setup files, the settings.
constexpr qintptr kSpare = 16;
} // namespace

namespace descriptors {

void raiseSoftLimit() {
#if defined(Q_OS_UNIX)
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur == limit.rlim_max) return;
    limit.rlim_cur = limit.rlim_max;
    setrlimit(RLIMIT_NOFILE, &limit);
#endif
}

bool nearLimit(qintptr accepted) {
#if defined(Q_OS_UNIX)
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY) return false;
    return accepted + kSpare >= static_cast<qintptr>(limit.rlim_cur);
#else
    Q_UNUSED(accepted);
    return false; // sockets are not numbered from a small table there
#endif
}

bool roomToAccept() {
#if defined(Q_OS_UNIX)
    const int probe = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    if (probe < 0) return false;
    ::close(probe);
    return !nearLimit(probe);
#else
    return true;
#endif
}

} // namespace descriptors

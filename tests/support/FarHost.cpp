#include "support/FarHost.h"

#include <QProcess>
#include <QStringList>

#if defined(Q_OS_LINUX)
#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <sched.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace {
constexpr const char* kFarAddress = "10.203.0.2";

QString systemError(const char* what) {
    return QString("%1: %2").arg(what, QString::fromLocal8Bit(std::strerror(errno)));
}

int currentNamespace() {
    return ::open("/proc/thread-self/ns/net", O_RDONLY | O_CLOEXEC);
}
} // namespace

FarHost::FarHost() {
    if (::unshare(CLONE_NEWNET) != 0) {
        error_ = systemError("no network namespace of the test's own (unshare)");
        return;
    }
    nearNamespace_ = currentNamespace();
    if (::unshare(CLONE_NEWNET) != 0) {
        error_ = systemError("no second network namespace (unshare)");
        return;
    }
    farNamespace_ = currentNamespace();
    if (::setns(nearNamespace_, CLONE_NEWNET) != 0) {
        error_ = systemError("cannot return to the test's namespace (setns)");
        return;
    }
    const QString far = QString("/proc/%1/fd/%2").arg(::getpid()).arg(farNamespace_);
    const bool linked =
        run({"ip", "link", "set", "lo", "up"}, false) &&
        run({"ip", "link", "add", "tsknear", "type", "veth", "peer", "name", "tskfar", "netns", far},
            false) &&
        run({"ip", "addr", "add", QString(kNearAddress) + "/24", "dev", "tsknear"}, false) &&
        run({"ip", "link", "set", "tsknear", "up"}, false) && run({"ip", "link", "set", "lo", "up"}, true) &&
        run({"ip", "addr", "add", QString(kFarAddress) + "/24", "dev", "tskfar"}, true) &&
        run({"ip", "link", "set", "tskfar", "up"}, true);
    if (!linked && error_.isEmpty()) error_ = "the veth pair could not be set up";
}

FarHost::~FarHost() {
    for (int s : connections_)
        ::close(s);
    for (int ns : {nearNamespace_, farNamespace_})
        if (ns >= 0) ::close(ns);
}

bool FarHost::run(const QStringList& command, bool far) {
    QStringList words = command;
    if (far)
        words = QStringList{"nsenter", QString("--net=/proc/%1/fd/%2").arg(::getpid()).arg(farNamespace_)} +
                command;
    QProcess process;
    process.start(words.first(), words.mid(1));
    if (!process.waitForFinished(10000) || process.exitStatus() != QProcess::NormalExit ||
        process.exitCode() != 0) {
        error_ = QString("%1 failed: %2%3")
                     .arg(words.join(' '), QString::fromLocal8Bit(process.readAllStandardError()),
                          process.errorString());
        return false;
    }
    return true;
}

int FarHost::connect(quint16 port) {
    if (!ready() || ::setns(farNamespace_, CLONE_NEWNET) != 0) return -1;
    const int s = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    ::setns(nearNamespace_, CLONE_NEWNET);
    if (s < 0) return -1;
    timeval limit{5, 0};
    ::setsockopt(s, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
    sockaddr_in to{};
    to.sin_family = AF_INET;
    to.sin_port = htons(port);
    ::inet_pton(AF_INET, kNearAddress, &to.sin_addr);
    if (::connect(s, reinterpret_cast<const sockaddr*>(&to), sizeof to) != 0) {
        ::close(s);
        return -1;
    }
    connections_.push_back(s);
    return s;
}

bool FarHost::send(int connection, const QByteArray& bytes) {
    return ::write(connection, bytes.constData(), static_cast<size_t>(bytes.size())) == bytes.size();
}

void FarHost::cut() {
    run({"ip", "link", "set", "tskfar", "down"}, true);
}

#else

FarHost::FarHost() : error_("no network namespaces on this system") {}
FarHost::~FarHost() = default;
bool FarHost::run(const QStringList&, bool) {
    return false;
}
int FarHost::connect(quint16) {
    return -1;
}
bool FarHost::send(int, const QByteArray&) {
    return false;
}
void FarHost::cut() {}

#endif

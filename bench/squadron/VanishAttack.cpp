#include "VanishAttack.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <sched.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace {
// Players and airplanes take numbers from the 48 that the squadron's 36 players and 8 airplanes
// leave 4 of: two hosts' worth at most, or an honest ADDAIR finds none.
constexpr int kAwacs = 4, kPlayers = 1, kHosts = 12;
constexpr double kEveryS = 10, kCutAfterS = 1;

std::string message(const std::string& text) {
    return std::string(text).append(1, '\0');
}

int currentNamespace() {
    return ::open("/proc/thread-self/ns/net", O_RDONLY | O_CLOEXEC);
}
} // namespace

VanishAttack::~VanishAttack() {
    stop();
    for (int ns : farNamespaces_)
        ::close(ns);
    if (nearNamespace_ >= 0) ::close(nearNamespace_);
}

bool VanishAttack::run(const std::string& command) {
    const int status = std::system((command + " >/dev/null 2>&1").c_str());
    if (status != 0) std::fprintf(stderr, "vanish: '%s' failed\n", command.c_str());
    return status == 0;
}

void VanishAttack::prepare() {
    nearNamespace_ = currentNamespace();
    ready_ = nearNamespace_ >= 0 && run("ip link set lo up");
    if (!ready_) std::fprintf(stderr, "vanish: no network namespace here; the attack does nothing\n");
}

// Host n: a namespace of its own, veth tskn<n> (here 10.203.<n>.1) and tskf<n> there
// (10.203.<n>.2), behind which the whole of 10.204.<n>.0/24 is that host's, so each of its
// peers has an address of its own.
void VanishAttack::cycle() {
    if (!ready_ || !ctx_.sending() || int(farNamespaces_.size()) >= kHosts) return;
    const int n = int(farNamespaces_.size()) + 1;
    if (::unshare(CLONE_NEWNET) != 0) {
        ready_ = false;
        std::fprintf(stderr, "vanish: cannot make a namespace; the attack stops\n");
        return;
    }
    const int far = currentNamespace();
    ::setns(nearNamespace_, CLONE_NEWNET);
    farNamespaces_.push_back(far);
    const std::string there =
        "nsenter --net=/proc/" + std::to_string(::getpid()) + "/fd/" + std::to_string(far) + " ";
    const std::string net = "10.203." + std::to_string(n);
    const std::string peers = "10.204." + std::to_string(n); // the far host's own addresses
    const bool linked =
        run("ip link add tskn" + std::to_string(n) + " type veth peer name tskf" + std::to_string(n) +
            " netns /proc/" + std::to_string(::getpid()) + "/fd/" + std::to_string(far)) &&
        run("ip addr add " + net + ".1/24 dev tskn" + std::to_string(n)) &&
        run("ip link set tskn" + std::to_string(n) + " up") && run(there + "ip link set lo up") &&
        run(there + "ip addr add " + net + ".2/24 dev tskf" + std::to_string(n)) &&
        run(there + "ip route add local " + peers + ".0/24 dev lo") &&
        run(there + "ip link set tskf" + std::to_string(n) + " up") &&
        run("ip route add " + peers + ".0/24 via " + net + ".2");
    if (!linked) {
        ready_ = false;
        return;
    }
    int from = 10;
    for (int i = 0; i < kAwacs; ++i)
        connectFrom(n, from++, Port::Awacs, message("NAWACS"));
    for (int i = 0; i < kPlayers; ++i)
        connectFrom(n, from++, Port::Player,
                    message("VALIDRGONE" + std::to_string(n) + "_" + std::to_string(i)));
    connectFrom(n, from++, Port::Sim, message("SIMNEWGONE" + std::to_string(n) + "@1") + message("ADDAIR1"));
    ctx_.loop.after(ctx_.seconds(kCutAfterS),
                    [this, there, n] { run(there + "ip link set tskf" + std::to_string(n) + " down"); });
    ctx_.loop.after(ctx_.seconds(kEveryS), [this] { cycle(); });
}

void VanishAttack::connectFrom(int host, int from, Port port, const std::string& messages) {
    sockaddr_in to = ctx_.address(port);
    inet_pton(AF_INET, ("10.203." + std::to_string(host) + ".1").c_str(), &to.sin_addr);
    in_addr source{};
    inet_pton(AF_INET, ("10.204." + std::to_string(host) + "." + std::to_string(from)).c_str(), &source);
    auto conn = std::make_unique<Conn>(ctx_.loop, Conn::Callbacks{nullptr, nullptr,
                                                                  [this] {
                                                                      if (ctx_.sending())
                                                                          ++figures_.closedByServer;
                                                                  },
                                                                  nullptr});
    conn->setSource(source);
    // The socket is made in the far host's namespace; it stays there whatever this thread does.
    ::setns(farNamespaces_.back(), CLONE_NEWNET);
    const bool opened = conn->open(to);
    ::setns(nearNamespace_, CLONE_NEWNET);
    if (!opened) {
        ++figures_.closedByServer;
        return;
    }
    conn->send(messages);
    ++figures_.connections;
    ++figures_.writes;
    figures_.bytes += messages.size();
    ++figures_.messages;
    figures_.peakOpen = std::max<uint64_t>(figures_.peakOpen, conns_.size() + 1);
    conns_.push_back(std::move(conn));
}

void VanishAttack::stop() {
    // Their links are down: closing sends nothing anywhere.
    conns_.clear();
}

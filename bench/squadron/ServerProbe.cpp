#include "ServerProbe.h"

#include <dirent.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace {

// State letter and user + system seconds from /proc/PID/stat; false when the process is gone.
bool readStat(int pid, char& state, double& cpuS) {
    char path[64];
    std::snprintf(path, sizeof path, "/proc/%d/stat", pid);
    FILE* f = std::fopen(path, "r");
    if (!f) return false;
    char line[1024];
    const bool got = std::fgets(line, sizeof line, f) != nullptr;
    std::fclose(f);
    if (!got) return false;
    // The command name may hold blanks and parentheses: fields resume after the last ')'.
    const char* p = std::strrchr(line, ')');
    unsigned long long utime = 0, stime = 0;
    if (!p || std::sscanf(p + 1, " %c %*d %*d %*d %*d %*d %*u %*u %*u %*u %*u %llu %llu", &state, &utime,
                          &stime) != 3)
        return false;
    cpuS = double(utime + stime) / double(sysconf(_SC_CLK_TCK));
    return true;
}

} // namespace

bool ServerProbe::running() const {
    char state = 0;
    double cpu = 0;
    return enabled() && readStat(pid_, state, cpu) && state != 'Z' && state != 'X';
}

bool ServerProbe::sample(double t) {
    if (!enabled() || !alive_) return false;
    Sample s{t, 0, 0, 0};
    char state = 0;
    char path[64];
    std::snprintf(path, sizeof path, "/proc/%d/status", pid_);
    FILE* f = readStat(pid_, state, s.cpuS) ? std::fopen(path, "r") : nullptr;
    if (!f) {
        alive_ = false;
        return false;
    }
    char line[256];
    bool zombie = false;
    while (std::fgets(line, sizeof line, f)) {
        unsigned long long v;
        if (std::sscanf(line, "VmRSS: %llu", &v) == 1) s.rssKb = v;
        if (std::sscanf(line, "VmHWM: %llu", &v) == 1) hwmKb_ = v;
        if (std::strncmp(line, "State:", 6) == 0 && std::strchr(line, 'Z')) zombie = true;
    }
    std::fclose(f);
    std::snprintf(path, sizeof path, "/proc/%d/fd", pid_);
    if (DIR* d = opendir(path)) {
        while (dirent* e = readdir(d))
            if (e->d_name[0] != '.') ++s.fds;
        closedir(d);
    }
    if (zombie) {
        alive_ = false;
        return false;
    }
    samples_.push_back(s);
    return true;
}

ServerProbe::Summary ServerProbe::summary(double warmAt) const {
    Summary out;
    if (samples_.empty()) return out;
    out.start = samples_.front();
    out.end = samples_.back();
    out.peak = samples_.front();
    out.warm = samples_.back();
    bool warmFound = false;
    for (size_t i = 1; i < samples_.size(); ++i) {
        const double dt = samples_[i].t - samples_[i - 1].t;
        if (dt > 0.2)
            out.cpuPeakShare = std::max(out.cpuPeakShare, (samples_[i].cpuS - samples_[i - 1].cpuS) / dt);
    }
    for (const Sample& s : samples_) {
        if (s.rssKb > out.peak.rssKb) out.peak = s;
        if (s.fds > out.fdsPeak) out.fdsPeak = s.fds;
        if (!warmFound && s.t >= warmAt) {
            out.warm = s;
            warmFound = true;
        }
    }
    return out;
}

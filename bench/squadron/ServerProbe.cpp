#include "ServerProbe.h"

#include <dirent.h>

#include <cstdio>
#include <cstring>

bool ServerProbe::sample(double t) {
    if (!enabled() || !alive_) return false;
    char path[64];
    std::snprintf(path, sizeof path, "/proc/%d/status", pid_);
    FILE* f = std::fopen(path, "r");
    if (!f) {
        alive_ = false;
        return false;
    }
    Sample s{t, 0, 0};
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

// libFuzzer target: fuzzchecks::banFile on any bytes.
#include "fuzz/AccessFuzzChecks.h"

#include <cstdio>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string failure =
        fuzzchecks::banFile(std::string_view(reinterpret_cast<const char*>(data), size));
    if (!failure.empty()) {
        std::fprintf(stderr, "%s\n", failure.c_str());
        std::abort();
    }
    return 0;
}

// libFuzzer target: fuzzchecks::setupFile on any bytes.
#include "fuzz/FileFuzzChecks.h"

#include <cstdio>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string failure =
        fuzzchecks::setupFile(std::string_view(reinterpret_cast<const char*>(data), size));
    if (!failure.empty()) {
        std::fprintf(stderr, "%s\n", failure.c_str());
        std::abort();
    }
    return 0;
}

#pragma once
// The NEWCLT payloads the AWACS clients receive about who is in the picture.
#include <cstdint>
#include <string>
#include <string_view>

// slot "@" name
inline std::string playerAnnouncement(int16_t slot, std::string_view name) {
    std::string payload = std::to_string(slot);
    payload += '@';
    payload += name;
    return payload;
}

// n "@" name n: airplane 7 of a simulator named VIPER is 7@VIPER7.
inline std::string airplaneAnnouncement(int16_t n, std::string_view simulatorName) {
    const std::string number = std::to_string(n);
    std::string payload = number;
    payload += '@';
    payload += simulatorName;
    payload += number;
    return payload;
}

#pragma once
// The run-time failures that the server's routines raise and trap. Numbers and texts are the
// classic ones so an error log reads the same on every platform.
#include <stdexcept>
#include <string>

struct RuntimeError : std::runtime_error {
    int number;
    RuntimeError(int number, const std::string& description) : std::runtime_error(description), number(number) {}
    std::string description() const { return what(); }
};

namespace errors {
inline RuntimeError invalidCall() { return {5, "Invalid procedure call or argument"}; }
inline RuntimeError overflow() { return {6, "Overflow"}; }
inline RuntimeError subscriptOutOfRange() { return {9, "Subscript out of range"}; }
inline RuntimeError typeMismatch() { return {13, "Type mismatch"}; }
inline RuntimeError fileNotFound() { return {53, "File not found"}; }
inline RuntimeError elementMissing(int index) {
    return {340, "Control array element '" + std::to_string(index) + "' doesn't exist"};
}
inline RuntimeError alreadyLoaded() { return {360, "Object already loaded"}; }
inline RuntimeError wrongState() {
    return {40006, "Wrong protocol or connection state for the requested transaction or request"};
}
} // namespace errors

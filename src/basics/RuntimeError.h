#pragma once
// The run-time failures that the server's routines raise and trap. Numbers and texts are the
// classic ones so an error log reads the same on every platform.
#include <stdexcept>
#include <string>

struct RuntimeError : std::runtime_error {
    int number;
    RuntimeError(int number, const std::string& description)
        : std::runtime_error(description), number(number) {}
    std::string description() const { return what(); }
};

// The program's title, on the boxes that are the program's own rather than a form's: the
// run-time error box and "The application is allready running.". (The status window's
// caption is another matter: it carries the version.)
inline constexpr char kProgramTitle[] = "Tessark Server";

// "Run-time error '9':" and the description below it, as the box that ends the program shows it.
inline std::string runTimeErrorText(const RuntimeError& e) {
    return "Run-time error '" + std::to_string(e.number) + "':\n\n" + e.description();
}

namespace errors {
inline RuntimeError invalidCall() {
    return {5, "Invalid procedure call or argument"};
}
inline RuntimeError overflow() {
    return {6, "Overflow"};
}
inline RuntimeError subscriptOutOfRange() {
    return {9, "Subscript out of range"};
}
inline RuntimeError typeMismatch() {
    return {13, "Type mismatch"};
}
inline RuntimeError fileNotFound() {
    return {53, "File not found"};
}
inline RuntimeError elementMissing(int index) {
    return {340, "Control array element '" + std::to_string(index) + "' doesn't exist"};
}
inline RuntimeError alreadyLoaded() {
    return {360, "Object already loaded"};
}
inline RuntimeError wrongState() {
    return {40006, "Wrong protocol or connection state for the requested transaction or request"};
}
} // namespace errors

// A result that a peer can make fail at will: the failure comes back as a value instead of
// being thrown, so a failing statement costs about what a succeeding one does. An ErrorTrap
// takes it (see ErrorTrap::take) and leaves the failure pending like a thrown one.
template <typename T> struct Checked {
    T value{};
    RuntimeError (*failure)() = nullptr;
    bool ok() const { return failure == nullptr; }
    T orThrow() const {
        if (failure) throw failure();
        return value;
    }
};

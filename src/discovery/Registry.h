#pragma once
// Reading one value of the machine-wide registry. On Windows that is HKEY_LOCAL_MACHINE
// itself; elsewhere it is the Wine registry of the user's prefix ($WINEPREFIX, else ~/.wine),
// whose file system.reg holds the machine-wide keys, so a Windows program installed under
// Wine is found where its installer registered it.
#include <QString>

#include <cstdint>
#include <string>

enum class RegistryRoot { LocalMachine };

struct RegistryValue {
    enum Kind { Empty, String, DWord };
    Kind kind = Empty;
    // A string value as the registry hands it out: its characters and the terminating NUL
    // (callers strip NULs), single-byte text.
    std::string text;
    std::uint32_t number = 0;
    // The value as text: the string as it is, a number in decimal, "" when empty.
    std::string asText() const { return kind == DWord ? std::to_string(number) : text; }
};

// The value, or an empty one when the key or value is missing, cannot be read, or is of
// another type than a string or a 32-bit number. A 32-bit program's key is also looked for
// in the 32-bit view (Wow6432Node) of a 64-bit machine.
RegistryValue readRegistryValue(RegistryRoot root, const std::string& subKey, const std::string& valueName);

// The Wine prefix the registry and the drive letters come from: $WINEPREFIX, else ~/.wine.
QString winePrefixDir();

// One value of a key in a Wine registry file (keys and names without regard to case), with
// Wine's escapes undone (\\ \" \n \t \xHHHH \ooo ...).
RegistryValue readWineRegistryValue(const QString& regFile, const std::string& subKey,
                                    const std::string& valueName);

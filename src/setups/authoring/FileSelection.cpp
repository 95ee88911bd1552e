#include "setups/authoring/FileSelection.h"

#include "basics/Text.h"
#include "discovery/FalconDiscovery.h"

#include <QFileInfo>

#include <algorithm>
#include <cctype>

namespace {
std::vector<std::string> splitAtNul(const std::string& text) {
    std::vector<std::string> parts(1);
    for (char c : text) {
        if (c == '\0')
            parts.emplace_back();
        else
            parts.back().push_back(c);
    }
    return parts;
}
} // namespace

std::string dialogFileNameText(const QStringList& localPaths) {
    if (localPaths.isEmpty()) return {};
    if (localPaths.size() == 1) return windowsFilePath(localPaths.front());
    std::string text = windowsFilePath(QFileInfo(localPaths.front()).absolutePath());
    if (text.size() > 3 && text.back() == '\\') text.pop_back();
    for (const QString& path : localPaths) {
        text.push_back('\0');
        text += QFileInfo(path).fileName().toLatin1().toStdString();
    }
    return text;
}

BrowseResult filesInsideInstallation(const std::string& fileNameText, const std::string& falconDir) {
    BrowseResult result;
    if (text::upper(fileNameText.substr(0, falconDir.size())) != text::upper(falconDir)) {
        result.outsideInstallation = true;
        return result;
    }
    std::vector<std::string> parts = splitAtNul(fileNameText);
    if (parts.size() == 1) {
        result.relativePaths.push_back(fileNameText.substr(falconDir.size()));
        return result;
    }
    const std::string dir = parts[0].substr(std::min(falconDir.size(), parts[0].size()));
    for (size_t i = 1; i < parts.size(); ++i)
        result.relativePaths.push_back(dir.empty() ? parts[i] : dir + "\\" + parts[i]);
    return result;
}

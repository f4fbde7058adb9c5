#include "programs/Paths.h"

#ifdef _WIN32
#include <algorithm>
#include <sstream>
#include <string>
#include <vector>
#endif

namespace kinora::programs {

#ifdef _WIN32

namespace {

bool BeginsWith(const std::wstring& text, const std::wstring& start) {
    return text.compare(0, start.size(), start) == 0;
}

bool IsNetworkPath(const std::wstring& text) {
    return BeginsWith(text, L"\\\\");
}

/// With the system's separators where the path has a mark or is one of a network.
std::wstring WithoutMark(const std::filesystem::path& path) {
    std::wstring text = path.native();
    std::replace(text.begin(), text.end(), L'/', L'\\');
    const std::wstring mark = L"\\\\?\\";
    const std::wstring networkMark = mark + L"UNC\\";
    if (BeginsWith(text, networkMark)) {
        return L"\\\\" + text.substr(networkMark.size());
    }
    if (BeginsWith(text, mark) && text.compare(mark.size() + 1, 2, L":\\") == 0) {
        return text.substr(mark.size());
    }
    return IsNetworkPath(text) ? text : path.native();
}

/// The folders of a network path one after the other, without "." and "..": server and share stay.
std::wstring NormalNetworkPath(const std::wstring& text) {
    constexpr std::size_t rootNames = 2;
    std::vector<std::wstring> names;
    std::wistringstream stream(text.substr(2));
    for (std::wstring name; std::getline(stream, name, L'\\');) {
        if (name == L"..") {
            names.resize(names.size() > rootNames ? names.size() - 1 : names.size());
        } else if (!name.empty() && name != L".") {
            names.push_back(name);
        }
    }
    std::wstring normal = L"\\";
    for (const std::wstring& name : names) {
        normal += L'\\' + name;
    }
    return normal;
}

} // namespace

std::filesystem::path AbsolutePath(const std::filesystem::path& path) {
    const std::wstring text = WithoutMark(path);
    return IsNetworkPath(text) ? std::filesystem::path(text) : std::filesystem::absolute(text);
}

std::filesystem::path NormalPath(const std::filesystem::path& path) {
    const std::wstring text = WithoutMark(path);
    return IsNetworkPath(text) ? std::filesystem::path(NormalNetworkPath(text))
                               : std::filesystem::absolute(text).lexically_normal();
}

std::filesystem::path Joined(const std::filesystem::path& folder, const std::filesystem::path& path) {
    const std::wstring text = WithoutMark(path);
    return IsNetworkPath(text) ? std::filesystem::path(text) : folder / text;
}

#else

std::filesystem::path AbsolutePath(const std::filesystem::path& path) {
    return std::filesystem::absolute(path);
}

std::filesystem::path NormalPath(const std::filesystem::path& path) {
    return std::filesystem::absolute(path).lexically_normal();
}

std::filesystem::path Joined(const std::filesystem::path& folder, const std::filesystem::path& path) {
    return folder / path;
}

#endif

} // namespace kinora::programs

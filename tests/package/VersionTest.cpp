// Every binary that users get says what it is and of which version.

#include "tests/support/ThisProgram.h"

#include <windows.h>

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

/// The version resource of a file.
class Version {
public:
    explicit Version(const std::wstring& file) : m_data(GetFileVersionInfoSizeW(file.c_str(), nullptr)) {
        if (!m_data.empty() &&
            GetFileVersionInfoW(file.c_str(), 0, static_cast<DWORD>(m_data.size()), m_data.data()) == FALSE) {
            m_data.clear();
        }
    }

    bool Exists() const { return !m_data.empty(); }

    /// A text of the English table; empty when it is missing.
    std::wstring Text(const std::wstring& name) const {
        void* text = nullptr;
        UINT length = 0;
        const std::wstring path = L"\\StringFileInfo\\040904B0\\" + name;
        return VerQueryValueW(m_data.data(), path.c_str(), &text, &length) != FALSE ? static_cast<wchar_t*>(text) : L"";
    }

    /// The four numbers that installers compare, with dots.
    std::wstring Numbers() const {
        void* found = nullptr;
        UINT length = 0;
        if (VerQueryValueW(m_data.data(), L"\\", &found, &length) == FALSE || length < sizeof(VS_FIXEDFILEINFO)) {
            return L"";
        }
        const auto& info = *static_cast<VS_FIXEDFILEINFO*>(found);
        return Pair(info.dwFileVersionMS) + L"." + Pair(info.dwFileVersionLS);
    }

private:
    static std::wstring Pair(DWORD numbers) {
        return std::to_wstring(HIWORD(numbers)) + L"." + std::to_wstring(LOWORD(numbers));
    }

    std::vector<char> m_data;
};

class Product : public testing::TestWithParam<const wchar_t*> {};

TEST_P(Product, SaysWhatItIsAndOfWhichVersion) {
    const std::wstring name = GetParam();
    const Version version(fake::BesideThisProgram(name));
    ASSERT_TRUE(version.Exists());
    EXPECT_EQ(version.Text(L"OriginalFilename"), name);
    EXPECT_EQ(version.Text(L"InternalName"), name.substr(0, name.rfind(L'.')));
    EXPECT_EQ(version.Text(L"ProductName"), L"KinoraVeltrixCoupling");
    EXPECT_FALSE(version.Text(L"FileDescription").empty());
    EXPECT_EQ(version.Text(L"FileVersion"), KINORA_VERSION);
    EXPECT_EQ(version.Text(L"ProductVersion"), KINORA_VERSION);
    EXPECT_EQ(version.Numbers(), KINORA_VERSION_NUMBERS);
}

/// The manifests of a file; those that a compiler adds on its own would stand beside the project's.
std::vector<std::string> Manifests(const std::wstring& file) {
    std::vector<std::string> found;
    const HMODULE module = LoadLibraryExW(file.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
    const auto take = [](HMODULE holder, LPCWSTR type, LPWSTR name, LONG_PTR result) -> BOOL {
        const HRSRC resource = FindResourceW(holder, name, type);
        const auto* text = static_cast<const char*>(LockResource(LoadResource(holder, resource)));
        reinterpret_cast<std::vector<std::string>*>(result)->emplace_back(text, SizeofResource(holder, resource));
        return TRUE;
    };
    EnumResourceNamesW(module, MAKEINTRESOURCEW(24), take, reinterpret_cast<LONG_PTR>(&found));
    FreeLibrary(module);
    return found;
}

TEST_P(Product, IfAProgramTakesLongPathsAndNeedsNoRights) {
    const std::wstring name = GetParam();
    if (name.find(L".exe") == std::wstring::npos) {
        GTEST_SKIP() << "a library is loaded by programs of others";
    }
    const std::vector<std::string> manifests = Manifests(fake::BesideThisProgram(name));
    ASSERT_EQ(manifests.size(), 1U);
    EXPECT_NE(manifests[0].find(">true</longPathAware>"), std::string::npos) << manifests[0];
    EXPECT_NE(manifests[0].find("level=\"asInvoker\""), std::string::npos) << manifests[0];
}

INSTANTIATE_TEST_SUITE_P(All, Product, testing::Values(KINORA_PRODUCTS));

} // namespace

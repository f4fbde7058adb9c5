#include "tests/capi/strangers/Abi.h"
#include "tests/endtoend/Programs.h"
#include "tests/support/PortableExecutable.h"

#include <algorithm>
#include <cctype>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

static const fake::PortableExecutable& Library() {
    static const fake::PortableExecutable library(endtoend::Content(std::filesystem::u8path(KINORA_LIBRARY)));
    return library;
}

Texts ExportedNames() {
    Texts names = Library().Exports();
    std::sort(names.begin(), names.end());
    return names;
}

static std::string LowerCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return text;
}

TEST(Library, NeedsTheSystemsDllsOnly) {
    const Texts system{"advapi32.dll", "kernel32.dll", "msvcrt.dll", "ole32.dll",
                       "oleaut32.dll", "shell32.dll",  "user32.dll"};
    for (const std::string& dll : Library().Imports()) {
        EXPECT_EQ(std::count(system.begin(), system.end(), LowerCase(dll)), 1)
            << dll << ": a program that loads the library does not bring this DLL";
    }
    EXPECT_THAT(Library().DelayedImports(), testing::IsEmpty());
}

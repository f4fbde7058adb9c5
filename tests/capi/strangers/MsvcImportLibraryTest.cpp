// What a linker for MSVC makes of the import library for it: the DLL in which every function of the interface is used.
#include "tests/capi/strangers/Abi.h"
#include "tests/endtoend/Programs.h"
#include "tests/support/PortableExecutable.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

TEST(MsvcImportLibrary, LeadsEveryFunctionToTheDll) {
    const fake::PortableExecutable linked(endtoend::Content(std::filesystem::u8path(KINORA_LINKED_AS_BY_MSVC)));
    EXPECT_THAT(linked.Imports(), testing::ElementsAre("kinora_veltrix.dll"));
    EXPECT_THAT(linked.ImportedFunctions(), testing::UnorderedElementsAreArray(FunctionNames()));
}

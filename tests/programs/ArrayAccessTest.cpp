// Reading and writing the elements of automation arrays.
#include "programs/ArrayAccess.h"

#include <gtest/gtest.h>

namespace {

using kinora::programs::ArrayAccess;

TEST(ArrayAccess, GivesAllElementsInTheOrderOfTheMemory) {
    SAFEARRAYBOUND bounds[] = {{2, -3}, {3, 1}};
    SAFEARRAY* const array = SafeArrayCreate(VT_I4, 2, bounds);
    LONG position[] = {-2, 1};
    LONG value = 7;
    ASSERT_EQ(SafeArrayPutElement(array, position, &value), S_OK);
    {
        const ArrayAccess access(array);
        ASSERT_TRUE(access.IsOpen());
        EXPECT_EQ(access.Count(), 6U);
        // The first index runs fastest.
        EXPECT_EQ(access.Elements<LONG>()[1], 7);
        EXPECT_EQ(array->cLocks, 1U);
    }
    EXPECT_EQ(array->cLocks, 0U);
    SafeArrayDestroy(array);
}

TEST(ArrayAccess, HasNoElementsWithoutAnArray) {
    const ArrayAccess access(nullptr);
    EXPECT_FALSE(access.IsOpen());
    EXPECT_EQ(access.Count(), 0U);
}

} // namespace

// The headers in a program that does not ask for lean platform headers, and that includes the sockets after them.
#undef WIN32_LEAN_AND_MEAN

#include "comutils/ComUtils.h"

#include <gtest/gtest.h>
#include <winsock2.h>

#if defined(WIN32_LEAN_AND_MEAN)
#error "the header leaves its own setting behind"
#endif

TEST(Surface, HeadersLeaveRoomForTheSockets) {
    const WSAEVENT event = WSA_INVALID_EVENT; // which the old sockets lack
    EXPECT_EQ(event, nullptr);
}

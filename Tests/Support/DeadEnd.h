#pragma once

#include <QTcpSocket>

#include <gtest/gtest.h>

#include <linux/filter.h>
#include <sys/socket.h>

namespace orvia::test {

/// Makes the kernel drop every packet for @p socket unseen, acknowledgements included. Needs no privileges.
inline void dropEverythingReceived(const QTcpSocket& socket)
{
    if (socket.socketDescriptor() < 0)
        return;
    sock_filter keepNothing{.code = BPF_RET | BPF_K, .jt = 0, .jf = 0, .k = 0};
    const sock_fprog program{.len = 1, .filter = &keepNothing};
    EXPECT_EQ(setsockopt(static_cast<int>(socket.socketDescriptor()), SOL_SOCKET, SO_ATTACH_FILTER, &program,
                         sizeof program),
              0);
}

} // namespace orvia::test

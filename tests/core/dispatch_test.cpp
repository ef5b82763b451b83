// The request path in process: the table rows as loaded, and the request
// records that must not pile up over a long run.
#include <gtest/gtest.h>

#include "tests/support/in_process.h"

using namespace velard_test;

TEST(Dispatch, TablesLoadEveryRowAndNoRowForZero) {
    ImsFillDispatchMaps();
    // 100 request rows and 70 notification rows, plus the lead row of each.
    EXPECT_EQ(s_commandCount, 101u);
    EXPECT_EQ(s_notificationCount, 71u);
    EXPECT_EQ(s_commandMap.size(), 101u);
    EXPECT_EQ(s_notifyMap.size(), 71u);
    EXPECT_EQ(s_commandMap[0].dispatchFunction, nullptr);
    // 522 and 552 share a dispatch handler; 13002 and 13003 a notify handler.
    EXPECT_EQ(s_commandMap[522].dispatchFunction, s_commandMap[552].dispatchFunction);
    EXPECT_EQ(s_notifyMap[13002].notifyFunction, s_notifyMap[13003].notifyFunction);
    for (const auto& [id, row] : s_commandMap) {
        if (id == 0) continue;
        EXPECT_EQ(row.requestNumber, id);
        EXPECT_NE(row.dispatchFunction, nullptr) << id;
        EXPECT_NE(row.responseFunction, nullptr) << id;
    }
}

TEST(Dispatch, RequestRecordsRetireOnceHandedToTheStack) {
    imsCommonStruc::Request r;
    r.set_reqid(imsCommonStruc::Id(103));
    r.mutable_requestuadeletion()->set_handle(1);
    for (int i = 0; i < 1000; i++) ASSERT_EQ(dispatch(r).size(), 1u);
    EXPECT_EQ(ImsPendingRequestCount(), 0u);
}

TEST(Dispatch, ShortRecordsAreDroppedUntouched) {
    StackCapture capture;
    LogCapture log;
    for (size_t len = 0; len < 8; len++) {
        const char bytes[8] = {0x08, 0x67, 0, 0, 0, 0, 0, 0};
        ProcessCommandBuffer(bytes, len);
    }
    EXPECT_TRUE(capture.records.empty());
    EXPECT_FALSE(log.contains("unsupported request code"));
}

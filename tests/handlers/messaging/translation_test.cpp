// The messaging translators: enum tables, and the two fallbacks for an
// unknown IMDN status with their log gates. The message translations are
// tested through the handlers that use them.
#include <gtest/gtest.h>

#include <climits>

#include "handlers/messaging/protobuf_data_translation.h"
#include "tests/support/in_process.h"

using namespace velard_test;
using namespace protobuf_data_translation;

TEST(MessagingTranslation, EnumTables) {
    for (int v : {0, 1, 5, 8, 9, INT_MAX, -1})
        EXPECT_EQ(translateImErrorType(static_cast<ImError::Type>(v)), v >= 0 && v <= 8 ? v : 9);
    for (auto [wire, stack] : {std::pair{0, 0u}, {1, 2u}, {2, 3u}, {3, 4u}, {-1, 4u}})
        EXPECT_EQ(translateXdmDocType(static_cast<imsCommonStruc::XdmDocType>(wire)), stack);
    for (auto [wire, stack] : {std::pair{0, 1}, {1, 2}, {2, 3}, {3, 1}, {-5, 1}}) {
        imsCommonStruc::Participant p;
        p.set_uri("tel:+1");
        p.set_copycontrol(static_cast<imsCommonStruc::Participant_CopyControl>(wire));
        const ImParticipant got = translateParticipant(p);
        EXPECT_EQ(got.uri + "/" + std::to_string(got.copyControl),
                  "tel:+1/" + std::to_string(stack));
    }
}

// Towards the stack an unknown status is dropped; towards the client it
// becomes DELIVERED. Both log the error whatever the level, the rest only
// above level 1.
TEST(MessagingTranslation, UnknownImdnStatusDependsOnDirection) {
    static const char* const kImdnLog[] = {
        "D [IMS6.0]: translateFwImdnNoti: size = 4",
        "D [IMS6.0]: translateFwImdnNoti: status = 1",
        "D [IMS6.0]: translateFwImdnNoti: status = 0",
        "D [IMS6.0]: translateFwImdnNoti: status = 1",
        "D [IMS6.0]: translateFwImdnNoti: status = 7",
        "E [IMS6.0]: translateFwImdnNoti: unknown status!",
        "D [IMS6.0]: translateStackImdnNoti: status = 0",
        "D [IMS6.0]: translateStackImdnNoti: status = 5",
        "E [IMS6.0]: translateStackImdnNoti: unknown status! Use DELIVERED instead!"};
    const int saved = logLevel;
    for (int level : {1, 2}) {
        logLevel = level;
        LogCapture log;
        google::protobuf::RepeatedField<int> wire;
        for (int v : {1, 0, 1, 7}) wire.Add(v);
        EXPECT_EQ(translateFwImdnNoti(wire),
                  (std::set<cpmim::ImNotificationStatus>{cpmim::DELIVERED, cpmim::STATUS_1}));

        imsCommonStruc::ImdnParams up;
        translateStackImdnData(up, {"", "", {cpmim::DELIVERED, cpmim::ImNotificationStatus(5)}});
        EXPECT_EQ(std::vector<int>(up.noti().begin(), up.noti().end()), std::vector<int>({0, 0}));

        std::vector<std::string> expected;
        for (const char* line : kImdnLog)
            if (level > 1 || line[0] == 'E') expected.push_back(line);
        EXPECT_EQ(log.lines(), expected);
    }
    logLevel = saved;
}

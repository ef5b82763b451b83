// SMS over IP in process: the presence of inReplyTo, not its content, chooses
// the stack's constructor.
#include <gtest/gtest.h>

#include "tests/support/in_process.h"

using namespace velard_test;
using imsCommonStruc::Request;

TEST(Sms, PresenceOfInReplyToChoosesTheConstructor) {
    const struct {
        const char* inReplyTo;  // null: absent
        const char* tail;
    } cases[] = {{nullptr, "]"}, {"", R"(,""])"}, {"call-7", R"(,"call-7"])"}};
    for (const auto& c : cases) {
        Request request;
        request.set_reqid(imsCommonStruc::Id(401));
        auto* b = request.mutable_requestsendmsg();
        b->set_handle(3);
        b->set_smsc("tel:+4912");
        b->set_localuri("sip:me@x");
        b->set_contenttype("application");
        b->set_contentsubtype("vnd.3gpp.sms");
        b->set_contentlen(99);  // disagrees with the body, and goes as it is
        b->set_contentbody(std::string("\0A", 2));
        if (c.inReplyTo) b->set_inreplyto(c.inReplyTo);
        const std::string args =
            R"([3,"tel:+4912","sip:me@x","application","vnd.3gpp.sms",99,"\u0000A")";
        EXPECT_EQ(
            dispatchOne(request),
            (Json{{"class", "SendMessageData"}, {"id", 401}, {"args", Json::parse(args + c.tail)}}))
            << c.tail;
    }
}

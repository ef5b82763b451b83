// The simulated stack keeps its side of the contract for every record class
// and every row at once: a fresh record holds nothing, an auto answer says
// success, every request that reaches the stack is answered with the class
// that its response handler reads, and the table that names those classes
// agrees with the daemon's own tables.
#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>

#include "tests/support/in_process.h"

using velar_sim::Json;
using velar_sim::Way;

namespace {

// A header held by value (warning, retry, reason) has no presence flag of
// its own: its code or timer at -1 is how a record holds none.
bool absentHeader(const Json& j) {
    if (!j.is_object() || (j.value("code", 0) != -1 && j.value("retryTimer", 0) != -1))
        return false;
    for (const auto& [name, value] : j.items())
        if (value != -1 && value != "") return false;
    return true;
}

// Whether a value holds nothing: 0, false, an empty string, null, an empty
// container, an absent header, or a fixed-size composite (pair, tuple, held
// object) of such.
bool holdsNothing(const Json& j) {
    if (absentHeader(j)) return true;
    if (j.is_structured()) {
        for (const Json& v : j)
            if (!holdsNothing(v)) return false;
        return true;
    }
    return j.is_null() || j == 0 || j == false || j == "";
}

// The members of a record's JSON form that hold something, as "name=value".
std::string heldMembers(const Json& record) {
    std::string out;
    for (const char* part : {"fields", "members"}) {
        if (!record.contains(part)) continue;
        for (const auto& [name, value] : record[part].items())
            if (!holdsNothing(value)) out += " " + name + "=" + value.dump();
    }
    return out;
}

imsCommonStruc::Request emptyRequest(int id) {
    imsCommonStruc::Request request;
    request.set_reqid(imsCommonStruc::Id(id));
    return request;
}

// Rows that share a handler read one class.
template <class Handler>
void expectOneClassPerHandler(std::map<Handler, std::string>& seen, Handler handler, int id,
                              const char* cls) {
    auto [it, first] = seen.emplace(handler, cls);
    EXPECT_TRUE(first || it->second == cls)
        << id << " reads " << cls << " with the handler of a row that reads " << it->second;
}

}  // namespace

TEST(SimContract, TheClassTableCoversEveryHandlerRowAndNoOther) {
    ImsFillDispatchMaps();
    std::map<decltype(CommandInfo::responseFunction), std::string> answers;
    for (size_t i = 1; i < s_commandCount; i++) {
        const CommandInfo& row = s_commands[i];
        const char* cls = velar_sim::answerClass(row.requestNumber);
        ASSERT_NE(cls, nullptr) << "no answer class for request " << row.requestNumber;
        const velar_sim::ClassInfo* info = velar_sim::findClass(cls);
        ASSERT_TRUE(info != nullptr && info->decode != nullptr) << row.requestNumber << " " << cls;
        expectOneClassPerHandler(answers, row.responseFunction, row.requestNumber, cls);
    }
    std::map<decltype(NotifyInfo::notifyFunction), std::string> notifications;
    for (size_t i = 1; i < s_notificationCount; i++) {
        const NotifyInfo& row = s_notifications[i];
        const char* cls = velar_sim::notifyClass(row.notifyNumber);
        ASSERT_NE(cls, nullptr) << "no class for notification " << row.notifyNumber;
        const velar_sim::ClassInfo* info = velar_sim::findClass(cls);
        ASSERT_TRUE(info != nullptr && info->decode != nullptr) << row.notifyNumber << " " << cls;
        expectOneClassPerHandler(notifications, row.notifyFunction, row.notifyNumber, cls);
    }
    // And the table names no id that the daemon has no handler for.
    for (size_t i = 0; i < velar_sim::kHandlerClassCount; i++) {
        const velar_sim::HandlerClass& row = velar_sim::kHandlerClasses[i];
        bool known = row.way == Way::kAnswer ? s_commandMap.count(row.id) == 1
                                             : s_notifyMap.count(row.id) == 1;
        EXPECT_TRUE(known) << "the table names " << row.id << " which has no handler";
    }
    EXPECT_EQ(velar_sim::kHandlerClassCount, (s_commandCount - 1) + (s_notificationCount - 1));
}

// A record as its default constructor leaves it holds nothing, and so do the
// public members that no constructor argument sets, on the records that the
// daemon builds from an all-default request of every id.
TEST(SimContract, FreshRecordsHoldNothing) {
    int fresh = 0;
    for (const std::string& name : velar_sim::classNames()) {
        const velar_sim::ClassInfo* info = velar_sim::findClass(name);
        if (info->fresh == nullptr) continue;
        std::unique_ptr<ImsData> record(info->fresh());
        EXPECT_EQ(heldMembers(velar_sim::recordToJson(record.get())), "") << name;
        fresh++;
    }
    EXPECT_GT(fresh, 100);
    for (size_t i = 1; i < s_commandCount; i++) {
        for (auto& captured : velard_test::dispatch(emptyRequest(s_commands[i].requestNumber))) {
            Json members = captured.json.value("members", Json::object());
            EXPECT_TRUE(holdsNothing(members)) << captured.json.dump();
        }
    }
}

// Every request that reaches the stack is answered in auto mode with a
// record of the class its response handler reads, under the request's id,
// saying success; the handler takes it. From an all-default request the
// answer repeats a handle and session of 0, so that everything but the
// success flags holds nothing.
TEST(SimContract, EveryRequestIsAnsweredWithTheClassItsHandlerReadsAndSuccess) {
    int answered = 0;
    for (size_t i = 1; i < s_commandCount; i++) {
        const int id = s_commands[i].requestNumber;
        auto captured = velard_test::dispatch(emptyRequest(id));
        if (captured.empty()) continue;  // the rows that pass nothing to the stack
        ASSERT_EQ(captured.size(), 1u) << id;
        std::unique_ptr<ImsData> answer(velar_sim::makeAutoAnswer(captured[0].record.get()));
        ASSERT_TRUE(answer) << "no auto answer to " << id;
        EXPECT_EQ(answer->GetId(), id);
        Json json = velar_sim::recordToJsonUp(answer.get());
        EXPECT_EQ(json["class"], velar_sim::answerClass(id)) << id;
        Json fields = json["fields"];
        if (fields.contains("success")) {
            EXPECT_EQ(fields["success"], true) << "auto answer to " << id;
            fields.erase("success");
        }
        EXPECT_EQ(heldMembers(Json{{"fields", fields}}), "")
            << "auto answer to " << id << ": " << json.dump();
        velard_test::LogCapture quiet;
        EXPECT_EQ(velard_test::respond(answer.get()).first, 0) << id;
        answered++;
    }
    EXPECT_EQ(answered, static_cast<int>(s_commandCount) - 1 - 3);
}

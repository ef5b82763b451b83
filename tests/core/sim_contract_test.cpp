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

// Every row of a daemon table (after its all-zero first) has a class in the
// simulator's table, one the simulator can build, and rows that share a
// handler share their class.
template <class Row, class Handler>
void expectAClassForEveryRow(const Row* rows, size_t count, int Row::*id, Handler Row::*handler,
                             Way way) {
    std::map<Handler, std::string> seen;
    for (size_t i = 1; i < count; i++) {
        const Row& row = rows[i];
        const velar_sim::HandlerClass* entry = velar_sim::handlerClass(way, row.*id);
        ASSERT_NE(entry, nullptr) << "no class for " << row.*id;
        const velar_sim::ClassInfo* info = velar_sim::findClass(entry->className);
        ASSERT_TRUE(info != nullptr && info->decode != nullptr)
            << row.*id << " " << entry->className;
        auto [it, first] = seen.emplace(row.*handler, entry->className);
        EXPECT_TRUE(first || it->second == entry->className)
            << row.*id << " reads " << entry->className << " with the handler of a row that reads "
            << it->second;
    }
}

}  // namespace

TEST(SimContract, TheClassTableCoversEveryHandlerRowAndNoOther) {
    ImsFillDispatchMaps();
    expectAClassForEveryRow(s_commands, s_commandCount, &CommandInfo::requestNumber,
                            &CommandInfo::responseFunction, Way::kAnswer);
    expectAClassForEveryRow(s_notifications, s_notificationCount, &NotifyInfo::notifyNumber,
                            &NotifyInfo::notifyFunction, Way::kNotify);
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

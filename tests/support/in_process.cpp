#include "in_process.h"

#include <stdexcept>

#include "framing.h"

namespace velard_test {
namespace {

StackCapture* s_current = nullptr;

std::unique_ptr<ImsData> recordFromJson(const Json& json) {
    std::string error;
    std::unique_ptr<ImsData> record(velar_sim::recordFromJson(json, &error));
    if (!record) throw std::runtime_error("bad record: " + error);
    return record;
}

void captureHook(unsigned int token, ImsData* record, void*) {
    CapturedRecord r{token, std::unique_ptr<ImsData>(record), velar_sim::recordToJson(record)};
    if (s_current != nullptr) s_current->records.push_back(std::move(r));
}

}  // namespace

StackCapture::StackCapture() {
    if (s_commandMap.empty()) ImsFillDispatchMaps();
    s_velar = Velar::GetInstance();
    s_current = this;
    velar_sim::setCaptureHook(captureHook, nullptr);
}

StackCapture::~StackCapture() {
    velar_sim::setCaptureHook(nullptr, nullptr);
    s_current = nullptr;
}

std::vector<CapturedRecord> dispatch(const imsCommonStruc::Request& request, unsigned int token) {
    StackCapture capture;
    // What the record stream hands on: the record without its length word.
    std::string record =
        velard_framing::EncodeClientRecord(token, request.SerializePartialAsString()).substr(4);
    ProcessCommandBuffer(record.data(), record.size());
    return std::move(capture.records);
}

Json dispatchOne(const imsCommonStruc::Request& request, unsigned int token) {
    auto records = dispatch(request, token);
    if (records.size() != 1) return Json(nullptr);
    return records[0].json;
}

std::pair<int, imsCommonStruc::Response> respond(ImsData* record, unsigned int token) {
    if (s_commandMap.empty()) ImsFillDispatchMaps();
    imsCommonStruc::Response response;
    auto row = s_commandMap.find(record->GetId());
    if (row == s_commandMap.end() || row->second.responseFunction == nullptr)
        throw std::runtime_error("no response handler for " + std::to_string(record->GetId()));
    int rc = row->second.responseFunction(token, response, record);
    return {rc, response};
}

std::pair<int, imsCommonStruc::Response> respondJson(const Json& json, unsigned int token) {
    return respond(recordFromJson(json).get(), token);
}

std::pair<int, imsCommonStruc::Notify> notify(ImsData* record) {
    if (s_notifyMap.empty()) ImsFillDispatchMaps();
    imsCommonStruc::Notify message;
    auto row = s_notifyMap.find(record->GetId());
    if (row == s_notifyMap.end() || row->second.notifyFunction == nullptr)
        throw std::runtime_error("no notification handler for " + std::to_string(record->GetId()));
    int rc = row->second.notifyFunction(message, record);
    return {rc, message};
}

std::pair<int, imsCommonStruc::Notify> notifyJson(const Json& json) {
    return notify(recordFromJson(json).get());
}

bool LogCapture::contains(const std::string& text) {
    for (const auto& l : lines())
        if (l.find(text) != std::string::npos) return true;
    return false;
}

}  // namespace velard_test

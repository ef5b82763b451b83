#include "in_process.h"

#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include <stdexcept>

namespace velard_test {
namespace {

StackCapture* s_current = nullptr;

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
    std::string payload = request.SerializePartialAsString();
    std::string record(8, '\0');
    record[4] = static_cast<char>(token);
    record[5] = static_cast<char>(token >> 8);
    record[6] = static_cast<char>(token >> 16);
    record[7] = static_cast<char>(token >> 24);
    record += payload;
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
    std::string error;
    std::unique_ptr<ImsData> record(velar_sim::recordFromJson(json, &error));
    if (!record) throw std::runtime_error("bad record: " + error);
    return respond(record.get(), token);
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
    std::string error;
    std::unique_ptr<ImsData> record(velar_sim::recordFromJson(json, &error));
    if (!record) throw std::runtime_error("bad record: " + error);
    return notify(record.get());
}

LogCapture::LogCapture() {
    fflush(stderr);
    FILE* f = tmpfile();
    file_ = dup(fileno(f));
    fclose(f);
    saved_ = dup(2);
    dup2(file_, 2);
}

LogCapture::~LogCapture() { lines(); }

std::vector<std::string> LogCapture::lines() {
    if (!done_) {
        done_ = true;
        fflush(stderr);
        dup2(saved_, 2);
        close(saved_);
        std::string text;
        char buf[4096];
        lseek(file_, 0, SEEK_SET);
        for (ssize_t n; (n = read(file_, buf, sizeof buf)) > 0;) text.append(buf, static_cast<size_t>(n));
        close(file_);
        size_t start = 0;
        for (size_t nl; (nl = text.find('\n', start)) != std::string::npos; start = nl + 1)
            lines_.push_back(text.substr(start, nl - start));
    }
    return lines_;
}

bool LogCapture::contains(const std::string& text) {
    for (const auto& l : lines())
        if (l.find(text) != std::string::npos) return true;
    return false;
}

}  // namespace velard_test

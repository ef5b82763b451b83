// The stack library's boundary: the singleton, the callback table, the root
// classes of every record and the few globals and helpers the daemon imports.
#pragma once

#include <string>

class Object {
public:
    virtual ~Object() = default;
};

// Base of every record that crosses the boundary. The virtual operations
// and their order are part of the library's binary interface.
class ImsData : public Object {
public:
    ImsData() = default;
    explicit ImsData(int recordId) : id(recordId) {}
    ~ImsData() override = default;

    virtual ImsData* GetSelf() { return this; }
    virtual int GetId() const { return id; }
    virtual void SetId(int recordId) { id = recordId; }

    int reserved = -1;
    int id = 0;
};

struct IMS_Env {
    void (*onResponse)(unsigned int token, ImsData* data);
    void (*onNotify)(ImsData* data);
};

class Velar {
public:
    static Velar* GetInstance();
    // Starts the stack; callbacks may come from here on. Negative on failure.
    int Init(IMS_Env* env);
    // Takes over the record; the answer comes through onResponse with the token.
    int OnRequest(unsigned int token, ImsData* data);

private:
    Velar() = default;
};

// Verbose log lines, among them those that print user data, are written only
// above 1. Owned by the library; the daemon only reads it.
extern int logLevel;

bool IsShipBuild();
// The form of a string that may stand in a log line.
std::string ImsLogChecker(const std::string& text);
// The short name of a function from its full signature text.
std::string methodName(const std::string& signature);

namespace resip {
template <int N>
struct DataLocalSize {};
class Data {
public:
    static bool init(DataLocalSize<16>);
};
class CpimContents {
public:
    static bool init();
};
}  // namespace resip

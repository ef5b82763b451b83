// The host provider of the stack library: its registry of record classes, its
// JSON record form, and the hooks through which in-process tests watch the
// records that the daemon hands over.
#pragma once

#include <string>
#include <typeindex>
#include <vector>

#include "../velar.h"
#include "handler_classes.h"
#include "json_codec.h"
#include "record_definitions.h"

namespace velar_sim {

struct ClassInfo {
    const char* name;
    std::type_index type;
    Json (*encode)(ImsData* record, const char* name);
    // Null for classes that only ever go down (they have no default state).
    ImsData* (*decode)(const Json& fields);
    // Reads or writes an integer member by name; false when there is none.
    bool (*getInt)(ImsData* record, const char* name, long long* value);
    bool (*setInt)(ImsData* record, const char* name, long long value);
    // The record as a controller hands it up ("fields"); null for classes
    // without fields. Differs from encode for classes that go both ways
    // (PrimitiveData<int> goes down as "args" and comes up as "fields").
    Json (*encodeUp)(ImsData* record, const char* name) = nullptr;
    // A record as its default constructor leaves it; null for classes built
    // only through their constructor's arguments.
    ImsData* (*fresh)() = nullptr;
    // Sets a bool member by name; false when there is none.
    bool (*setFlag)(ImsData* record, const char* name, bool value) = nullptr;
};

void registerClass(const ClassInfo& info);
const ClassInfo* findClass(const std::string& name);
const ClassInfo* findClass(const std::type_info& type);
// Every registered class name, in ascending order.
std::vector<std::string> classNames();

// Auto mode answers a request with a success record of the class that the
// daemon's handler for its id reads (handler_classes.h), repeating the
// request's user agent and call; an id that no handler reads gets nothing.
//
// What auto mode takes from a request to answer it, so that the request can
// be released at once: the answer's class (null: no answer) and the handle
// and session that the answer repeats.
struct AutoPlan {
    int requestId = 0;
    const ClassInfo* answerClass = nullptr;
    struct Copied {
        bool found = false;
        long long value = 0;
    } copied[2];  // handle, session
};
AutoPlan planAutoAnswer(ImsData* request);
ImsData* buildAutoAnswer(const AutoPlan& plan);
// The success record that auto mode gives for this request, or null.
ImsData* makeAutoAnswer(ImsData* request);

// The control channel's JSON form of a record: {"class","id",...}.
Json recordToJson(ImsData* record);
// Builds a record from its JSON form; null with *error set on failure.
ImsData* recordFromJson(const Json& record, std::string* error);
// The form recordFromJson reads ({"class","id","fields"}), for any record of
// a class that can come up; as recordToJson for the others.
Json recordToJsonUp(ImsData* record);

// In-process capture for tests: while set, OnRequest gives every record to
// the hook (which takes ownership) instead of answering it.
using CaptureHook = void (*)(unsigned int token, ImsData* record, void* context);
void setCaptureHook(CaptureHook hook, void* context);

template <class T>
struct Registrar {
    explicit Registrar(const char* name) {
        ClassInfo info{
            name,
            typeid(T),
            [](ImsData* r, const char* n) { return codec::encodeRecord(*static_cast<T*>(r), n); },
            nullptr,
            &getIntOf,
            &setIntOf};
        if constexpr (codec::HasFields<T>::value) {
            info.encodeUp = [](ImsData* r, const char* n) {
                Json j = Json::object();
                j["class"] = n;
                j["id"] = r->GetId();
                Json f = Json::object();
                codec::ObjectEncoder e{&f};
                shape::Fields<T>::visit(*static_cast<T*>(r), e);
                j["fields"] = std::move(f);
                return j;
            };
        }
        if constexpr (std::is_default_constructible_v<T>)
            info.fresh = []() -> ImsData* { return new T(); };
        info.setFlag = &setFlagOf;
        if constexpr (std::is_default_constructible_v<T> && codec::HasFields<T>::value) {
            info.decode = [](const Json& fields) -> ImsData* {
                auto r = std::make_unique<T>();
                codec::decodeFields(fields, *r, "fields");
                return r.release();
            };
        }
        registerClass(info);
    }

    // Reads or writes the first member of that name among the integers
    // (Flag false, bools excluded) or the bools (Flag true).
    template <bool Flag>
    struct MemberAccess {
        const char* name;
        long long value;
        bool write;
        bool found = false;
        template <class X>
        void operator()(const char* n, X& v) {
            constexpr bool isBool = std::is_same_v<X, bool>;
            if constexpr (Flag ? isBool : std::is_integral_v<X> && !isBool) {
                if (!found && std::strcmp(n, name) == 0) {
                    found = true;
                    if (write)
                        v = static_cast<X>(value);
                    else
                        value = static_cast<long long>(v);
                }
            }
        }
        template <class A>
        void call(const char*, A&) {}
    };
    template <class A>
    static bool access(ImsData* r, A& a) {
        T* t = static_cast<T*>(r);
        if constexpr (codec::HasArgs<T>::value) shape::Args<T>::visit(*t, a);
        if constexpr (codec::HasMembers<T>::value) shape::Members<T>::visit(*t, a);
        if constexpr (codec::HasFields<T>::value) shape::Fields<T>::visit(*t, a);
        return a.found;
    }
    static bool getIntOf(ImsData* r, const char* name, long long* value) {
        MemberAccess<false> a{name, 0, false};
        if (!access(r, a)) return false;
        *value = a.value;
        return true;
    }
    static bool setIntOf(ImsData* r, const char* name, long long value) {
        MemberAccess<false> a{name, value, true};
        return access(r, a);
    }
    static bool setFlagOf(ImsData* r, const char* name, bool value) {
        MemberAccess<true> a{name, value ? 1 : 0, true};
        return access(r, a);
    }
};

}  // namespace velar_sim

// Registers a record class under the name the control channel uses for it,
// which is its C++ spelling: VELAR_SIM_CLASS(PrimitiveData<int>).
#define VELAR_SIM_CLASS(...)                                                                  \
    static const ::velar_sim::Registrar<__VA_ARGS__> VELAR_PP_CAT(velarSimClass_, __LINE__) { \
#__VA_ARGS__                                                                          \
    }

// The JSON form of records on the control channel, derived from the record
// declarations through their shapes (record_shapes.h): integers exact over
// their type, enums as numbers, byte strings as Latin-1 code points, held
// objects as objects of their members.
#pragma once

#include <cstdint>
#include <deque>
#include <limits>
#include <list>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "record_shapes.h"

namespace velar_sim {

using Json = nlohmann::ordered_json;

std::string latin1ToUtf8(const std::string& bytes);
// False when the text holds a code point above U+00FF or is not UTF-8.
bool utf8ToLatin1(const std::string& text, std::string* bytes);

namespace codec {

struct Probe {
    template <class T>
    void operator()(const char*, T&) {}
    template <class T>
    void call(const char*, T&) {}
};

// Whether the class has a shape of that aspect (a specialisation with visit).
template <template <class> class Aspect, class T, class = void>
struct HasShape : std::false_type {};
template <template <class> class Aspect, class T>
struct HasShape<Aspect, T,
                std::void_t<decltype(Aspect<T>::visit(std::declval<T&>(), std::declval<Probe&>()))>>
    : std::true_type {};
template <class T>
using HasFields = HasShape<shape::Fields, T>;
template <class T>
using HasArgs = HasShape<shape::Args, T>;
template <class T>
using HasMembers = HasShape<shape::Members, T>;
template <class T>
using HasCalls = HasShape<shape::Calls, T>;

template <class T>
struct IsSeq : std::false_type {};
template <class T, class A>
struct IsSeq<std::vector<T, A>> : std::true_type {};
template <class T, class A>
struct IsSeq<std::list<T, A>> : std::true_type {};
template <class T, class A>
struct IsSeq<std::deque<T, A>> : std::true_type {};
template <class T>
struct IsSet : std::false_type {};
template <class T, class C, class A>
struct IsSet<std::set<T, C, A>> : std::true_type {};
template <class T>
struct IsMap : std::false_type {};
template <class K, class V, class C, class A>
struct IsMap<std::map<K, V, C, A>> : std::true_type {};
template <class T>
struct IsUnique : std::false_type {};
template <class T, class D>
struct IsUnique<std::unique_ptr<T, D>> : std::true_type {};
template <class T>
struct IsPair : std::false_type {};
template <class A, class B>
struct IsPair<std::pair<A, B>> : std::true_type {};
template <class T>
struct IsTuple : std::false_type {};
template <class... A>
struct IsTuple<std::tuple<A...>> : std::true_type {};

template <class T>
constexpr bool kIsObject = HasFields<T>::value || HasArgs<T>::value || HasMembers<T>::value;

template <class T>
Json encode(T& v);

struct ObjectEncoder {
    Json* out;
    template <class T>
    void operator()(const char* name, T& v) {
        (*out)[name] = encode(v);
    }
};
struct ArrayEncoder {
    Json* out;
    template <class T>
    void operator()(const char*, T& v) {
        out->push_back(encode(v));
    }
};
struct CallEncoder {
    Json* out;
    template <class A>
    void call(const char* name, A& args) {
        Json list = Json::array();
        ArrayEncoder e{&list};
        shape::Args<A>::visit(args, e);
        out->push_back(Json::array({name, std::move(list)}));
    }
};

template <class K>
std::string encodeKey(const K& k) {
    if constexpr (std::is_same_v<K, std::string>) {
        return latin1ToUtf8(k);
    } else if constexpr (std::is_enum_v<K>) {
        return std::to_string(static_cast<std::underlying_type_t<K>>(k));
    } else {
        static_assert(std::is_integral_v<K>, "map keys are strings or integers");
        return std::to_string(k);
    }
}

// An object held inside a record: the constructor's parameters, then the
// public members, then the fields, each by name; never a class or id.
template <class T>
Json encodeObject(T& v) {
    Json o = Json::object();
    ObjectEncoder e{&o};
    if constexpr (HasArgs<T>::value) shape::Args<T>::visit(v, e);
    if constexpr (HasMembers<T>::value) shape::Members<T>::visit(v, e);
    if constexpr (HasFields<T>::value) shape::Fields<T>::visit(v, e);
    return o;
}

template <class T>
Json encode(T& v) {
    using U = std::remove_cv_t<T>;
    if constexpr (std::is_same_v<U, bool>) {
        return Json(v);
    } else if constexpr (std::is_enum_v<U>) {
        return Json(static_cast<std::underlying_type_t<U>>(v));
    } else if constexpr (std::is_integral_v<U>) {
        if constexpr (std::is_signed_v<U>)
            return Json(static_cast<std::int64_t>(v));
        else
            return Json(static_cast<std::uint64_t>(v));
    } else if constexpr (std::is_floating_point_v<U>) {
        return Json(static_cast<double>(v));
    } else if constexpr (std::is_same_v<U, std::string>) {
        return Json(latin1ToUtf8(v));
    } else if constexpr (std::is_pointer_v<U> || IsUnique<U>::value) {
        if (!v) return Json(nullptr);
        return encode(*v);
    } else if constexpr (IsSeq<U>::value || IsSet<U>::value) {
        Json a = Json::array();
        for (auto& e : v) a.push_back(encode(const_cast<std::remove_const_t<std::remove_reference_t<decltype(e)>>&>(e)));
        return a;
    } else if constexpr (IsMap<U>::value) {
        Json o = Json::object();
        for (auto& kv : v) o[encodeKey(kv.first)] = encode(kv.second);
        return o;
    } else if constexpr (IsPair<U>::value) {
        return Json::array({encode(v.first), encode(v.second)});
    } else if constexpr (IsTuple<U>::value) {
        Json a = Json::array();
        std::apply([&a](auto&... e) { (a.push_back(encode(e)), ...); }, v);
        return a;
    } else {
        static_assert(kIsObject<U>, "type has no JSON form: give it a shape in record_shapes.h");
        return encodeObject(v);
    }
}

// A record as the stack receives it (constructed by the library: args, calls,
// members) or as the daemon built or the stack hands it up (fields).
template <class T>
Json encodeRecord(T& r, const char* className) {
    static_assert(HasArgs<T>::value || HasFields<T>::value,
                  "record has no JSON form: give it a shape in record_shapes.h");
    Json j = Json::object();
    j["class"] = className;
    j["id"] = r.GetId();
    if constexpr (HasArgs<T>::value) {
        Json args = Json::array();
        ArrayEncoder e{&args};
        shape::Args<T>::visit(r, e);
        j["args"] = std::move(args);
        if constexpr (HasCalls<T>::value) {
            Json calls = Json::array();
            CallEncoder c{&calls};
            shape::Calls<T>::visit(r, c);
            j["calls"] = std::move(calls);
        }
        if constexpr (HasMembers<T>::value) {
            Json m = Json::object();
            ObjectEncoder e2{&m};
            shape::Members<T>::visit(r, e2);
            j["members"] = std::move(m);
        }
    } else {
        Json f = Json::object();
        if constexpr (HasFields<T>::value) {
            ObjectEncoder e{&f};
            shape::Fields<T>::visit(r, e);
        }
        j["fields"] = std::move(f);
    }
    return j;
}

// Decoding, for records that the controller hands up. Errors name the path.
struct DecodeError {
    std::string message;
};

template <class T>
void decode(const Json& j, T& out, const std::string& path);

[[noreturn]] void fail(const std::string& path, const std::string& what);

template <class T>
void decodeFields(const Json& j, T& out, const std::string& path);

struct FieldDecoder {
    const Json* obj;
    const std::string* path;
    size_t matched = 0;
    template <class T>
    void operator()(const char* name, T& v) {
        auto it = obj->find(name);
        std::string p = *path + "." + name;
        if (it == obj->end()) {
            // Left out: the declared zero value, but a vector held through a
            // pointer is an empty vector rather than none.
            if constexpr (std::is_pointer_v<T>) {
                using P = std::remove_pointer_t<T>;
                if constexpr (IsSeq<P>::value || IsSet<P>::value || IsMap<P>::value) v = new P();
            }
            return;
        }
        ++matched;
        decode(*it, v, p);
    }
};

template <class K>
K decodeKey(const std::string& key, const std::string& path) {
    if constexpr (std::is_same_v<K, std::string>) {
        std::string bytes;
        if (!utf8ToLatin1(key, &bytes)) fail(path, "key is not Latin-1");
        return bytes;
    } else {
        Json n;
        try {
            n = Json::parse(key);
        } catch (...) {
            fail(path, "key is not a number");
        }
        K k{};
        decode(n, k, path);
        return k;
    }
}

template <class T>
void decode(const Json& j, T& out, const std::string& path) {
    using U = std::remove_cv_t<T>;
    if constexpr (std::is_same_v<U, bool>) {
        if (!j.is_boolean()) fail(path, "expected a boolean");
        out = j.get<bool>();
    } else if constexpr (std::is_enum_v<U> || std::is_integral_v<U>) {
        using I = std::conditional_t<std::is_enum_v<U>, std::underlying_type<U>, std::common_type<U>>;
        using N = typename I::type;
        if (!j.is_number_integer()) fail(path, "expected an integer");
        if (j.is_number_unsigned()) {
            std::uint64_t v = j.get<std::uint64_t>();
            if (v > static_cast<std::uint64_t>(std::numeric_limits<N>::max()))
                fail(path, "integer out of range");
            out = static_cast<U>(static_cast<N>(v));
        } else {
            std::int64_t v = j.get<std::int64_t>();
            if constexpr (std::is_signed_v<N>) {
                if (v < static_cast<std::int64_t>(std::numeric_limits<N>::min()) ||
                    v > static_cast<std::int64_t>(std::numeric_limits<N>::max()))
                    fail(path, "integer out of range");
            } else {
                if (v < 0) fail(path, "integer out of range");
            }
            out = static_cast<U>(static_cast<N>(v));
        }
    } else if constexpr (std::is_floating_point_v<U>) {
        if (!j.is_number()) fail(path, "expected a number");
        out = static_cast<U>(j.get<double>());
    } else if constexpr (std::is_same_v<U, std::string>) {
        if (!j.is_string()) fail(path, "expected a string");
        if (!utf8ToLatin1(j.get_ref<const std::string&>(), &out))
            fail(path, "string holds a code point above U+00FF");
    } else if constexpr (std::is_pointer_v<U>) {
        using P = std::remove_pointer_t<U>;
        if (j.is_null()) {
            out = nullptr;
            return;
        }
        auto p = std::make_unique<P>();
        decode(j, *p, path);
        out = p.release();
    } else if constexpr (IsUnique<U>::value) {
        using P = typename U::element_type;
        if (j.is_null()) {
            out.reset();
            return;
        }
        auto p = std::make_unique<P>();
        decode(j, *p, path);
        out = std::move(p);
    } else if constexpr (IsSeq<U>::value || IsSet<U>::value) {
        if (!j.is_array()) fail(path, "expected an array");
        out.clear();
        size_t i = 0;
        for (const auto& e : j) {
            typename U::value_type v{};
            decode(e, v, path + "[" + std::to_string(i++) + "]");
            if constexpr (IsSet<U>::value)
                out.insert(std::move(v));
            else
                out.push_back(std::move(v));
        }
    } else if constexpr (IsMap<U>::value) {
        if (!j.is_object()) fail(path, "expected an object");
        out.clear();
        for (auto it = j.begin(); it != j.end(); ++it) {
            auto key = decodeKey<typename U::key_type>(it.key(), path);
            typename U::mapped_type v{};
            decode(it.value(), v, path + "." + it.key());
            out.emplace(std::move(key), std::move(v));
        }
    } else if constexpr (IsPair<U>::value) {
        if (!j.is_array() || j.size() != 2) fail(path, "expected an array of two");
        decode(j[0], out.first, path + "[0]");
        decode(j[1], out.second, path + "[1]");
    } else if constexpr (IsTuple<U>::value) {
        if (!j.is_array() || j.size() != std::tuple_size_v<U>) fail(path, "expected a tuple array");
        size_t i = 0;
        auto one = [&](auto& e) {
            decode(j[i], e, path + "[" + std::to_string(i) + "]");
            ++i;
        };
        std::apply([&](auto&... e) { (one(e), ...); }, out);
    } else {
        static_assert(kIsObject<U>, "type has no JSON form: give it a shape in record_shapes.h");
        decodeFields(j, out, path);
    }
}

struct FieldFinder {
    const std::string* key;
    bool found = false;
    template <class X>
    void operator()(const char* n, X&) {
        found = found || *key == n;
    }
};

// The declared data of an object that is built from JSON: its fields, or,
// for a held object described by its constructor, the constructor's
// parameters and its public members (the names encodeObject writes).
template <class T, class V>
void visitDecoded(T& out, V& v) {
    if constexpr (HasFields<T>::value) {
        shape::Fields<T>::visit(out, v);
    } else {
        if constexpr (HasArgs<T>::value) shape::Args<T>::visit(out, v);
        if constexpr (HasMembers<T>::value) shape::Members<T>::visit(out, v);
    }
}

template <class T>
void decodeFields(const Json& j, T& out, const std::string& path) {
    if (!j.is_object()) fail(path, "expected an object");
    FieldDecoder d{&j, &path};
    visitDecoded(out, d);
    if (d.matched != j.size()) {
        // Name the first key that the record does not declare.
        for (auto it = j.begin(); it != j.end(); ++it) {
            FieldFinder f{&it.key()};
            visitDecoded(out, f);
            if (!f.found) fail(path + "." + it.key(), "no such field");
        }
    }
}

}  // namespace codec
}  // namespace velar_sim

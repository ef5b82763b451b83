// Building a filled record from a class's declaration alone.
//
// A record decoded from empty fields and encoded again shows every field with
// its zero value, but not what an empty vector, a null pointer or an empty map
// would hold. Those are found by offering the decoder a placeholder and
// reading its complaint, which names the path and the type it expected; the
// placeholder is then made of that type and the round repeats until the
// record decodes with nothing left unexplored. Last, every scalar gets a
// non-zero value and every container the shape's number of entries.
#include "samples.h"

#include <memory>
#include <set>
#include <vector>

namespace velar_sim {
namespace {

using Pointer = Json::json_pointer;

// Held objects can hold their own kind (an element of elements); below this
// depth a null pointer or an empty vector is left as it is.
constexpr size_t kMaxDepth = 8;
constexpr int kMaxRounds = 2000;

std::vector<std::string> split(const Pointer& p) {
    std::vector<std::string> tokens;
    for (Pointer q = p; !q.empty(); q = q.parent_pointer()) tokens.insert(tokens.begin(), q.back());
    return tokens;
}

size_t depthOf(const Pointer& p) {
    return split(p).size();
}

// Entries of one container share their shape: a map found under the first
// entry of a vector is a map under every entry.
std::string shapeKey(const Pointer& p) {
    std::string out;
    for (const std::string& t : split(p)) {
        bool index = !t.empty() && t.find_first_not_of("0123456789") == std::string::npos;
        out += "/" + (index ? std::string("#") : t);
    }
    return out;
}

// "fields.mA[2].key" -> /fields/mA/2/key. Our own map keys hold neither dots
// nor brackets, and field names are identifiers.
Pointer pointerOf(const std::string& path) {
    std::string out;
    std::string token;
    auto flush = [&] {
        if (!token.empty()) out += "/" + token;
        token.clear();
    };
    for (char c : path) {
        if (c == '.' || c == '[') {
            flush();
        } else if (c == ']') {
            flush();
        } else {
            token += c;
        }
    }
    flush();
    return Pointer(out);
}

struct Builder {
    Json record;
    std::set<std::string> explored;  // holes already offered a placeholder
    std::set<std::string> maps;      // objects that turned out to be maps

    // Makes the value at the decoder's complaint the type it asked for.
    // False when the complaint is not about a shape.
    bool repair(const std::string& error) {
        size_t colon = error.find(": ");
        if (colon == std::string::npos) return false;
        Pointer at = pointerOf(error.substr(0, colon));
        std::string what = error.substr(colon + 2);
        if (!record.contains(at)) return false;
        Json& v = record[at];
        if (what == "expected a boolean") {
            v = false;
        } else if (what == "expected an integer" || what == "integer out of range") {
            v = 0;
        } else if (what == "expected a number") {
            v = 0.0;
        } else if (what == "expected a string" ||
                   what == "string holds a code point above U+00FF") {
            v = "";
        } else if (what == "expected an array") {
            v = Json::array();
        } else if (what == "expected an object") {
            v = Json::object();
        } else if (what == "expected an array of two") {
            v = Json::array({nullptr, nullptr});
        } else if (what == "expected a tuple array") {
            if (!v.is_array()) v = Json::array();
            if (v.size() >= 16) return false;
            v.push_back(nullptr);
        } else if (what == "key is not a number") {
            Json renamed = Json::object();
            int n = 0;
            for (auto& kv : v.items()) renamed[std::to_string(n++)] = kv.value();
            v = renamed;
        } else if (what == "no such field") {
            // The object offered a key was a record without fields, not a map.
            Pointer parent = at.parent_pointer();
            record[parent] = Json::object();
            maps.erase(shapeKey(parent));
        } else {
            return false;
        }
        return true;
    }

    // The first null, empty array or empty object not yet explored.
    bool findHole(const Json& v, const Pointer& at, Pointer* hole) {
        if (depthOf(at) > kMaxDepth) return false;
        bool empty = v.is_null() || (v.is_array() && v.empty()) || (v.is_object() && v.empty());
        if (empty && at != Pointer("/fields") && explored.count(at.to_string()) == 0) {
            *hole = at;
            return true;
        }
        if (v.is_array()) {
            for (size_t i = 0; i < v.size(); i++)
                if (findHole(v[i], at / i, hole)) return true;
        } else if (v.is_object()) {
            for (auto& kv : v.items())
                if (findHole(kv.value(), at / kv.key(), hole)) return true;
        }
        return false;
    }

    void offer(const Pointer& hole) {
        explored.insert(hole.to_string());
        Json& v = record[hole];
        if (v.is_null()) {
            v = Json::object();
        } else if (v.is_array()) {
            v.push_back(nullptr);
        } else {
            v["key"] = nullptr;
            maps.insert(shapeKey(hole));
        }
    }
};

// Its number first, so that entries stay distinct however short the text.
std::string text(const std::string& name, int n, size_t length) {
    std::string s = std::to_string(n) + "-" + name + "-";
    while (s.size() < length) s += static_cast<char>('a' + s.size() % 26);
    s.resize(length);
    return s;
}

// Scalars made non-zero; containers of one explored entry grown to the
// shape's count, each entry told apart by its number n (sets and map keys
// need distinct values).
void fillValues(Json& v, const Pointer& at, const std::string& name, int n,
                const SampleShape& shape, const std::set<std::string>& maps) {
    if (v.is_boolean()) {
        v = true;
    } else if (v.is_number_float()) {
        v = 1.5 + n;
    } else if (v.is_number_integer()) {
        v = 3 + n;
    } else if (v.is_string()) {
        v = text(name, n, shape.stringLength);
    } else if (v.is_array()) {
        if (v.size() == 1) {
            Json one = v[0];
            v = Json::array();
            for (int i = 0; i < shape.repeat; i++) {
                Json e = one;
                fillValues(e, at / static_cast<size_t>(i), name, n + i, shape, maps);
                v.push_back(e);
            }
        } else {
            // A pair or tuple: positions, not entries.
            for (size_t i = 0; i < v.size(); i++) fillValues(v[i], at / i, name, n, shape, maps);
        }
    } else if (v.is_object() && maps.count(shapeKey(at)) != 0 && v.size() == 1) {
        std::string key = v.begin().key();
        Json one = v.begin().value();
        bool numeric = !key.empty() && key.find_first_not_of("0123456789") == std::string::npos;
        v = Json::object();
        for (int i = 0; i < shape.repeat; i++) {
            Json e = one;
            std::string k =
                numeric ? std::to_string(3 + n + i) : text(name + "Key", n + i, shape.stringLength);
            fillValues(e, at / k, name, n + i, shape, maps);
            v[k] = e;
        }
    } else if (v.is_object()) {
        for (auto& kv : v.items()) fillValues(kv.value(), at / kv.key(), kv.key(), n, shape, maps);
    }
}

}  // namespace

Json sampleRecord(const std::string& className, int id, const SampleShape& shape,
                  std::string* error) {
    Builder b;
    b.record = Json{{"class", className}, {"id", id}, {"fields", Json::object()}};
    for (int round = 0; round < kMaxRounds; round++) {
        std::string complaint;
        std::unique_ptr<ImsData> r(recordFromJson(b.record, &complaint));
        if (!r) {
            if (!b.repair(complaint)) {
                if (error) *error = complaint;
                return Json(nullptr);
            }
            continue;
        }
        // The decoder's own view: every declared field, containers as built.
        Json canonical = recordToJsonUp(r.get());
        // Map keys came from us; keep the map's knowledge across the round.
        b.record = canonical;
        Pointer hole;
        if (b.findHole(b.record["fields"], Pointer("/fields"), &hole)) {
            b.offer(hole);
            continue;
        }
        Json& fields = b.record["fields"];
        fillValues(fields, Pointer("/fields"), "", 0, shape, b.maps);
        std::string complaintAfterFill;
        std::unique_ptr<ImsData> filled(recordFromJson(b.record, &complaintAfterFill));
        if (!filled) {
            if (error) *error = "filled record does not decode: " + complaintAfterFill;
            return Json(nullptr);
        }
        return recordToJsonUp(filled.get());
    }
    if (error) *error = "no stable shape after " + std::to_string(kMaxRounds) + " rounds";
    return Json(nullptr);
}

}  // namespace velar_sim

// Writes one file per body of Request: a Request holding only that body,
// every field of it filled (strings, repeated fields with a few entries,
// nested messages), and no reqid. The benchmarks and fuzz seeds add the id.
//
// It runs on the full runtime, whose reflection reaches every field; the
// programs that read the files link the lite runtime, which has none.
//
//   gen_requests OUTDIR STRING_LENGTH REPEAT
#include <google/protobuf/descriptor.h>
#include <google/protobuf/message.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "imsCommonStruc.pb.h"

namespace {

using google::protobuf::Descriptor;
using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using google::protobuf::Reflection;

struct Shape {
    size_t stringLength;
    int repeat;
};

// Text of the given length that names its field, so that a reader of a
// captured record can tell where each value came from.
std::string text(const FieldDescriptor* f, int n, size_t length) {
    std::string s = f->name() + "-" + std::to_string(n) + "-";
    while (s.size() < length) s += static_cast<char>('a' + s.size() % 26);
    s.resize(length);
    return s;
}

void fill(Message* m, const Shape& shape, std::vector<const Descriptor*>& path);

// Not the default where there is a choice, so that presence rules and
// "set only when not zero" show in what the handler builds.
void setOne(Message* m, const FieldDescriptor* f, int n, const Shape& shape,
            std::vector<const Descriptor*>& path) {
    const Reflection* r = m->GetReflection();
    const bool rep = f->is_repeated();
    const uint32_t number = static_cast<uint32_t>(f->number() + n + 1);
    switch (f->cpp_type()) {
        case FieldDescriptor::CPPTYPE_INT32:
            rep ? r->AddInt32(m, f, number) : r->SetInt32(m, f, number);
            break;
        case FieldDescriptor::CPPTYPE_INT64:
            rep ? r->AddInt64(m, f, number) : r->SetInt64(m, f, number);
            break;
        case FieldDescriptor::CPPTYPE_UINT32:
            rep ? r->AddUInt32(m, f, number) : r->SetUInt32(m, f, number);
            break;
        case FieldDescriptor::CPPTYPE_UINT64:
            rep ? r->AddUInt64(m, f, number) : r->SetUInt64(m, f, number);
            break;
        case FieldDescriptor::CPPTYPE_DOUBLE:
            rep ? r->AddDouble(m, f, number + 0.5) : r->SetDouble(m, f, number + 0.5);
            break;
        case FieldDescriptor::CPPTYPE_FLOAT:
            rep ? r->AddFloat(m, f, number + 0.5f) : r->SetFloat(m, f, number + 0.5f);
            break;
        case FieldDescriptor::CPPTYPE_BOOL:
            rep ? r->AddBool(m, f, !f->default_value_bool())
                : r->SetBool(m, f, !f->default_value_bool());
            break;
        case FieldDescriptor::CPPTYPE_ENUM: {
            const auto* e = f->enum_type();
            const auto* v = e->value(e->value_count() > 1 ? 1 + n % (e->value_count() - 1) : 0);
            rep ? r->AddEnum(m, f, v) : r->SetEnum(m, f, v);
            break;
        }
        case FieldDescriptor::CPPTYPE_STRING:
            rep ? r->AddString(m, f, text(f, n, shape.stringLength))
                : r->SetString(m, f, text(f, n, shape.stringLength));
            break;
        case FieldDescriptor::CPPTYPE_MESSAGE:
            fill(rep ? r->AddMessage(m, f) : r->MutableMessage(m, f), shape, path);
            break;
    }
}

// A message that holds its own kind (an element of elements) is filled
// once: inside itself the field is left out.
bool recurses(const Descriptor* d, const std::vector<const Descriptor*>& path) {
    return std::find(path.begin(), path.end(), d) != path.end();
}

void fill(Message* m, const Shape& shape, std::vector<const Descriptor*>& path) {
    const Descriptor* d = m->GetDescriptor();
    path.push_back(d);
    for (int i = 0; i < d->field_count(); i++) {
        const FieldDescriptor* f = d->field(i);
        if (f->cpp_type() == FieldDescriptor::CPPTYPE_MESSAGE && recurses(f->message_type(), path))
            continue;
        int count = f->is_repeated() ? shape.repeat : 1;
        for (int n = 0; n < count; n++) setOne(m, f, n, shape, path);
    }
    path.pop_back();
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4) {
        std::cerr << "usage: gen_requests OUTDIR STRING_LENGTH REPEAT\n";
        return 2;
    }
    std::string out = argv[1];
    Shape shape{static_cast<size_t>(std::atoi(argv[2])), std::atoi(argv[3])};
    const Descriptor* request = imsCommonStruc::Request::descriptor();
    int written = 0;
    for (int i = 0; i < request->field_count(); i++) {
        const FieldDescriptor* f = request->field(i);
        if (f->cpp_type() != FieldDescriptor::CPPTYPE_MESSAGE || f->is_repeated()) continue;
        imsCommonStruc::Request r;
        std::vector<const Descriptor*> path;
        fill(r.GetReflection()->MutableMessage(&r, f), shape, path);
        std::ofstream file(out + "/" + f->name() + ".bin", std::ios::binary);
        file << r.SerializePartialAsString();
        if (!file) {
            std::cerr << "cannot write " << out << "/" << f->name() << ".bin\n";
            return 1;
        }
        written++;
    }
    std::cout << written << " request bodies in " << out << "\n";
    return 0;
}

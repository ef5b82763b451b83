// Small records shared by several families, and the common answer record.
#pragma once

#include <map>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "velar_boundary.h"
#include "velar_record.h"

// A request that carries one value.
template <typename T>
class PrimitiveData : public ImsData {
public:
    PrimitiveData(int recordId, T v);
    // As the stack hands one up (notification 20002).
    PrimitiveData() : value() {}
    T value;

protected:
    PrimitiveData(int recordId, T&& v, int) : ImsData(recordId), value(std::move(v)) {}
};

template <typename A, typename B>
class PairData : public PrimitiveData<std::pair<A, B>> {
public:
    PairData(int recordId, A first, B second);
};

template <typename A, typename B>
class TupleData : public PrimitiveData<std::tuple<A, B>> {
public:
    TupleData(int recordId, A first, B second);
};

// A call request that names only a session, with optional extra headers.
#define VELAR_ARGS_CallSessionId (session, int)
#define VELAR_ARGS_CallSessionId_setExtraHeader (headers, std::map<std::string, std::string>)
#define VELAR_CALLS_CallSessionId setExtraHeader
class CallSessionId : public ImsData {
public:
    VELAR_RECORD_CONSTRUCTOR(CallSessionId, VELAR_ARGS_CallSessionId)
    VELAR_SETTER(setExtraHeader, VELAR_ARGS_CallSessionId_setExtraHeader)
    VELAR_CALLS(VELAR_CALLS_CallSessionId)
};

// A body attached to a call or an INFO request; held by its owner through a
// std::unique_ptr.
#define VELAR_ARGS_AdditionalContents (mimeType, const std::string&), (contents, const std::string&)
class AdditionalContents : public ImsData {
public:
    // As the stack hands one up inside a call record.
    AdditionalContents() = default;
    VELAR_CONSTRUCTOR(AdditionalContents, VELAR_ARGS_AdditionalContents)
};

// The answer of most requests.
#define VELAR_FIELDS_GeneralResponseData \
    (handle, unsigned int), (result, int), (reason, int), (errorStr, std::string), (sipError, int)
class GeneralResponseData : public ImsData {
public:
    VELAR_FIELDS(VELAR_FIELDS_GeneralResponseData)
};

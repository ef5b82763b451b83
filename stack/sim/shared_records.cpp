// The provider's side of the shared records.
#include "velar_sim.h"

template <typename T>
PrimitiveData<T>::PrimitiveData(int recordId, T v) : ImsData(recordId), value(std::move(v)) {}
template class PrimitiveData<int>;
template class PrimitiveData<bool>;

template <typename A, typename B>
PairData<A, B>::PairData(int recordId, A first, B second)
    : PrimitiveData<std::pair<A, B>>(recordId, std::make_pair(std::move(first), std::move(second)),
                                     0) {}
template class PairData<int, std::vector<unsigned int>>;

template <typename A, typename B>
TupleData<A, B>::TupleData(int recordId, A first, B second)
    : PrimitiveData<std::tuple<A, B>>(recordId, std::make_tuple(std::move(first), std::move(second)),
                                      0) {}
template class TupleData<int, std::string>;

VELAR_DEFINE_RECORD_CONSTRUCTOR(CallSessionId, VELAR_ARGS_CallSessionId)
VELAR_DEFINE_SETTER(CallSessionId, setExtraHeader, VELAR_ARGS_CallSessionId_setExtraHeader)
VELAR_DEFINE_CONSTRUCTOR(AdditionalContents, VELAR_ARGS_AdditionalContents)

VELAR_SIM_CLASS(PrimitiveData<int>);
VELAR_SIM_CLASS(PrimitiveData<bool>);
VELAR_SIM_CLASS(PairData<int, std::vector<unsigned int>>);
VELAR_SIM_CLASS(TupleData<int, std::string>);
VELAR_SIM_CLASS(CallSessionId);
VELAR_SIM_CLASS(AdditionalContents);
VELAR_SIM_CLASS(GeneralResponseData);

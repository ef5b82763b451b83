// The provider's definitions of the exported constructors and setters, from
// the same lists that declare them in the interface (VELAR_ARGS_<Class>):
// each stored argument is initialised from its parameter, and a setter
// records its call for the call log.
#pragma once

#include <utility>

#include "../velar_record.h"

#define VELAR_M_FWD_(c, pair) std::forward<VELAR_PAIR_TYPE pair>(VELAR_PAIR_NAME pair)
#define VELAR_M_INIT_(c, pair) VELAR_PAIR_NAME pair(VELAR_M_FWD_(c, pair))

#define VELAR_DEFINE_CONSTRUCTOR(Class, ...)                    \
    Class::Class(VELAR_PP_LIST(VELAR_M_PARAM_, ~, __VA_ARGS__)) \
        : VELAR_PP_LIST(VELAR_M_INIT_, ~, __VA_ARGS__) {}

#define VELAR_DEFINE_RECORD_CONSTRUCTOR(Class, ...)                           \
    Class::Class(int recordId, VELAR_PP_LIST(VELAR_M_PARAM_, ~, __VA_ARGS__)) \
        : ImsData(recordId), VELAR_PP_LIST(VELAR_M_INIT_, ~, __VA_ARGS__) {}

#define VELAR_DEFINE_RECORD_CONSTRUCTOR0(Class) \
    Class::Class(int recordId) : ImsData(recordId) {}

#define VELAR_DEFINE_SETTER(Class, Setter, ...)                                      \
    void Class::Setter(VELAR_PP_LIST(VELAR_M_PARAM_, ~, __VA_ARGS__)) {              \
        velar_##Setter = Setter##_args{VELAR_PP_LIST(VELAR_M_FWD_, ~, __VA_ARGS__)}; \
        velarCallLog.push_back(#Setter);                                             \
    }

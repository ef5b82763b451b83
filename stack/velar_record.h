// Declaring a stack record once.
//
// A record class is written as ordinary C++ (bases, nested types, destructor)
// and its data are declared by one of the macros below, from a list of
// (name, Type) pairs. The same list gives the members, the constructor or
// setter signatures and a visitor over the members in declaration order, which
// is all that the host provider needs to show a record as JSON and to build
// one from JSON. Type may hold commas: it is everything after the name.
//
//   VELAR_FIELDS(pairs...)            members that are read or written
//                                     directly (records built inline and every
//                                     record handed up); visited by velarFields
//   VELAR_FIELDS_EXTEND(Base, pairs...) the same, with Base's fields first
//   VELAR_RECORD_CONSTRUCTOR(C, pairs...) exported constructor C(int id, ...)
//   VELAR_RECORD_CONSTRUCTOR0(C)      exported constructor C(int id)
//   VELAR_CONSTRUCTOR(C, pairs...)    exported constructor of a class that is
//                                     no record (held objects such as Element)
//   VELAR_SETTER(Name, pairs...)      exported setter; VELAR_CALLS(Name, ...)
//                                     lists a class's setters once
//   VELAR_MEMBERS(pairs...)           public members the daemon writes after
//                                     construction
//
// Lists that a constructor or setter shares with its definition in the
// provider are named VELAR_ARGS_<Class> / VELAR_ARGS_<Class>_<Setter>, so that
// the provider defines the function from the same list.
#pragma once

#include <cstring>
#include <type_traits>
#include <utility>
#include <vector>

#include "velar_pp.h"

#define VELAR_PAIR_NAME(name, ...) name
#define VELAR_PAIR_TYPE(name, ...) __VA_ARGS__
#define VELAR_STR(x) VELAR_STR_I(x)
#define VELAR_STR_I(x) #x

#define VELAR_M_FIELD_(c, pair) VELAR_PAIR_TYPE pair VELAR_PAIR_NAME pair{};
#define VELAR_M_STORE_(c, pair) std::decay_t<VELAR_PAIR_TYPE pair> VELAR_PAIR_NAME pair;
#define VELAR_M_PARAM_(c, pair) VELAR_PAIR_TYPE pair VELAR_PAIR_NAME pair
#define VELAR_M_VISIT_(c, pair) v(VELAR_STR(VELAR_PAIR_NAME pair), VELAR_PAIR_NAME pair);
#define VELAR_M_CALL_(entry, Setter) \
    if (std::strcmp(entry, #Setter) == 0) v.call(#Setter, velar_##Setter);

#define VELAR_FIELDS(...)                                   \
    VELAR_PP_EACH(VELAR_M_FIELD_, ~, __VA_ARGS__)           \
    template <class V>                                      \
    void velarFields(V& v) {                                \
        VELAR_PP_EACH(VELAR_M_VISIT_, ~, __VA_ARGS__)       \
    }

#define VELAR_FIELDS_EXTEND(Base, ...)                      \
    VELAR_PP_EACH(VELAR_M_FIELD_, ~, __VA_ARGS__)           \
    template <class V>                                      \
    void velarFields(V& v) {                                \
        Base::velarFields(v);                               \
        VELAR_PP_EACH(VELAR_M_VISIT_, ~, __VA_ARGS__)       \
    }

#define VELAR_MEMBERS(...)                                  \
    VELAR_PP_EACH(VELAR_M_FIELD_, ~, __VA_ARGS__)           \
    template <class V>                                      \
    void velarMembers(V& v) {                               \
        VELAR_PP_EACH(VELAR_M_VISIT_, ~, __VA_ARGS__)       \
    }

#define VELAR_ARGS_STORAGE_(...)                            \
    VELAR_PP_EACH(VELAR_M_STORE_, ~, __VA_ARGS__)           \
    template <class V>                                      \
    void velarArgs(V& v) {                                  \
        VELAR_PP_EACH(VELAR_M_VISIT_, ~, __VA_ARGS__)       \
    }

#define VELAR_CONSTRUCTOR(Class, ...)                           \
    Class(VELAR_PP_LIST(VELAR_M_PARAM_, ~, __VA_ARGS__));       \
    VELAR_ARGS_STORAGE_(__VA_ARGS__)

#define VELAR_RECORD_CONSTRUCTOR(Class, ...)                            \
    Class(int recordId, VELAR_PP_LIST(VELAR_M_PARAM_, ~, __VA_ARGS__)); \
    VELAR_ARGS_STORAGE_(__VA_ARGS__)

#define VELAR_RECORD_CONSTRUCTOR0(Class) \
    explicit Class(int recordId);        \
    template <class V>                   \
    void velarArgs(V&) {}

#define VELAR_SETTER(Setter, ...)                             \
    void Setter(VELAR_PP_LIST(VELAR_M_PARAM_, ~, __VA_ARGS__)); \
    struct Setter##_args {                                    \
        VELAR_ARGS_STORAGE_(__VA_ARGS__)                      \
    } velar_##Setter{};

// The setters called on a record, in call order, by name.
#define VELAR_CALLS(...)                                           \
    std::vector<const char*> velarCallLog;                         \
    template <class V>                                             \
    void velarCalls(V& v) {                                        \
        for (const char* entry : velarCallLog) {                   \
            VELAR_PP_EACH(VELAR_M_CALL_, entry, __VA_ARGS__)       \
        }                                                          \
    }

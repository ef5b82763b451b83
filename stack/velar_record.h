// Declaring a stack record once.
//
// A record class is written as ordinary C++ (bases, nested types, destructor)
// and its data come from named lists of (name, Type) pairs, defined just
// before the class; Type may hold commas: it is everything after the name.
// The macros below turn a list into what the class holds: its members, its
// constructor or setter declarations, the stored arguments of each and the
// call log. The lists are named after the class (a nested class after its
// outer class and its own name, Outer_Inner), so that the provider defines
// each function from the same list and the host provider's JSON form is
// derived from the lists too (stack/sim/record_shapes.h).
//
//   VELAR_FIELDS(VELAR_FIELDS_<Class>)    members that are read or written
//                                         directly (records built inline and
//                                         every record handed up)
//   VELAR_MEMBERS(VELAR_MEMBERS_<Class>)  public members the daemon writes
//                                         after construction
//   VELAR_RECORD_CONSTRUCTOR(Class, VELAR_ARGS_<Class>)
//                                         exported constructor C(int id, ...)
//   VELAR_RECORD_CONSTRUCTOR0(Class)      exported constructor C(int id)
//   VELAR_CONSTRUCTOR(Class, VELAR_ARGS_<Class>)
//                                         exported constructor of a class that
//                                         is no record (held objects such as
//                                         Element)
//   VELAR_SETTER(Setter, VELAR_ARGS_<Class>_<Setter>)
//                                         exported setter, its arguments kept
//                                         in the member velar_<Setter>
//   VELAR_CALLS(VELAR_CALLS_<Class>)      the log of the setters called, in
//                                         call order; the list names the
//                                         class's setters
#pragma once

#include <type_traits>
#include <vector>

#include "velar_pp.h"

#define VELAR_PAIR_NAME(name, ...) name
#define VELAR_PAIR_TYPE(name, ...) __VA_ARGS__

#define VELAR_M_FIELD_(c, pair) VELAR_PAIR_TYPE pair VELAR_PAIR_NAME pair{};
#define VELAR_M_STORE_(c, pair) std::decay_t<VELAR_PAIR_TYPE pair> VELAR_PAIR_NAME pair;
#define VELAR_M_PARAM_(c, pair) VELAR_PAIR_TYPE pair VELAR_PAIR_NAME pair

#define VELAR_FIELDS(...) VELAR_PP_EACH(VELAR_M_FIELD_, ~, __VA_ARGS__)
#define VELAR_MEMBERS(...) VELAR_PP_EACH(VELAR_M_FIELD_, ~, __VA_ARGS__)

#define VELAR_CONSTRUCTOR(Class, ...)                     \
    Class(VELAR_PP_LIST(VELAR_M_PARAM_, ~, __VA_ARGS__)); \
    VELAR_PP_EACH(VELAR_M_STORE_, ~, __VA_ARGS__)

#define VELAR_RECORD_CONSTRUCTOR(Class, ...)                            \
    Class(int recordId, VELAR_PP_LIST(VELAR_M_PARAM_, ~, __VA_ARGS__)); \
    VELAR_PP_EACH(VELAR_M_STORE_, ~, __VA_ARGS__)

#define VELAR_RECORD_CONSTRUCTOR0(Class) explicit Class(int recordId);

#define VELAR_SETTER(Setter, ...)                                \
    void Setter(VELAR_PP_LIST(VELAR_M_PARAM_, ~, __VA_ARGS__));  \
    struct Setter##_args {                                       \
        VELAR_PP_EACH(VELAR_M_STORE_, ~, __VA_ARGS__)            \
    } velar_##Setter{};

// The names of the setters called on the record, in call order. The list
// names the class's setters for the provider; the record holds only the log.
#define VELAR_CALLS(...) std::vector<const char*> velarCallLog;

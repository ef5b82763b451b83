// Which record class the daemon's handler reads for each record id: the
// answer to each request (by request id) and each notification (by
// notification id). Auto mode answers with it, a controller's record of
// another class is refused, and the documentation's table is generated from
// it, so that one table says it for all three.
#pragma once

#include <stddef.h>

namespace velar_sim {

enum class Way { kAnswer, kNotify };

struct HandlerClass {
    Way way;
    int id;                 // request id (kAnswer) or notification id (kNotify)
    const char* className;  // as the control channel names it
    // Answers only: the request's member that names the user agent, where it
    // is not called handle, so that the auto answer repeats it.
    const char* handleFrom = nullptr;
};

// Answers in the order of the daemon's request table, then notifications in
// the order of its notification table.
extern const HandlerClass kHandlerClasses[];
extern const size_t kHandlerClassCount;

// The row of an id, or null when no handler reads a record of that id.
const HandlerClass* handlerClass(Way way, int id);
// Its class name, or null.
const char* answerClass(int requestId);
const char* notifyClass(int notifyId);

}  // namespace velar_sim

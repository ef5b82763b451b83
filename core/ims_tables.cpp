// The two tables as the constant arrays that the maps are filled from.
#include "core/ims_tables.h"

#include "core/ims_core.h"

// Each array begins with an all-zero row that stands for no command.
#define IMS_COMMAND_ROW(id, dispatch, response) {id, dispatch, response},
const CommandInfo s_commands[] = {{0, nullptr, nullptr}, IMS_REQUEST_ROWS(IMS_COMMAND_ROW)};
const size_t s_commandCount = sizeof(s_commands) / sizeof(s_commands[0]);

#define IMS_NOTIFY_ROW(id, handler) {id, handler},
const NotifyInfo s_notifications[] = {{0, nullptr}, IMS_NOTIFY_ROWS(IMS_NOTIFY_ROW)};
const size_t s_notificationCount = sizeof(s_notifications) / sizeof(s_notifications[0]);

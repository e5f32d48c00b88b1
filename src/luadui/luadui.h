// The exported functions of the module `luadui`: what a terminal calls, besides the Lua functions that
// `require "luadui"` brings. The header is C++, except that a C host may include it for the functions
// whose arguments need no C++ type.
//
// Order of use: set_push_callback, set_req_sync_callback, set_login_callback; start_dui_thread; then pages,
// answers and the rest in any order. Callbacks may be replaced at any time.
// Threads: every function may be called from any host thread. No function throws.
// Text: code page 936, zero-terminated where it is a C string.
// After shutdown (the UI thread got a quit message, or the page manager window was destroyed) pages are no
// longer created (result 0 at once) and responses are dropped; everything else keeps answering. A host thread that
// owns parent windows of pages goes on serving messages while it waits for the UI thread to end.
#pragma once

#include <stdint.h>

#ifdef __cplusplus
#include <map>
#include <string>

#include "messaging/queue_data.h"
#include "platform/export.h"
#include "platform/win32.h"
extern "C" {
#else
#include <stdbool.h>
#define LUADUI_API
#endif

struct lua_State;

// The entry that Lua calls: registers the sixteen functions under the name "luadui". Returns 0.
LUADUI_API int luaopen_luadui(struct lua_State* L);

// Starts the UI thread on the first call and returns its id, to which PostThreadMessageW may send WM_QUIT.
// Reads the skin through the request-sync callback first, so that callback must not wait for this call. Not to be
// called from DllMain: it waits for the new thread.
// 0 when the thread could not be created.
LUADUI_API unsigned int start_dui_thread(void);

// Tells that the host's code list changed: `reason` is the kind of the host's notice, `market` the id of the
// market concerned, `first` and `last` the rows of its list. Any values will do, since none of them narrows
// anything: the whole list is asked for again in the background, from where the last load had it, and until it
// is there the old one answers. Notices that come during a load lead to one more load. Before the first load
// nothing happens. Always 0, at once.
LUADUI_API int handle_keyboard_callback(uint16_t reason, uint32_t market, uint32_t first, uint32_t last);

// Loads the code list in the background: the request-sync callback is asked for it on a thread of its own, with `path`
// (copied; null or empty: the host's default) as its source. Until it is there get_securityname and
// get_marketbycodeandzqmc wait, ten seconds at most; not so when called inside that callback. An answer that holds no
// list leaves the old one in place. Each call is a load of its own, one after the other. 0, or -1 when the thread could
// not be started. The module stays in memory from then on.
LUADUI_API int init_keyfairy(const char* path);

// Writes "name:market" of a security into `buffer`, without a terminating zero, when it fits into `size`
// bytes. Returns the length in either case, so that the caller can come back with a larger buffer. An unknown
// code has an empty name. Null strings read as empty; a null buffer only asks for the length.
LUADUI_API unsigned int get_securityname(const char* code, char* buffer, const char* market,
                                         unsigned int size);

// Writes the market id of the security with this code and short name; answers like get_securityname. Length 0
// when there is none.
LUADUI_API unsigned int get_marketbycodeandzqmc(const char* code, char* buffer, const char* name,
                                                unsigned int size);

// Component pages: `init` stores, once per process, the folder of the component libraries (below the host's
// folder, null or empty: the host's folder itself) and a text that every component page receives as its init
// string 3 when it brings none of its own. Always 0.
LUADUI_API int init(const char* folder, const char* info);

// Creates a component page without waiting for its window, starting the UI thread if need be: `library` is
// looked for in the folder given to `init`, `name` is the page name, `info` its init string 3 (null: the one of
// `init`), `flag` its init flag. 0 when handed to the UI thread or dropped because that has ended, -1 when `init`
// has not run.
LUADUI_API int create(const char* library, const char* name, const char* info, int flag);

// As `create`, but waits for the UI thread to be ready and for the page, and works without `init` (folder:
// the host's). Returns the page result: the page's window handle, 0 on failure.
LUADUI_API int create_com_page(const char* library, const char* name, const char* info, int flag);

#ifdef __cplusplus
}  // extern "C"

// Types of the host that the library only passes on.
struct tag_SrvAddr;
struct tag_login_user;

extern "C" {

// The host's side. A callback returns what it likes (the result is ignored) and must not throw; an exception
// that comes all the same is caught and counted. A Lua error must not leave it: it would jump over objects of the
// library. Callbacks are called on whatever thread sends, mostly the UI thread, and may call back into the library.

// Sends one request to the servers. The record is the caller's: copy what is kept.
typedef int (*LuaduiPushCallback)(luadui::CQueueReqItem* request);
// Answers one request at once: writes text under "result" (and, where the operation says so, into "Params").
typedef int (*LuaduiRequestSyncCallback)(luadui::CQueueReqItem* request);
// Logs a user in; the six arguments of CRequestObject::SendLogin as they were given.
typedef int (*LuaduiLoginCallback)(unsigned int kind, const std::string& user, const std::string& secret,
                                   const std::map<int, tag_SrvAddr>& servers, const tag_login_user* detail,
                                   unsigned int flags);

// Each stores the callback and returns true; with null it returns false and the previous one stays.
LUADUI_API bool set_push_callback(LuaduiPushCallback callback);
LUADUI_API bool set_req_sync_callback(LuaduiRequestSyncCallback callback);
LUADUI_API bool set_login_callback(LuaduiLoginCallback callback);

// Delivers one answer or push to the request object named in "To" (its decimal handle), on the UI thread. The
// record is copied in constant time per field and stays the caller's; tables and JSON objects that it holds
// shared must not be written after this call. Records of one thread arrive in the order of the calls, however
// busy the UI thread is. Null, or after shutdown: counted and dropped. Always 0.
LUADUI_API int handle_response_callback(luadui::CUIData* data);

// Creates a page: waits (without a time limit) until the UI thread is ready, then loads the page library
// `library` below the host's folder and lets it create page `name` under the two parent windows. `a`, `b`,
// `info` and `flag` go to the page as they are. Returns the page result (the page's window handle), 0 on
// failure; with `asynchronous` the page is created later and 1 says that the order was taken.
LUADUI_API unsigned int create_dui_page(int a, int b, const std::string& name, const std::string& info,
                                        const std::string& library, HWND parent1, HWND parent2, int flag,
                                        bool asynchronous);
}  // extern "C"
#endif

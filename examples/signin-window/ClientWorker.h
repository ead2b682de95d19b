#pragma once

#include <windows.h>

#include <condition_variable>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "Secret.h"

/// Messages that the worker posts to the window. None carries a pointer, so a message that is never read leaks nothing.
enum : UINT {
    WM_APP_REQUEST_DONE = WM_APP,  ///< the request was carried out: call takeResult()
    WM_APP_SIGNED_IN,              ///< the manager reported a sign-in; may come at any time
    WM_APP_SIGNED_OUT,             ///< the manager reported a sign-out; may come at any time
};

struct Request {
    enum Action { signIn, refresh, signOut } action;
    bool offline;
    std::wstring account = {};  ///< for signIn
    Secret password = {};       ///< for signIn
};

struct RequestResult {
    std::wstring status;                                           ///< the outcome, as a sentence
    std::vector<std::pair<const wchar_t*, std::wstring>> details;  ///< names and values; after a failure maybe not all
};

/// A thread that owns the login client and makes all calls into it. It carries out one request at a time, and posts the
/// messages above to the window. At most one worker may exist in a process at a time.
class ClientWorker {
public:
    explicit ClientWorker(HWND windowIn);
    /// Waits for the running request and the destruction of the client. There is no time limit, because a call into the
    /// manager cannot be cancelled.
    ~ClientWorker();

    /// Starts a request. The previous one must be done.
    void ask(Request next);

    /// The result of the last request. Call it once for each WM_APP_REQUEST_DONE.
    RequestResult takeResult();

private:
    void run() noexcept;

    const HWND window;
    std::mutex mutex;
    std::condition_variable changed;
    bool stopping = false;
    std::optional<Request> request;
    RequestResult lastResult;
    std::thread thread;
};

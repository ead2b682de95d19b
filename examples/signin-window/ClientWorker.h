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

/// What the worker posts to the window. No message carries a pointer, so one that is never read leaks nothing.
enum : UINT {
    WM_APP_ANSWERED = WM_APP,  ///< the request has been carried out: fetch the answer
    WM_APP_SIGNED_IN,          ///< the manager reports a sign-in, during a request or not
    WM_APP_SIGNED_OUT,         ///< the manager reports a sign-out, during a request or not
};

struct Request {
    enum Action { signIn, refresh, signOut } action;
    bool offline;
    std::wstring account = {};  ///< for signIn
    Secret password = {};       ///< for signIn
};

struct Answer {
    std::wstring status;                                           ///< how it went, as a sentence
    std::vector<std::pair<const wchar_t*, std::wstring>> details;  ///< name and value; what was learnt before a failure
};

/// A thread that owns the login client and makes every call into it. One request at a time; the window hears of the
/// answer, and of the manager's events, by posted messages. At most one worker at a time in a process.
class ClientWorker {
public:
    explicit ClientWorker(HWND windowIn);
    /// Waits until the running request has been carried out and the client is destroyed, which lasts as long as the
    /// manager wants: a call into it cannot be broken off.
    ~ClientWorker();

    /// Hands a request over. The one before must have been answered.
    void ask(Request next);

    /// The answer to the last request. To be called once for each WM_APP_ANSWERED.
    Answer takeAnswer();

private:
    void run() noexcept;

    const HWND window;
    std::mutex mutex;
    std::condition_variable changed;
    bool stopping = false;
    std::optional<Request> request;
    Answer answer;
    std::thread thread;
};

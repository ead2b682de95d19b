#include "ClientWorker.h"

#include <atomic>

#include "login/LoginManagerClient.h"
#include "texts.h"

namespace {

// The window that gets the callbacks' messages. Global, because callbacks have no context; atomic, because they may be
// called on any thread, even after the client is destroyed.
std::atomic<HWND> listener;

void tell(UINT message) {
    if (const HWND window = listener) {
        PostMessageW(window, message, 0, 0);
    }
}

void signedIn() {
    tell(WM_APP_SIGNED_IN);
}

void signedOut() {
    tell(WM_APP_SIGNED_OUT);
}

using Getter = std::wstring (LoginManagerClient::*)();
const std::pair<const wchar_t*, Getter> getters[] = {
    {L"Tenant", &LoginManagerClient::getTenantName},
    {L"Tenant identifier", &LoginManagerClient::getTenantId},
    {L"Platform", &LoginManagerClient::getPlatFormURL},
    {L"Registry", &LoginManagerClient::getRegistryURL},
    {L"Passport service", &LoginManagerClient::getPassportURL},
    {L"Applications", &LoginManagerClient::getmyAppsURL},
    {L"Kelpa service", &LoginManagerClient::getKelpaURL},
    {L"Space", &LoginManagerClient::getSpaceURL},
};

/// Adds what is known about the user to `result`. If a getter fails, the values before it remain. While offline the
/// getters always return an empty text, so the values are shown as unknown.
// cppcheck-suppress constParameter ; the getters, which are not const, are called through pointers
void describe(LoginManagerClient& client, const LoginResponse& user, bool offline, RequestResult& result) {
    result.details = {
        {L"Account", user.userName}, {L"First name", user.firstName}, {L"Last name", user.lastName},
        {L"Alias", user.aliasName},  {L"Domain", user.domainName},    {L"Record", user.rowId},
    };
    for (const auto& [name, getter] : getters) {
        result.details.emplace_back(name, offline ? L"unknown while offline" : (client.*getter)());
    }
    result.status = user.statusDescription;
}

void carryOut(LoginManagerClient& client, const Request& request, RequestResult& result) {
    client.setOrvelOfflineMode(request.offline);
    switch (request.action) {
        case Request::signIn:
            // login() takes strings by value and wipes its copy of the password.
            describe(client, client.login(request.account, request.password.c_str()), request.offline, result);
            break;
        case Request::refresh:
            describe(client, client.getLoggedInUser(false), request.offline, result);
            break;
        case Request::signOut:
            client.logout();
            result.status = L"Signed out.";
            break;
    }
}

}  // namespace

ClientWorker::ClientWorker(HWND windowIn) : window(windowIn) {
    listener = window;
    thread = std::thread([this] { run(); });
}

ClientWorker::~ClientWorker() {
    {
        const std::lock_guard<std::mutex> lock(mutex);
        stopping = true;
    }
    changed.notify_one();
    thread.join();
    listener = nullptr;
}

void ClientWorker::ask(Request next) {
    {
        const std::lock_guard<std::mutex> lock(mutex);
        request.emplace(std::move(next));
    }
    changed.notify_one();
}

RequestResult ClientWorker::takeResult() {
    const std::lock_guard<std::mutex> lock(mutex);
    return std::move(lastResult);
}

void ClientWorker::run() noexcept {
    std::optional<LoginManagerClient> client;  // created, used and destroyed on this thread only
    std::unique_lock<std::mutex> lock(mutex);
    for (;;) {
        changed.wait(lock, [this] { return stopping || request; });
        if (stopping) {
            return;
        }
        const Request current = std::move(*request);  // its password is wiped at the end of the iteration
        request.reset();
        lock.unlock();
        RequestResult result;
        try {
            if (!client) {  // created here, so that a missing runtime is reported like any other failure
                client.emplace(signedIn, signedOut, uiLangFallback);
            }
            carryOut(*client, current, result);
        } catch (loginManagerException* report) {  // the manager's own report: a pointer, which the catcher deletes
            result.status = sentence(report->code);
            delete report;
        } catch (const std::exception& failure) {  // loginRuntimeException and any other exception
            result.status = widened(failure.what());
        }
        lock.lock();
        lastResult = std::move(result);
        PostMessageW(window, WM_APP_REQUEST_DONE, 0, 0);
    }
}

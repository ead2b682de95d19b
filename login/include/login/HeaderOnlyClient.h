#pragma once

/// @file
/// The members of the header-only class. Included by LoginManagerClient.h, which documents them.

#include <climits>
#include <cstddef>
#include <cstring>
#include <new>
#include <string>

#include "login/LoginManagerClient.h"

#ifdef ORVELLOGIN_HEADER_ONLY

/// What only the header-only class uses.
namespace OrvelLoginHeaderOnly {

/// Overwrites a secret that was passed by value, also when an exception leaves the member. Through a volatile pointer,
/// because a compiler may drop a plain memset of memory that is freed next.
struct WipedAtEnd {
    std::wstring& secret;
    ~WipedAtEnd() {
        void* (*const volatile fill)(void*, int, std::size_t) = std::memset;
        fill(&secret[0], 0, secret.size() * sizeof(wchar_t));
    }
};

/// Wipes the client's results once they have been copied, or if copying them fails.
struct ForgottenAtEnd {
    orvellogin_client* client;
    ~ForgottenAtEnd() { orvellogin_forget(client); }
};

/// The length as the functions take it; for a string that is too long, one that they refuse.
inline int length(const std::wstring& string) {
    return string.size() <= INT_MAX ? static_cast<int>(string.size()) : INT_MIN;
}

inline std::wstring copy(const orvellogin_string& string) {
    return std::wstring(string.units, static_cast<std::size_t>(string.length));
}

/// Calls the host's callback, which is the context. noexcept, because no exception may cross from a callback into the
/// library.
inline void ORVELLOGIN_CALL relay(void* hostCallback) noexcept {
    reinterpret_cast<void (*)()>(hostCallback)();
}

/// Throws what orvellogin_lastFailure says.
[[noreturn]] inline void raise(orvellogin_client* client) {
    const ForgottenAtEnd forgotten{client};
    const orvellogin_failure& failure = *orvellogin_lastFailure(client);
    if (failure.result == ORVELLOGIN_NO_MEMORY) {
        throw std::bad_alloc();
    }
    if (failure.result == ORVELLOGIN_MANAGER_ERROR) {
        throw new loginManagerException(static_cast<statusCode>(failure.code));
    }
    throw loginRuntimeException(copy(failure.typeName), copy(failure.message), failure.hresult, failure.text);
}

}  // namespace OrvelLoginHeaderOnly

template <class Function, class... Arguments>
void LoginManagerClient::call(Function function, Arguments... arguments) const {
    if (function(client, arguments...) != ORVELLOGIN_OK) {
        OrvelLoginHeaderOnly::raise(client);
    }
}

template <class Function, class... Arguments>
std::wstring LoginManagerClient::string(Function function, Arguments... arguments) const {
    orvellogin_string received;
    call(function, arguments..., &received);
    const OrvelLoginHeaderOnly::ForgottenAtEnd forgotten{client};
    return OrvelLoginHeaderOnly::copy(received);
}

template <class Function, class... Arguments>
LoginResponse LoginManagerClient::record(Function function, Arguments... arguments) const {
    using OrvelLoginHeaderOnly::copy;
    const orvellogin_response* received;
    call(function, arguments..., &received);
    const OrvelLoginHeaderOnly::ForgottenAtEnd forgotten{client};
    LoginResponse result;
    result.statusDescription = copy(received->statusDescription);
    result.userName = copy(received->userName);
    result.firstName = copy(received->firstName);
    result.lastName = copy(received->lastName);
    result.rowId = copy(received->rowId);
    result.aliasName = copy(received->aliasName);
    result.domainName = copy(received->domainName);
    return result;
}

inline LoginManagerClient::LoginManagerClient(void (*loginCallBack)(), void (*logoutCallBack)(), uiLang langIn) {
    // The host's function is passed as the context, because callbacks are called even after this object is gone.
    orvellogin_options options = {};
    options.size = sizeof options;
    options.language = static_cast<int>(langIn);
    options.onLogin = loginCallBack ? &OrvelLoginHeaderOnly::relay : nullptr;
    options.loginContext = reinterpret_cast<void*>(loginCallBack);
    options.onLogout = logoutCallBack ? &OrvelLoginHeaderOnly::relay : nullptr;
    options.logoutContext = reinterpret_cast<void*>(logoutCallBack);
    const orvellogin_result result = orvellogin_create(&options, &client);
    if (!client) {
        throw std::bad_alloc();
    }
    if (result != ORVELLOGIN_OK) {
        // The destructor does not run, because the constructor throws.
        struct DestroyedAtEnd {
            orvellogin_client* client;
            ~DestroyedAtEnd() { orvellogin_destroy(client); }
        } const destroyed{client};
        OrvelLoginHeaderOnly::raise(client);
    }
}

inline LoginManagerClient::~LoginManagerClient() {
    orvellogin_destroy(client);
}

inline LoginResponse LoginManagerClient::login() {
    return record(orvellogin_login);
}

inline LoginResponse LoginManagerClient::login(std::wstring userName, std::wstring password) {
    const OrvelLoginHeaderOnly::WipedAtEnd wiped{password};
    return record(orvellogin_loginWithPassword, userName.data(), OrvelLoginHeaderOnly::length(userName),
                  password.data(), OrvelLoginHeaderOnly::length(password));
}

inline LoginResponse LoginManagerClient::getLoggedInUser(bool LastLoginFlag) {
    return record(orvellogin_getLoggedInUser, LastLoginFlag ? 1 : 0);
}

inline void LoginManagerClient::logout() {
    call(orvellogin_logout);
}

inline std::wstring LoginManagerClient::formatAccessUrl(std::wstring targeturl) {
    return string(orvellogin_formatAccessUrl, targeturl.data(), OrvelLoginHeaderOnly::length(targeturl));
}

inline std::wstring LoginManagerClient::getAccessToken() {
    return string(orvellogin_getAccessToken);
}

inline std::wstring LoginManagerClient::getPlatFormURL() {
    return string(orvellogin_getPlatFormURL);
}

inline std::wstring LoginManagerClient::getRegistryURL() {
    return string(orvellogin_getRegistryURL);
}

inline std::wstring LoginManagerClient::getKelpaURL() {
    return string(orvellogin_getKelpaURL);
}

inline std::wstring LoginManagerClient::getTenantName() {
    return string(orvellogin_getTenantName);
}

inline std::wstring LoginManagerClient::getPassportURL() {
    return string(orvellogin_getPassportURL);
}

inline std::wstring LoginManagerClient::getCASCookie() {
    return string(orvellogin_getCASCookie);
}

inline std::wstring LoginManagerClient::getmyAppsURL() {
    return string(orvellogin_getmyAppsURL);
}

inline std::wstring LoginManagerClient::getTenantId() {
    return string(orvellogin_getTenantId);
}

inline std::wstring LoginManagerClient::getTenantIds() {
    return string(orvellogin_getTenantIds);
}

inline std::wstring LoginManagerClient::getLoginTicket(std::wstring spaceurl) {
    return string(orvellogin_getLoginTicket, spaceurl.data(), OrvelLoginHeaderOnly::length(spaceurl));
}

inline std::wstring LoginManagerClient::getSpaceURL() {
    return string(orvellogin_getSpaceURL);
}

inline void LoginManagerClient::stopDNMListener() {
    call(orvellogin_stopDNMListener);
}

inline void LoginManagerClient::DunmoreLoginBrowser(std::wstring serverDNM, std::wstring clientId) {
    call(orvellogin_DunmoreLoginBrowser, serverDNM.data(), OrvelLoginHeaderOnly::length(serverDNM), clientId.data(),
         OrvelLoginHeaderOnly::length(clientId));
}

inline std::wstring LoginManagerClient::getDNMAccessToken() {
    return string(orvellogin_getDNMAccessToken);
}

inline bool LoginManagerClient::isDunmorePlatformTokenExpired(std::wstring t) {
    const OrvelLoginHeaderOnly::WipedAtEnd wiped{t};
    int expired = 0;
    call(orvellogin_isDunmorePlatformTokenExpired, t.data(), OrvelLoginHeaderOnly::length(t), &expired);
    return expired != 0;
}

inline void LoginManagerClient::setOrvelOfflineMode(bool orvelOfflineMode) {
    orvellogin_setOrvelOfflineMode(client, orvelOfflineMode ? 1 : 0);
}

inline bool LoginManagerClient::isOrvelOfflineMode() const {
    return orvellogin_isOrvelOfflineMode(client) != 0;
}

inline void LoginManagerClient::withdrawCallbacks() {
    orvellogin_withdrawCallbacks(client);
}

#endif

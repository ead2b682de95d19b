#pragma once

#include "LoginExport.h"  // without a folder, so that the one beside this file is found, whatever the include folders

#include <cstdint>
#include <exception>
#include <new>
#include <string>

#include "login/LoginResponse.h"
#include "login/loginManagerException.h"
#include "login/loginRuntimeException.h"
#include "login/uiLang.h"
#include "orvelloginc.h"

/// Signs a user in to the online account service. The header-only counterpart of the class that orvellogin.dll exports:
/// it is compiled into the host and calls the plain functions of orvelloginc.dll. Any C++17 compiler for 32-bit Windows
/// can use it, with any runtime, because strings, records and exceptions never leave the host.
///
/// For the contract of the members and the rules for callbacks and threads see the exported class, in
/// `login/LoginManagerClient.h` beside orvelloginc.h. A host must not include both headers.
class LoginManagerClient {
public:
    LoginManagerClient(void (*loginCallBack)(), void (*logoutCallBack)(), uiLang langIn) {
        // The host's function is passed as the context, because callbacks are called even after this object is gone.
        call(orvellogin_create, loginCallBack ? &relay : nullptr, reinterpret_cast<void*>(loginCallBack),
             logoutCallBack ? &relay : nullptr, reinterpret_cast<void*>(logoutCallBack), static_cast<int>(langIn),
             &client);
        orvellogin_setReceiver(client, &receive);
    }

    ~LoginManagerClient() { orvellogin_destroy(client); }

    LoginManagerClient(const LoginManagerClient&) = delete;
    LoginManagerClient& operator=(const LoginManagerClient&) = delete;

    LoginResponse login() { return record(orvellogin_login); }

    LoginResponse login(std::wstring userName, std::wstring password) {
        const WipedAtEnd wiped{password};
        return record(orvellogin_loginWithPassword, userName.data(), length(userName), password.data(),
                      length(password));
    }

    LoginResponse getLoggedInUser(bool LastLoginFlag) {
        return record(orvellogin_getLoggedInUser, LastLoginFlag ? 1 : 0);
    }

    void logout() { call(orvellogin_logout, client); }

    std::wstring formatAccessUrl(std::wstring targeturl) {
        return text(orvellogin_formatAccessUrl, targeturl.data(), length(targeturl));
    }

    std::wstring getAccessToken() { return text(orvellogin_getAccessToken); }
    std::wstring getPlatFormURL() { return text(orvellogin_getPlatFormURL); }
    std::wstring getRegistryURL() { return text(orvellogin_getRegistryURL); }
    std::wstring getKelpaURL() { return text(orvellogin_getKelpaURL); }
    std::wstring getTenantName() { return text(orvellogin_getTenantName); }
    std::wstring getPassportURL() { return text(orvellogin_getPassportURL); }
    std::wstring getCASCookie() { return text(orvellogin_getCASCookie); }
    std::wstring getmyAppsURL() { return text(orvellogin_getmyAppsURL); }
    std::wstring getTenantId() { return text(orvellogin_getTenantId); }
    std::wstring getTenantIds() { return text(orvellogin_getTenantIds); }

    std::wstring getLoginTicket(std::wstring spaceurl) {
        return text(orvellogin_getLoginTicket, spaceurl.data(), length(spaceurl));
    }

    std::wstring getSpaceURL() { return text(orvellogin_getSpaceURL); }

    void stopDNMListener() { call(orvellogin_stopDNMListener, client); }

    void DunmoreLoginBrowser(std::wstring serverDNM, std::wstring clientId) {
        call(orvellogin_DunmoreLoginBrowser, client, serverDNM.data(), length(serverDNM), clientId.data(),
             length(clientId));
    }

    std::wstring getDNMAccessToken() { return text(orvellogin_getDNMAccessToken); }

    bool isDunmorePlatformTokenExpired(std::wstring t) {
        const WipedAtEnd wiped{t};
        int expired = 0;
        call(orvellogin_isDunmorePlatformTokenExpired, client, t.data(), length(t), &expired);
        return expired != 0;
    }

    void setOrvelOfflineMode(bool orvelOfflineMode) {
        orvellogin_setOrvelOfflineMode(client, orvelOfflineMode ? 1 : 0);
    }

    bool isOrvelOfflineMode() const { return orvellogin_isOrvelOfflineMode(client) != 0; }

private:
    // Overwrites a secret that was passed by value, also when an exception leaves the member. Volatile, because a
    // compiler may drop stores to memory that is freed next.
    struct WipedAtEnd {
        std::wstring& secret;
        ~WipedAtEnd() {
            for (wchar_t& unit : secret) {
                const_cast<volatile wchar_t&>(unit) = 0;
            }
        }
    };

    // Copies a BSTR, whose length in bytes is in the four bytes before its first unit. SysStringLen would make every
    // host link oleaut32.
    static std::wstring units(const wchar_t* text) {
        return text ? std::wstring(text, reinterpret_cast<const std::uint32_t*>(text)[-1] / sizeof(wchar_t))
                    : std::wstring();
    }

    static int length(const std::wstring& text) { return static_cast<int>(text.size()); }

    // noexcept, because no exception may cross from a callback into the library.
    static void ORVELLOGIN_CALL relay(void* hosts) noexcept { reinterpret_cast<void (*)()>(hosts)(); }

    // `*place` holds the address of the string to fill, where the library would otherwise store a BSTR.
    static int ORVELLOGIN_CALL receive(wchar_t** place, const wchar_t* units, int length) noexcept {
        try {
            reinterpret_cast<std::wstring*>(*place)->assign(units, static_cast<std::size_t>(length));
            return 1;
        } catch (const std::bad_alloc&) {
            return 0;
        }
    }

    static wchar_t* place(std::wstring& text) { return reinterpret_cast<wchar_t*>(&text); }

    [[noreturn]] static void raise(orvellogin_result result, orvellogin_failure& failure) {
        struct Clear {
            orvellogin_failure& failure;
            ~Clear() { orvellogin_clearFailure(&failure); }
        } const clear{failure};
        if (result == orvellogin_noMemory) {
            throw std::bad_alloc();
        }
        if (result == orvellogin_reported) {
            throw new loginManagerException(static_cast<statusCode>(failure.code));
        }
        throw loginRuntimeException(units(failure.typeName), units(failure.message), failure.hresult,
                                    failure.text ? failure.text : "");
    }

    template <class Function, class... Arguments>
    static void call(Function function, Arguments... arguments) {
        orvellogin_failure failure;
        failure.size = sizeof failure;
        const orvellogin_result result = function(arguments..., &failure);
        if (result != orvellogin_ok) {
            raise(result, failure);
        }
    }

    template <class Function, class... Arguments>
    std::wstring text(Function function, Arguments... arguments) {
        std::wstring result;
        wchar_t* received = place(result);
        call(function, client, arguments..., &received);
        return result;
    }

    template <class Function, class... Arguments>
    LoginResponse record(Function function, Arguments... arguments) {
        LoginResponse result;
        orvellogin_response received = {sizeof received,         place(result.statusDescription),
                                        place(result.userName),  place(result.firstName),
                                        place(result.lastName),  place(result.rowId),
                                        place(result.aliasName), place(result.domainName)};
        call(function, client, arguments..., &received);
        return result;
    }

    orvellogin_client* client = nullptr;
};
